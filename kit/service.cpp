#include "orv/kit/service.hpp"

#include "orv/orvtags.h"

namespace orv::kit {

LPFREEBUFFER ServiceCall::Free() const {
  LPALLOCATEBUFFER allocate = nullptr;
  LPALLOCATEMORE more = nullptr;
  LPFREEBUFFER free = nullptr;
  const bool isTold = support != nullptr && SUCCEEDED(support->GetMemAllocRoutines(&allocate, &more, &free));
  return isTold ? free : nullptr;
}

HRESULT ServiceHandler::Run(const ServiceCall& call) noexcept {
  return sdk::Guarded([&] { return Dispatch(call); });
}

HRESULT ServiceHandler::Dispatch(const ServiceCall& call) {
  switch (call.context) {
    case MSG_SERVICE_INSTALL:
      return Install(call);
    case MSG_SERVICE_CREATE:
      return Create(call);
    case MSG_SERVICE_CONFIGURE:
      return Configure(call);
    case MSG_SERVICE_UNINSTALL:
      return Uninstall(call);
    case MSG_SERVICE_DELETE:  // never called by the library
      return S_OK;
    case ORV_SERVICE_EXTRA_CONFIG:  // one value, without a tag
      return ApplyText(call,
                       call.values.begin() != call.values.end() ? call.values.begin()->Value.lpszW : nullptr);
    default:
      return MAPI_E_NO_SUPPORT;
  }
}

HRESULT ServiceHandler::ApplyText(const ServiceCall& call, LPCWSTR text) {
  return settings_.StoreMain(call.section, text, call.Free());
}

HRESULT ServiceHandler::Configure(const ServiceCall& call) {
  if (call.values.begin() != call.values.end())
    return settings_.Store(call.section, call.values, call.Free());
  return (call.flags & SERVICE_UI_ALWAYS) != 0 ? MAPI_E_USER_CANCEL : S_OK;
}

}  // namespace orv::kit
