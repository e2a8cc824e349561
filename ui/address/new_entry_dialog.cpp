// The new-entry dialog: a pair of radio buttons and the containers that can be added to.
#include "ui/address/new_entry_dialog.h"

#include "orv/orvflags.h"
#include "ui/address/address_ids.h"
#include "ui/help_ids.h"
#include "ui/window_utils.h"

namespace orv::ui {

NewEntryDialog::NewEntryDialog(HMODULE resources, IAddrBook& book, bool allowsThisMessage)
    : ModalDialog(resources, address::kNewEntryTemplate, kNewEntryHelpIds),
      book_(book),
      allowsThisMessage_(allowsThisMessage) {}

ContainerDropDown NewEntryDialog::Containers() const { return ContainerDropDown(Item(address::kContainers)); }

bool NewEntryDialog::OnInitialise() {
  Containers().Fill(book_, {AB_MODIFIABLE, &IAddrBook::GetPAB});
  CheckRadioButton(Window(), address::kIntoContainer, address::kThisMessageOnly, address::kIntoContainer);
  EnableWindow(Item(address::kThisMessageOnly), allowsThisMessage_);
  FocusOn(address::kContainers);
  CentreOnDesktop(Window());
  return false;
}

void NewEntryDialog::OnOk() {
  // Without memory the dialog says so and stays.
  container_ = Containers().Selected();
  Close(IDOK);
}

void NewEntryDialog::OnClosing() { Containers().RemoveAll(); }

}  // namespace orv::ui
