// The address book's settings as values of the profile's registry key.
#include <algorithm>
#include <utility>

#include "addrbook/settings_store.h"
#include "orv/orvcodes.h"
#include "profiles/profile_change.h"
#include "profiles/registry_store.h"

namespace orv {
namespace {

class ProfileSettings final : public SettingsStore {
 public:
  explicit ProfileSettings(WString profile) : profile_(std::move(profile)) {}

  HRESULT Load(PropList& list) override {
    ProfileLock lock;
    if (const HRESULT hr = EnterProfile(profile_, lock); FAILED(hr)) return hr;
    RegKey key;
    if (const HRESULT hr = Open(key); FAILED(hr)) return hr;
    const HRESULT hr = registry_store::LoadPropList(list, key);
    // Damaged settings are no settings: the list is empty, and what is stored stays until it is set anew.
    return hr == MAPI_E_NOT_ENOUGH_MEMORY ? hr : S_OK;
  }

  HRESULT Save(const PropList& list) override {
    const auto isChanged = [](const PropNode& node) { return (node.flags & PROPNODE_MODIFIED) != 0; };
    if (std::none_of(list.begin(), list.end(), isChanged)) return S_OK;
    ProfileLock lock;
    if (const HRESULT hr = EnterProfile(profile_, lock); FAILED(hr)) return hr;
    RegKey key;
    if (const HRESULT hr = Open(key); FAILED(hr)) return hr;
    ProfileChange change;
    HRESULT hr = change.Begin({profile_}, {SettingsOf(profile_)});
    if (SUCCEEDED(hr)) hr = registry_store::SavePropList(list, key);
    return FAILED(hr) ? hr : change.Keep();
  }

 private:
  // A profile that is gone is not made again.
  HRESULT Open(RegKey& key) const {
    return registry_store::OpenExistingProfileKey(profile_, KEY_ALL_ACCESS, key);
  }

  const WString profile_;
};

}  // namespace

std::unique_ptr<SettingsStore> MakeProfileSettings(WString profile) {
  return std::make_unique<ProfileSettings>(std::move(profile));
}

}  // namespace orv
