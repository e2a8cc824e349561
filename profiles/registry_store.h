// Where everything persistent lies in the current user's registry, and how property lists are stored there.
// Whoever owns such data calls these functions and touches the registry nowhere else. Every registry failure
// is MAPI_E_CALL_FAILED, and so is a library whose file name stands for no model.
#pragma once

#include <optional>

#include "platform/reg_key.h"
#include "platform/win.h"
#include "props/row_list.h"

namespace orv::registry_store {

inline constexpr std::size_t kMaxProfileName = kKeyNameBuffer - 1;

// The key of our model, below HKEY_CURRENT_USER; none for an unknown model.
std::optional<WString> BasePath();

enum class OpenMode {
  kRead,
  kWrite,  // an existing key, with full access
  kCreate,
  kCreateFresh,  // subkeys of an existing key are deleted; its values stay
};

// "Orv Profiles", below which each profile is a key.
HRESULT OpenProfilesKey(REGSAM access, RegKey& key);
// Path of the same, for those who must tell the registry's codes apart.
std::optional<WString> ProfilesPath();
// A name that is empty or holds a backslash names no profile.
HRESULT OpenProfileKey(const WString& profile, OpenMode mode, RegKey& key);
// An existing profile's key: MAPI_E_NOT_FOUND, unlike other failures, when there is none.
HRESULT OpenExistingProfileKey(const WString& profile, REGSAM access, RegKey& key);
HRESULT OpenUserInfoKey(OpenMode mode, RegKey& key);

inline constexpr const WCHAR* kDefaultProfileValue = L"DefaultProfile";
// Null deletes the marker, and fails when there is none.
HRESULT SetDefaultProfile(const WCHAR* profile);

// Deletes the profile's key with everything below it. The default marker stays, even when it names this profile.
HRESULT DeleteProfile(const WString& profile);

// Deletes the service row in the subkey of a name.
HRESULT DeleteService(const WString& profile, const WString& keyName);

// Deletes every subkey, recursively; the key and its values stay.
HRESULT DeleteSubtree(RegKey& key);

// Writes the properties that bear the modified mark, up to the first failure. Nothing stored is ever deleted.
HRESULT SavePropList(const PropList& list, RegKey& key);
// Replaces the list by what the key holds; every loaded property bears the modified mark. Empty after a
// failure.
HRESULT LoadPropList(PropList& list, const RegKey& key);

// The name of the subkey that a row is stored in: its PR_SERVICE_UID (MAPI_E_MISSING_REQUIRED_COLUMN without one).
HRESULT ServiceKeyName(const PropList& row, WString& name);
WString ServiceKeyName(const MAPIUID& uid);

// One subkey a row.
HRESULT SaveServiceRow(PropList& row, RegKey& profileKey);
// The row in the subkey of a name; MAPI_E_NOT_FOUND when there is no such subkey.
HRESULT LoadServiceRow(PropList& row, const RegKey& profileKey, const WString& name);
// Every row, and no other service stays.
HRESULT SaveServiceRows(RowList& rows, const WString& profile);
// The rows that load before the first failure are added, and the names of the subkeys that they lie in.
HRESULT LoadServiceRows(RowList& rows, std::vector<WString>& keyNames, const RegKey& profileKey);
HRESULT LoadServiceRows(RowList& rows, const RegKey& profileKey);

}  // namespace orv::registry_store
