// Calls of service entry functions. What they are given is released in one order: the library first, then the
// support object, so that a service may use the object as long as its code is there.
#include "hosting/service_entry.h"

#include <array>

#include "hosting/orv_support.h"
#include "orv/orvtags.h"
#include "platform/boundary.h"
#include "platform/buffer.h"
#include "platform/com_ptr.h"
#include "platform/identity.h"
#include "platform/module.h"
#include "platform/process.h"

namespace orv {
namespace {

HRESULT CallEntry(const WString& path, const char* entryName, const ServiceEntryCall& call,
                  IProfSect* section, IOrvSupport* support) {
  const Module library = Module::Load(path);
  if (!library) return MAPI_E_NOT_FOUND;
  const auto entry = library.Find<LPORVSERVICEENTRY>(entryName);
  if (entry == nullptr) return MAPI_E_CALL_FAILED;
  // An exception is caught while the library is there: its object has to be destroyed by the library's own code.
  return GuardedForeign([&] {
    return entry(process::ResourceLibrary(), call.uiParam, call.flags, call.context, call.valueCount,
                 call.values, section, support, process::CallerContext());
  });
}

// A name with a folder of its own could lead anywhere, and an empty one nowhere.
HRESULT CallNamedLibrary(const WString& folder, const WString& library, const char* entryName,
                         const ServiceEntryCall& call, IProfSect* section, IOrvSupport* support) {
  const bool loadable = IsBareFileName(library) && folder.size() + library.size() < MAX_PATH;
  if (!loadable) return MAPI_E_NOT_FOUND;
  return CallEntry(folder + library, entryName, call, section, support);
}

}  // namespace

HRESULT CallServiceEntry(IProfSect* section, const ServiceEntryCall& call) {
  return GuardedForeign([&]() -> HRESULT {
    ComPtr<IOrvSupport> support;
    HRESULT hr = CreateSupport(nullptr, nullptr, support.Put());
    if (FAILED(hr)) return hr;

    SizedSPropTagArray(2, tags) = {2, {PR_SERVICE_DLL_NAME_W, PR_SERVICE_ENTRY_NAME}};
    ULONG count = 0;
    MapiBuffer<SPropValue> names;
    hr = section->GetProps(reinterpret_cast<LPSPropTagArray>(&tags), MAPI_UNICODE, &count, names.Put());
    if (hr == MAPI_E_NOT_ENOUGH_MEMORY) return hr;
    const bool named = SUCCEEDED(hr) && count == 2 && names.Get()[0].ulPropTag == PR_SERVICE_DLL_NAME_W &&
                       names.Get()[1].ulPropTag == PR_SERVICE_ENTRY_NAME;
    if (!named) return MAPI_E_INVALID_OBJECT;
    return CallNamedLibrary(PathBeside(process::Instance(), {}), names.Get()[0].Value.lpszW,
                            names.Get()[1].Value.lpszA, call, section, support.Get());
  });
}

HRESULT CallServiceEntryOnce(const WString& folder, const WString& library, const char* entryName,
                             const ServiceEntryCall& call) {
  return GuardedForeign([&]() -> HRESULT {
    ComPtr<IOrvSupport> support;
    const HRESULT hr = CreateSupport(nullptr, nullptr, support.Put());
    if (FAILED(hr)) return hr;
    return CallNamedLibrary(folder, library, entryName, call, nullptr, support.Get());
  });
}

}  // namespace orv
