// Calls of service entry functions. What they are given is released in one order: the library first, then the
// support object, so that a service may use the object as long as its code is there.
#include "hosting/service_entry.h"

#include "hosting/named_library.h"
#include "hosting/open_entry.h"
#include "hosting/orv_support.h"
#include "orv/orvtags.h"
#include "platform/boundary.h"
#include "platform/com_ptr.h"
#include "platform/process.h"
#include "props/foreign_values.h"

namespace orv {
namespace {

HRESULT CallEntry(const Module& library, const char* entryName, const ServiceEntryCall& call,
                  IProfSect* section, IOrvSupport* support) {
  if (!library) return MAPI_E_NOT_FOUND;
  const auto entry = library.Find<LPORVSERVICEENTRY>(entryName);
  if (entry == nullptr) return MAPI_E_CALL_FAILED;
  // An exception is caught while the library is there: its object has to be destroyed by the library's own code.
  return GuardedForeign([&] {
    return entry(process::ResourceLibrary(), call.uiParam, call.flags, call.context, call.valueCount,
                 call.values, section, support, process::CallerContext());
  });
}

}  // namespace

HRESULT CallServiceEntry(IProfSect* section, const ServiceEntryCall& call) {
  static constexpr TagArray kNames{PR_SERVICE_DLL_NAME_W, PR_SERVICE_ENTRY_NAME};
  return GuardedForeign([&]() -> HRESULT {
    ComPtr<IOrvSupport> support;
    if (const HRESULT hr = CreateSupport(nullptr, nullptr, support.Put()); FAILED(hr)) return hr;
    PropValues read;
    const HRESULT hr = ReadProps(*section, kNames, read);
    if (hr == MAPI_E_NOT_ENOUGH_MEMORY) return hr;
    const ForeignValues names(read);
    const WCHAR* library = TextOf(names.At(0, PR_SERVICE_DLL_NAME_W));
    const char* entry = Text8Of(names.At(1, PR_SERVICE_ENTRY_NAME));
    const bool named =
        SUCCEEDED(hr) && names.Count() == kNames.cValues && library != nullptr && entry != nullptr;
    if (!named) return MAPI_E_INVALID_OBJECT;
    return CallEntry(LoadLibraryBesideUs(library), entry, call, section, support.Get());
  });
}

HRESULT CallServiceEntryOnce(const WString& folder, const WString& library, const char* entryName,
                             const ServiceEntryCall& call) {
  return GuardedForeign([&]() -> HRESULT {
    ComPtr<IOrvSupport> support;
    if (const HRESULT hr = CreateSupport(nullptr, nullptr, support.Put()); FAILED(hr)) return hr;
    return CallEntry(LoadNamedLibrary(folder, library), entryName, call, nullptr, support.Get());
  });
}

}  // namespace orv
