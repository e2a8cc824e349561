// Drives modal windows from a helper thread while the test's own thread shows them. A script waits for the
// next window, looks at it, acts on it; every wait has a bound, and whatever a failed script leaves open is
// closed, so that the test always goes on. Works without a screen.
#pragma once

#include <functional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "platform/win.h"

namespace orv::test {

// Dialogs and message boxes; popup menus.
inline constexpr wchar_t kDialogClass[] = L"#32770", kMenuClass[] = L"#32768";

// What a script may do; all of it on the helper thread. A wait that runs out ends the script and fails the
// test.
class DialogScript {
 public:
  explicit DialogScript(DWORD uiThread) : uiThread_(uiThread) {}

  // The next visible, enabled dialog or message box that the script has not been given yet.
  HWND NextDialog() { return NextWindow(kDialogClass, "a dialog"); }
  // The next popup menu.
  HWND NextMenu() { return NextWindow(kMenuClass, "a menu"); }
  void WaitUntil(const std::function<bool()>& condition, const char* what);
  // The window is gone.
  void WaitClosed(HWND window) {
    WaitUntil([=] { return !IsWindow(window); }, "a window to close");
  }
  // The window may be used again: what stood over it has closed.
  void WaitEnabled(HWND window) {
    WaitUntil([=] { return IsWindowVisible(window) && IsWindowEnabled(window); }, "a dialog to be usable");
  }

  // Sends with a bound; for messages that open no modal window.
  LRESULT Send(HWND window, UINT message, WPARAM wParam = 0, LPARAM lParam = 0);
  void Post(HWND window, UINT message, WPARAM wParam = 0, LPARAM lParam = 0);

  // Presses an enabled button, or sends another notification of a control. Returns when the dialog has dealt
  // with it; a press that opens a modal window or ends the dialog is posted instead.
  void Press(HWND dialog, int control);
  void PostPress(HWND dialog, int control);
  // Posts the press of a button that ends the dialog and waits for its end.
  void Close(HWND dialog, int button) {
    PostPress(dialog, button);
    WaitClosed(dialog);
  }
  void Focus(HWND dialog, int control) {
    Send(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(GetDlgItem(dialog, control)), TRUE);
  }
  bool HasFocus(HWND dialog, int control) const;
  static bool IsEnabled(HWND dialog, int control) {
    return IsWindowEnabled(GetDlgItem(dialog, control)) != FALSE;
  }

  // Text of the next message box, which is answered with `button`.
  std::wstring AnswerBox(int button);

  // List boxes.
  std::vector<std::wstring> Items(HWND dialog, int list);
  int Selected(HWND dialog, int list) {
    return static_cast<int>(Send(GetDlgItem(dialog, list), LB_GETCURSEL));
  }
  // Selects as a click does: with its notification. -1 takes the selection away.
  void Select(HWND dialog, int list, int item);
  // A double click of the mouse on an item, posted.
  void PostDoubleClick(HWND dialog, int list, int item);

 private:
  friend class DialogDriver;
  HWND NextWindow(const wchar_t* windowClass, const char* what);

  DWORD uiThread_;
  std::set<HWND> given_;
};

// Runs a script against the thread that makes the driver, from now until Finish() or destruction.
class DialogDriver {
 public:
  // Without a script every dialog that comes is cancelled.
  explicit DialogDriver(std::function<void(DialogScript&)> script);
  ~DialogDriver() { Finish(); }
  DialogDriver(const DialogDriver&) = delete;
  DialogDriver& operator=(const DialogDriver&) = delete;

  // To be called when the modal call has returned: the script must have come to its end.
  void Finish();

 private:
  void Run(const std::function<void(DialogScript&)>& script);
  void CloseWhatIsLeft();

  DWORD uiThread_;
  HANDLE finished_;
  std::thread helper_;
};

std::wstring WindowText(HWND window);

}  // namespace orv::test
