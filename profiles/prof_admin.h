// Administration of the current user's profiles: lists, creates, copies, renames and deletes them, names the
// default one, and hands out the service administration of each.
#pragma once

#include "orv/orvapi.h"
#include "platform/win.h"

namespace orv {

HRESULT CreateProfAdmin(ULONG_PTR uiParam, HINSTANCE resources, IOrvProfAdmin** out);

}  // namespace orv
