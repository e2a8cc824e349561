// The service rows of a profile one by one, those included that cannot be read: a profile in which there is one cannot be
// administered or logged on to until it is gone.
#pragma once

#include "orv/orvapi.h"
#include "platform/win.h"

namespace orv::stored_services {

// A row a stored service, in the registry's order: the ten service columns, the name of its key and its status. Codes are
// those of EnterProfile, and MAPI_E_NOT_FOUND without the profile. May throw std::bad_alloc.
HRESULT MakeTable(const WString& profile, IMAPITable** out);

// Takes a row out of the profile by the name of its key, whatever lies in it. MAPI_E_NOT_FOUND without such a key. May
// throw std::bad_alloc.
HRESULT Delete(const WString& profile, const WString& keyName);

}  // namespace orv::stored_services
