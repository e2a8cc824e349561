#include "telling.hpp"

#include <string>

#include "orv/kit/boundary.hpp"
#include "orv/orvspi.h"

namespace orv::kit {

// what() is in no known characters; where it is more than ASCII each byte becomes one.
void Report(const Host& host, const char* where, const std::exception& thrown) noexcept {
  static_cast<void>(CallForeign([&]() -> HRESULT {
    const auto session = host.support.As<IOrvSupport2>(IID_IOrvSupport2);
    if (!session) return MAPI_E_NO_SUPPORT;
    std::basic_string<WCHAR> text;
    for (const char each : std::string("exception in ") + where + ": " + thrown.what())
      text += static_cast<WCHAR>(static_cast<unsigned char>(each));
    return session->ReportProblem(MAPI_E_CALL_FAILED, text.c_str());
  }));
}

}  // namespace orv::kit
