// Each row is read on its own, under the profile's lock.
#include "profiles/stored_services.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "orv/orvcodes.h"
#include "orv/orvtags.h"
#include "profiles/catalogue.h"
#include "profiles/profile_change.h"
#include "profiles/registry_store.h"
#include "props/base_table.h"
#include "props/tag_array.h"

namespace orv::stored_services {
namespace {

// Beside the profiles, so that no reader of profiles meets it.
constexpr const WCHAR* kDamagedKey = L"\\Orv Damaged\\";

constexpr TagArray kColumns{
    PR_INSTANCE_KEY,       PR_SERVICE_NAME_W,     PR_PROVIDER_DISPLAY_W,      PR_DISPLAY_NAME_W,
    PR_SERVICE_DLL_NAME_W, PR_SERVICE_ENTRY_NAME, PR_SERVICE_SUPPORT_FILES_W, PR_SERVICE_DELETE_FILES_W,
    PR_SERVICE_UID,        PR_RESOURCE_FLAGS,     PR_ORV_SERVICE_KEY_W,       PR_ORV_SERVICE_STATUS};

// A profile that is held: its key, and the keys below it, whatever their names are like, since one that is too long for
// a service must be seen too, to be deleted.
struct HeldProfile {
  ProfileLock lock;
  RegKey key;
  std::vector<WString> names;
};

HRESULT Hold(const WString& profile, HeldProfile& held) {
  if (const HRESULT hr = EnterProfile(profile, held.lock); FAILED(hr)) return hr;
  const HRESULT hr = registry_store::OpenExistingProfileKey(profile, KEY_READ, held.key);
  if (FAILED(hr)) return hr;
  return held.key.Subkeys(held.names) == ERROR_SUCCESS ? S_OK : MAPI_E_CALL_FAILED;
}

// What a row says of itself: read without a failure, and lying where its UID says.
HRESULT LoadRow(const RegKey& profile, const WString& keyName, PropList& row) {
  HRESULT hr = registry_store::LoadServiceRow(row, profile, keyName);
  WString named;
  if (SUCCEEDED(hr)) hr = registry_store::ServiceKeyName(row, named);
  if (FAILED(hr)) return hr;
  const bool isUid = row.Find(PR_SERVICE_UID)->record.dataLength == sizeof(MAPIUID);
  const bool inPlace = CompareStringOrdinal(named.c_str(), -1, keyName.c_str(), -1, TRUE) == CSTR_EQUAL;
  return isUid && inPlace ? S_OK : MAPI_E_CORRUPT_DATA;
}

HRESULT AddRow(const RegKey& profile, const WString& keyName, RowList& rows) {
  PropList row;
  const HRESULT status = LoadRow(profile, keyName, row);
  SPropValue values[2]{};
  values[0].ulPropTag = PR_ORV_SERVICE_KEY_W;
  values[0].Value.lpszW = const_cast<LPWSTR>(keyName.c_str());
  values[1].ulPropTag = PR_ORV_SERVICE_STATUS;
  values[1].Value.l = status;
  for (const SPropValue& value : values) {
    if (const HRESULT hr = row.Set(value); FAILED(hr)) return hr;
  }
  rows.Insert(std::move(row), rows.Count());
  return S_OK;
}

// Holds the profile, which must have a row in the key of that name.
HRESULT HoldWith(const WString& profile, const WString& keyName, HeldProfile& held) {
  if (const HRESULT hr = Hold(profile, held); FAILED(hr)) return hr;
  // Only a name that was listed: one with a backslash would lead elsewhere.
  return std::find(held.names.begin(), held.names.end(), keyName) == held.names.end() ? MAPI_E_NOT_FOUND
                                                                                      : S_OK;
}

HRESULT TakeOut(const WString& profile, const WString& keyName, const RegKey& key) {
  ProfileChange whole;
  if (const HRESULT hr = whole.Begin({profile}, {ServiceOf(profile, keyName)}); FAILED(hr)) return hr;
  if (registry_snapshot::DeleteTree(key.Get(), keyName) != ERROR_SUCCESS) return MAPI_E_CALL_FAILED;
  return whole.Keep();
}

// Where other programs keep something of theirs among the profiles.
bool IsForeign(const WString& profile) {
  return CompareStringOrdinal(profile.c_str(), -1, L"WAB", -1, TRUE) == CSTR_EQUAL;
}

WString Today() {
  SYSTEMTIME now{};
  GetLocalTime(&now);
  const auto twoDigits = [](WORD number) { return std::to_wstring(100 + number).substr(1); };
  return std::to_wstring(now.wYear) + L"-" + twoDigits(now.wMonth) + L"-" + twoDigits(now.wDay);
}

bool IsThere(const WString& path) {
  RegKey key;
  return key.Open(HKEY_CURRENT_USER, path, KEY_READ) != ERROR_FILE_NOT_FOUND;
}

// Complete before anything is deleted; one that is there from a former time stays.
HRESULT CopyAside(const WString& profile, const WString& keyName) {
  const auto base = registry_store::BasePath();
  const auto profiles = registry_store::ProfilesPath();
  if (!base || !profiles) return MAPI_E_CALL_FAILED;
  const WString wanted = *base + kDamagedKey + Today() + L"\\" + profile + L"\\" + keyName;
  WString target = wanted;
  for (int number = 2; IsThere(target); ++number) target = wanted + L" (" + std::to_wstring(number) + L")";
  const WString source = *profiles + L"\\" + profile + L"\\" + keyName;
  const LSTATUS status = registry_snapshot::CopyTree(HKEY_CURRENT_USER, source, target);
  return status == ERROR_SUCCESS ? S_OK : MAPI_E_CALL_FAILED;
}

// A user without profiles has none of the keys either.
HRESULT ListProfileKeys(std::vector<WString>& names) {
  const auto path = registry_store::ProfilesPath();
  if (!path) return MAPI_E_CALL_FAILED;
  RegKey profiles;
  const LSTATUS status = profiles.Open(HKEY_CURRENT_USER, *path, KEY_READ);
  if (status == ERROR_FILE_NOT_FOUND) return S_OK;
  return status == ERROR_SUCCESS && profiles.Subkeys(names) == ERROR_SUCCESS ? S_OK : MAPI_E_CALL_FAILED;
}

}  // namespace

HRESULT MakeTable(const WString& profile, IMAPITable** out) {
  HeldProfile held;
  HRESULT hr = Hold(profile, held);
  CBaseTable table;
  for (const WString& name : held.names) {
    if (SUCCEEDED(hr)) hr = AddRow(held.key, name, table.Rows());
  }
  if (SUCCEEDED(hr)) hr = table.SetColumns(*kColumns.Get());
  return FAILED(hr) ? hr : CreateTable(std::move(table), out);
}

HRESULT Delete(const WString& profile, const WString& keyName) {
  HeldProfile held;
  const HRESULT hr = HoldWith(profile, keyName, held);
  return FAILED(hr) ? hr : TakeOut(profile, keyName, held.key);
}

HRESULT SetAside(const WString& profile, const WString& keyName) {
  if (IsForeign(profile)) return MAPI_E_NO_ACCESS;
  HeldProfile held;
  if (const HRESULT hr = HoldWith(profile, keyName, held); FAILED(hr)) return hr;
  PropList row;
  const HRESULT status = LoadRow(held.key, keyName, row);
  if (status == MAPI_E_NOT_ENOUGH_MEMORY) return status;
  if (SUCCEEDED(status)) return MAPI_E_NO_ACCESS;
  const HRESULT copied = CopyAside(profile, keyName);
  return FAILED(copied) ? copied : TakeOut(profile, keyName, held.key);
}

HRESULT MakeProfileTable(IMAPITable** out) {
  ProfileLock lock;
  if (const HRESULT hr = EnterProfileList(lock); FAILED(hr)) return hr;
  std::vector<WString> names;
  if (const HRESULT hr = ListProfileKeys(names); FAILED(hr)) return hr;
  CBaseTable table;
  for (const WString& name : names) {
    if (IsForeign(name)) continue;
    SPropValue values[2]{};
    values[0].ulPropTag = PR_DISPLAY_NAME_W;
    values[0].Value.lpszW = const_cast<LPWSTR>(name.c_str());
    values[1].ulPropTag = PR_ORV_PROFILE_STATUS;
    values[1].Value.l = name.size() > registry_store::kMaxProfileName ? MAPI_E_STRING_TOO_LONG : S_OK;
    const HRESULT hr = table.Rows().Add({0, 2, values}, table.Rows().Count());
    if (FAILED(hr)) return hr;
  }
  return CreateTable(std::move(table), out);
}

}  // namespace orv::stored_services
