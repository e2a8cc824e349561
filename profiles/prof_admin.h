// Administration of the current user's profiles: lists, creates, copies, renames and deletes them, names the
// default one, and hands out the service administration of each.
#pragma once

#include <functional>

#include "orv/orvapi.h"
#include "platform/win.h"

namespace orv {

// Lets the user edit the services of a profile, over `owner`. What is changed is stored at once; IDOK when the user
// confirmed, anything else undoes it.
using ServicesDialog = std::function<INT_PTR(HWND owner, IABServiceAdmin* services)>;

// Without a dialog, creating and configuring with one end as if the user had cancelled.
HRESULT CreateProfAdmin(ServicesDialog dialog, IOrvProfAdmin** out);

}  // namespace orv
