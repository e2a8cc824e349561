#include "orv/kit/provider.hpp"

#include "book_objects.hpp"
#include "orv/orvtags.h"
#include "telling.hpp"

namespace orv::kit {
namespace {

bool IsComplete(const OpenCall& call) noexcept {
  return call.support != nullptr && call.section != nullptr && call.provider != nullptr &&
         call.allocate != nullptr && call.allocateMore != nullptr && call.free != nullptr;
}

HRESULT Open(const OpenCall& call, const Settings& settings, const MakeBook& make, const MAPIUID* uid) {
  const sdk::Allocator buffers(call.allocate, call.allocateMore, call.free);
  Logon logon{std::make_shared<Host>(Host{buffers, sdk::ComPtr<IOrvSupport>::Share(call.support)}),
              {},
              {},
              sdk::ComPtr<IProfSect>::Share(call.section),
              call.flags,
              call.resource};
  if (const HRESULT hr = settings.Read(*call.section, buffers, &logon.settings); FAILED(hr)) return hr;
  const SBinary own = logon.settings.Bytes(PR_SERVICE_UID);
  logon.uid = uid != nullptr ? *uid : *reinterpret_cast<const MAPIUID*>(own.lpb);
  // From now on entry identifiers with this MAPIUID come to us.
  if (const HRESULT hr = call.support->SetProviderUID(&logon.uid); FAILED(hr)) return hr;
  return Telling(*logon.host, "the logon", [&]() -> HRESULT {
    const std::shared_ptr<Book> book = make(logon);
    if (const HRESULT hr = book->Open(); FAILED(hr)) return hr;
    PropList root;
    if (const HRESULT hr = book->ReadEntry(book->Root(), {}, root); FAILED(hr)) return hr;
    *call.provider = MakeProviderObject(book, std::move(root)).Detach();
    return S_OK;
  });
}

}  // namespace

HRESULT OpenProvider(const OpenCall& call, const Settings& settings, const MakeBook& make,
                     const MAPIUID* uid) noexcept {
  if (!IsComplete(call)) return MAPI_E_INVALID_PARAMETER;
  return sdk::Guarded([&] { return Open(call, settings, make, uid); });
}

}  // namespace orv::kit
