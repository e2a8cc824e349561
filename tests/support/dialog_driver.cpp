#include "tests/support/dialog_driver.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace orv::test {
namespace {

using Clock = std::chrono::steady_clock;

constexpr DWORD kWaitMilliseconds = 60'000;
constexpr auto kWatchdog = std::chrono::seconds(60);
constexpr int kBoxText = 0xffff;

struct ScriptFailed : std::runtime_error {
  using std::runtime_error::runtime_error;
};

LPARAM EnabledControl(HWND dialog, int control) {
  if (!DialogScript::IsEnabled(dialog, control))
    throw ScriptFailed("disabled control pressed: " + std::to_string(control));
  return reinterpret_cast<LPARAM>(GetDlgItem(dialog, control));
}

std::vector<HWND> VisibleWindows(DWORD thread, std::wstring_view windowClass) {
  std::vector<HWND> windows;
  const auto add = [](HWND window, LPARAM all) -> BOOL {
    reinterpret_cast<std::vector<HWND>*>(all)->push_back(window);
    return TRUE;
  };
  EnumThreadWindows(thread, add, reinterpret_cast<LPARAM>(&windows));
  std::erase_if(windows, [&](HWND window) {
    wchar_t name[64] = {};
    GetClassNameW(window, name, 64);
    return !IsWindowVisible(window) || !IsWindowEnabled(window) || name != windowClass;
  });
  return windows;
}

}  // namespace

std::wstring WindowText(HWND window) {
  wchar_t buffer[1024] = {};
  DWORD_PTR length = 0;
  SendMessageTimeoutW(window, WM_GETTEXT, 1024, reinterpret_cast<LPARAM>(buffer), SMTO_NORMAL, 5000, &length);
  return buffer;
}

void DialogScript::WaitUntil(const std::function<bool()>& condition, const char* what) {
  const auto end = Clock::now() + std::chrono::milliseconds(kWaitMilliseconds);
  while (!condition()) {
    if (Clock::now() > end) throw ScriptFailed(std::string("waited in vain: ") + what);
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

HWND DialogScript::NextWindow(const wchar_t* windowClass, const char* what) {
  std::vector<HWND> windows;
  const auto appeared = [&] {
    std::erase_if(given_, [](HWND window) { return !IsWindow(window); });
    windows = VisibleWindows(uiThread_, windowClass);
    std::erase_if(windows, [&](HWND window) { return given_.contains(window); });
    return !windows.empty();
  };
  WaitUntil(appeared, what);
  given_.insert(windows.front());  // the topmost
  return windows.front();
}

LRESULT DialogScript::Send(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  DWORD_PTR result = 0;
  if (!SendMessageTimeoutW(window, message, wParam, lParam, SMTO_NORMAL, kWaitMilliseconds, &result)) {
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
  if (!script) return CloseWhatIsLeft();
  try {
    DialogScript steps(uiThread_);
    script(steps);
    // A script closes what it opened; give the modal call its time to return.
    if (WaitForSingleObject(finished_, kWaitMilliseconds) == WAIT_OBJECT_0) return;
    ADD_FAILURE() << "dialog script: a window was left open";
  } catch (const std::exception& failure) {
    ADD_FAILURE() << "dialog script: " << failure.what();
  }
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
