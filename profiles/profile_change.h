// A change of profiles that is whole or not there, whenever its process ends. Before the first step a record of what
// was there is written to a key of its own beside the profiles; after the last step it is taken away. Whoever finds a
// record while he holds the profile's lock has found a change that nobody finishes any more, and takes it back.
#pragma once

#include <vector>

#include "profiles/profile_lock.h"
#include "profiles/registry_snapshot.h"

namespace orv {

// What a change may touch: a key below the one of our model.
struct ChangedKey {
  WString path;
  registry_snapshot::Extent extent;
};
// The whole profile; one of its services; the settings in the profile's own key.
ChangedKey WholeProfile(const WString& profile);
ChangedKey ServiceOf(const WString& profile, const WString& keyName);
ChangedKey SettingsOf(const WString& profile);
// The values beside the profiles, the name of the default one among them.
ChangedKey DefaultMarker();

class ProfileChange {
 public:
  ProfileChange() = default;
  // What is not kept is taken back.
  ~ProfileChange();
  ProfileChange(const ProfileChange&) = delete;
  ProfileChange& operator=(const ProfileChange&) = delete;

  // In the locks of all `profiles`, whose keys are touched. Writes the record; MAPI_E_CALL_FAILED when it cannot be
  // written, and then nothing may be touched.
  HRESULT Begin(const std::vector<WString>& profiles, const std::vector<ChangedKey>& keys);
  // Makes one of the keys what it was, and the others stay in the change. MAPI_E_CALL_FAILED when it cannot be done.
  HRESULT TakeBackKey(std::size_t index);
  // The last step is done. A record that cannot be taken away fails the change, and everything is taken back.
  HRESULT Keep();

 private:
  WString name_;  // of the record; empty when there is none
  registry_snapshot::Bytes record_;
  std::vector<std::size_t> ends_;  // in the record: of its head, then of the snapshot of each key
};

// Takes `lock` on the profile (or on two) and takes back what was left unfinished there: what is read then is the state
// before a change or after it, and what is written is in nobody's way. Codes are those of ProfileLock and
// MAPI_E_CALL_FAILED.
HRESULT EnterProfile(const WString& profile, ProfileLock& lock);
HRESULT EnterProfiles(const WString& one, const WString& other, ProfileLock& lock);
// The same for the list of profiles, as nobody who changes it has left it.
HRESULT EnterProfileList(ProfileLock& lock);

}  // namespace orv
