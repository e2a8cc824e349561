// Logon of providers: library, entry points, support object, profile section, "ABProviderOpen".
#include "hosting/provider_loader.h"

#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include "hosting/orv_support.h"
#include "orv/orvflags.h"
#include "orv/orvspi.h"
#include "orv/orvtags.h"
#include "platform/buffer.h"
#include "platform/identity.h"
#include "platform/module.h"
#include "platform/process.h"
#include "props/prop_value.h"

namespace orv {
namespace {

constexpr SizedSPropTagArray(3, kServiceColumns) = {
    3, {PR_SERVICE_UID, PR_SERVICE_DLL_NAME_W, PR_SERVICE_ENTRY_NAME}};

// What a service row says of its library. Views into the row.
struct ServiceRow {
  MAPIUID uid;
  WStringView library;
  const char* entryName;
};

// Rows are read from storage: what lacks one of its columns is damage.
HRESULT ParseRow(const SRow& row, ServiceRow& service) {
  const SPropValue* uid = FindValue(row.lpProps, row.cValues, PR_SERVICE_UID);
  const SPropValue* library = FindValue(row.lpProps, row.cValues, PR_SERVICE_DLL_NAME_W);
  const SPropValue* entry = FindValue(row.lpProps, row.cValues, PR_SERVICE_ENTRY_NAME);
  if (uid == nullptr || library == nullptr || entry == nullptr) return MAPI_E_CALL_FAILED;
  if (uid->Value.bin.cb < sizeof service.uid) return MAPI_E_CALL_FAILED;
  std::memcpy(&service.uid, uid->Value.bin.lpb, sizeof service.uid);
  service.library = library->Value.lpszW;
  service.entryName = entry->Value.lpszA;
  return S_OK;
}

HRESULT LoadProviderLibrary(const ServiceRow& service, Module& library, LPABPROVIDEROPEN& open) {
  if (!IsBareFileName(service.library)) return MAPI_E_NOT_FOUND;
  library = Module::Load(PathBeside(process::Instance(), service.library));
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

HRESULT LoadProvider(const Logon& logon, const SRow& row) {
  ServiceRow service{};
  if (const HRESULT hr = ParseRow(row, service); FAILED(hr)) return hr;
  Module library;
  LPABPROVIDEROPEN open = nullptr;
  if (const HRESULT hr = LoadProviderLibrary(service, library, open); FAILED(hr)) return hr;
  const auto record = std::make_shared<ProviderRecord>(std::move(library), service.uid);
  if (const HRESULT hr = LogProviderOn(logon, open, *record); FAILED(hr)) return hr;
  logon.list->Add(record);
  return S_OK;
}

HRESULT LoadEveryProvider(const Logon& logon) {
  ComPtr<IMAPITable> table;
  if (const HRESULT hr = logon.admin->GetMsgServiceTable(MAPI_UNICODE, table.Put()); FAILED(hr)) return hr;
  auto columns = kServiceColumns;
  if (const HRESULT hr = table->SetColumns(reinterpret_cast<SPropTagArray*>(&columns), 0); FAILED(hr))
    return hr;
  for (;;) {
    RowSetPtr rows;
    if (const HRESULT hr = table->QueryRows(1, 0, rows.Put()); FAILED(hr)) return hr;
    if (rows->cRows == 0) return S_OK;
    if (const HRESULT hr = LoadProvider(logon, rows->aRow[0]); FAILED(hr)) return hr;
  }
}

}  // namespace

HRESULT LoadProviders(IABServiceAdmin* admin, CABServiceList* list, ULONG_PTR uiParam, ULONG flags) {
  if (admin == nullptr || list == nullptr) return MAPI_E_INVALID_PARAMETER;
  const HRESULT hr = LoadEveryProvider({admin, list, uiParam, flags});
  if (FAILED(hr)) list->UnloadAll();
  return hr;
}

}  // namespace orv
