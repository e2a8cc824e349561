// The procedure that all dialogs of a provider and their pages share.
#include <windows.h>
// After the system's own header.
#include <commctrl.h>

#include <algorithm>
#include <iterator>
#include <new>

#include "orv/kit/window.hpp"

namespace orv::kit {
namespace {

// A library's manifest is resource 2 of the type, by custom of the compilers.
constexpr WORD kManifest = 2;

// The common controls that the library's manifest asks for, while this lives.
class Controls {
 public:
  explicit Controls(HMODULE library) noexcept {
    ACTCTXW description{};
    description.cbSize = sizeof description;
    description.dwFlags = ACTCTX_FLAG_HMODULE_VALID | ACTCTX_FLAG_RESOURCE_NAME_VALID;
    description.hModule = library;
    description.lpResourceName = MAKEINTRESOURCEW(kManifest);
    context_ = CreateActCtxW(&description);
    isActive_ = context_ != INVALID_HANDLE_VALUE && ActivateActCtx(context_, &cookie_);
  }
  ~Controls() {
    if (isActive_) DeactivateActCtx(0, cookie_);
    if (context_ != INVALID_HANDLE_VALUE) ReleaseActCtx(context_);
  }
  Controls(const Controls&) = delete;
  Controls& operator=(const Controls&) = delete;

 private:
  HANDLE context_ = INVALID_HANDLE_VALUE;
  ULONG_PTR cookie_ = 0;
  bool isActive_ = false;
};

// Looks at the keys of modal dialogs, which the system reads, while it lives.
class KeyHook {
 public:
  explicit KeyHook(HOOKPROC see)
      : hook_(SetWindowsHookExW(WH_MSGFILTER, see, nullptr, GetCurrentThreadId())) {}
  ~KeyHook() {
    if (hook_ != nullptr) UnhookWindowsHookEx(hook_);
  }
  KeyHook(const KeyHook&) = delete;
  KeyHook& operator=(const KeyHook&) = delete;

 private:
  HHOOK hook_;
};

LONG Width(const RECT& r) { return r.right - r.left; }
LONG Height(const RECT& r) { return r.bottom - r.top; }

RECT RectangleOf(HWND window) {
  RECT rectangle{};
  GetWindowRect(window, &rectangle);
  return rectangle;
}

RECT ScreenOf(HWND window) {
  MONITORINFO info{};
  info.cbSize = sizeof info;
  GetMonitorInfoW(MonitorFromWindow(window, MONITOR_DEFAULTTONEAREST), &info);
  return info.rcWork;
}

LONG Inside(LONG at, LONG size, LONG begin, LONG end) { return std::max(begin, std::min(at, end - size)); }

void CentreOver(HWND window, HWND owner) {
  const RECT own = RectangleOf(window), screen = ScreenOf(owner != nullptr ? owner : window);
  const RECT below = owner != nullptr && IsWindowVisible(owner) ? RectangleOf(owner) : screen;
  const LONG left = below.left + (Width(below) - Width(own)) / 2,
             top = below.top + (Height(below) - Height(own)) / 2;
  SetWindowPos(window, nullptr, Inside(left, Width(own), screen.left, screen.right),
               Inside(top, Height(own), screen.top, screen.bottom), 0, 0,
               SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

// As a page of a property sheet is drawn.
void DrawAsPage(HWND page) {
  constexpr DWORD kEnableTab = 6;
  using Enable = HRESULT(WINAPI*)(HWND, DWORD);
  const HMODULE themes = GetModuleHandleW(L"uxtheme.dll");
  if (themes == nullptr) return;
  const auto enable =
      reinterpret_cast<Enable>(reinterpret_cast<void*>(GetProcAddress(themes, "EnableThemeDialogTexture")));
  if (enable != nullptr) enable(page, kEnableTab);
}

bool IsEdit(HWND control) {
  wchar_t name[16] = L"";
  GetClassNameW(control, name, static_cast<int>(std::size(name)));
  return lstrcmpiW(name, L"Edit") == 0;
}

void ShowTopic(HWND dialog, const std::wstring& topic) {
  constexpr UINT kDisplayTopic = 0;
  using HtmlHelp = HWND(WINAPI*)(HWND, LPCWSTR, UINT, DWORD_PTR);
  static const HMODULE help = LoadLibraryExW(L"hhctrl.ocx", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
  const auto show =
      help == nullptr
          ? nullptr
          : reinterpret_cast<HtmlHelp>(reinterpret_cast<void*>(GetProcAddress(help, "HtmlHelpW")));
  if (show != nullptr) show(dialog, topic.c_str(), kDisplayTopic, 0);
}

}  // namespace

INT_PTR Dialog::Show(HWND owner) {
  const DLGTEMPLATE* found = language_.Template(template_);
  if (found == nullptr) return kNotShown;
  const Controls controls(language_.Module());
  const KeyHook keys(&Dialog::SeeKey);
  const INT_PTR result = DialogBoxIndirectParamW(language_.Module(), found, owner, &Dialog::Procedure,
                                                 reinterpret_cast<LPARAM>(this));
  window_ = tabs_ = nullptr;
  pages_.clear();
  page_ = 0;
  hasFocus_ = false;
  // 0 is how an owner that is no window is reported; nothing closes a dialog with it.
  return result == 0 ? kNotShown : result;
}

INT_PTR CALLBACK Dialog::Procedure(HWND window, UINT message, WPARAM first, LPARAM second) {
  if (message == WM_INITDIALOG) SetWindowLongPtrW(window, DWLP_USER, second);
  // A few messages come before WM_INITDIALOG.
  auto* dialog = reinterpret_cast<Dialog*>(GetWindowLongPtrW(window, DWLP_USER));
  return dialog == nullptr ? FALSE : dialog->DispatchGuarded(window, message, first, second);
}

// The system calls us here, so no exception may pass.
INT_PTR Dialog::DispatchGuarded(HWND window, UINT message, WPARAM first, LPARAM second) noexcept {
  try {
    try {
      return Dispatch(window, message, first, second);
    } catch (const std::bad_alloc&) {
      if (message == WM_COMMAND) Tell(language_.Text(kNoMemoryText));
    }
  } catch (...) {
  }
  if (message == WM_INITDIALOG) EndDialog(window_, kNotShown);
  return TRUE;
}

INT_PTR Dialog::Dispatch(HWND window, UINT message, WPARAM first, LPARAM second) {
  switch (message) {
    case WM_INITDIALOG:
      if (window_ != nullptr) return DrawAsPage(window), TRUE;
      window_ = window;
      return Begin();
    case WM_COMMAND:
      return Command(LOWORD(first), HIWORD(first)), TRUE;
    case WM_NOTIFY:
      return Notified(window, *reinterpret_cast<const NMHDR*>(second));
    case WM_CTLCOLORSTATIC:
      // An edit that can only be read looks so on a page too, whose texture would be behind it like paper.
      return IsEdit(reinterpret_cast<HWND>(second)) ? DefWindowProcW(window, message, first, second) : FALSE;
    case WM_HELP:
      return Help(static_cast<HWND>(reinterpret_cast<const HELPINFO*>(second)->hItemHandle)), TRUE;
    default:
      return window == window_ && OnMessage(message, first, second);
  }
}

bool Dialog::Begin() {
  CentreOver(window_, GetWindow(window_, GW_OWNER));
  OnShow();
  return !hasFocus_;
}

INT_PTR Dialog::Notified(HWND window, const NMHDR& header) {
  if (header.hwndFrom == tabs_ && header.code == static_cast<UINT>(TCN_SELCHANGE)) {
    ShowPage(static_cast<int>(SendMessageW(tabs_, TCM_GETCURSEL, 0, 0)));
    return TRUE;
  }
  SetWindowLongPtrW(window, DWLP_MSGRESULT, OnNotify(header));
  return TRUE;
}

void Dialog::Command(int control, int notification) {
  if (OnCommand(control, notification)) return;
  if (control == IDOK) OnOk();
  if (control == IDCANCEL) OnCancel();
}

bool Dialog::OnCommand(int, int) { return false; }
LRESULT Dialog::OnNotify(const NMHDR&) { return 0; }
bool Dialog::OnKey(int, UINT) { return false; }
bool Dialog::OnMessage(UINT, WPARAM, LPARAM) { return false; }

void Dialog::Close(INT_PTR result) { EndDialog(window_, result); }

// ---- Controls

HWND Dialog::Item(int control) const noexcept {
  if (const HWND item = GetDlgItem(window_, control); item != nullptr) return item;
  for (const HWND page : pages_) {
    if (const HWND item = GetDlgItem(page, control); item != nullptr) return item;
  }
  return nullptr;
}

std::wstring Dialog::TextOf(int control) const {
  const HWND item = Item(control);
  std::wstring text(static_cast<size_t>(GetWindowTextLengthW(item)) + 1, L'\0');
  text.resize(static_cast<size_t>(GetWindowTextW(item, text.data(), static_cast<int>(text.size()))));
  return text;
}

void Dialog::SetText(int control, const std::wstring& text) const {
  SetWindowTextW(Item(control), text.c_str());
}

void Dialog::LimitText(int control, int characters) const {
  SendMessageW(Item(control), EM_LIMITTEXT, static_cast<WPARAM>(characters), 0);
}

void Dialog::Enable(int control, bool isEnabled) const { EnableWindow(Item(control), isEnabled); }

void Dialog::SetReadOnly(int control, bool isReadOnly) const {
  SendMessageW(Item(control), EM_SETREADONLY, isReadOnly, 0);
}

void Dialog::Check(int control, bool isChecked) const {
  SendMessageW(Item(control), BM_SETCHECK, isChecked ? BST_CHECKED : BST_UNCHECKED, 0);
}

bool Dialog::IsChecked(int control) const {
  return SendMessageW(Item(control), BM_GETCHECK, 0, 0) == BST_CHECKED;
}

void Dialog::FocusOn(int control) {
  if (const int page = PageWith(Item(control)); page >= 0) ShowPage(page);
  SendMessageW(window_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(Item(control)), TRUE);
  hasFocus_ = true;
}

int Dialog::Tell(const std::wstring& text, UINT style) const {
  std::wstring caption(256, L'\0');
  caption.resize(
      static_cast<size_t>(GetWindowTextW(window_, caption.data(), static_cast<int>(caption.size()))));
  const UINT direction = language_.IsRightToLeft() ? MB_RTLREADING | MB_RIGHT : 0;
  return MessageBoxW(window_, text.c_str(), caption.c_str(), style | direction);
}

bool Dialog::Ask(const std::wstring& text) const {
  return Tell(text, MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2) == IDYES;
}

// ---- Pages

void Dialog::AddPage(int tabControl, WORD dialogTemplate, const std::wstring& title) {
  tabs_ = GetDlgItem(window_, tabControl);
  const HWND page = CreateDialogIndirectParamW(language_.Module(), language_.Template(dialogTemplate),
                                               window_, &Dialog::Procedure, reinterpret_cast<LPARAM>(this));
  if (page == nullptr) throw std::bad_alloc();
  pages_.push_back(page);
  TCITEMW item{};
  item.mask = TCIF_TEXT;
  item.pszText = const_cast<wchar_t*>(title.c_str());
  SendMessageW(tabs_, TCM_INSERTITEMW, pages_.size() - 1, reinterpret_cast<LPARAM>(&item));
  PlacePage(page);
  if (pages_.size() == 1) ShowPage(0);
}

// Inside the tab control, and after it in the order of the Tab key.
void Dialog::PlacePage(HWND page) const {
  RECT inside = RectangleOf(tabs_);
  MapWindowPoints(nullptr, window_, reinterpret_cast<POINT*>(&inside), 2);
  SendMessageW(tabs_, TCM_ADJUSTRECT, FALSE, reinterpret_cast<LPARAM>(&inside));
  const HWND before = pages_.size() > 1 ? pages_[pages_.size() - 2] : tabs_;
  SetWindowPos(page, before, inside.left, inside.top, Width(inside), Height(inside), SWP_NOACTIVATE);
}

void Dialog::ShowPage(int page) {
  page_ = page;
  SendMessageW(tabs_, TCM_SETCURSEL, static_cast<WPARAM>(page), 0);
  for (size_t i = 0; i < pages_.size(); ++i)
    ShowWindow(pages_[i], static_cast<int>(i) == page ? SW_SHOWNA : SW_HIDE);
}

int Dialog::PageWith(HWND control) const {
  const auto found = std::find_if(pages_.begin(), pages_.end(), [control](HWND page) {
    return control != nullptr && IsChild(page, control);
  });
  return found == pages_.end() ? -1 : static_cast<int>(found - pages_.begin());
}

// The dialog that a message is for, where it is one of ours.
Dialog* Dialog::Of(HWND control) {
  const HWND root = GetAncestor(control, GA_ROOT);
  const bool isOurs =
      root != nullptr && GetWindowLongPtrW(root, DWLP_DLGPROC) == reinterpret_cast<LONG_PTR>(&Procedure);
  return isOurs ? reinterpret_cast<Dialog*>(GetWindowLongPtrW(root, DWLP_USER)) : nullptr;
}

LRESULT CALLBACK Dialog::SeeKey(int code, WPARAM first, LPARAM second) {
  const MSG* message = code == MSGF_DIALOGBOX ? reinterpret_cast<const MSG*>(second) : nullptr;
  Dialog* dialog = message != nullptr && message->message == WM_KEYDOWN ? Of(message->hwnd) : nullptr;
  if (dialog != nullptr && dialog->SeenKey(*message)) return TRUE;
  return CallNextHookEx(nullptr, code, first, second);
}

// The system calls the hook.
bool Dialog::SeenKey(const MSG& message) {
  if (!IsChild(window_, message.hwnd)) return false;
  try {
    return TurnPage(message) || OnKey(GetDlgCtrlID(message.hwnd), static_cast<UINT>(message.wParam));
  } catch (...) {
    Tell(language_.Text(kNoMemoryText));
    return true;
  }
}

// As in property sheets: the focus stays on the tabs, and goes from a page's controls to the first of the next page.
bool Dialog::TurnPage(const MSG& message) {
  const bool isOurs = message.wParam == VK_TAB && GetKeyState(VK_CONTROL) < 0 && pages_.size() > 1;
  if (!isOurs) return false;
  const int count = static_cast<int>(pages_.size());
  ShowPage((page_ + (GetKeyState(VK_SHIFT) < 0 ? count - 1 : 1)) % count);
  const HWND next = message.hwnd == tabs_ ? tabs_ : GetNextDlgTabItem(window_, tabs_, FALSE);
  SendMessageW(window_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(next), TRUE);
  return true;
}

// ---- Help

UINT Dialog::TopicOf(HWND control) const {
  constexpr int kLabel = 0xFFFF;  // as templates of controls keep -1
  const int own = GetDlgCtrlID(control) & kLabel;
  const int wanted = own == kLabel ? GetDlgCtrlID(GetWindow(control, GW_HWNDNEXT)) : own;
  const auto found = std::find_if(topics_.begin(), topics_.end(),
                                  [wanted](const HelpTopic& each) { return each.control == wanted; });
  return found == topics_.end() ? 0 : found->topic;
}

void Dialog::Help(HWND control) const {
  if (const UINT topic = TopicOf(control); topic != 0)
    ShowTopic(window_, language_.HelpFile() + L"::/" + std::to_wstring(topic) + L".htm>Popup");
}

}  // namespace orv::kit
