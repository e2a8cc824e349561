// Waits poll with a bound; every message that is sent has one too.
#include "tools/pictures/stage.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <thread>
#include <vector>

#include "tools/pictures/bitmap_file.h"

namespace pictures {
namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kWait = std::chrono::seconds(20);
constexpr int kBoxText = 0xffff;
constexpr int kTextRoom = 512;

void WaitUntil(const std::function<bool()>& condition, const char* what) {
  const auto end = Clock::now() + kWait;
  while (!condition()) {
    if (Clock::now() > end) throw std::runtime_error(std::string("waited in vain: ") + what);
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

bool IsUsable(HWND window) { return IsWindowVisible(window) && IsWindowEnabled(window); }

bool IsOfClass(HWND window, const wchar_t* name) {
  wchar_t buffer[64] = L"";
  GetClassNameW(window, buffer, 64);
  return std::wstring(buffer) == name;
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
  SendMessageTimeoutW(window, WM_GETTEXT, kTextRoom, reinterpret_cast<LPARAM>(buffer), SMTO_NORMAL, 5000,
                      &length);
  return buffer;
}

std::wstring TextOfCompanion(HMODULE companion, UINT number) {
  wchar_t buffer[kTextRoom] = L"";
  LoadStringW(companion, number, buffer, kTextRoom);
  return buffer;
}

// Either thread's failure ends both: the other one would wait for it.
void OrEnd(const std::function<void()>& part) {
  try {
    part();
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "pictures: %s\n", failure.what());
    std::fflush(stderr);
    std::_Exit(1);
  }
}

}  // namespace

HWND Script::NextWindow(const wchar_t* windowClass, const char* what) {
  HWND next = nullptr;
  WaitUntil(
      [&] {
        for (HWND window : WindowsOf(uiThread_)) {
          if (IsUsable(window) && IsOfClass(window, windowClass) && !given_.contains(window)) next = window;
        }
        return next != nullptr;
      },
      what);
  given_.insert(next);
  return next;
}

void Script::Send(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  DWORD_PTR result = 0;
  const auto bound = static_cast<UINT>(std::chrono::milliseconds(kWait).count());
  if (!SendMessageTimeoutW(window, message, wParam, lParam, SMTO_NORMAL, bound, &result))
    throw std::runtime_error("a message was not dealt with");
}

void Script::Post(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (!PostMessageW(window, message, wParam, lParam))
    throw std::runtime_error("a message could not be posted");
}

void Script::Press(HWND dialog, int button) {
  HWND control = GetDlgItem(dialog, button);
  if (!IsWindowEnabled(control)) throw std::runtime_error("disabled: button " + std::to_string(button));
  Post(dialog, WM_COMMAND, static_cast<WPARAM>(MAKELONG(button, BN_CLICKED)),
       reinterpret_cast<LPARAM>(control));
}

void Script::Close(HWND dialog, int button) {
  Press(dialog, button);
  WaitGone(dialog);
}

void Script::WaitGone(HWND window) {
  WaitUntil([=] { return !IsWindow(window); }, "a window to go");
  // Its number may come back for a later one.
  given_.erase(window);
}

void Script::WaitUsable(HWND dialog) {
  WaitUntil([=] { return IsUsable(dialog); }, "a dialog to be usable again");
  Send(dialog, WM_NULL);
}

void Script::Choose(HWND dialog, int list, int line) {
  HWND box = GetDlgItem(dialog, list);
  Send(box, LB_SETCURSEL, static_cast<WPARAM>(line));
  Send(dialog, WM_COMMAND, static_cast<WPARAM>(MAKELONG(list, LBN_SELCHANGE)), reinterpret_cast<LPARAM>(box));
}

void Script::Mark(HWND dialog, int list, int line) { Send(GetDlgItem(dialog, list), LB_SETSEL, TRUE, line); }

void Script::MarkNone(HWND dialog, int list) { Send(GetDlgItem(dialog, list), LB_SETSEL, FALSE, -1); }

void Script::WaitLines(HWND dialog, int list, int count) {
  HWND box = GetDlgItem(dialog, list);
  WaitUntil([=] { return SendMessageW(box, LB_GETCOUNT, 0, 0) == count; }, "lines in a list");
}

void Script::Type(HWND edit, const std::wstring& text) {
  Send(edit, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
}

void Script::Photograph(HWND window, int number) {
  // Letters of access keys are underlined only after a key was pressed, unless asked for.
  Send(window, WM_UPDATEUISTATE, MAKEWPARAM(UIS_CLEAR, UISF_HIDEACCEL | UISF_HIDEFOCUS));
  RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_FRAME | RDW_ALLCHILDREN | RDW_UPDATENOW);
  Send(window, WM_NULL);
  if (!SaveWindow(window, edition_.prefix + std::to_wstring(number) + L".bmp"))
    throw std::runtime_error("no picture of " + std::to_string(number));
}

void Script::Answer(UINT text, int button) {
  HWND box = NextDialog();
  if (TextOfWindow(GetDlgItem(box, kBoxText)) != TextOfCompanion(edition_.texts, text))
    throw std::runtime_error("another message than " + std::to_string(text));
  Photograph(box, static_cast<int>(text));
  Close(box, button);
}

void Script::AnswerAfter(HWND dialog, int pressed, UINT text, int button) {
  Press(dialog, pressed);
  Answer(text, button);
  WaitUsable(dialog);
}

void Play(const Edition& edition, const std::function<void()>& show,
          const std::function<void(Script&)>& script) {
  const std::jthread user([&edition, &script, uiThread = GetCurrentThreadId()] {
    OrEnd([&] {
      Script steps(edition, uiThread);
      script(steps);
    });
  });
  OrEnd(show);
}

}  // namespace pictures
