// Row operations that also write; the profile's key is open for the one operation only.
#include "profiles/service_store.h"

#include <cstring>
#include <utility>

#include "orv/orvtags.h"
#include "profiles/catalogue.h"
#include "props/base_table.h"

namespace orv {
namespace {

using registry_store::OpenMode;

SPropValue UidKey(const MAPIUID& uid) {
  SPropValue key{};
  key.ulPropTag = PR_SERVICE_UID;
  key.Value.bin = {sizeof uid.ab, const_cast<BYTE*>(uid.ab)};
  return key;
}

}  // namespace

HRESULT NewServiceUid(MAPIUID& uid) {
  GUID guid{};
  if (FAILED(CoCreateGuid(&guid))) return MAPI_E_CALL_FAILED;
  static_assert(sizeof guid == sizeof uid);
  std::memcpy(&uid, &guid, sizeof uid);
  return S_OK;
}

HRESULT ServiceStore::LoadAll(const WString& profile) {
  RegKey key;
  const HRESULT hr = registry_store::OpenProfileKey(profile, OpenMode::kRead, key);
  return FAILED(hr) ? hr : registry_store::LoadServiceRows(rows_, key);
}

HRESULT ServiceStore::SaveAll(const WString& profile) {
  return registry_store::SaveServiceRows(rows_, profile);
}

HRESULT ServiceStore::AddFrontAndSave(const SRow& row, const WString& profile) {
  RegKey key;
  HRESULT hr = registry_store::OpenProfileKey(profile, OpenMode::kCreate, key);
  if (SUCCEEDED(hr)) hr = rows_.Add(row, 0);
  if (FAILED(hr)) return hr;
  hr = registry_store::SaveServiceRow(rows_[0], key);
  if (FAILED(hr)) rows_.RemoveAt(1);
  return hr;
}

HRESULT ServiceStore::GetRow(const MAPIUID& uid, PropValues& values) const {
  SRow row{};
  const HRESULT hr = rows_.GetRow(UidKey(uid), row);
  if (SUCCEEDED(hr)) {
    values.count = row.cValues;
    values.values.Reset(row.lpProps);
  }
  return hr;
}

HRESULT ServiceStore::ModifyAndSave(const MAPIUID& uid, std::span<const SPropValue> values,
                                    const WString& profile) {
  RegKey key;
  PropList* row = nullptr;
  HRESULT hr = registry_store::OpenProfileKey(profile, OpenMode::kCreate, key);
  if (SUCCEEDED(hr)) hr = rows_.Modify(UidKey(uid), values, &row);
  if (SUCCEEDED(hr)) hr = registry_store::SaveServiceRow(*row, key);
  return hr;
}

HRESULT ServiceStore::Delete(const MAPIUID& uid) { return rows_.Delete(UidKey(uid)); }

HRESULT ServiceStore::DetachTable(IMAPITable** out) {
  CBaseTable table;
  table.Rows() = std::exchange(rows_, RowList());
  const HRESULT hr = table.SetColumns(*catalogue::Columns());
  return FAILED(hr) ? hr : CreateTable(std::move(table), out);
}

}  // namespace orv
