#include "tools/pictures/bell.h"

#include <stdexcept>

namespace pictures {
namespace {

constexpr UINT kRing = WM_APP;
constexpr UINT kPaint = WM_APP + 1;

void PaintAnew(HWND window) {
  RedrawWindow(window, nullptr, nullptr,
               RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_ALLCHILDREN | RDW_UPDATENOW);
}

}  // namespace

Bell::Bell()
    : window_(CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr)) {
  if (window_ == nullptr) throw std::runtime_error("no window to ring");
  SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
  SetWindowLongPtrW(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&Bell::Procedure));
}

int Bell::Ring() {
  if (!PostMessageW(window_, kRing, 0, 0)) throw std::runtime_error("no message could be posted");
  return ++asked_;
}

bool Bell::Paint(HWND window, UINT wait) const {
  DWORD_PTR ignored = 0;
  return SendMessageTimeoutW(window_, kPaint, reinterpret_cast<WPARAM>(window), 0, SMTO_NORMAL, wait,
                             &ignored) != 0;
}

LRESULT CALLBACK Bell::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == kRing) ++reinterpret_cast<Bell*>(GetWindowLongPtrW(window, GWLP_USERDATA))->rung_;
  if (message == kPaint) PaintAnew(reinterpret_cast<HWND>(wParam));
  return DefWindowProcW(window, message, wParam, lParam);
}

}  // namespace pictures
