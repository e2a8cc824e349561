// The call of a catalogue service's entry function when it is installed or uninstalled.
#pragma once

#include "orv/orvapi.h"
#include "platform/win.h"

namespace orv::ui {

// Calls the library and entry that the row names, from `folder` (a full path that ends in a separator). `context` is
// MSG_SERVICE_INSTALL or MSG_SERVICE_UNINSTALL; a window of the service stands over `dialog`. MAPI_E_CALL_FAILED: a
// name is missing, or the service threw.
HRESULT CallServiceOnce(const WString& folder, const SRow& service, ULONG context, HWND dialog);

}  // namespace orv::ui
