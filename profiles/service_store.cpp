// Row operations that also write, under the profile's lock and with a record of what was there.
#include "profiles/service_store.h"

#include <cstring>
#include <utility>

#include "orv/orvtags.h"
#include "profiles/catalogue.h"
#include "profiles/profile_change.h"
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

HRESULT SetAll(PropList& row, std::span<const SPropValue> values) {
  for (const SPropValue& value : values) {
    if (const HRESULT hr = row.Set(value); FAILED(hr)) return hr;
  }
  return S_OK;
}

HRESULT CopyWith(const PropList& row, std::span<const SPropValue> values, PropList& copy) {
  for (const PropNode& node : row) {
    if (const HRESULT hr = copy.SetRecord(node.record); FAILED(hr)) return hr;
  }
  return SetAll(copy, values);
}

// These are for whoever holds the profile. A profile or a row that is gone is not made again.
HRESULT LoadRow(const WString& profile, const WString& keyName, PropList& row) {
  RegKey key;
  const HRESULT hr = registry_store::OpenExistingProfileKey(profile, KEY_READ, key);
  return FAILED(hr) ? hr : registry_store::LoadServiceRow(row, key, keyName);
}

// One change of one row, with a record of what was there; `change` does it.
template <class Change>
HRESULT ChangeRow(const WString& profile, const WString& keyName, ServiceJournal* journal, Change change) {
  HRESULT hr = journal != nullptr ? journal->NoteBefore(profile, keyName) : S_OK;
  ProfileChange whole;
  if (SUCCEEDED(hr)) hr = whole.Begin({profile}, {ServiceOf(profile, keyName)});
  if (SUCCEEDED(hr)) hr = change();
  if (SUCCEEDED(hr) && journal != nullptr) hr = journal->NoteAfter(profile, keyName);
  return FAILED(hr) ? hr : whole.Keep();
}

HRESULT SaveRow(const WString& profile, const WString& keyName, PropList& row, ServiceJournal* journal) {
  RegKey key;
  const HRESULT hr = registry_store::OpenExistingProfileKey(profile, KEY_ALL_ACCESS, key);
  if (FAILED(hr)) return hr;
  return ChangeRow(profile, keyName, journal, [&] { return registry_store::SaveServiceRow(row, key); });
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
  ProfileLock lock;
  const HRESULT hr = EnterProfile(profile, lock);
  return FAILED(hr) ? hr : LoadAllHeld(profile);
}

HRESULT ServiceStore::LoadAllHeld(const WString& profile) {
  RegKey key;
  const HRESULT hr = registry_store::OpenProfileKey(profile, OpenMode::kRead, key);
  return FAILED(hr) ? hr : registry_store::LoadServiceRows(rows_, keyNames_, key);
}

HRESULT ServiceStore::SaveAllHeld(const WString& profile) {
  return registry_store::SaveServiceRows(rows_, profile);
}

HRESULT ServiceStore::Add(const SRow& row) {
  const HRESULT hr = rows_.Add(row, rows_.Count());
  if (SUCCEEDED(hr)) keyNames_.emplace_back();
  return hr;
}

HRESULT ServiceStore::LoadAndAddFront(const SRow& row, const SPropValue* single, const WString& profile,
                                      ServiceJournal* journal) {
  ProfileLock lock;
  HRESULT hr = EnterProfile(profile, lock);
  if (FAILED(hr)) return hr;
  hr = LoadAllHeld(profile);
  // Asked before the read's failure counts: a copy among the rows that could be read is reported as such.
  if (single != nullptr && rows_.Find(*single) != nullptr) return MAPI_E_COLLISION;
  if (SUCCEEDED(hr)) hr = rows_.Add(row, 0);
  WString keyName;
  if (SUCCEEDED(hr)) hr = registry_store::ServiceKeyName(rows_[0], keyName);
  if (FAILED(hr)) return hr;
  // Whatever can fail comes before the row is stored.
  keyNames_.insert(keyNames_.begin(), keyName);
  return SaveRow(profile, keyName, rows_[0], journal);
}

HRESULT ServiceStore::LoadAndDelete(const MAPIUID& uid, const WString& profile, ServiceJournal* journal) {
  ProfileLock lock;
  HRESULT hr = EnterProfile(profile, lock);
  if (SUCCEEDED(hr)) hr = LoadAllHeld(profile);
  if (FAILED(hr)) return hr;
  const SPropValue key = UidKey(uid);
  hr = MAPI_E_NOT_FOUND;
  for (ULONG i = 0; i < rows_.Count(); ++i) {
    hr = rows_[i].FindAndCompare(key);
    if (FAILED(hr)) continue;
    hr = ChangeRow(profile, keyNames_[i], journal,
                   [&] { return registry_store::DeleteService(profile, keyNames_[i]); });
    if (FAILED(hr)) return hr;
    keyNames_.erase(keyNames_.begin() + static_cast<std::ptrdiff_t>(i));
    return rows_.RemoveAt(i + 1);
  }
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
                                    const WString& profile, ServiceJournal* journal) {
  if (values.empty()) return MAPI_E_NOT_FOUND;
  ProfileLock lock;
  HRESULT hr = EnterProfile(profile, lock);
  PropList row;
  const WString keyName = registry_store::ServiceKeyName(uid);
  if (SUCCEEDED(hr)) hr = LoadRow(profile, keyName, row);
  if (SUCCEEDED(hr)) hr = SetAll(row, values);
  if (FAILED(hr)) return hr;
  // The loaded copy goes along where it has the row. Made beforehand, so that nothing can fail once the row is stored.
  PropList* loaded = rows_.Find(UidKey(uid));
  PropList renewed;
  if (loaded != nullptr) hr = CopyWith(*loaded, values, renewed);
  if (SUCCEEDED(hr)) hr = SaveRow(profile, keyName, row, journal);
  if (SUCCEEDED(hr) && loaded != nullptr) *loaded = std::move(renewed);
  return hr;
}

HRESULT ServiceStore::DetachTable(IMAPITable** out) {
  CBaseTable table;
  table.Rows() = std::exchange(rows_, RowList());
  keyNames_.clear();
  const HRESULT hr = table.SetColumns(*catalogue::Columns());
  return FAILED(hr) ? hr : CreateTable(std::move(table), out);
}

}  // namespace orv
