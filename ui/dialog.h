// Base of the modal dialogs: the template comes from the resource library, messages come to member functions.
#pragma once

#include "platform/win.h"

namespace orv::ui {

class ModalDialog {
 public:
  ModalDialog(const ModalDialog&) = delete;
  ModalDialog& operator=(const ModalDialog&) = delete;

  // Runs until the dialog is ended and gives the value it ended with; -1 when it cannot be shown (no resource
  // library, no template, no such owner).
  INT_PTR Show(HWND owner);

 protected:
  ModalDialog(HMODULE resources, WORD dialogTemplate) : resources_(resources), template_(dialogTemplate) {}
  virtual ~ModalDialog() = default;

  // WM_INITDIALOG; true leaves the focus to the template's order.
  virtual bool OnInitialise() = 0;
  // WM_COMMAND; `notification` is 0 for menus and buttons that were clicked. True when dealt with.
  virtual bool OnCommand(WORD control, WORD notification) = 0;
  // WM_HELP and WM_CONTEXTMENU.
  virtual void OnHelp(const HELPINFO& help) = 0;
  virtual void OnContextMenu(HWND window, POINT point) = 0;
  // Every other message; the result is what the dialog procedure returns.
  virtual INT_PTR OnOther(UINT message, WPARAM wParam, LPARAM lParam);

  // Round a call of a service's code: the pointer shows it, and a command that comes in while the service runs
  // a message loop of its own is dropped, since it could pull away what the call stands on.
  class Busy {
   public:
    explicit Busy(ModalDialog& dialog)
        : dialog_(dialog), pointer_(SetCursor(LoadCursorW(nullptr, IDC_WAIT))) {
      dialog_.busy_ = true;
    }
    ~Busy() {
      dialog_.busy_ = false;
      SetCursor(pointer_);
    }
    Busy(const Busy&) = delete;
    Busy& operator=(const Busy&) = delete;

   private:
    ModalDialog& dialog_;
    HCURSOR pointer_;
  };

  HWND Window() const { return window_; }
  HWND Item(int control) const { return GetDlgItem(window_, control); }
  HMODULE Resources() const { return resources_; }
  void End(INT_PTR result) { EndDialog(window_, result); }
  // A box with an error icon over this dialog.
  void ShowError(UINT text) const;

 private:
  static INT_PTR CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
  INT_PTR Dispatch(UINT message, WPARAM wParam, LPARAM lParam);
  INT_PTR DispatchGuarded(UINT message, WPARAM wParam, LPARAM lParam) noexcept;

  HMODULE resources_;
  WORD template_;
  HWND window_ = nullptr;
  bool busy_ = false;
};

}  // namespace orv::ui
