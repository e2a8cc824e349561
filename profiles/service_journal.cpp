#include "profiles/service_journal.h"

#include "orv/orvcodes.h"
#include "profiles/profile_change.h"
#include "profiles/registry_store.h"

namespace orv {
namespace {

using registry_store::OpenMode;
using Values = std::map<WString, RegValueData>;

HRESULT ToResult(LSTATUS status) { return status == ERROR_SUCCESS ? S_OK : MAPI_E_CALL_FAILED; }

// Null when there is none of the name.
const RegValueData* Find(const Values& values, const WString& name) {
  const auto found = values.find(name);
  return found == values.end() ? nullptr : &found->second;
}

bool AreEqual(const RegValueData* a, const RegValueData* b) {
  if (a == nullptr || b == nullptr) return a == b;
  return a->type == b->type && a->data == b->data;
}

LSTATUS Put(RegKey& key, const WString& name, const RegValueData* value) {
  return value == nullptr ? key.DeleteValue(name.c_str()) : key.Set(*value);
}

// Every value that is what `after` says becomes what `before` says.
LSTATUS PutBack(RegKey& key, const Values& now, const Values& before, const Values& after) {
  Values names = before;
  names.insert(after.begin(), after.end());
  LSTATUS status = ERROR_SUCCESS;
  for (const auto& [name, ignored] : names) {
    const RegValueData* was = Find(before, name);
    const RegValueData* is = Find(now, name);
    const bool ours = AreEqual(is, Find(after, name)) && !AreEqual(is, was);
    if (ours && status == ERROR_SUCCESS) status = Put(key, name, was);
  }
  return status;
}

}  // namespace

HRESULT ServiceJournal::Read(const WString& profile, const WString& keyName, Row& row) {
  row.reset();
  RegKey profileKey;
  if (const HRESULT hr = registry_store::OpenProfileKey(profile, OpenMode::kRead, profileKey); FAILED(hr))
    return hr;
  RegKey key;
  LSTATUS status = key.Open(profileKey.Get(), keyName, KEY_READ);
  if (status == ERROR_FILE_NOT_FOUND) return S_OK;
  std::vector<RegValueData> values;
  if (status == ERROR_SUCCESS) status = key.Values(values);
  if (status != ERROR_SUCCESS) return MAPI_E_CALL_FAILED;
  row.emplace();
  for (RegValueData& value : values) row->emplace(value.name, std::move(value));
  return S_OK;
}

HRESULT ServiceJournal::NoteBefore(const WString& profile, const WString& keyName) {
  if (entries_.contains(keyName)) return S_OK;
  Entry entry;
  if (const HRESULT hr = Read(profile, keyName, entry.before); FAILED(hr)) return hr;
  entry.after = entry.before;
  entries_.emplace(keyName, std::move(entry));
  return S_OK;
}

HRESULT ServiceJournal::NoteAfter(const WString& profile, const WString& keyName) {
  return Read(profile, keyName, entries_[keyName].after);
}

HRESULT ServiceJournal::TakeBackRow(const WString& profile, const WString& keyName, const Entry& entry) {
  Row now;
  if (const HRESULT hr = Read(profile, keyName, now); FAILED(hr)) return hr;
  if (!entry.before) return now ? registry_store::DeleteService(profile, keyName) : S_OK;
  // Taken out by us comes back; taken out by others, or back already, stays as it is.
  if (now.has_value() != entry.after.has_value()) return S_OK;
  RegKey profileKey;
  RegKey key;
  const HRESULT opened = registry_store::OpenProfileKey(profile, OpenMode::kWrite, profileKey);
  if (FAILED(opened)) return opened;
  const LSTATUS status = key.Create(profileKey.Get(), keyName);
  if (status != ERROR_SUCCESS) return MAPI_E_CALL_FAILED;
  return ToResult(PutBack(key, now.value_or(Values()), *entry.before, entry.after.value_or(Values())));
}

HRESULT ServiceJournal::TakeBack(const WString& profile) {
  ProfileLock lock;
  HRESULT hr = EnterProfile(profile, lock);
  if (FAILED(hr) || entries_.empty()) return hr;
  std::vector<ChangedKey> keys;
  for (const auto& [keyName, ignored] : entries_) keys.push_back(ServiceOf(profile, keyName));
  ProfileChange change;
  if (SUCCEEDED(hr)) hr = change.Begin({profile}, keys);
  for (const auto& [keyName, entry] : entries_) {
    if (SUCCEEDED(hr)) hr = TakeBackRow(profile, keyName, entry);
  }
  return FAILED(hr) ? hr : change.Keep();
}

}  // namespace orv
