// The configuration dialog of a profile's services, as profile administration asks for it.
#pragma once

#include "orv/orvapi.h"
#include "platform/win.h"

namespace orv {

// True when the user confirmed. A dialog that cannot be shown counts as cancelled.
bool EditServices(ULONG_PTR uiParam, IOrvProfAdmin* profiles, IABServiceAdmin* services);

}  // namespace orv
