// Waiting for another program that changes the same book.
#pragma once

#include <functional>

#include "orv/kit/window.hpp"

namespace book {

namespace kit = orv::kit;

// Calls `attempt`, which must not take long, again and again while it is MAPI_E_BUSY, in a window that tells so and that
// the user may cancel. What it came to at last; MAPI_E_USER_CANCEL where the user gave up.
HRESULT WaitWhileBusy(HWND owner, const kit::Language& language, const std::function<HRESULT()>& attempt);

}  // namespace book
