// Logon of providers: library, entry points, support object, profile section, "ABProviderOpen".
#include "hosting/provider_loader.h"

#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include "hosting/named_library.h"
#include "hosting/orv_support.h"
#include "orv/orvflags.h"
#include "orv/orvspi.h"
#include "orv/orvtags.h"
#include "platform/process.h"
#include "props/table_reader.h"

namespace orv {
namespace {

enum Column : ULONG { kUid, kLibrary, kEntry, kName };
constexpr TagArray kServiceColumns{PR_SERVICE_UID, PR_SERVICE_DLL_NAME_W, PR_SERVICE_ENTRY_NAME,
                                   PR_DISPLAY_NAME_W};

// What a service row says of its library. Views into the row.
struct ServiceRow {
  MAPIUID uid;
  const WCHAR* library;
  const char* entryName;
  const WCHAR* displayName;  // may be null

  ServiceIdentity Identity() const { return {uid, displayName != nullptr ? displayName : L"", library}; }
};

// Rows are read from storage: what lacks one of its columns, the name excepted, is damage.
HRESULT ParseRow(const ForeignValues& row, ServiceRow& service) {
  const SBinary* uid = BinaryOf(row.At(kUid, PR_SERVICE_UID));
  service.library = TextOf(row.At(kLibrary, PR_SERVICE_DLL_NAME_W));
  service.entryName = Text8Of(row.At(kEntry, PR_SERVICE_ENTRY_NAME));
  service.displayName = TextOf(row.At(kName, PR_DISPLAY_NAME_W));
  if (uid == nullptr || service.library == nullptr || service.entryName == nullptr) return MAPI_E_CALL_FAILED;
  if (uid->cb < sizeof service.uid) return MAPI_E_CALL_FAILED;
  std::memcpy(&service.uid, uid->lpb, sizeof service.uid);
  return S_OK;
}

HRESULT LoadProviderLibrary(const ServiceRow& service, Module& library, LPABPROVIDEROPEN& open) {
  library = LoadLibraryBesideUs(service.library);
  if (!library) return MAPI_E_NOT_FOUND;
  open = library.Find<LPABPROVIDEROPEN>(ORV_PROVIDER_OPEN_NAME);
  // Not called here, but a library without it could never be configured.
  const auto entry = library.Find<LPORVSERVICEENTRY>(service.entryName);
  return open == nullptr || entry == nullptr ? MAPI_E_CALL_FAILED : S_OK;
}

// An exception's object is destroyed by code of the library that threw it. While one is on its way to our caller
// that library must stay, for ever, since nobody tells us when it has been handled.
class KeepLibraryOnException {
 public:
  explicit KeepLibraryOnException(ProviderRecord& record) : record_(&record) {}
  ~KeepLibraryOnException() {
    if (record_ != nullptr) record_->KeepLibraryLoaded();
  }
  KeepLibraryOnException(const KeepLibraryOnException&) = delete;
  KeepLibraryOnException& operator=(const KeepLibraryOnException&) = delete;
  void Dismiss() noexcept { record_ = nullptr; }

 private:
  ProviderRecord* record_;
};

struct Logon {
  IABServiceAdmin* admin;
  CABServiceList* list;
  ULONG_PTR uiParam;
  ULONG flags;
};

// An open that fails hands out nothing, whatever it wrote.
HRESULT CallProviderOpen(const Logon& logon, LPABPROVIDEROPEN open, IOrvSupport* support, IProfSect* section,
                         ProviderRecord& record) {
  IAddrBook* provider = nullptr;
  HRESULT hr = MAPI_E_NOT_ENOUGH_MEMORY;
  KeepLibraryOnException keep(record);
  try {
    hr = open(process::ResourceLibrary(), support, section, logon.uiParam, logon.flags | MAPI_UNICODE,
              &OrvAllocateBuffer, &OrvAllocateMore, &OrvFreeBuffer, &provider, process::CallerContext());
  } catch (const std::bad_alloc&) {
  }
  keep.Dismiss();
  if (SUCCEEDED(hr)) record.AdoptProvider(provider);
  return hr;
}

// The support object is released after the call, so a provider that wants it adds a reference.
HRESULT LogProviderOn(const Logon& logon, LPABPROVIDEROPEN open, ProviderRecord& record) {
  ComPtr<IOrvSupport> support;
  const HRESULT made = CreateSupport(logon.list, &record, support.Put());
  if (FAILED(made)) return made;
  ComPtr<IProfSect> section;
  const HRESULT opened =
      logon.admin->OpenProfileSection(&record.ServiceUid(), nullptr, MAPI_MODIFY, section.Put());
  if (FAILED(opened)) return opened;
  return CallProviderOpen(logon, open, support.Get(), section.Get(), record);
}

HRESULT LoadProvider(const Logon& logon, const ForeignValues& row) {
  ServiceRow service{};
  if (const HRESULT hr = ParseRow(row, service); FAILED(hr)) return hr;
  Module library;
  LPABPROVIDEROPEN open = nullptr;
  if (const HRESULT hr = LoadProviderLibrary(service, library, open); FAILED(hr)) return hr;
  auto record = std::make_unique<ProviderRecord>(std::move(library), service.Identity());
  if (const HRESULT hr = LogProviderOn(logon, open, *record); FAILED(hr)) return hr;
  logon.list->Add(std::move(record));
  return S_OK;
}

HRESULT LoadEveryProvider(const Logon& logon) {
  ComPtr<IMAPITable> table;
  if (const HRESULT hr = logon.admin->GetMsgServiceTable(MAPI_UNICODE, table.Put()); FAILED(hr)) return hr;
  TableReader reader;
  HRESULT hr = reader.Open(std::move(table), kServiceColumns, 1, TableReader::Start::kWhereItStands);
  if (FAILED(hr)) return hr;
  while ((hr = reader.Next()) == S_OK) {
    if (const HRESULT loaded = LoadProvider(logon, reader.Row()); FAILED(loaded)) return loaded;
  }
  return FAILED(hr) ? hr : S_OK;
}

}  // namespace

HRESULT LoadProviders(IABServiceAdmin* admin, CABServiceList* list, ULONG_PTR uiParam, ULONG flags) {
  if (admin == nullptr || list == nullptr) return MAPI_E_INVALID_PARAMETER;
  const HRESULT hr = LoadEveryProvider({admin, list, uiParam, flags});
  if (FAILED(hr)) list->UnloadAll();
  return hr;
}

}  // namespace orv
