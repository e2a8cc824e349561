// The profiles as the registry keeps them: each of these is whole or not there, and other programs see the state before
// it or after it. Codes besides those named: MAPI_E_BUSY when another program does not let go of a profile,
// MAPI_E_CALL_FAILED for the registry's failures. They may throw std::bad_alloc.
#pragma once

#include <functional>
#include <vector>

#include "orv/orvcodes.h"
#include "platform/win.h"
#include "profiles/service_store.h"

namespace orv::profile_store {

struct ProfileNames {
  std::vector<WString> names;  // in the registry's order
  WString defaultName;         // empty without one
};

HRESULT List(ProfileNames& found);

// With these services. MAPI_E_NO_ACCESS when there is a profile of the name, in whatever spelling of case: the registry
// takes both for one key.
HRESULT Create(const WString& name, ServiceStore& services);
HRESULT Copy(const WString& from, const WString& to);
// `wasDefault` is asked once the services are copied: the new name then becomes the default one. An old profile that
// cannot be deleted stays beside the new one, and the rename has happened all the same.
HRESULT Rename(const WString& from, const WString& to, const std::function<bool()>& wasDefault);
// MAPI_E_NOT_FOUND without one. The default marker stays, even when it names this profile.
HRESULT Delete(const WString& name);
// Null takes the marker away, and fails when there is none.
HRESULT SetDefault(const WCHAR* name);

}  // namespace orv::profile_store
