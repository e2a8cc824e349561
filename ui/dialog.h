// Base of the modal dialogs: the template comes from the resource library, messages come to member functions. What
// every dialog repeats stands here once: OK and Cancel, help, one command at a time, and what is given back at the end.
#pragma once

#include <set>
#include <span>

#include "platform/win.h"
#include "ui/context_help.h"

namespace orv::ui {

class ModalDialog {
 public:
  ModalDialog(const ModalDialog&) = delete;
  ModalDialog& operator=(const ModalDialog&) = delete;

  // Runs until the dialog is ended and gives the value it ended with; -1 when it cannot be shown (no resource
  // library, no template, no such owner).
  INT_PTR Show(HWND owner);

 protected:
  ModalDialog(HMODULE resources, WORD dialogTemplate, std::span<const HelpIdPair> topics)
      : resources_(resources), template_(dialogTemplate), help_(resources, topics) {}
  virtual ~ModalDialog() = default;

  // WM_INITDIALOG; true leaves the focus to the template's order.
  virtual bool OnInitialise() = 0;
  // WM_COMMAND; `notification` is 0 for menus and buttons that were clicked. True when dealt with; what is not goes on
  // to OnOk, or cancels.
  virtual bool OnCommand(WORD, WORD) { return false; }
  virtual void OnOk() { Close(IDOK); }
  // One command runs at a time, since a service that it calls may run a message loop of its own, and a further command
  // could pull away what the call stands on. Commands that come in meanwhile are dropped, but for those told here:
  // they are posted again, each once, when the running one has ended.
  virtual bool IsWorthKeeping(WORD, WORD) const { return false; }
  // WM_HELP and WM_CONTEXTMENU; a dialog that keeps help from some of its controls asks first.
  virtual void OnHelp(const HELPINFO& help) { help_.OnHelp(window_, help); }
  virtual void OnContextMenu(HWND window, POINT point) { help_.OnContextMenu(window_, window, point); }
  // What the dialog holds is to be given back: by Close, and once more when its window goes, which it may do with its
  // owner and without Close.
  virtual void OnClosing() {}
  // Every other message; the result is what the dialog procedure returns.
  virtual INT_PTR OnOther(UINT, WPARAM, LPARAM) { return FALSE; }

  // A command runs while one of these lives; for what is a command and comes by another message than WM_COMMAND.
  class Busy {
   public:
    explicit Busy(ModalDialog& dialog) : dialog_(dialog), isOutermost_(!dialog.busy_) { dialog.busy_ = true; }
    ~Busy() {
      if (isOutermost_) dialog_.GoOn();
    }
    Busy(const Busy&) = delete;
    Busy& operator=(const Busy&) = delete;

   private:
    ModalDialog& dialog_;
    bool isOutermost_;
  };
  bool IsBusy() const { return busy_; }

  HWND Window() const { return window_; }
  HWND Item(int control) const { return GetDlgItem(window_, control); }
  HMODULE Resources() const { return resources_; }
  // Moves the focus as the Tab key does, the default button with it.
  void FocusOn(int control);
  // A box with an error icon over this dialog.
  void ShowError(UINT text) const;
  // Ends the dialog, and the popup of its help with it.
  void Close(INT_PTR result);

 private:
  static INT_PTR CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
  INT_PTR DispatchGuarded(UINT message, WPARAM wParam, LPARAM lParam) noexcept;
  INT_PTR Dispatch(UINT message, WPARAM wParam, LPARAM lParam);
  bool Initialise();
  void Command(WORD control, WORD notification);
  void GoOn();
  void GiveBack();

  HMODULE resources_;
  WORD template_;
  DialogHelp help_;
  HWND window_ = nullptr;
  bool busy_ = false;
  // WM_COMMANDs, as in its first parameter, that came while busy.
  std::set<WPARAM> waiting_;
};

}  // namespace orv::ui
