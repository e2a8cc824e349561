// The address book's settings as values of the profile's registry key.
#include <utility>

#include "addrbook/settings_store.h"
#include "orv/orvcodes.h"
#include "profiles/registry_store.h"

namespace orv {
namespace {

class ProfileSettings final : public SettingsStore {
 public:
  explicit ProfileSettings(WString profile) : profile_(std::move(profile)) {}

  HRESULT Load(PropList& list) override {
    RegKey key;
    if (const HRESULT hr = Open(key); FAILED(hr)) return hr;
    const HRESULT hr = registry_store::LoadPropList(list, key);
    // Damaged settings are no settings: the list is empty, and what is stored stays until it is set anew.
    return hr == MAPI_E_NOT_ENOUGH_MEMORY ? hr : S_OK;
  }

  HRESULT Save(const PropList& list) override {
    RegKey key;
    if (const HRESULT hr = Open(key); FAILED(hr)) return hr;
    return registry_store::SavePropList(list, key);
  }

 private:
  HRESULT Open(RegKey& key) const {
    return registry_store::OpenProfileKey(profile_, registry_store::OpenMode::kCreate, key);
  }

  const WString profile_;
};

}  // namespace

std::unique_ptr<SettingsStore> MakeProfileSettings(WString profile) {
  return std::make_unique<ProfileSettings>(std::move(profile));
}

}  // namespace orv
