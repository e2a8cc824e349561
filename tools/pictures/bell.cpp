#include "tools/pictures/bell.h"

#include <stdexcept>

namespace pictures {
namespace {

constexpr UINT kRing = WM_APP;

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

LRESULT CALLBACK Bell::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == kRing) ++reinterpret_cast<Bell*>(GetWindowLongPtrW(window, GWLP_USERDATA))->rung_;
  return DefWindowProcW(window, message, wParam, lParam);
}

}  // namespace pictures
