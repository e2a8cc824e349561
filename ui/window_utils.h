// Placing and closing windows, and the pointer over them.
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

// The pointer shows that a service is called while this lives.
class WaitPointer {
 public:
  WaitPointer() : before_(SetCursor(LoadCursorW(nullptr, IDC_WAIT))) {}
  ~WaitPointer() { SetCursor(before_); }
  WaitPointer(const WaitPointer&) = delete;
  WaitPointer& operator=(const WaitPointer&) = delete;

 private:
  HCURSOR before_;
};

}  // namespace orv::ui
