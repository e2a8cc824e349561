// Waits poll with a bound; every message that is sent has one too.
#include "tools/pictures/stage.h"

#include <commctrl.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <thread>
#include <vector>

#include "tools/pictures/bitmap_file.h"
#include "tools/pictures/layout.h"

namespace pictures {
namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kWait = std::chrono::minutes(1);
constexpr auto kWaitForMessage = static_cast<UINT>(std::chrono::milliseconds(kWait).count());
constexpr wchar_t kDialogClass[] = L"#32770";
constexpr wchar_t kMenuClass[] = L"#32768";
constexpr int kBoxText = 0xffff;
constexpr int kTextRoom = 512;
constexpr int kClassRoom = 64;

std::atomic<int> g_layoutFaults = 0;

[[noreturn]] void Fail(int number, const std::string& what) {
  throw std::runtime_error("window " + std::to_string(number) + ": " + what);
}

void WaitUntil(const std::function<bool()>& condition, int number, const char* what) {
  const auto end = Clock::now() + kWait;
  while (!condition()) {
    if (Clock::now() > end) Fail(number, std::string("waited in vain for ") + what);
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

bool IsUsable(HWND window) { return IsWindowVisible(window) && IsWindowEnabled(window); }

// What lies outside is not drawn anywhere.
bool IsOnScreen(HWND window) {
  RECT bounds{};
  RECT screen{};
  RECT both{};
  GetWindowRect(window, &bounds);
  GetWindowRect(GetDesktopWindow(), &screen);
  return IntersectRect(&both, &bounds, &screen) && EqualRect(&both, &bounds);
}

bool IsOfClass(HWND window, const std::wstring& name) {
  wchar_t buffer[kClassRoom] = L"";
  GetClassNameW(window, buffer, kClassRoom);
  return buffer == name;
}

std::vector<HWND> WindowsOf(DWORD thread) {
  std::vector<HWND> found;
  EnumThreadWindows(
      thread,
      [](HWND window, LPARAM list) -> BOOL {
        reinterpret_cast<std::vector<HWND>*>(list)->push_back(window);
        return TRUE;
      },
      reinterpret_cast<LPARAM>(&found));
  return found;
}

std::wstring TextOfWindow(HWND window) {
  wchar_t buffer[kTextRoom] = L"";
  DWORD_PTR length = 0;
  SendMessageTimeoutW(window, WM_GETTEXT, kTextRoom, reinterpret_cast<LPARAM>(buffer), SMTO_NORMAL,
                      kWaitForMessage, &length);
  return buffer;
}

std::wstring TextOfCompanion(HMODULE companion, int number) {
  wchar_t buffer[kTextRoom] = L"";
  LoadStringW(companion, static_cast<UINT>(number), buffer, kTextRoom);
  return buffer;
}

// A text may have a place for a value, or be the first line of a message.
bool IsMadeOf(const std::wstring& shown, const std::wstring& text) {
  const std::size_t value = text.find(L"%1");
  if (value == std::wstring::npos) return shown == text || shown.starts_with(text + L"\n");
  return shown.starts_with(text.substr(0, value)) && shown.ends_with(text.substr(value + 2));
}

// Either thread's failure ends both: the other one would wait for it.
void OrEnd(const Edition& edition, const std::string& scene, const std::function<void()>& part) {
  try {
    part();
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "pictures: %ls, %s: %s\n", edition.language.c_str(), scene.c_str(), failure.what());
    std::fflush(stderr);
    std::_Exit(1);
  }
}

}  // namespace

// Captions are drawn in their own colour while the window is active and in front.
HWND Script::NextDialog(int number) {
  HWND dialog = NextWindow(number, kDialogClass);
  WaitUntil([=, this] { return IsActive(dialog); }, number, "it to be active");
  WaitUntil([=] { return GetForegroundWindow() == dialog; }, number, "it to be in front");
  Settle(number);
  return dialog;
}

// A menu is never active.
HWND Script::NextMenu(int number) { return NextWindow(number, kMenuClass); }

HWND Script::NextWindow(int number, const wchar_t* windowClass) {
  HWND next = nullptr;
  WaitUntil(
      [&] {
        for (HWND window : WindowsOf(uiThread_)) {
          if (IsUsable(window) && IsOfClass(window, windowClass) && !given_.contains(window)) next = window;
        }
        return next != nullptr;
      },
      number, "it to come up");
  given_.emplace(next, number);
  return next;
}

bool Script::IsActive(HWND window) const {
  GUITHREADINFO info{};
  info.cbSize = sizeof(info);
  return GetGUIThreadInfo(uiThread_, &info) && info.hwndActive == window;
}

// A dialog drops most of what comes to it in the middle of a command, so that is waited for.
void Script::Settle(int number) {
  const int rings = bell_.Ring();
  WaitUntil([=, this] { return bell_.Rung() >= rings; }, number, "its messages");
}

LRESULT Script::Send(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  DWORD_PTR result = 0;
  if (!SendMessageTimeoutW(window, message, wParam, lParam, SMTO_NORMAL, kWaitForMessage, &result))
    Fail(NumberOf(window), "message " + std::to_string(message) + " was not dealt with");
  return static_cast<LRESULT>(result);
}

void Script::Post(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (!PostMessageW(window, message, wParam, lParam))
    Fail(NumberOf(window), "message " + std::to_string(message) + " could not be posted");
}

// Of the window or the one that it is a control of.
int Script::NumberOf(HWND window) const {
  const auto found = given_.find(GetAncestor(window, GA_ROOT));
  return found != given_.end() ? found->second : 0;
}

// What controls are made of may have the same numbers.
HWND Script::Control(HWND dialog, int control) const {
  HWND found = GetDlgItem(dialog, control);
  for (HWND page = nullptr; found == nullptr;) {
    page = FindWindowExW(dialog, page, kDialogClass, nullptr);
    if (page == nullptr) Fail(NumberOf(dialog), "there is no control " + std::to_string(control));
    found = GetDlgItem(page, control);
  }
  return found;
}

void Script::Press(HWND dialog, int button) {
  HWND control = Control(dialog, button);
  if (!IsWindowEnabled(control)) Fail(NumberOf(dialog), "button " + std::to_string(button) + " is disabled");
  Post(GetParent(control), WM_COMMAND, static_cast<WPARAM>(MAKELONG(button, BN_CLICKED)),
       reinterpret_cast<LPARAM>(control));
}

void Script::Close(HWND dialog, int button) {
  Press(dialog, button);
  WaitGone(dialog);
}

void Script::WaitGone(HWND window) {
  WaitUntil([=] { return !IsWindow(window); }, given_[window], "it to go");
  // Its handle may come back for a later one.
  given_.erase(window);
}

void Script::WaitUsable(HWND dialog) {
  const int number = NumberOf(dialog);
  WaitUntil([=, this] { return IsUsable(dialog) && IsActive(dialog); }, number, "it to be usable again");
  Settle(number);
}

// The notification is posted: a loop deals with it, so no command is running.
void Script::Choose(HWND dialog, int list, int line) {
  HWND box = GetDlgItem(dialog, list);
  if (Send(box, LB_SETCURSEL, static_cast<WPARAM>(line)) == LB_ERR)
    Fail(NumberOf(dialog), "no line " + std::to_string(line));
  Post(dialog, WM_COMMAND, static_cast<WPARAM>(MAKELONG(list, LBN_SELCHANGE)), reinterpret_cast<LPARAM>(box));
  Settle(NumberOf(dialog));
}

void Script::Choose(HWND dialog, int list, const std::wstring& text) {
  constexpr auto kFromTheTop = static_cast<WPARAM>(-1);
  const LRESULT line =
      Send(GetDlgItem(dialog, list), LB_FINDSTRINGEXACT, kFromTheTop, reinterpret_cast<LPARAM>(text.c_str()));
  if (line < 0) Fail(NumberOf(dialog), "a line of its list is missing");
  Choose(dialog, list, static_cast<int>(line));
}

// Names below others are indented.
void Script::ChooseDropped(HWND dialog, int dropDown, const std::wstring& beginning) {
  HWND box = Control(dialog, dropDown);
  const LRESULT count = Send(box, CB_GETCOUNT);
  for (LRESULT line = 0; line < count; ++line) {
    wchar_t text[kTextRoom] = L"";
    Send(box, CB_GETLBTEXT, static_cast<WPARAM>(line), reinterpret_cast<LPARAM>(text));
    const std::wstring name = text;
    if (name.compare(std::min(name.find_first_not_of(L' '), name.size()), beginning.size(), beginning) != 0)
      continue;
    Send(box, CB_SETCURSEL, static_cast<WPARAM>(line));
    Post(GetParent(box), WM_COMMAND, static_cast<WPARAM>(MAKELONG(dropDown, CBN_SELCHANGE)),
         reinterpret_cast<LPARAM>(box));
    return Settle(NumberOf(dialog));
  }
  Fail(NumberOf(dialog), "a line of its drop-down is missing");
}

void Script::Check(HWND dialog, std::pair<int, int> group, int button) {
  for (int each = group.first; each <= group.second; ++each)
    Send(Control(dialog, each), BM_SETCHECK, each == button ? BST_CHECKED : BST_UNCHECKED);
  Focus(dialog, button);
}

void Script::Mark(HWND dialog, int list, int line) {
  if (Send(GetDlgItem(dialog, list), LB_SETSEL, TRUE, line) == LB_ERR)
    Fail(NumberOf(dialog), "no line " + std::to_string(line));
}

void Script::MarkNone(HWND dialog, int list) { Send(GetDlgItem(dialog, list), LB_SETSEL, FALSE, -1); }

void Script::WaitLines(HWND dialog, int list, int count) {
  HWND box = GetDlgItem(dialog, list);
  WaitUntil([=, this] { return Send(box, LB_GETCOUNT) == count; }, NumberOf(dialog), "lines in a list");
  Settle(NumberOf(dialog));
}

void Script::Type(HWND dialog, int edit, const std::wstring& text) {
  Send(Control(dialog, edit), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
  Settle(NumberOf(dialog));
}

void Script::Focus(HWND dialog, int control) {
  Send(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(Control(dialog, control)), TRUE);
  Settle(NumberOf(dialog));
}

void Script::TurnTo(HWND dialog, int tabs, int page) {
  Send(Control(dialog, tabs), TCM_SETCURFOCUS, static_cast<WPARAM>(page));
  Settle(NumberOf(dialog));
}

void Script::Photograph(HWND window, const std::wstring& variant) {
  PhotographAsIs(window, variant);
  const std::string fault = LayoutFault(window);
  if (fault.empty()) return;
  ++g_layoutFaults;
  std::fprintf(stderr, "pictures: %ls, window %d%ls: %s\n", edition_.language.c_str(), NumberOf(window),
               variant.c_str(), fault.c_str());
}

void Script::PhotographAsIs(HWND window, const std::wstring& variant) {
  const int number = NumberOf(window);
  if (!IsOnScreen(window)) Fail(number, "it is not wholly on the screen");
  // Letters of access keys are underlined only after a key was pressed, unless asked for.
  Send(window, WM_UPDATEUISTATE, MAKEWPARAM(UIS_CLEAR, UISF_HIDEACCEL | UISF_HIDEFOCUS));
  Settle(number);
  if (!bell_.Paint(window, kWaitForMessage)) Fail(number, "it does not paint itself");
  if (!SaveWindow(window, edition_.prefix + std::to_wstring(number) + variant + L".bmp"))
    Fail(number, "no picture could be taken");
}

void Script::PhotographPages(HWND window, int tabs, const std::wstring& variant) {
  const auto count = static_cast<int>(Send(Control(window, tabs), TCM_GETITEMCOUNT));
  for (int page = 0; page < count; ++page) {
    TurnTo(window, tabs, page);
    Photograph(window, variant + L"-" + std::to_wstring(page + 1));
  }
}

void Script::ShowOver(HWND dialog, int button, int number, int tabs, const std::wstring& variant) {
  Press(dialog, button);
  HWND window = NextDialog(number);
  tabs == 0 ? Photograph(window, variant) : PhotographPages(window, tabs, variant);
  Close(window, IDCANCEL);
  WaitUsable(dialog);
}

void Script::AnswerBox(int number, int button, const std::wstring& variant) {
  HWND box = NextDialog(number);
  Photograph(box, variant);
  Close(box, button);
}

void Script::Answer(int text, int button, const std::wstring& variant) {
  HWND box = NextDialog(text);
  const std::wstring shown = TextOfWindow(GetDlgItem(box, kBoxText));
  if (!IsMadeOf(shown, TextOfCompanion(edition_.texts, text))) Fail(text, "another message came up");
  Photograph(box, variant);
  Close(box, button);
}

void Script::AnswerAfter(HWND dialog, int pressed, int text, int button, const std::wstring& variant) {
  Press(dialog, pressed);
  Answer(text, button, variant);
  WaitUsable(dialog);
}

void Script::RunOrvctl(const std::wstring& arguments) {
  std::wstring line = L"\"" + edition_.folder + L"orvctl.exe\" " + arguments;
  STARTUPINFOW start{};
  start.cb = sizeof start;
  PROCESS_INFORMATION process{};
  if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, CREATE_NO_WINDOW, nullptr, nullptr,
                      &start, &process))
    Fail(0, "orvctl does not start");
  CloseHandle(process.hThread);
  const bool hasEnded = WaitForSingleObject(process.hProcess, kWaitForMessage) == WAIT_OBJECT_0;
  DWORD code = 1;
  GetExitCodeProcess(process.hProcess, &code);
  CloseHandle(process.hProcess);
  if (!hasEnded || code != 0) Fail(0, "orvctl failed with " + std::to_string(code));
}

bool AllFitted() { return g_layoutFaults == 0; }

void Play(const Edition& edition, const std::string& scene, const std::function<void()>& show,
          const std::function<void(Script&)>& script) {
  Bell bell;
  const std::jthread user([&, uiThread = GetCurrentThreadId()] {
    OrEnd(edition, scene, [&] {
      Script steps(edition, uiThread, bell);
      script(steps);
    });
  });
  OrEnd(edition, scene, show);
}

}  // namespace pictures
