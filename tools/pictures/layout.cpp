// Texts are measured in the font of their control. Every message has a bound: the windows are another thread's.
#include "tools/pictures/layout.h"

#include <commctrl.h>

#include <string_view>
#include <vector>

namespace pictures {
namespace {

constexpr UINT kWait = 60'000;
constexpr int kTextRoom = 1024;
constexpr int kClassRoom = 64;
// What is drawn beside a text, in dots at 96 to the inch: borders of a button, the box of a choice with its gap, the
// arrow of a drop-down, the margins of a column's title.
constexpr int kButtonBorders = 6;
constexpr int kChoiceBox = 17;
constexpr int kArrow = 24;
constexpr int kTitleMargins = 10;
// Letters of other fonts, which stand in for missing ones, are a little higher.
constexpr int kTolerance = 2;

LONG Width(const RECT& r) { return r.right - r.left; }
LONG Height(const RECT& r) { return r.bottom - r.top; }

LRESULT Ask(HWND window, UINT message, WPARAM first = 0, LPARAM second = 0) {
  DWORD_PTR answer = 0;
  SendMessageTimeoutW(window, message, first, second, SMTO_NORMAL, kWait, &answer);
  return static_cast<LRESULT>(answer);
}

std::wstring ClassOf(HWND window) {
  wchar_t name[kClassRoom] = L"";
  GetClassNameW(window, name, kClassRoom);
  return name;
}

class TextSize {
 public:
  explicit TextSize(HWND window) : window_(window), dc_(GetDC(window)) {
    font_ = SelectObject(dc_, reinterpret_cast<HGDIOBJ>(Ask(window, WM_GETFONT)));
  }
  ~TextSize() {
    SelectObject(dc_, font_);
    ReleaseDC(window_, dc_);
  }
  TextSize(const TextSize&) = delete;
  TextSize& operator=(const TextSize&) = delete;

  RECT Of(const std::wstring& text, UINT format, LONG width = 0) const {
    RECT size{0, 0, width, 0};
    DrawTextW(dc_, text.c_str(), -1, &size, DT_CALCRECT | format);
    return size;
  }
  LONG LineOf(const std::wstring& text, UINT format = DT_NOPREFIX) const {
    return Width(Of(text, DT_SINGLELINE | format));
  }
  int Dots(int at96) const { return MulDiv(at96, GetDeviceCaps(dc_, LOGPIXELSX), 96); }

 private:
  HWND window_;
  HDC dc_;
  HGDIOBJ font_;
};

struct Control {
  HWND window;
  HWND parent;
  RECT place;
  std::wstring kind;
  std::wstring text;
  LONG_PTR style;
};

bool IsDialog(HWND window) { return ClassOf(window) == L"#32770"; }

Control ControlOf(HWND window) {
  Control control{window, GetParent(window), {}, ClassOf(window), {}, GetWindowLongPtrW(window, GWL_STYLE)};
  GetWindowRect(window, &control.place);
  wchar_t text[kTextRoom] = L"";
  Ask(window, WM_GETTEXT, kTextRoom, reinterpret_cast<LPARAM>(text));
  control.text = text;
  return control;
}

// As message boxes without an icon have.
bool IsEmptyIcon(const Control& control) {
  const bool isIcon = control.kind == L"Static" && (control.style & SS_TYPEMASK) == SS_ICON;
  return isIcon && Ask(control.window, STM_GETICON) == 0;
}

// Of the dialog and of its pages, which are dialogs too; not what controls are made of.
std::vector<Control> ControlsOf(HWND dialog) {
  std::vector<HWND> windows;
  EnumChildWindows(
      dialog,
      [](HWND window, LPARAM list) -> BOOL {
        const bool isControl = IsWindowVisible(window) && IsDialog(GetParent(window)) && !IsDialog(window);
        if (isControl) reinterpret_cast<std::vector<HWND>*>(list)->push_back(window);
        return TRUE;
      },
      reinterpret_cast<LPARAM>(&windows));
  std::vector<Control> controls;
  for (HWND each : windows) {
    if (const Control control = ControlOf(each); !IsEmptyIcon(control)) controls.push_back(control);
  }
  return controls;
}

bool LabelFits(const Control& control, const TextSize& size) {
  const auto kind = control.style & SS_TYPEMASK;
  if (kind != SS_LEFT && kind != SS_CENTER && kind != SS_RIGHT) return true;
  const UINT prefix = (control.style & SS_NOPREFIX) != 0 ? DT_NOPREFIX : 0;
  const RECT needed = size.Of(control.text, DT_WORDBREAK | DT_EXPANDTABS | prefix, Width(control.place));
  return Width(needed) <= Width(control.place) && Height(needed) <= Height(control.place) + kTolerance;
}

bool ButtonFits(const Control& control, const TextSize& size) {
  const auto kind = control.style & BS_TYPEMASK;
  if (kind == BS_GROUPBOX) return true;
  const bool isPush = kind == BS_PUSHBUTTON || kind == BS_DEFPUSHBUTTON;
  return size.LineOf(control.text, 0) + size.Dots(isPush ? kButtonBorders : kChoiceBox) <=
         Width(control.place);
}

bool DropDownFits(const Control& control, const TextSize& size) {
  const LRESULT count = Ask(control.window, CB_GETCOUNT);
  for (LRESULT line = 0; line < count; ++line) {
    wchar_t text[kTextRoom] = L"";
    if (Ask(control.window, CB_GETLBTEXTLEN, static_cast<WPARAM>(line)) >= kTextRoom) return false;
    Ask(control.window, CB_GETLBTEXT, static_cast<WPARAM>(line), reinterpret_cast<LPARAM>(text));
    if (size.LineOf(text) + size.Dots(kArrow) > Width(control.place)) return false;
  }
  return true;
}

// Titles are read whole, and no column lies beyond the edge.
bool ColumnsFit(const Control& control, const TextSize& size) {
  const auto header = reinterpret_cast<HWND>(Ask(control.window, LVM_GETHEADER));
  const LRESULT count = Ask(header, HDM_GETITEMCOUNT);
  for (LRESULT column = 0; column < count; ++column) {
    wchar_t text[kTextRoom] = L"";
    HDITEMW item{};
    item.mask = HDI_TEXT | HDI_WIDTH;
    item.pszText = text;
    item.cchTextMax = kTextRoom;
    Ask(header, HDM_GETITEMW, static_cast<WPARAM>(column), reinterpret_cast<LPARAM>(&item));
    if (size.LineOf(text) + size.Dots(kTitleMargins) > item.cxy) return false;
  }
  return (GetWindowLongPtrW(control.window, GWL_STYLE) & WS_HSCROLL) == 0;
}

bool TabsFit(const Control& control) {
  const LRESULT count = Ask(control.window, TCM_GETITEMCOUNT);
  RECT last{};
  Ask(control.window, TCM_GETITEMRECT, static_cast<WPARAM>(count - 1), reinterpret_cast<LPARAM>(&last));
  return count == 0 || last.right <= Width(control.place);
}

bool Fits(const Control& control) {
  const TextSize size(control.window);
  if (control.kind == L"Static") return LabelFits(control, size);
  if (control.kind == L"Button") return ButtonFits(control, size);
  if (control.kind == L"ComboBox") return DropDownFits(control, size);
  if (control.kind == L"SysListView32") return ColumnsFit(control, size);
  return control.kind != L"SysTabControl32" || TabsFit(control);
}

bool IsInside(const Control& control) {
  RECT room{}, both{};
  GetClientRect(control.parent, &room);
  MapWindowPoints(control.parent, nullptr, reinterpret_cast<POINT*>(&room), 2);
  return IntersectRect(&both, &room, &control.place) && EqualRect(&both, &control.place);
}

bool Overlap(const Control& one, const Control& other) {
  RECT both{};
  return one.parent == other.parent && IntersectRect(&both, &one.place, &other.place);
}

// A drop-down beside a field that is typed into is as high as that.
bool IsUneven(const Control& one, const Control& other) {
  const bool isPair = (one.kind == L"Edit" && other.kind == L"ComboBox") ||
                      (one.kind == L"ComboBox" && other.kind == L"Edit");
  return isPair && one.place.top == other.place.top && one.place.bottom != other.place.bottom;
}

std::string Named(const Control& control) {
  const int size = WideCharToMultiByte(CP_UTF8, 0, control.text.c_str(), -1, nullptr, 0, nullptr, nullptr);
  std::string text(static_cast<size_t>(size), '\0');
  WideCharToMultiByte(CP_UTF8, 0, control.text.c_str(), -1, text.data(), size, nullptr, nullptr);
  text.resize(text.size() - 1);
  return "control " + std::to_string(GetDlgCtrlID(control.window)) + " '" + text + "'";
}

}  // namespace

std::string LayoutFault(HWND dialog) {
  const std::vector<Control> controls = ControlsOf(dialog);
  for (const Control& each : controls) {
    if (!IsInside(each)) return Named(each) + " stands outside";
    if (!Fits(each)) return Named(each) + " does not fit";
    for (const Control* other = &each + 1; other != controls.data() + controls.size(); ++other) {
      if (Overlap(each, *other)) return Named(each) + " overlaps " + Named(*other);
      if (IsUneven(each, *other)) return Named(each) + " is not as high as " + Named(*other);
    }
  }
  return {};
}

}  // namespace pictures
