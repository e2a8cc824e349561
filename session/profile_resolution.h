// Finds the profile that a logon means.
#pragma once

#include "platform/win.h"

namespace orv {

// The default profile under MAPI_USE_DEFAULT, else the one that is called `name`, with case. Without one:
// MAPI_E_LOGON_FAILED, or MAPI_E_UNKNOWN_FLAGS under MAPI_LOGON_UI, because logging on with a dialog is not
// offered. A profile table that cannot be read fails with its own code.
HRESULT ResolveProfile(const WCHAR* name, ULONG flags, WString& resolved);

}  // namespace orv
