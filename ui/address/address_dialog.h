// The recipient-selection dialog: containers, their entries, a type-ahead box and up to three wells.
#pragma once

#include "orv/orvapi.h"
#include "ui/address/address_ids.h"
#include "ui/address/container_drop_down.h"
#include "ui/address/entry_actions.h"
#include "ui/address/entry_item.h"
#include "ui/address/entry_list_box.h"
#include "ui/address/open_container.h"
#include "ui/address/provider_reasons.h"
#include "ui/address/wells.h"
#include "ui/dialog.h"
#include "ui/small_icon.h"

namespace orv::ui {

class AddressDialog final : public ModalDialog {
 public:
  // `list` is the caller's and is replaced on OK; `parameters` has at most three wells.
  AddressDialog(HMODULE resources, IAddrBook& book, const ADRPARM& parameters, ADRLIST*& list);

  // How the last OK went; the dialog stays open after a failure.
  HRESULT Result() const { return result_; }

 private:
  bool OnInitialise() override;
  bool OnCommand(WORD control, WORD notification) override;
  void OnOk() override;
  bool IsWorthKeeping(WORD control, WORD notification) const override;
  void OnClosing() override;
  INT_PTR OnOther(UINT message, WPARAM wParam, LPARAM lParam) override;

  void SetTexts();
  void SetEntryHeights();
  int FirstFocus() const;

  void OnContainerChosen();
  HRESULT ShowContainer(const EntryId& container);
  void FillEntries();
  void RefillEntries();
  void OnTypeAhead();
  void MoveToWell(int button);
  void OnEntryDoubleClick();
  // Sets the line under the list.
  void ShowStatus();
  // False after a failure, which is told unless the user wished it so; what is deleted belongs to the container that is
  // shown, everything else to who issued the identifier.
  bool HasWorked(EntryCommand command, HRESULT hr, const EntryId& of = EntryId());
  void TellNoPlace();
  // Runs an action of the user's that tells whether it changed the container.
  void Run(bool (AddressDialog::*action)(int), int list = address::kEntries);
  bool ShowDetails(int list);
  bool DeleteEntries(int list);
  bool MakeNewEntry(int list);

  HRESULT ChooseOne(EntryListBox box, int line);
  INT_PTR OnKey(WORD key, int list);

  EntryListBox List(int control) const { return EntryListBox(Item(control)); }
  EntryListBox Entries() const { return List(address::kEntries); }
  ContainerDropDown Containers() const { return ContainerDropDown(Item(address::kContainers)); }

  IAddrBook& book_;
  const ADRPARM& parameters_;
  ADRLIST*& list_;
  HRESULT result_ = S_OK;
  HRESULT listed_ = S_OK;  // how reading the entries came out
  const SmallIcon windowIcon_;
  const EntryIcons icons_;
  Wells wells_;
  OpenContainer container_;
  const EntryActions actions_;
};

}  // namespace orv::ui
