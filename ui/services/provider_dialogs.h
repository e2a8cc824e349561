// The way from profile administration to the configuration dialogs.
#pragma once

#include "orv/orvapi.h"
#include "platform/win.h"

namespace orv::ui {

// Lets the user edit the services of a profile: IDOK or IDCANCEL, -1 when the dialog cannot be shown. What was
// changed is stored at once; whoever shows the dialog undoes it when it was not confirmed.
INT_PTR ShowProfileDialog(HWND owner, HMODULE resources, IABServiceAdmin* services);

}  // namespace orv::ui
