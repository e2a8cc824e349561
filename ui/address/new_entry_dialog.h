// Asks in which container a new entry goes.
#pragma once

#include "orv/orvapi.h"
#include "ui/address/container_drop_down.h"
#include "ui/context_help.h"
#include "ui/dialog.h"

namespace orv::ui {

class NewEntryDialog final : public ModalDialog {
 public:
  // `allowsThisMessage` enables the choice of an entry for one message only.
  NewEntryDialog(HMODULE resources, IAddrBook& book, bool allowsThisMessage);

  // After IDOK: a copy of the chosen container's identifier; null when none was chosen.
  const EntryItem* Container() const { return container_.Get(); }

 private:
  bool OnInitialise() override;
  bool OnCommand(WORD control, WORD notification) override;
  void OnHelp(const HELPINFO& help) override;
  void OnContextMenu(HWND window, POINT point) override;
  INT_PTR OnOther(UINT message, WPARAM wParam, LPARAM lParam) override;

  void OnOk();
  void Close(INT_PTR result);
  ContainerDropDown Containers() const;

  IAddrBook& book_;
  bool allowsThisMessage_;
  EntryItemPtr container_;
  DialogHelp help_;
};

}  // namespace orv::ui
