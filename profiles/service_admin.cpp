// Service administration over the profile's stored rows and the catalogue.
#include "profiles/service_admin.h"

#include <utility>

#include "platform/boundary.h"
#include "platform/com_ptr.h"
#include "platform/pointer_check.h"
#include "profiles/catalogue.h"
#include "profiles/prof_sect.h"

namespace orv {
namespace {

SRow* FindService(SRowSet& rows, WStringView name) {
  for (ULONG i = 0; i < rows.cRows; ++i) {
    if (name == rows.aRow[i].lpProps[catalogue::kServiceName].Value.lpszW) return &rows.aRow[i];
  }
  return nullptr;
}

// The caller's display name counts where the catalogue gives none; his flags add to the catalogue's.
void ApplyWishes(SRow& row, LPCWSTR displayName, ULONG resourceFlags) {
  SPropValue& name = row.lpProps[catalogue::kDisplayName];
  const bool unnamed = name.Value.lpszW == nullptr || *name.Value.lpszW == 0;
  if (unnamed) name.Value.lpszW = const_cast<LPWSTR>(displayName);
  row.lpProps[catalogue::kResourceFlags].Value.l |= static_cast<LONG>(resourceFlags);
}

bool IsSingleCopy(const SRow& row) {
  return (row.lpProps[catalogue::kResourceFlags].Value.l & static_cast<LONG>(SERVICE_SINGLE_COPY)) != 0;
}

}  // namespace

// How a service that is being created is to be set up.
struct CABServiceAdmin::Request {
  LPCWSTR extraConfig;
  ULONG_PTR uiParam;
  ULONG flags;
};

HRESULT CreateServiceAdmin(const WCHAR* profile, IABServiceAdmin** out) {
  if (profile == nullptr) return MAPI_E_INVALID_PARAMETER;
  return Guarded([&]() -> HRESULT {
    auto admin = ComPtr<CABServiceAdmin>::Adopt(new CABServiceAdmin(profile, nullptr));
    if (const HRESULT hr = admin->LoadStore(); FAILED(hr)) return hr;
    *out = admin.Detach();
    return S_OK;
  });
}

HRESULT CreateUndoableServiceAdmin(const WCHAR* profile, ComPtr<CABServiceAdmin>& out) {
  return Guarded([&]() -> HRESULT {
    auto admin =
        ComPtr<CABServiceAdmin>::Adopt(new CABServiceAdmin(profile, std::make_unique<ServiceJournal>()));
    if (const HRESULT hr = admin->LoadStore(); FAILED(hr)) return hr;
    out = std::move(admin);
    return S_OK;
  });
}

HRESULT CABServiceAdmin::TakeBack() {
  return Guarded([&] {
    LockGuard guard(storeLock_);
    store_.reset();
    return journal_ ? journal_->TakeBack(profile_) : S_OK;
  });
}

HRESULT CABServiceAdmin::GetLastError(HRESULT, ULONG, LPMAPIERROR*) { return S_OK; }

HRESULT CABServiceAdmin::GetMsgServiceTable(ULONG flags, LPMAPITABLE* table) {
  if (!IsWritableOut(table)) return MAPI_E_INVALID_PARAMETER;
  *table = nullptr;
  const HRESULT hr = Guarded([&]() -> HRESULT {
    if (!(flags & MAPI_UNICODE)) return MAPI_E_BAD_CHARWIDTH;
    LockGuard guard(ObjectLock());
    LockGuard storeGuard(storeLock_);
    if (const HRESULT loaded = LoadStoreLocked(); FAILED(loaded)) return loaded;
    // The table is the caller's alone: two callers never share rows or a position, and each reads afresh.
    return std::exchange(store_, nullptr)->DetachTable(table);
  });
  // One code for every cause: callers of this method tell only whether there is a table.
  return FAILED(hr) ? MAPI_E_CALL_FAILED : hr;
}

HRESULT CABServiceAdmin::CreateMsgService(LPCWSTR service, LPCWSTR displayName, LPCWSTR extraConfig,
                                          ULONG resourceFlags, ULONG_PTR uiParam, ULONG flags) {
  if (!IsReadableText(service) || !IsReadableText(displayName)) return MAPI_E_INVALID_PARAMETER;
  if (extraConfig != nullptr && !IsReadableText(extraConfig)) return MAPI_E_INVALID_PARAMETER;
  if (!(flags & MAPI_UNICODE)) return MAPI_E_BAD_CHARWIDTH;
  return GuardedForeign([&]() -> HRESULT {
    RowSetPtr rows;
    if (const HRESULT hr = catalogue::Load({}, catalogue::kServices, rows); FAILED(hr)) return hr;
    // Held while the entry function runs: a service is never seen half created.
    LockGuard guard(ObjectLock());
    SRow* row = FindService(*rows, service);
    if (row == nullptr) return MAPI_E_NOT_FOUND;
    ApplyWishes(*row, displayName, resourceFlags);
    return CreateFromRow(*row, {extraConfig, uiParam, flags});
  });
}

// One step: of two threads that change services of one object the later one's are what is listed.
template <class Load>
HRESULT CABServiceAdmin::LoadAnew(Load load) {
  auto fresh = std::make_unique<ServiceStore>();
  LockGuard guard(storeLock_);
  const HRESULT hr = load(*fresh);
  if (SUCCEEDED(hr)) store_.swap(fresh);
  return hr;
}

// At the front: who lists the services right after finds the new one in the first row.
HRESULT CABServiceAdmin::AddUnderNewUid(ServiceStore& store, const SRow& row, MAPIUID& uid) {
  if (const HRESULT hr = NewServiceUid(uid); FAILED(hr)) return hr;
  SBinary& column = row.lpProps[catalogue::kServiceUid].Value.bin;
  const SPropValue* single = IsSingleCopy(row) ? &row.lpProps[catalogue::kServiceName] : nullptr;
  column = {sizeof uid.ab, uid.ab};
  const HRESULT hr = store.LoadAndAddFront(row, single, profile_, journal_.get());
  column = {};
  return hr;
}

HRESULT CABServiceAdmin::CreateFromRow(const SRow& row, const Request& request) {
  MAPIUID uid{};
  HRESULT hr = LoadAnew([&](ServiceStore& fresh) { return AddUnderNewUid(fresh, row, uid); });
  if (FAILED(hr)) return hr;
  hr = SetUpService(uid, request);
  if (FAILED(hr)) DeleteMsgService(&uid);
  return hr;
}

HRESULT CABServiceAdmin::SetUpService(const MAPIUID& uid, const Request& request) {
  ComPtr<IProfSect> section;
  HRESULT hr = OpenProfileSection(&uid, nullptr, MAPI_MODIFY, section.Put());
  if (FAILED(hr)) return hr;
  hr = CallServiceEntry(section.Get(), {request.uiParam, request.flags, MSG_SERVICE_CREATE, 0, nullptr});
  const bool configured = request.extraConfig != nullptr && *request.extraConfig != 0;
  if (FAILED(hr) || !configured) return hr;

  // The value has no tag: the service knows by the context what it is.
  SPropValue extra{};
  extra.Value.lpszW = const_cast<LPWSTR>(request.extraConfig);
  return CallServiceEntry(section.Get(),
                          {request.uiParam, request.flags, ORV_SERVICE_EXTRA_CONFIG, 1, &extra});
}

// Takes no lock of the object, so an entry function may take services out while a creation waits for it.
HRESULT CABServiceAdmin::DeleteMsgService(const MAPIUID* uid) {
  if (!IsReadable(uid, sizeof *uid)) return MAPI_E_INVALID_PARAMETER;
  return Guarded([&] {
    return LoadAnew([&](ServiceStore& fresh) { return fresh.LoadAndDelete(*uid, profile_, journal_.get()); });
  });
}

HRESULT CABServiceAdmin::ConfigureMsgService(const MAPIUID* uid, ULONG_PTR uiParam, ULONG flags, ULONG count,
                                             LPSPropValue values, LPPROFSECT* section) {
  if (!IsReadable(uid, sizeof *uid)) return MAPI_E_INVALID_PARAMETER;
  if (!(flags & MAPI_UNICODE)) return MAPI_E_BAD_CHARWIDTH;
  if (!IsReadable(section, sizeof *section) || !IsWritableOut(section)) return MAPI_E_INVALID_PARAMETER;
  if (values != nullptr && !IsReadable(values, count * sizeof *values)) return MAPI_E_INVALID_PARAMETER;
  ReplaceStore(nullptr);

  if (flags & (SERVICE_UI_ALLOWED | SERVICE_UI_ALWAYS)) {
    return AskService(*uid, {uiParam, flags, MSG_SERVICE_CONFIGURE, count, values}, section);
  }
  if (count == 0 || values == nullptr) return MAPI_E_INVALID_PARAMETER;
  return Guarded([&] { return WriteService(*uid, {values, count}); });
}

// A section that the caller brings along is used as it is, whichever service it belongs to.
HRESULT CABServiceAdmin::AskService(const MAPIUID& uid, const ServiceEntryCall& call, LPPROFSECT* section) {
  if (*section == nullptr) {
    const HRESULT hr = OpenProfileSection(&uid, nullptr, MAPI_MODIFY, section);
    if (FAILED(hr)) return hr;
  }
  return IsReadable(*section, sizeof(void*)) ? CallServiceEntry(*section, call) : MAPI_E_INVALID_PARAMETER;
}

HRESULT CABServiceAdmin::OpenProfileSection(const MAPIUID* uid, LPCIID, ULONG, LPPROFSECT* section) {
  if (!IsReadable(uid, sizeof *uid) || !IsWritableOut(section)) return MAPI_E_INVALID_PARAMETER;
  *section = nullptr;
  return Guarded([&] { return OpenProfSect(*this, *uid, section); });
}

HRESULT CABServiceAdmin::OpenProfileKey(registry_store::OpenMode mode, RegKey& key) const {
  return registry_store::OpenProfileKey(profile_, mode, key);
}

HRESULT CABServiceAdmin::ReadService(const MAPIUID& uid, PropValues& values) {
  LockGuard guard(storeLock_);
  const HRESULT hr = LoadStoreLocked();
  return FAILED(hr) ? hr : store_->GetRow(uid, values);
}

HRESULT CABServiceAdmin::WriteService(const MAPIUID& uid, std::span<const SPropValue> values) {
  LockGuard guard(storeLock_);
  const HRESULT hr = LoadStoreLocked();
  return FAILED(hr) ? hr : store_->ModifyAndSave(uid, values, profile_, journal_.get());
}

HRESULT CABServiceAdmin::LoadStore() {
  LockGuard guard(storeLock_);
  return LoadStoreLocked();
}

HRESULT CABServiceAdmin::LoadStoreLocked() {
  if (store_) return S_OK;
  auto loaded = std::make_unique<ServiceStore>();
  const HRESULT hr = loaded->LoadAll(profile_);
  if (SUCCEEDED(hr)) store_ = std::move(loaded);
  return hr;
}

void CABServiceAdmin::ReplaceStore(std::unique_ptr<ServiceStore> store) noexcept {
  LockGuard guard(storeLock_);
  store_.swap(store);
}

}  // namespace orv
