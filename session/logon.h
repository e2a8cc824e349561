// The logon: from a profile's name to a session.
#pragma once

#include "orv/orvapi.h"
#include "platform/win.h"

namespace orv {

struct LogonRequest {
  ULONG_PTR uiParam;
  const WCHAR* profileName;  // may be null
  ULONG flags;
};

// `*session` is written on success only; `book` may be null. After a failure, an exception included, all that was
// made is gone again.
HRESULT LogOn(const LogonRequest& request, IAddrBook** book, IOrvSession** session);

}  // namespace orv
