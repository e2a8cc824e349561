// Placing and closing windows.
#pragma once

#include "platform/win.h"

namespace orv::ui {

// Upper left corner that puts the centre of `window` on the centre of `desktop`, in integer halves.
POINT CentredOrigin(const RECT& window, const RECT& desktop);
// Moves the window there, its size unchanged, without repainting.
void CentreOnDesktop(HWND window);

// Closes a window as its system menu does; true when the window dealt with it.
bool CloseBySystemCommand(HWND window);

RECT WindowRectangle(HWND window);

}  // namespace orv::ui
