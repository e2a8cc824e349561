// Administration of the message services of one profile: lists, adds and removes them, lets them configure
// themselves, opens their profile sections.
#pragma once

#include "orv/orvapi.h"
#include "platform/win.h"

namespace orv {

// Loads the profile's services at once; the failure of that is returned and nothing handed out.
HRESULT CreateServiceAdmin(ULONG_PTR uiParam, HINSTANCE resources, const WCHAR* profile,
                           IABServiceAdmin** out);

}  // namespace orv
