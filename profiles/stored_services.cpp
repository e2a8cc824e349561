// Each row is read on its own, under the profile's lock.
#include "profiles/stored_services.h"

#include <algorithm>
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

constexpr TagArray kColumns{
    PR_INSTANCE_KEY,       PR_SERVICE_NAME_W,     PR_PROVIDER_DISPLAY_W,      PR_DISPLAY_NAME_W,
    PR_SERVICE_DLL_NAME_W, PR_SERVICE_ENTRY_NAME, PR_SERVICE_SUPPORT_FILES_W, PR_SERVICE_DELETE_FILES_W,
    PR_SERVICE_UID,        PR_RESOURCE_FLAGS,     PR_ORV_SERVICE_KEY_W,       PR_ORV_SERVICE_STATUS};

// A profile that is held: its key, and the keys below it, whatever their names are like, since one that is too long for a
// service must be seen too, to be deleted.
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
  if (const HRESULT hr = Hold(profile, held); FAILED(hr)) return hr;
  // Only a name that was listed: one with a backslash would lead elsewhere.
  if (std::find(held.names.begin(), held.names.end(), keyName) == held.names.end()) return MAPI_E_NOT_FOUND;
  ProfileChange whole;
  if (const HRESULT hr = whole.Begin({profile}, {ServiceOf(profile, keyName)}); FAILED(hr)) return hr;
  if (registry_snapshot::DeleteTree(held.key.Get(), keyName) != ERROR_SUCCESS) return MAPI_E_CALL_FAILED;
  return whole.Keep();
}

}  // namespace orv::stored_services
