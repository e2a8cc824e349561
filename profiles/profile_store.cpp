// Locks and records round the operations of the registry store.
#include "profiles/profile_store.h"

#include <array>
#include <utility>

#include "profiles/profile_change.h"
#include "profiles/registry_store.h"

namespace orv::profile_store {
namespace {

using registry_store::OpenMode;

// The default marker is read into so many bytes: a name of more than 31 characters is never the default.
constexpr DWORD kDefaultNameBytes = 65;

WString ReadDefaultName(const RegKey& profiles) {
  std::array<WCHAR, kDefaultNameBytes / sizeof(WCHAR) + 1> name{};
  DWORD size = kDefaultNameBytes;
  if (profiles.Read(registry_store::kDefaultProfileValue, name.data(), size) != ERROR_SUCCESS) return {};
  name[size / sizeof(WCHAR)] = 0;
  return WString(name.data());
}

bool Exists(const WString& name) {
  RegKey key;
  return SUCCEEDED(registry_store::OpenProfileKey(name, OpenMode::kRead, key));
}

// Unlike a key that cannot be opened.
bool IsGone(const WString& name) {
  const auto path = registry_store::ProfilesPath();
  RegKey key;
  return path && key.Open(HKEY_CURRENT_USER, *path + L"\\" + name, KEY_READ) == ERROR_FILE_NOT_FOUND;
}

// The profile's lock and the list's, in their order.
HRESULT EnterBoth(const WString& name, ProfileLock& profile, ProfileLock& list) {
  const HRESULT hr = EnterProfile(name, profile);
  return FAILED(hr) ? hr : list.TakeList();
}

HRESULT EnterBoth(const WString& one, const WString& other, ProfileLock& profiles, ProfileLock& list) {
  const HRESULT hr = EnterProfiles(one, other, profiles);
  return FAILED(hr) ? hr : list.TakeList();
}

HRESULT KeepIf(HRESULT hr, ProfileChange& change) { return FAILED(hr) ? hr : change.Keep(); }

// Reads the services of one profile into a new one, both being held.
HRESULT CopyServices(const WString& from, const WString& to) {
  ServiceStore store;
  const HRESULT hr = store.LoadAllHeld(from);
  return FAILED(hr) ? hr : store.SaveAllHeld(to);
}

}  // namespace

HRESULT List(ProfileNames& found) {
  const auto path = registry_store::ProfilesPath();
  if (!path) return MAPI_E_CALL_FAILED;
  ProfileLock list;
  if (const HRESULT hr = EnterProfileList(list); FAILED(hr)) return hr;
  RegKey profiles;
  LSTATUS status = profiles.Open(HKEY_CURRENT_USER, *path, KEY_READ);
  if (status == ERROR_SUCCESS) found.defaultName = ReadDefaultName(profiles);
  WString name;
  for (DWORD index = 0; status == ERROR_SUCCESS; ++index) {
    status = profiles.SubkeyName(index, name);
    if (status == ERROR_SUCCESS) found.names.push_back(name);
  }
  // A missing key is what a user without profiles has.
  const bool complete = status == ERROR_NO_MORE_ITEMS || status == ERROR_FILE_NOT_FOUND;
  return complete ? S_OK : MAPI_E_CALL_FAILED;
}

HRESULT Create(const WString& name, ServiceStore& services) {
  ProfileLock profile;
  ProfileLock list;
  if (const HRESULT hr = EnterBoth(name, profile, list); FAILED(hr)) return hr;
  if (Exists(name)) return MAPI_E_NO_ACCESS;
  ProfileChange change;
  if (const HRESULT hr = change.Begin({name}, {WholeProfile(name)}); FAILED(hr)) return hr;
  return KeepIf(services.SaveAllHeld(name), change);
}

HRESULT Copy(const WString& from, const WString& to) {
  ProfileLock profiles;
  ProfileLock list;
  if (const HRESULT hr = EnterBoth(from, to, profiles, list); FAILED(hr)) return hr;
  if (Exists(to)) return MAPI_E_NO_ACCESS;
  ProfileChange change;
  if (const HRESULT hr = change.Begin({to, from}, {WholeProfile(to)}); FAILED(hr)) return hr;
  return KeepIf(CopyServices(from, to), change);
}

HRESULT Rename(const WString& from, const WString& to, const std::function<bool()>& wasDefault) {
  ProfileLock profiles;
  ProfileLock list;
  if (const HRESULT hr = EnterBoth(from, to, profiles, list); FAILED(hr)) return hr;
  if (Exists(to)) return MAPI_E_NO_ACCESS;
  ProfileChange change;
  constexpr std::size_t kOldProfile = 1;
  HRESULT hr = change.Begin({to, from}, {WholeProfile(to), WholeProfile(from), DefaultMarker()});
  if (FAILED(hr)) return hr;
  hr = CopyServices(from, to);
  if (SUCCEEDED(hr) && wasDefault()) hr = registry_store::SetDefaultProfile(to.c_str());
  // An old profile that cannot be deleted stays, and is whole.
  if (SUCCEEDED(hr) && FAILED(registry_store::DeleteProfile(from))) hr = change.TakeBackKey(kOldProfile);
  return KeepIf(hr, change);
}

HRESULT Delete(const WString& name) {
  ProfileLock profile;
  ProfileLock list;
  if (const HRESULT hr = EnterBoth(name, profile, list); FAILED(hr)) return hr;
  if (IsGone(name)) return MAPI_E_NOT_FOUND;
  ProfileChange change;
  if (const HRESULT hr = change.Begin({name}, {WholeProfile(name)}); FAILED(hr)) return hr;
  return KeepIf(registry_store::DeleteProfile(name), change);
}

HRESULT SetDefault(const WCHAR* name) {
  ProfileLock list;
  const HRESULT hr = EnterProfileList(list);
  return FAILED(hr) ? hr : registry_store::SetDefaultProfile(name);
}

}  // namespace orv::profile_store
