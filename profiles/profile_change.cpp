#include "profiles/profile_change.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "orv/orvcodes.h"
#include "platform/boundary.h"
#include "profiles/registry_store.h"

namespace orv {
namespace {

using registry_snapshot::Bytes;
using registry_snapshot::Extent;

constexpr const WCHAR* kProfilesKey = L"Orv Profiles";
// A record is the one value of a key of its own, so that it goes as a whole with its key; the key of all records goes
// with the last of them.
constexpr const WCHAR* kRecordsKey = L"Orv Undo";
constexpr const WCHAR* kRecordValue = L"Record";
// A key may go while another program makes one below it; making it again then helps.
constexpr int kAttempts = 20;

// Names in the head of a record stand behind each other, each with its terminator.
constexpr WCHAR kEndOfName = 0;

HRESULT ToResult(LSTATUS status) { return status == ERROR_SUCCESS ? S_OK : MAPI_E_CALL_FAILED; }

LSTATUS OpenModelKey(RegKey& key) {
  const auto path = registry_store::BasePath();
  return path ? key.Open(HKEY_CURRENT_USER, *path, KEY_ALL_ACCESS) : ERROR_FILE_NOT_FOUND;
}

// A record that was found: the profiles whose change it takes back, and what they were.
struct Record {
  WString name;
  std::vector<WString> profiles;
  Bytes snapshots;

  bool Concerns(const WString& profile) const {
    return std::any_of(profiles.begin(), profiles.end(), [&](const WString& own) {
      return CompareStringOrdinal(own.c_str(), -1, profile.c_str(), -1, TRUE) == CSTR_EQUAL;
    });
  }
};

// The head: length of the names in bytes, then the names.
void AppendHead(const std::vector<WString>& profiles, Bytes& record) {
  WString names;
  for (const WString& profile : profiles) names.append(profile).push_back(kEndOfName);
  const auto size = static_cast<std::uint32_t>(names.size() * sizeof(WCHAR));
  const auto append = [&](const void* data, std::size_t bytes) {
    const auto* first = static_cast<const std::byte*>(data);
    record.insert(record.end(), first, first + bytes);
  };
  append(&size, sizeof size);
  append(names.data(), size);
}

WString RecordPath(const WString& name) { return WString(kRecordsKey) + L"\\" + name; }

std::vector<WString> SplitNames(const WString& names) {
  std::vector<WString> split;
  for (std::size_t at = 0, end = 0; (end = names.find(kEndOfName, at)) != WString::npos; at = end + 1) {
    split.push_back(names.substr(at, end - at));
  }
  return split;
}

bool IsSameName(WStringView a, WStringView b) {
  return CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()),
                              TRUE) == CSTR_EQUAL;
}

// What a record may take back: the keys of the profiles that it names, and the values beside the profiles.
bool MayTouch(const std::vector<WString>& profiles, WStringView path, Extent extent) {
  constexpr WStringView kProfiles = kProfilesKey;
  if (!IsSameName(path.substr(0, kProfiles.size()), kProfiles)) return false;
  if (path.size() == kProfiles.size()) return extent == Extent::kValues;
  if (path[kProfiles.size()] != L'\\') return false;
  const WStringView below = path.substr(kProfiles.size() + 1);
  const WStringView named = below.substr(0, below.find(L'\\'));
  return std::any_of(profiles.begin(), profiles.end(),
                     [&](const WString& profile) { return IsSameName(profile, named); });
}

// A record that was not written to its end, or that is none, belongs to the profile it is named for and takes nothing
// back.
Record ParseRecord(const WString& name, const Bytes& data) {
  Record record{name, {name}, {}};
  std::uint32_t size = 0;
  if (data.size() < sizeof size) return record;
  std::memcpy(&size, data.data(), sizeof size);
  if (size > data.size() - sizeof size || size % sizeof(WCHAR) != 0) return record;
  WString names(size / sizeof(WCHAR), 0);
  std::memcpy(names.data(), data.data() + sizeof size, size);
  std::vector<WString> profiles = SplitNames(names);
  // Named for its first profile, as whoever wrote it has named it.
  if (profiles.empty() || profiles.size() > 2 || !IsSameName(profiles.front(), name)) return record;
  record.profiles = std::move(profiles);
  record.snapshots.assign(data.begin() + static_cast<std::ptrdiff_t>(sizeof size + size), data.end());
  return record;
}

// One that has gone meanwhile is left out.
LSTATUS ReadRecord(const RegKey& records, const WString& name, std::vector<Record>& found) {
  RegKey key;
  LSTATUS status = key.Open(records.Get(), name, KEY_READ);
  std::vector<RegValueData> values;
  if (status == ERROR_SUCCESS) status = key.Values(values);
  if (status == ERROR_FILE_NOT_FOUND || status == ERROR_KEY_DELETED) return ERROR_SUCCESS;
  if (status == ERROR_SUCCESS)
    found.push_back(ParseRecord(name, values.empty() ? Bytes() : values.front().data));
  return status;
}

// Usually there are none, and not even their key.
HRESULT ReadRecords(std::vector<Record>& records) {
  records.clear();
  const auto path = registry_store::BasePath();
  if (!path) return S_OK;
  RegKey key;
  LSTATUS status = key.Open(HKEY_CURRENT_USER, *path + L"\\" + kRecordsKey, KEY_READ);
  std::vector<WString> names;
  if (status == ERROR_SUCCESS) status = key.Subkeys(names);
  if (status == ERROR_FILE_NOT_FOUND || status == ERROR_KEY_DELETED) return S_OK;
  for (const WString& name : names) {
    if (status == ERROR_SUCCESS) status = ReadRecord(key, name, records);
  }
  return ToResult(status);
}

LSTATUS WriteRecord(const RegKey& model, const WString& name, const RegValueData& value) {
  LSTATUS status = ERROR_SUCCESS;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    RegKey key;
    status = key.Create(model.Get(), RecordPath(name));
    if (status == ERROR_SUCCESS) status = key.Set(value);
    if (status != ERROR_KEY_DELETED && status != ERROR_FILE_NOT_FOUND) break;
  }
  return status;
}

LSTATUS RemoveRecord(const WString& name) {
  // Once the record is gone the change stands: whatever can fail comes before that.
  const WString record = RecordPath(name);
  const WString records = kRecordsKey;
  RegKey model;
  if (const LSTATUS status = OpenModelKey(model); status != ERROR_SUCCESS) return status;
  const LSTATUS status = RegKey::DeleteKey(model.Get(), record);
  // Stays while there are other records, and that is no failure.
  if (status == ERROR_SUCCESS) RegKey::DeleteKey(model.Get(), records);
  return status;
}

// Under the locks of its profiles. The list of profiles may change with it.
HRESULT TakeBack(const Record& record) {
  ProfileLock list;
  if (const HRESULT hr = list.TakeList(); FAILED(hr)) return hr;
  RegKey model;
  LSTATUS status = OpenModelKey(model);
  if (status == ERROR_SUCCESS)
    status = registry_snapshot::Restore(
        model.Get(), record.snapshots,
        [&](const WString& path, Extent extent) { return MayTouch(record.profiles, path, extent); });
  // Bytes that are no snapshots cannot be taken back by anybody, ever.
  if (status == ERROR_SUCCESS || status == ERROR_INVALID_DATA) status = RemoveRecord(record.name);
  return ToResult(status);
}

// The first record that concerns the profile; none otherwise.
HRESULT FindRecord(const WString& profile, std::optional<Record>& found) {
  found.reset();
  std::vector<Record> records;
  if (const HRESULT hr = ReadRecords(records); FAILED(hr)) return hr;
  const auto record = std::find_if(records.begin(), records.end(),
                                   [&](const Record& candidate) { return candidate.Concerns(profile); });
  if (record != records.end()) found = std::move(*record);
  return S_OK;
}

HRESULT TakeLocks(const std::vector<WString>& profiles, ProfileLock& lock) {
  return profiles.size() < 2 ? lock.TakeProfile(profiles.front())
                             : lock.TakeProfiles(profiles.front(), profiles.back());
}

// A record may concern a second profile, whose lock must be held too: so all are taken anew, in order, and what is
// found then is what counts.
HRESULT TakeBackUnfinished(const Record& found) {
  ProfileLock lock;
  if (const HRESULT hr = TakeLocks(found.profiles, lock); FAILED(hr)) return hr;
  std::vector<Record> records;
  if (const HRESULT hr = ReadRecords(records); FAILED(hr)) return hr;
  const auto still = std::find_if(records.begin(), records.end(),
                                  [&](const Record& record) { return record.name == found.name; });
  return still == records.end() ? S_OK : TakeBack(*still);
}

HRESULT Enter(const std::vector<WString>& profiles, ProfileLock& lock) {
  for (;;) {
    if (const HRESULT hr = TakeLocks(profiles, lock); FAILED(hr)) return hr;
    std::optional<Record> record;
    for (const WString& profile : profiles) {
      if (record) break;
      if (const HRESULT hr = FindRecord(profile, record); FAILED(hr)) return hr;
    }
    if (!record) return S_OK;
    lock = ProfileLock();
    if (const HRESULT hr = TakeBackUnfinished(*record); FAILED(hr)) return hr;
  }
}

}  // namespace

ChangedKey WholeProfile(const WString& profile) {
  return {WString(kProfilesKey) + L"\\" + profile, Extent::kTree};
}
ChangedKey ServiceOf(const WString& profile, const WString& keyName) {
  return {WString(kProfilesKey) + L"\\" + profile + L"\\" + keyName, Extent::kTree};
}
ChangedKey SettingsOf(const WString& profile) {
  return {WString(kProfilesKey) + L"\\" + profile, Extent::kValues};
}
ChangedKey DefaultMarker() { return {kProfilesKey, Extent::kValues}; }

HRESULT ProfileChange::Begin(const std::vector<WString>& profiles, const std::vector<ChangedKey>& keys) {
  RegValueData record{kRecordValue, REG_BINARY, {}};
  AppendHead(profiles, record.data);
  const auto path = registry_store::BasePath();
  RegKey model;
  if (!path || model.Create(HKEY_CURRENT_USER, *path) != ERROR_SUCCESS) return MAPI_E_CALL_FAILED;
  ends_ = {record.data.size()};
  for (const ChangedKey& key : keys) {
    const LSTATUS status = registry_snapshot::Append(model.Get(), key.path, key.extent, record.data);
    if (status != ERROR_SUCCESS) return MAPI_E_CALL_FAILED;
    ends_.push_back(record.data.size());
  }
  WString name = profiles.front();
  const LSTATUS status = WriteRecord(model, name, record);
  if (status == ERROR_SUCCESS) name_ = std::move(name);
  record_ = std::move(record.data);
  return ToResult(status);
}

HRESULT ProfileChange::TakeBackKey(std::size_t index) {
  RegKey model;
  if (OpenModelKey(model) != ERROR_SUCCESS) return MAPI_E_CALL_FAILED;
  const auto snapshot = std::span(record_).subspan(ends_[index], ends_[index + 1] - ends_[index]);
  return ToResult(
      registry_snapshot::Restore(model.Get(), snapshot, [](const WString&, Extent) { return true; }));
}

HRESULT ProfileChange::Keep() {
  const HRESULT hr = ToResult(RemoveRecord(name_));
  if (SUCCEEDED(hr)) name_.clear();
  return hr;
}

// What cannot be taken back now is found by whoever enters the profile next.
ProfileChange::~ProfileChange() {
  if (name_.empty()) return;
  static_cast<void>(Guarded([&] {
    std::optional<Record> record;
    const HRESULT hr = FindRecord(name_, record);
    return FAILED(hr) || !record ? hr : TakeBack(*record);
  }));
}

HRESULT EnterProfile(const WString& profile, ProfileLock& lock) { return Enter({profile}, lock); }

HRESULT EnterProfiles(const WString& one, const WString& other, ProfileLock& lock) {
  return Enter({one, other}, lock);
}

HRESULT EnterProfileList(ProfileLock& lock) {
  for (;;) {
    if (const HRESULT hr = lock.TakeList(); FAILED(hr)) return hr;
    std::vector<Record> records;
    if (const HRESULT hr = ReadRecords(records); FAILED(hr)) return hr;
    if (records.empty()) return S_OK;
    lock = ProfileLock();
    if (const HRESULT hr = TakeBackUnfinished(records.front()); FAILED(hr)) return hr;
  }
}

}  // namespace orv
