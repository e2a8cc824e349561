// Modal windows of the library and somebody who uses them: the dialogs run on the thread that shows them, a script on
// another one acts on them and takes their pictures.
#pragma once

#include <windows.h>

#include <functional>
#include <map>
#include <string>
#include <utility>

#include "tools/pictures/bell.h"

namespace pictures {

// The language whose dialogs are shown, and where their pictures go.
struct Edition {
  std::wstring language;
  HMODULE texts;        // its companion
  std::wstring prefix;  // of every file's path
  std::wstring folder;  // the installation's, with a backslash at its end
};

// What a script may do. Windows are told apart by the number of their template, text or menu. A step that cannot be
// done within a minute throws std::runtime_error, which names the window.
class Script {
 public:
  Script(const Edition& edition, DWORD uiThread, Bell& bell)
      : edition_(edition), uiThread_(uiThread), bell_(bell) {}

  // The next window that the script has not been given yet, once it can be used.
  HWND NextDialog(int number);
  HWND NextMenu(int number);

  // Posts the press of an enabled button.
  void Press(HWND dialog, int button);
  // The same for one that ends the dialog.
  void Close(HWND dialog, int button);
  void WaitGone(HWND window);
  // The dialog may be used again: what stood over it has gone, and the command that showed it has ended.
  void WaitUsable(HWND dialog);
  // Selects a line of a list of single selection, as a click does; or of a drop-down, by how it begins.
  void Choose(HWND dialog, int list, int line);
  void Choose(HWND dialog, int list, const std::wstring& text);
  void ChooseDropped(HWND dialog, int dropDown, const std::wstring& beginning);
  // Chooses one of the buttons of a group.
  void Check(HWND dialog, std::pair<int, int> group, int button);
  // Selects a line of a list of multiple selection besides those selected, or no line at all.
  void Mark(HWND dialog, int list, int line);
  void MarkNone(HWND dialog, int list);
  void WaitLines(HWND dialog, int list, int count);
  void Type(HWND dialog, int edit, const std::wstring& text);
  void Focus(HWND dialog, int control);
  void TurnTo(HWND dialog, int tabs, int page);
  void Post(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

  // Shows one page after the other and photographs each.
  void PhotographPages(HWND window, int tabs, const std::wstring& variant = L"");
  // A window that a press brings up and that is cancelled.
  void ShowOver(HWND dialog, int button, int number, int tabs = 0, const std::wstring& variant = L"");

  // Writes <prefix><number><variant>.bmp, and tells what cannot be read in it: see AllFitted.
  void Photograph(HWND window, const std::wstring& variant = L"");
  // The same for a window whose layout is the system's.
  void PhotographAsIs(HWND window, const std::wstring& variant = L"");
  // Photographs the message box that comes up and answers it.
  void AnswerBox(int number, int button, const std::wstring& variant = L"");
  // Expects a message box with that text of the companion, photographs it and answers it.
  void Answer(int text, int button, const std::wstring& variant = L"");
  // The same for a press of a button that the dialog refuses with that message.
  void AnswerAfter(HWND dialog, int pressed, int text, int button, const std::wstring& variant = L"");

  // Runs orvctl.exe beside this program to its end, as somebody else on the computer.
  void RunOrvctl(const std::wstring& arguments);

 private:
  HWND NextWindow(int number, const wchar_t* windowClass);
  bool IsActive(HWND window) const;
  void Settle(int number);
  LRESULT Send(HWND window, UINT message, WPARAM wParam = 0, LPARAM lParam = 0);
  int NumberOf(HWND window) const;
  // Of the dialog or one of its pages.
  HWND Control(HWND dialog, int control) const;

  const Edition& edition_;
  DWORD uiThread_;
  Bell& bell_;
  std::map<HWND, int> given_;
};

// Whether all that was photographed so far can be read whole.
bool AllFitted();

// Runs `show`, which shows windows and returns when they are closed, while the script acts on them. A script that
// fails ends the program: nobody would close its windows. What it says then begins with the language and the scene.
void Play(const Edition& edition, const std::string& scene, const std::function<void()>& show,
          const std::function<void(Script&)>& script);

}  // namespace pictures
