// Profile administration over the registry store and the catalogue.
#include "profiles/prof_admin.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <utility>
#include <vector>

#include "orv/orvtags.h"
#include "platform/boundary.h"
#include "platform/com_object.h"
#include "platform/com_ptr.h"
#include "platform/pointer_check.h"
#include "profiles/catalogue.h"
#include "profiles/profile_store.h"
#include "profiles/registry_store.h"
#include "profiles/service_admin.h"
#include "profiles/service_store.h"
#include "profiles/stored_services.h"
#include "props/base_table.h"
#include "props/table_reader.h"

namespace orv {
namespace {

bool EqualIgnoringCase(const WCHAR* a, const WCHAR* b) {
  return CompareStringOrdinal(a, -1, b, -1, TRUE) == CSTR_EQUAL;
}

HRESULT MakeProfileTable(const profile_store::ProfileNames& profiles, IMAPITable** out) {
  CBaseTable table;
  for (const WString& name : profiles.names) {
    std::array<SPropValue, 2> values{};
    values[0].ulPropTag = PR_DISPLAY_NAME_W;
    values[0].Value.lpszW = const_cast<LPWSTR>(name.c_str());
    values[1].ulPropTag = PR_DEFAULT_PROFILE;
    const bool isDefault =
        !profiles.defaultName.empty() && EqualIgnoringCase(name.c_str(), profiles.defaultName.c_str());
    values[1].Value.b = isDefault ? 1 : 0;
    const SRow row{0, static_cast<ULONG>(values.size()), values.data()};
    if (const HRESULT hr = table.Rows().Add(row, table.Rows().Count()); FAILED(hr)) return hr;
  }
  return CreateTable(std::move(table), out);
}

// The profiles as they were last read.
struct Listing {
  ComPtr<IMAPITable> table;    // given to callers too
  std::vector<WString> names;  // of its rows
};

HRESULT ReadListing(Listing& listing) {
  profile_store::ProfileNames found;
  HRESULT hr = profile_store::List(found);
  if (SUCCEEDED(hr)) hr = MakeProfileTable(found, listing.table.Put());
  if (SUCCEEDED(hr)) listing.names = std::move(found.names);
  return hr;
}

// A profile of the name is the default one as far as the rows from the table's position on tell. The table is the one
// that callers were given, and the position is where they left it: one who has read it to its end makes a rename
// forget that the profile was the default.
bool IsDefaultFromHere(ComPtr<IMAPITable> table, const WCHAR* name) {
  TableReader reader;
  if (FAILED(reader.OpenAsItStands(std::move(table)))) return false;
  while (reader.Next() == S_OK) {
    const WCHAR* found = TextOf(reader.Row().Find(PR_DISPLAY_NAME_W));
    if (found == nullptr || !EqualIgnoringCase(found, name)) continue;
    const SPropValue* isDefault = reader.Row().Find(PR_DEFAULT_PROFILE);
    return isDefault != nullptr && isDefault->Value.b != 0;
  }
  return false;
}

// What every method tests first. A null name passes: what it means is the method's own.
HRESULT CheckArguments(ULONG flags, std::initializer_list<const WCHAR*> names) {
  if (!(flags & MAPI_UNICODE)) return MAPI_E_BAD_CHARWIDTH;
  const auto isUsable = [](const WCHAR* name) { return name == nullptr || IsReadableText(name); };
  return std::all_of(names.begin(), names.end(), isUsable) ? S_OK : MAPI_E_INVALID_PARAMETER;
}

HRESULT CheckSpelling(const WCHAR* name) {
  if (name == nullptr) return MAPI_E_INVALID_PARAMETER;
  const WStringView text(name);
  if (text.empty() || text.find(L'\\') != WStringView::npos) return MAPI_E_INVALID_PARAMETER;
  return text.size() > registry_store::kMaxProfileName ? MAPI_E_STRING_TOO_LONG : S_OK;
}

HRESULT AddDefaultServices(ServiceStore& store) {
  RowSetPtr rows;
  HRESULT hr = catalogue::Load({}, catalogue::kDefaultServices, rows);
  for (ULONG i = 0; SUCCEEDED(hr) && i < rows->cRows; ++i) {
    MAPIUID uid{};
    hr = NewServiceUid(uid);
    SPropValue& column = rows->aRow[i].lpProps[catalogue::kServiceUid];
    column.Value.bin = {sizeof uid.ab, uid.ab};
    if (SUCCEEDED(hr)) hr = store.Add(rows->aRow[i]);
    column.Value.bin = {};
  }
  return hr;
}

class COrvProfAdmin final : public ComObject<IOrvProfAdmin3> {
 public:
  explicit COrvProfAdmin(ServicesDialog dialog) : dialog_(std::move(dialog)) {}

  HRESULT STDMETHODCALLTYPE GetLastError(HRESULT, ULONG, LPMAPIERROR*) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE GetProfileTable(ULONG flags, LPMAPITABLE* table) override;
  HRESULT STDMETHODCALLTYPE CreateProfile(LPCWSTR name, ULONG_PTR uiParam, ULONG flags) override;
  HRESULT STDMETHODCALLTYPE DeleteProfile(LPCWSTR name, ULONG flags) override;
  HRESULT STDMETHODCALLTYPE ConfigureProfile(LPCWSTR name, ULONG_PTR uiParam, ULONG flags) override;
  HRESULT STDMETHODCALLTYPE CopyProfile(LPCWSTR oldName, LPCWSTR newName, ULONG flags) override;
  HRESULT STDMETHODCALLTYPE RenameProfile(LPCWSTR oldName, LPCWSTR newName, ULONG flags) override;
  HRESULT STDMETHODCALLTYPE SetDefaultProfile(LPCWSTR name, ULONG flags) override;
  HRESULT STDMETHODCALLTYPE AdminServices(LPCWSTR name, ULONG flags, LPABSERVICEADMIN* services) override;
  HRESULT STDMETHODCALLTYPE GetStoredServiceTable(LPCWSTR name, ULONG flags, LPMAPITABLE* table) override;
  HRESULT STDMETHODCALLTYPE DeleteStoredService(LPCWSTR name, LPCWSTR keyName, ULONG flags) override;
  HRESULT STDMETHODCALLTYPE GetStoredProfileTable(ULONG flags, LPMAPITABLE* table) override;
  HRESULT STDMETHODCALLTYPE SetAsideStoredService(LPCWSTR name, LPCWSTR keyName, ULONG flags) override;

 private:
  bool Supports(REFIID iid) const override {
    return IsOneOf(iid, IID_IUnknown, IID_IOrvProfAdmin, IID_IOrvProfAdmin2, IID_IOrvProfAdmin3);
  }

  HRESULT EnsureListed();
  HRESULT Relist();
  ComPtr<IMAPITable> CurrentTable();
  template <class Change>
  HRESULT ChangeAndRelist(Change change);
  HRESULT Exists(const WCHAR* name);
  HRESULT CheckNewName(const WCHAR* name);
  HRESULT WriteNewProfile(const WCHAR* name, ULONG flags);
  HRESULT Edit(ULONG_PTR uiParam, IABServiceAdmin* services) const;
  template <class Undo>
  HRESULT Settle(HRESULT edited, Undo undo);

  const ServicesDialog dialog_;
  // Under the object's lock: other threads may ask for the table and for service administrations at any time.
  Listing listing_;
};

// Read aside and then put in place as a whole: whoever holds the former table keeps it, and no thread sees half of the
// new one. A failure leaves none, so that the next who needs one reads again.
HRESULT COrvProfAdmin::Relist() {
  Listing listing;
  const HRESULT hr = Guarded([&] { return ReadListing(listing); });
  if (FAILED(hr)) listing = {};
  LockGuard guard(ObjectLock());
  std::swap(listing_, listing);
  return hr;
}

HRESULT COrvProfAdmin::EnsureListed() {
  LockGuard guard(ObjectLock());
  return listing_.table ? S_OK : Relist();
}

ComPtr<IMAPITable> COrvProfAdmin::CurrentTable() {
  LockGuard guard(ObjectLock());
  return listing_.table;
}

// Lists anew also after a change that failed half way: what the registry holds by then must be what is listed.
template <class Change>
HRESULT COrvProfAdmin::ChangeAndRelist(Change change) {
  const HRESULT hr = Guarded(change);
  const HRESULT listed = Relist();
  return FAILED(hr) ? hr : listed;
}

HRESULT COrvProfAdmin::Exists(const WCHAR* name) {
  LockGuard guard(ObjectLock());
  if (const HRESULT hr = EnsureListed(); FAILED(hr)) return hr;
  if (name == nullptr) return MAPI_E_INVALID_PARAMETER;
  const auto& names = listing_.names;
  return std::find(names.begin(), names.end(), WStringView(name)) == names.end() ? MAPI_E_NOT_FOUND : S_OK;
}

HRESULT COrvProfAdmin::CheckNewName(const WCHAR* name) {
  if (const HRESULT hr = CheckSpelling(name); FAILED(hr)) return hr;
  const HRESULT exists = Exists(name);
  if (SUCCEEDED(exists)) return MAPI_E_NO_ACCESS;
  if (exists != MAPI_E_NOT_FOUND) return exists;
  return S_OK;
}

HRESULT COrvProfAdmin::GetProfileTable(ULONG flags, LPMAPITABLE* table) {
  if (table == nullptr) return MAPI_E_INVALID_PARAMETER;
  *table = nullptr;
  if (!(flags & MAPI_UNICODE)) return MAPI_E_BAD_CHARWIDTH;
  return Guarded([&]() -> HRESULT {
    LockGuard guard(ObjectLock());
    if (const HRESULT hr = EnsureListed(); FAILED(hr)) return hr;
    *table = ComPtr<IMAPITable>(listing_.table).Detach();
    return S_OK;
  });
}

HRESULT COrvProfAdmin::WriteNewProfile(const WCHAR* name, ULONG flags) {
  if (const HRESULT hr = CheckNewName(name); FAILED(hr)) return hr;
  ServiceStore store;
  const HRESULT hr = flags & MAPI_DEFAULT_SERVICES ? AddDefaultServices(store) : S_OK;
  return FAILED(hr) ? hr : ChangeAndRelist([&] { return profile_store::Create(name, store); });
}

// S_OK when the user confirmed. A dialog that cannot be shown counts as cancelled.
HRESULT COrvProfAdmin::Edit(ULONG_PTR uiParam, IABServiceAdmin* services) const {
  return GuardedForeign([&]() -> HRESULT {
    const bool confirmed = dialog_ && dialog_(reinterpret_cast<HWND>(uiParam), services) == IDOK;
    return confirmed ? S_OK : MAPI_E_USER_CANCEL;
  });
}

// Undoes whatever was not confirmed, a dialog that threw or ran out of memory included. The user is told how the
// editing ended, not how the undoing went.
template <class Undo>
HRESULT COrvProfAdmin::Settle(HRESULT edited, Undo undo) {
  if (SUCCEEDED(edited)) return Relist();
  ChangeAndRelist(undo);
  return edited;
}

HRESULT COrvProfAdmin::CreateProfile(LPCWSTR name, ULONG_PTR uiParam, ULONG flags) {
  if (const HRESULT hr = CheckArguments(flags, {name}); FAILED(hr)) return hr;
  const HRESULT written = Guarded([&] { return WriteNewProfile(name, flags); });
  if (FAILED(written) || !(flags & MAPI_DIALOG)) return written;

  ComPtr<IABServiceAdmin> services;
  HRESULT edited = AdminServices(name, MAPI_UNICODE, services.Put());
  if (SUCCEEDED(edited)) edited = Edit(uiParam, services.Get());
  return Settle(edited, [&] { return profile_store::Delete(name); });
}

HRESULT COrvProfAdmin::DeleteProfile(LPCWSTR name, ULONG flags) {
  if (const HRESULT hr = CheckArguments(flags, {name}); FAILED(hr)) return hr;
  return Guarded([&]() -> HRESULT {
    if (FAILED(Exists(name))) return MAPI_E_NOT_FOUND;
    const HRESULT hr = profile_store::Delete(name);
    return FAILED(hr) ? hr : Relist();
  });
}

HRESULT COrvProfAdmin::ConfigureProfile(LPCWSTR name, ULONG_PTR uiParam, ULONG flags) {
  if (const HRESULT hr = CheckArguments(flags, {name}); FAILED(hr)) return hr;
  ComPtr<CABServiceAdmin> services;
  const HRESULT hr = Guarded([&]() -> HRESULT {
    const HRESULT exists = Exists(name);
    return FAILED(exists) ? exists : CreateUndoableServiceAdmin(name, services);
  });
  if (FAILED(hr)) return hr;
  return Settle(Edit(uiParam, services.Get()), [&] { return services->TakeBack(); });
}

HRESULT COrvProfAdmin::CopyProfile(LPCWSTR oldName, LPCWSTR newName, ULONG flags) {
  if (const HRESULT hr = CheckArguments(flags, {oldName, newName}); FAILED(hr)) return hr;
  return Guarded([&]() -> HRESULT {
    if (const HRESULT hr = CheckNewName(newName); FAILED(hr)) return hr;
    if (oldName == nullptr) return MAPI_E_INVALID_PARAMETER;
    return ChangeAndRelist([&] { return profile_store::Copy(oldName, newName); });
  });
}

HRESULT COrvProfAdmin::RenameProfile(LPCWSTR oldName, LPCWSTR newName, ULONG flags) {
  if (const HRESULT hr = CheckArguments(flags, {oldName, newName}); FAILED(hr)) return hr;
  return Guarded([&]() -> HRESULT {
    if (const HRESULT hr = CheckNewName(newName); FAILED(hr)) return hr;
    if (oldName == nullptr) return MAPI_E_INVALID_PARAMETER;
    const auto wasDefault = [table = CurrentTable(), oldName] { return IsDefaultFromHere(table, oldName); };
    return ChangeAndRelist([&] { return profile_store::Rename(oldName, newName, wasDefault); });
  });
}

HRESULT COrvProfAdmin::SetDefaultProfile(LPCWSTR name, ULONG flags) {
  if (const HRESULT hr = CheckArguments(flags, {name}); FAILED(hr)) return hr;
  return Guarded([&]() -> HRESULT {
    HRESULT hr = name == nullptr ? EnsureListed() : Exists(name);
    if (SUCCEEDED(hr)) hr = profile_store::SetDefault(name);
    return FAILED(hr) ? hr : Relist();
  });
}

HRESULT COrvProfAdmin::AdminServices(LPCWSTR name, ULONG flags, LPABSERVICEADMIN* services) {
  if (!IsWritableOut(services)) return MAPI_E_INVALID_PARAMETER;
  if (!(flags & MAPI_UNICODE)) return MAPI_E_BAD_CHARWIDTH;
  *services = nullptr;
  if (const HRESULT hr = CheckArguments(flags, {name}); FAILED(hr)) return hr;
  return Guarded([&]() -> HRESULT {
    LockGuard guard(ObjectLock());
    const HRESULT hr = Exists(name);
    return FAILED(hr) ? hr : CreateServiceAdmin(name, services);
  });
}

// These work on what is stored alone: the list of profiles does not change.
HRESULT COrvProfAdmin::GetStoredServiceTable(LPCWSTR name, ULONG flags, LPMAPITABLE* table) {
  if (!IsWritableOut(table)) return MAPI_E_INVALID_PARAMETER;
  *table = nullptr;
  if (const HRESULT hr = CheckArguments(flags, {name}); FAILED(hr)) return hr;
  return Guarded([&] {
    const HRESULT hr = Exists(name);
    return FAILED(hr) ? hr : stored_services::MakeTable(name, table);
  });
}

HRESULT COrvProfAdmin::DeleteStoredService(LPCWSTR name, LPCWSTR keyName, ULONG flags) {
  if (const HRESULT hr = CheckArguments(flags, {name, keyName}); FAILED(hr)) return hr;
  if (keyName == nullptr) return MAPI_E_INVALID_PARAMETER;
  return Guarded([&] {
    const HRESULT hr = Exists(name);
    return FAILED(hr) ? hr : stored_services::Delete(name, keyName);
  });
}

HRESULT COrvProfAdmin::GetStoredProfileTable(ULONG flags, LPMAPITABLE* table) {
  if (!IsWritableOut(table)) return MAPI_E_INVALID_PARAMETER;
  *table = nullptr;
  if (!(flags & MAPI_UNICODE)) return MAPI_E_BAD_CHARWIDTH;
  return Guarded([&] { return stored_services::MakeProfileTable(table); });
}

HRESULT COrvProfAdmin::SetAsideStoredService(LPCWSTR name, LPCWSTR keyName, ULONG flags) {
  if (const HRESULT hr = CheckArguments(flags, {name, keyName}); FAILED(hr)) return hr;
  if (name == nullptr || keyName == nullptr) return MAPI_E_INVALID_PARAMETER;
  return Guarded([&] { return stored_services::SetAside(name, keyName); });
}

}  // namespace

HRESULT CreateProfAdmin(ServicesDialog dialog, IOrvProfAdmin** out) {
  return Guarded([&]() -> HRESULT {
    *out = new COrvProfAdmin(std::move(dialog));
    return S_OK;
  });
}

}  // namespace orv
