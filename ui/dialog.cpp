// The dialog procedure that all modal dialogs share.
#include "ui/dialog.h"

#include <windowsx.h>

#include <new>
#include <utility>

#include "ui/activation_context.h"
#include "ui/message_box.h"

namespace orv::ui {
namespace {

constexpr INT_PTR kNotShown = -1;
constexpr INT_PTR kKeyDealtWith = -2;
constexpr UINT kOutOfMemory = 273;

}  // namespace

INT_PTR ModalDialog::Show(HWND owner) {
  // A null module would mean the program's own dialogs.
  if (resources_ == nullptr) return kNotShown;
  const ActivationContext controls(resources_);
  const INT_PTR result = DialogBoxParamW(resources_, MAKEINTRESOURCEW(template_), owner,
                                         &ModalDialog::Procedure, reinterpret_cast<LPARAM>(this));
  window_ = nullptr;
  // 0 is how an owner that is no window is reported; no dialog of ours ends with it.
  return result == 0 ? kNotShown : result;
}

void ModalDialog::FocusOn(int control) {
  SendMessageW(window_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(Item(control)), TRUE);
}

void ModalDialog::ShowError(UINT text) const { ShowMessage(text, resources_, window_, MB_ICONERROR); }

void ModalDialog::Close(INT_PTR result) {
  GiveBack();
  EndDialog(window_, result);
}

void ModalDialog::GiveBack() {
  help_.ClosePopup();
  OnClosing();
}

INT_PTR CALLBACK ModalDialog::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_INITDIALOG) {
    SetWindowLongPtrW(window, DWLP_USER, lParam);
    reinterpret_cast<ModalDialog*>(lParam)->window_ = window;
  }
  // A few messages come before WM_INITDIALOG.
  auto* dialog = reinterpret_cast<ModalDialog*>(GetWindowLongPtrW(window, DWLP_USER));
  return dialog == nullptr ? FALSE : dialog->DispatchGuarded(message, wParam, lParam);
}

// The system calls us here, so no exception may pass. A dialog that runs out of memory says so and stays; one that
// cannot be set up is not shown.
INT_PTR ModalDialog::DispatchGuarded(UINT message, WPARAM wParam, LPARAM lParam) noexcept {
  const bool isUsers = message == WM_COMMAND || message == WM_VKEYTOITEM;
  try {
    try {
      return Dispatch(message, wParam, lParam);
    } catch (const std::bad_alloc&) {
      // Not while drawing: under the box the dialog would be drawn again, and again there would be no memory.
      if (isUsers) ShowError(kOutOfMemory);
    }
  } catch (...) {
  }
  if (message == WM_INITDIALOG) EndDialog(window_, kNotShown);
  return message == WM_VKEYTOITEM ? kKeyDealtWith : TRUE;
}

INT_PTR ModalDialog::Dispatch(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_INITDIALOG:
      return Initialise();
    case WM_COMMAND:
      return Command(LOWORD(wParam), HIWORD(wParam)), TRUE;
    case WM_HELP:
      return OnHelp(*reinterpret_cast<const HELPINFO*>(lParam)), TRUE;
    case WM_CONTEXTMENU:
      OnContextMenu(reinterpret_cast<HWND>(wParam), {GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)});
      return FALSE;
    case WM_DESTROY:
      return GiveBack(), FALSE;
    default:
      return OnOther(message, wParam, lParam);
  }
}

bool ModalDialog::Initialise() {
  const Busy busy(*this);
  return OnInitialise();
}

void ModalDialog::Command(WORD control, WORD notification) {
  if (busy_) {
    if (IsWorthKeeping(control, notification)) waiting_.insert(MAKEWPARAM(control, notification));
    return;
  }
  const Busy busy(*this);
  if (OnCommand(control, notification)) return;
  if (control == IDOK) OnOk();
  if (control == IDCANCEL) Close(IDCANCEL);
}

// By message, so that each of them is a command of its own, which may be the last.
void ModalDialog::GoOn() {
  busy_ = false;
  for (const WPARAM command : std::exchange(waiting_, {})) PostMessageW(window_, WM_COMMAND, command, 0);
}

}  // namespace orv::ui
