// Placing and closing windows.
#include "ui/window_utils.h"

namespace orv::ui {
namespace {

LONG Width(const RECT& r) { return r.right - r.left; }
LONG Height(const RECT& r) { return r.bottom - r.top; }

}  // namespace

RECT WindowRectangle(HWND window) {
  RECT rectangle{};
  GetWindowRect(window, &rectangle);
  return rectangle;
}

POINT CentredOrigin(const RECT& window, const RECT& desktop) {
  return {desktop.left + Width(desktop) / 2 - Width(window) / 2,
          desktop.top + Height(desktop) / 2 - Height(window) / 2};
}

void CentreOnDesktop(HWND window) {
  const RECT rectangle = WindowRectangle(window);
  const POINT origin = CentredOrigin(rectangle, WindowRectangle(GetDesktopWindow()));
  MoveWindow(window, origin.x, origin.y, Width(rectangle), Height(rectangle), FALSE);
}

bool CloseBySystemCommand(HWND window) { return SendMessageW(window, WM_SYSCOMMAND, SC_CLOSE, 0) == 0; }

}  // namespace orv::ui
