// Asks in which container a new entry goes.
#pragma once

#include "orv/orvapi.h"
#include "ui/address/container_drop_down.h"
#include "ui/dialog.h"

namespace orv::ui {

class NewEntryDialog final : public ModalDialog {
 public:
  // `allowsThisMessage` enables the choice of an entry for one message only.
  NewEntryDialog(HMODULE resources, IAddrBook& book, bool allowsThisMessage);

  // After IDOK: the chosen container; empty when none was chosen.
  const EntryId& Container() const { return container_; }

 private:
  bool OnInitialise() override;
  void OnOk() override;
  void OnClosing() override;

  ContainerDropDown Containers() const;

  IAddrBook& book_;
  bool allowsThisMessage_;
  EntryId container_;
};

}  // namespace orv::ui
