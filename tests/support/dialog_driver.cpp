#include "tests/support/dialog_driver.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace orv::test {
namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kWait = std::chrono::seconds(10);
constexpr auto kWatchdog = std::chrono::seconds(60);
constexpr wchar_t kDialogClass[] = L"#32770";
constexpr wchar_t kMenuClass[] = L"#32768";
constexpr int kBoxText = 0xffff;

struct ScriptFailed : std::runtime_error {
  using std::runtime_error::runtime_error;
};

LPARAM EnabledControl(HWND dialog, int control) {
  if (!DialogScript::IsEnabled(dialog, control))
    throw ScriptFailed("disabled control pressed: " + std::to_string(control));
  return reinterpret_cast<LPARAM>(GetDlgItem(dialog, control));
}

bool IsOfClass(HWND window, const wchar_t* name) {
  wchar_t buffer[64] = {};
  GetClassNameW(window, buffer, 64);
  return std::wstring(buffer) == name;
}

std::vector<HWND> VisibleWindows(DWORD thread, const wchar_t* windowClass) {
  struct Search {
    const wchar_t* windowClass;
    std::vector<HWND> found;
  } search{windowClass, {}};
  EnumThreadWindows(
      thread,
      [](HWND window, LPARAM parameter) -> BOOL {
        auto& s = *reinterpret_cast<Search*>(parameter);
        const bool usable = IsWindowVisible(window) && IsWindowEnabled(window);
        if (usable && IsOfClass(window, s.windowClass)) s.found.push_back(window);
        return TRUE;
      },
      reinterpret_cast<LPARAM>(&search));
  return search.found;
}

}  // namespace

std::wstring WindowText(HWND window) {
  wchar_t buffer[1024] = {};
  DWORD_PTR length = 0;
  SendMessageTimeoutW(window, WM_GETTEXT, 1024, reinterpret_cast<LPARAM>(buffer), SMTO_NORMAL, 5000, &length);
  return buffer;
}

void DialogScript::WaitUntil(const std::function<bool()>& condition, const char* what) {
  const auto end = Clock::now() + kWait;
  while (!condition()) {
    if (Clock::now() > end) throw ScriptFailed(std::string("waited in vain: ") + what);
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

HWND DialogScript::NextWindow(const wchar_t* windowClass, const char* what) {
  HWND next = nullptr;
  WaitUntil(
      [&] {
        std::erase_if(given_, [](HWND window) { return !IsWindow(window); });
        const std::vector<HWND> windows = VisibleWindows(uiThread_, windowClass);
        const auto topmost = std::find_if(windows.begin(), windows.end(),
                                          [&](HWND window) { return !given_.contains(window); });
        if (topmost != windows.end()) next = *topmost;
        return next != nullptr;
      },
      what);
  given_.insert(next);
  return next;
}

HWND DialogScript::NextDialog() { return NextWindow(kDialogClass, "a dialog"); }
HWND DialogScript::NextMenu() { return NextWindow(kMenuClass, "a menu"); }

void DialogScript::WaitClosed(HWND window) {
  WaitUntil([=] { return !IsWindow(window); }, "a window to close");
}

void DialogScript::WaitEnabled(HWND window) {
  WaitUntil([=] { return IsWindowVisible(window) && IsWindowEnabled(window); },
            "a dialog to be usable again");
}

LRESULT DialogScript::Send(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  DWORD_PTR result = 0;
  const auto bound = static_cast<UINT>(std::chrono::milliseconds(kWait).count());
  if (!SendMessageTimeoutW(window, message, wParam, lParam, SMTO_NORMAL, bound, &result)) {
    throw ScriptFailed("message " + std::to_string(message) + " was not dealt with");
  }
  return static_cast<LRESULT>(result);
}

void DialogScript::Post(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (!PostMessageW(window, message, wParam, lParam)) throw ScriptFailed("a message could not be posted");
}

void DialogScript::Press(HWND dialog, int control) {
  Send(dialog, WM_COMMAND, MAKEWPARAM(control, BN_CLICKED), EnabledControl(dialog, control));
}

void DialogScript::PostPress(HWND dialog, int control) {
  Post(dialog, WM_COMMAND, MAKEWPARAM(control, BN_CLICKED), EnabledControl(dialog, control));
}

void DialogScript::Close(HWND dialog, int button) {
  PostPress(dialog, button);
  WaitClosed(dialog);
}

void DialogScript::Focus(HWND dialog, int control) {
  Send(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(GetDlgItem(dialog, control)), TRUE);
}

bool DialogScript::HasFocus(HWND dialog, int control) const {
  GUITHREADINFO info{};
  info.cbSize = sizeof(info);
  return GetGUIThreadInfo(uiThread_, &info) && info.hwndFocus == GetDlgItem(dialog, control);
}

std::wstring DialogScript::AnswerBox(int button) {
  const HWND box = NextDialog();
  const std::wstring text = WindowText(GetDlgItem(box, kBoxText));
  Close(box, button);
  return text;
}

std::vector<std::wstring> DialogScript::Items(HWND dialog, int list) {
  std::vector<std::wstring> items;
  const HWND box = GetDlgItem(dialog, list);
  const LRESULT count = Send(box, LB_GETCOUNT);
  for (LRESULT i = 0; i < count; ++i) {
    const auto index = static_cast<WPARAM>(i);
    std::wstring text(static_cast<std::size_t>(Send(box, LB_GETTEXTLEN, index)), L'\0');
    Send(box, LB_GETTEXT, index, reinterpret_cast<LPARAM>(text.data()));
    items.push_back(text);
  }
  return items;
}

int DialogScript::Selected(HWND dialog, int list) {
  return static_cast<int>(Send(GetDlgItem(dialog, list), LB_GETCURSEL));
}

void DialogScript::Select(HWND dialog, int list, int item) {
  const HWND box = GetDlgItem(dialog, list);
  Send(box, LB_SETCURSEL, static_cast<WPARAM>(item));
  Send(dialog, WM_COMMAND, MAKEWPARAM(list, LBN_SELCHANGE), reinterpret_cast<LPARAM>(box));
}

void DialogScript::PostDoubleClick(HWND dialog, int list, int item) {
  const HWND box = GetDlgItem(dialog, list);
  RECT place{};
  Send(box, LB_GETITEMRECT, static_cast<WPARAM>(item), reinterpret_cast<LPARAM>(&place));
  const LPARAM at = MAKELPARAM(place.left + 2, place.top + 2);
  for (const UINT press : {UINT{WM_LBUTTONDOWN}, UINT{WM_LBUTTONDBLCLK}}) {
    Post(box, press, MK_LBUTTON, at);
    Post(box, WM_LBUTTONUP, 0, at);
  }
}

DialogDriver::DialogDriver(std::function<void(DialogScript&)> script)
    : uiThread_(GetCurrentThreadId()),
      finished_(CreateEventW(nullptr, TRUE, FALSE, nullptr)),
      helper_([this, run = std::move(script)] { Run(run); }) {}

void DialogDriver::Finish() {
  if (!helper_.joinable()) return;
  SetEvent(finished_);
  helper_.join();
  CloseHandle(finished_);
}

void DialogDriver::Run(const std::function<void(DialogScript&)>& script) {
  try {
    DialogScript steps(uiThread_);
    script(steps);
  } catch (const std::exception& failure) {
    ADD_FAILURE() << "dialog script: " << failure.what();
    CloseWhatIsLeft();
    return;
  }
  // A script closes what it opened; give the modal call its time to return.
  const auto bound = static_cast<DWORD>(std::chrono::milliseconds(kWait).count());
  if (WaitForSingleObject(finished_, bound) == WAIT_OBJECT_0) return;
  ADD_FAILURE() << "dialog script: a window was left open";
  CloseWhatIsLeft();
}

// Cancels whatever is open until the modal call returns; a thread that hangs elsewhere ends the program.
void DialogDriver::CloseWhatIsLeft() {
  const auto end = Clock::now() + kWatchdog;
  while (WaitForSingleObject(finished_, 20) != WAIT_OBJECT_0) {
    for (const HWND window : VisibleWindows(uiThread_, kMenuClass))
      PostMessageW(window, WM_KEYDOWN, VK_ESCAPE, 0);
    for (const HWND window : VisibleWindows(uiThread_, kDialogClass)) {
      PostMessageW(window, WM_COMMAND, IDCANCEL, 0);
      PostMessageW(window, WM_COMMAND, IDNO, 0);
    }
    if (Clock::now() < end) continue;
    std::printf("WATCHDOG: the user interface thread hangs\n");
    std::fflush(stdout);
    TerminateProcess(GetCurrentProcess(), 7);
  }
}

}  // namespace orv::test
