// Where the address book's own settings lie between two sessions. The session chooses the store and gives
// it away; the address book reads it once and writes it once.
#pragma once

#include <memory>

#include "platform/win.h"

namespace orv {

class PropList;

class SettingsStore {
 public:
  virtual ~SettingsStore() = default;

  // Replaces the list by what is stored. A store that cannot be opened or created fails with
  // MAPI_E_CALL_FAILED; damaged values leave the list empty with success, so that a logon goes on without
  // them.
  virtual HRESULT Load(PropList& list) = 0;
  // Writes the values that bear PROPNODE_MODIFIED and no other.
  virtual HRESULT Save(const PropList& list) = 0;
};

// The profile's key in the current user's registry.
std::unique_ptr<SettingsStore> MakeProfileSettings(WString profile);

}  // namespace orv
