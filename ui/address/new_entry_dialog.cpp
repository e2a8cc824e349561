// The new-entry dialog: a pair of radio buttons and the containers that can be added to.
#include "ui/address/new_entry_dialog.h"

#include "orv/orvflags.h"
#include "ui/address/address_ids.h"
#include "ui/help_ids.h"
#include "ui/window_utils.h"

namespace orv::ui {

NewEntryDialog::NewEntryDialog(HMODULE resources, IAddrBook& book, bool allowsThisMessage)
    : ModalDialog(resources, address::kNewEntryTemplate),
      book_(book),
      allowsThisMessage_(allowsThisMessage),
      help_(resources, kNewEntryHelpIds) {}

ContainerDropDown NewEntryDialog::Containers() const { return ContainerDropDown(Item(address::kContainers)); }

bool NewEntryDialog::OnInitialise() {
  Containers().Fill(book_, {CONVENIENT_DEPTH, AB_MODIFIABLE, &IAddrBook::GetPAB});
  CheckRadioButton(Window(), address::kIntoContainer, address::kThisMessageOnly, address::kIntoContainer);
  EnableWindow(Item(address::kThisMessageOnly), allowsThisMessage_);
  SendMessageW(Window(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(Item(address::kContainers)), TRUE);
  CentreOnDesktop(Window());
  return false;
}

bool NewEntryDialog::OnCommand(WORD control, WORD) {
  switch (control) {
    case IDOK:
      OnOk();
      return true;
    case IDCANCEL:
      Close(IDCANCEL);
      return true;
    default:
      return false;
  }
}

void NewEntryDialog::OnOk() {
  // Without memory the dialog says so and stays.
  if (const EntryItem* chosen = Containers().Selected())
    container_ = MakeEntryItem(nullptr, chosen->identifier);
  Close(IDOK);
}

void NewEntryDialog::Close(INT_PTR result) {
  Containers().RemoveAll();
  help_.ClosePopup();
  End(result);
}

INT_PTR NewEntryDialog::OnOther(UINT message, WPARAM wParam, LPARAM lParam) {
  // A dialog that goes without OK or Cancel (its owner is destroyed) frees its lines too.
  if (message == WM_DESTROY) Containers().RemoveAll();
  return ModalDialog::OnOther(message, wParam, lParam);
}

void NewEntryDialog::OnHelp(const HELPINFO& help) { help_.OnHelp(Window(), help); }
void NewEntryDialog::OnContextMenu(HWND window, POINT point) { help_.OnContextMenu(Window(), window, point); }

}  // namespace orv::ui
