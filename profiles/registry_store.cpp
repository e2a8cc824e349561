// The registry layout and the cells in it.
#include "profiles/registry_store.h"

#include <array>
#include <span>
#include <vector>

#include "orv/orvcodes.h"
#include "orv/orvtags.h"
#include "platform/boundary.h"
#include "platform/identity.h"
#include "platform/process.h"

namespace orv::registry_store {
namespace {

constexpr const WCHAR* kProfiles = L"\\Orv Profiles";
constexpr const WCHAR* kUserInfo = L"\\Orv UserInfo";
// A UID of this many bytes or more would make a key name that enumeration cannot read back.
constexpr std::size_t kUidLimit = 32;

// Names of keys on their way in and out. Room for every one of them is made before the first key is touched, so that
// no lack of memory ends a rewriting half way.
WString MakeNameBuffer() {
  WString name;
  name.reserve(kKeyNameBuffer);
  return name;
}

HRESULT ToResult(LSTATUS status) { return status == ERROR_SUCCESS ? S_OK : MAPI_E_CALL_FAILED; }

HRESULT DeleteSubkeys(RegKey& key, WString& name) {
  // The name is asked for anew before each deletion: what lies at index 0 is what goes.
  for (;;) {
    LSTATUS status = key.SubkeyName(0, name);
    if (status == ERROR_NO_MORE_ITEMS) return S_OK;
    if (status != ERROR_SUCCESS) return MAPI_E_CALL_FAILED;
    {
      RegKey subkey;
      if (subkey.Open(key.Get(), name, KEY_ALL_ACCESS) != ERROR_SUCCESS) return MAPI_E_CALL_FAILED;
      if (const HRESULT hr = DeleteSubkeys(subkey, name); FAILED(hr)) return hr;
    }
    status = key.SubkeyName(0, name);
    if (status == ERROR_SUCCESS) status = key.DeleteSubkey(name.c_str());
    if (status != ERROR_SUCCESS) return MAPI_E_CALL_FAILED;
  }
}

HRESULT OpenKey(const WString& path, OpenMode mode, RegKey& key) {
  if (mode == OpenMode::kRead) return ToResult(key.Open(HKEY_CURRENT_USER, path, KEY_READ));
  if (mode == OpenMode::kWrite) return ToResult(key.OpenToWrite(HKEY_CURRENT_USER, path));
  bool existed = false;
  if (key.Create(HKEY_CURRENT_USER, path, &existed) != ERROR_SUCCESS) return MAPI_E_CALL_FAILED;
  const HRESULT hr = existed && mode == OpenMode::kCreateFresh ? registry_store::DeleteSubtree(key) : S_OK;
  if (FAILED(hr)) key = RegKey();
  return hr;
}

// Two lowercase hexadecimal digits a byte.
HRESULT KeyNameFromUid(std::span<const std::byte> uid, WString& name) {
  if (uid.size() >= kUidLimit) return MAPI_E_STRING_TOO_LONG;
  constexpr WStringView kDigits = L"0123456789abcdef";
  name.clear();
  for (const std::byte byte : uid) {
    name.push_back(kDigits[std::to_integer<unsigned>(byte >> 4)]);
    name.push_back(kDigits[std::to_integer<unsigned>(byte & std::byte{0xF})]);
  }
  return S_OK;
}

// A property tag in decimal.
class ValueName {
 public:
  explicit ValueName(ULONG tag) noexcept {
    do {
      *--first_ = static_cast<WCHAR>(L'0' + tag % 10);
    } while ((tag /= 10) != 0);
  }
  ValueName(const ValueName&) = delete;
  ValueName& operator=(const ValueName&) = delete;
  const WCHAR* Text() const noexcept { return first_; }

 private:
  std::array<WCHAR, 11> digits_{};
  WCHAR* first_ = &digits_.back();
};

// The tag is the cell's: neither the value's name nor its registry type is asked.
HRESULT LoadValues(PropList& list, const RegKey& key) {
  std::vector<std::byte> cell;
  for (DWORD index = 0;; ++index) {
    const LSTATUS status = key.ValueAt(index, cell);
    if (status == ERROR_NO_MORE_ITEMS) return S_OK;
    if (status != ERROR_SUCCESS || cell.empty()) return MAPI_E_CALL_FAILED;
    PropNodePtr node;
    if (const HRESULT hr = NodeFromCell(cell, node); FAILED(hr)) return hr;
    list.Link(std::move(node));
  }
}

HRESULT SaveRow(PropList& row, RegKey& profileKey, WString& name) {
  if (const HRESULT hr = ServiceKeyName(row, name); FAILED(hr)) return hr;
  RegKey key;
  bool existed = false;
  if (key.Create(profileKey.Get(), name, &existed) != ERROR_SUCCESS) return MAPI_E_CALL_FAILED;
  if (existed) {
    if (const HRESULT hr = DeleteSubkeys(key, name); FAILED(hr)) return hr;
  }
  row.SetFlags(PROPNODE_MODIFIED, true);
  return SavePropList(row, key);
}

bool IsProfileName(const WString& name) { return !name.empty() && name.find(L'\\') == WString::npos; }

}  // namespace

std::optional<WString> BasePath() {
  const auto model = ModelName(process::Instance());
  if (!model) return std::nullopt;
  return L"Software\\Tovan\\Velmora\\" + *model + L" series";
}

std::optional<WString> ProfilesPath() {
  auto path = BasePath();
  if (path) path->append(kProfiles);
  return path;
}

HRESULT OpenProfilesKey(REGSAM access, RegKey& key) {
  const auto path = ProfilesPath();
  if (!path) return MAPI_E_CALL_FAILED;
  return ToResult(key.Open(HKEY_CURRENT_USER, *path, access));
}

HRESULT OpenProfileKey(const WString& profile, OpenMode mode, RegKey& key) {
  const auto path = ProfilesPath();
  if (!path || !IsProfileName(profile)) return MAPI_E_CALL_FAILED;
  return OpenKey(*path + L"\\" + profile, mode, key);
}

HRESULT OpenExistingProfileKey(const WString& profile, REGSAM access, RegKey& key) {
  const auto path = ProfilesPath();
  if (!path || !IsProfileName(profile)) return MAPI_E_CALL_FAILED;
  const LSTATUS status = key.Open(HKEY_CURRENT_USER, *path + L"\\" + profile, access);
  return status == ERROR_FILE_NOT_FOUND ? MAPI_E_NOT_FOUND : ToResult(status);
}

HRESULT OpenUserInfoKey(OpenMode mode, RegKey& key) {
  const auto path = BasePath();
  if (!path) return MAPI_E_CALL_FAILED;
  return OpenKey(*path + kUserInfo, mode, key);
}

HRESULT SetDefaultProfile(const WCHAR* profile) {
  RegKey key;
  if (const HRESULT hr = OpenProfilesKey(KEY_ALL_ACCESS, key); FAILED(hr)) return hr;
  return ToResult(profile == nullptr ? key.DeleteValue(kDefaultProfileValue)
                                     : key.SetString(kDefaultProfileValue, profile));
}

HRESULT DeleteProfile(const WString& profile) {
  RegKey profiles;
  if (const HRESULT hr = OpenProfilesKey(KEY_ALL_ACCESS, profiles); FAILED(hr)) return hr;
  {
    RegKey key;
    if (key.Open(profiles.Get(), profile, KEY_ALL_ACCESS) != ERROR_SUCCESS) return MAPI_E_CALL_FAILED;
    if (const HRESULT hr = DeleteSubtree(key); FAILED(hr)) return hr;
  }
  return ToResult(profiles.DeleteSubkey(profile.c_str()));
}

HRESULT ServiceKeyName(const PropList& row, WString& name) {
  const PropNode* uid = row.Find(PR_SERVICE_UID);
  // An empty UID would name the profile's own key, and saving there would delete the other services.
  if (uid == nullptr || uid->Tag() != PR_SERVICE_UID || uid->record.dataLength == 0) {
    return MAPI_E_MISSING_REQUIRED_COLUMN;
  }
  return KeyNameFromUid({uid->Data(), uid->record.dataLength}, name);
}

HRESULT DeleteService(const WString& profile, const WString& keyName) {
  RegKey key;
  if (const HRESULT hr = OpenProfileKey(profile, OpenMode::kWrite, key); FAILED(hr)) return hr;
  {
    RegKey subkey;
    if (subkey.OpenToWrite(key.Get(), keyName) != ERROR_SUCCESS) return MAPI_E_CALL_FAILED;
    if (const HRESULT hr = DeleteSubtree(subkey); FAILED(hr)) return hr;
  }
  return ToResult(key.DeleteSubkey(keyName.c_str()));
}

WString ServiceKeyName(const MAPIUID& uid) {
  WString name;
  static_cast<void>(KeyNameFromUid(std::as_bytes(std::span(uid.ab)), name));
  return name;
}

HRESULT DeleteSubtree(RegKey& key) {
  WString name = MakeNameBuffer();
  return DeleteSubkeys(key, name);
}

HRESULT SavePropList(const PropList& list, RegKey& key) {
  for (const PropNode& node : list) {
    if (!(node.flags & PROPNODE_MODIFIED)) continue;
    const ValueName name(node.Tag());
    if (key.SetBinary(name.Text(), CellOf(node)) != ERROR_SUCCESS) return MAPI_E_CALL_FAILED;
  }
  return S_OK;
}

HRESULT LoadPropList(PropList& list, const RegKey& key) {
  list.Clear();
  const HRESULT hr = Guarded([&] { return LoadValues(list, key); });
  if (FAILED(hr)) list.Clear();
  return hr;
}

HRESULT SaveServiceRow(PropList& row, RegKey& profileKey) {
  WString name = MakeNameBuffer();
  return SaveRow(row, profileKey, name);
}

HRESULT SaveServiceRows(RowList& rows, const WString& profile) {
  WString name = MakeNameBuffer();
  RegKey key;
  if (const HRESULT hr = OpenProfileKey(profile, OpenMode::kCreateFresh, key); FAILED(hr)) return hr;
  for (PropList& row : rows) {
    if (const HRESULT hr = SaveRow(row, key, name); FAILED(hr)) return hr;
  }
  return S_OK;
}

HRESULT LoadServiceRow(PropList& row, const RegKey& profileKey, const WString& name) {
  RegKey key;
  const LSTATUS status = key.Open(profileKey.Get(), name, KEY_READ);
  if (status == ERROR_FILE_NOT_FOUND) return MAPI_E_NOT_FOUND;
  return status == ERROR_SUCCESS ? LoadPropList(row, key) : MAPI_E_CALL_FAILED;
}

HRESULT LoadServiceRows(RowList& rows, std::vector<WString>& keyNames, const RegKey& profileKey) {
  WString name;
  for (DWORD index = 0;; ++index) {
    const LSTATUS status = profileKey.SubkeyName(index, name);
    if (status == ERROR_NO_MORE_ITEMS) return S_OK;
    if (status != ERROR_SUCCESS) return MAPI_E_CALL_FAILED;
    PropList row;
    const HRESULT hr = LoadServiceRow(row, profileKey, name);
    // A key that another program takes out between two calls cannot be met here: readers hold the profile.
    if (FAILED(hr)) return hr == MAPI_E_NOT_FOUND ? MAPI_E_CALL_FAILED : hr;
    keyNames.push_back(name);
    rows.Insert(std::move(row), rows.Count());
  }
}

HRESULT LoadServiceRows(RowList& rows, const RegKey& profileKey) {
  std::vector<WString> keyNames;
  return LoadServiceRows(rows, keyNames, profileKey);
}

}  // namespace orv::registry_store
