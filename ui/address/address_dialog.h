// The recipient-selection dialog: containers, their entries, a type-ahead box and up to three wells.
#pragma once

#include <array>
#include <vector>

#include "orv/orvapi.h"
#include "platform/com_ptr.h"
#include "ui/address/address_ids.h"
#include "ui/address/advise_sink.h"
#include "ui/address/container_drop_down.h"
#include "ui/address/entry_item.h"
#include "ui/address/entry_list_box.h"
#include "ui/dialog.h"
#include "ui/small_icon.h"

namespace orv::ui {

class AddressDialog final : public ModalDialog {
 public:
  // `list` is the caller's and is replaced on OK; `parameters` has at most three wells.
  AddressDialog(HMODULE resources, IAddrBook& book, const ADRPARM& parameters, ADRLIST*& list);
  ~AddressDialog() override;

  // How the last OK went; the dialog stays open after a failure.
  HRESULT Result() const { return result_; }

 private:
  bool OnInitialise() override;
  bool OnCommand(WORD control, WORD notification) override;
  void OnOk() override;
  bool IsWorthKeeping(WORD control, WORD notification) const override;
  void OnClosing() override;
  INT_PTR OnOther(UINT message, WPARAM wParam, LPARAM lParam) override;

  // Set-up.
  void SetTexts();
  void SetEntryHeights();
  void FillWells();
  void AddToWell(ADRENTRY& entry);
  int FirstFocus() const;

  // The open container and its entries.
  void OnContainerChosen();
  HRESULT OpenSelectedContainer();
  void CloseContainer();
  void StartWatching(const EntryItem& container);
  void StopWatching();
  void FillEntries();
  HRESULT ReadEntries(IABContainer& container);
  void OnRefresh();

  // Commands.
  void OnTypeAhead();
  void MoveToWell(int button);
  void OnEntryDoubleClick();
  void ShowDetails(int list);
  void RefreshLine(int list, int index, const SBinary& identifier);
  void DeleteSelection(int list);
  HRESULT DeleteFromContainer(const std::vector<int>& selected);
  void OnNewEntry();
  bool AddNewEntry(const SBinary& identifier);
  bool ChooseOne();
  bool ChooseFromWells();

  INT_PTR OnMeasure(MEASUREITEMSTRUCT& measure) const;
  INT_PTR OnDraw(const DRAWITEMSTRUCT& draw) const;
  INT_PTR OnKey(WORD key, HWND window);

  int Wells() const { return static_cast<int>(parameters_.cDestFields); }
  bool IsWellOrEntries(int control) const;
  EntryListBox List(int control) const { return EntryListBox(Item(control)); }
  EntryListBox Well(int well) const { return List(address::kFirstWell + well); }
  EntryListBox Entries() const { return List(address::kEntries); }
  ContainerDropDown Containers() const { return ContainerDropDown(Item(address::kContainers)); }

  IAddrBook& book_;
  const ADRPARM& parameters_;
  ADRLIST*& list_;
  std::array<ULONG, address::kMaxWells> wellTypes_{};
  HRESULT result_ = S_OK;

  const SmallIcon windowIcon_;
  const EntryIcons icons_;
  ComPtr<CAdviseSink> sink_;
  ComPtr<IABContainer> container_;
  EntryItemPtr containerId_;
  ULONG connection_ = 0;
  // The next notification is of a change that this dialog made itself and shows already.
  bool skipNextRefresh_ = false;
};

// Shows the dialog over an address book and gives the result that a client gets, as OrvAddress documents it.
HRESULT ShowAddressDialog(HWND owner, HMODULE resources, IAddrBook* book, ADRPARM* parameters,
                          ADRLIST** list);

}  // namespace orv::ui
