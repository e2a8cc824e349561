// The service rows of a profile one by one, those included that cannot be read: a profile in which there is one cannot
// be administered or logged on to until it is gone.
#pragma once

#include "orv/orvapi.h"
#include "platform/win.h"

namespace orv::stored_services {

// A row a stored service, in the registry's order: the ten service columns, the name of its key and its status. Codes
// are those of EnterProfile, and MAPI_E_NOT_FOUND without the profile. May throw std::bad_alloc.
HRESULT MakeTable(const WString& profile, IMAPITable** out);

// Takes a row out of the profile by the name of its key, whatever lies in it. MAPI_E_NOT_FOUND without such a key. May
// throw std::bad_alloc.
HRESULT Delete(const WString& profile, const WString& keyName);

// Moves a row that cannot be read out of the profile into the key "Orv Damaged". MAPI_E_NO_ACCESS for one that can, and
// for the key "WAB", which is no profile. May throw std::bad_alloc.
HRESULT SetAside(const WString& profile, const WString& keyName);

// A row a key beside those of the profiles, "WAB" excepted: its name, and whether it can be a profile's. May throw
// std::bad_alloc.
HRESULT MakeProfileTable(IMAPITable** out);

}  // namespace orv::stored_services
