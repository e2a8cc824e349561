// Modal windows of the library and somebody who uses them: the dialogs run on the thread that shows them, a script on
// another one acts on them and takes their pictures.
#pragma once

#include <windows.h>

#include <functional>
#include <set>
#include <string>

namespace pictures {

// The language whose dialogs are shown, and where their pictures go.
struct Edition {
  HMODULE texts;        // its companion
  std::wstring prefix;  // of every file's path
};

// What a script may do. A step that cannot be done throws std::runtime_error.
class Script {
 public:
  Script(const Edition& edition, DWORD uiThread) : edition_(edition), uiThread_(uiThread) {}

  // The next window that the script has not been given yet, once it is visible and enabled.
  HWND NextDialog() { return NextWindow(L"#32770", "a dialog"); }
  HWND NextMenu() { return NextWindow(L"#32768", "a menu"); }

  // Posts the press of an enabled button.
  void Press(HWND dialog, int button);
  // The same for one that ends the dialog.
  void Close(HWND dialog, int button);
  void WaitGone(HWND window);
  // The dialog may be used again: what stood over it has gone.
  void WaitUsable(HWND dialog);
  // Selects a line of a list of single selection, as a click does.
  void Choose(HWND dialog, int list, int line);
  // Selects a line of a list of multiple selection besides those selected, or no line at all.
  void Mark(HWND dialog, int list, int line);
  void MarkNone(HWND dialog, int list);
  void WaitLines(HWND dialog, int list, int count);
  void Type(HWND edit, const std::wstring& text);
  void Post(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

  // Writes <prefix><number>.bmp.
  void Photograph(HWND window, int number);
  // Expects a message box with that text of the companion, photographs it and answers it.
  void Answer(UINT text, int button);
  // The same for a press of a button that the dialog refuses with that message.
  void AnswerAfter(HWND dialog, int pressed, UINT text, int button);

 private:
  HWND NextWindow(const wchar_t* windowClass, const char* what);
  void Send(HWND window, UINT message, WPARAM wParam = 0, LPARAM lParam = 0);

  const Edition& edition_;
  DWORD uiThread_;
  std::set<HWND> given_;
};

// Runs `show`, which shows windows and returns when they are closed, while the script acts on them. A script that
// fails ends the program: nobody would close its windows.
void Play(const Edition& edition, const std::function<void()>& show,
          const std::function<void(Script&)>& script);

}  // namespace pictures
