// The recipient-selection dialog: containers, their entries, a type-ahead box and up to three wells.
#pragma once

#include <optional>
#include <vector>

#include "orv/orvapi.h"
#include "platform/com_ptr.h"
#include "ui/address_ids.h"
#include "ui/address_result.h"
#include "ui/advise_sink.h"
#include "ui/container_drop_down.h"
#include "ui/context_help.h"
#include "ui/dialog.h"
#include "ui/entry_item.h"
#include "ui/entry_list_box.h"

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
  void OnHelp(const HELPINFO& help) override;
  void OnContextMenu(HWND window, POINT point) override;
  INT_PTR OnOther(UINT message, WPARAM wParam, LPARAM lParam) override;

  // Set-up.
  void SetTexts();
  void SetEntryHeights();
  void FillWells();
  void AddToWell(ADRENTRY& entry);
  int FirstFocus() const;

  // The open container and its entries.
  void OnContainerChosen();
  void OpenSelectedContainer(bool tellsFailure);
  void CloseContainer();
  void FillEntries();
  HRESULT ReadEntries(IMAPITable& table);
  void AddEntries(const SRowSet& rows);
  void OnRefresh();

  // Commands.
  void Run(WORD control, WORD notification);
  void OnTypeAhead();
  void MoveToWell(int button);
  void OnEntryDoubleClick();
  void ShowDetails(int list);
  void RefreshAfterDetails(EntryListBox& box, int index);
  void DeleteSelection(int list);
  HRESULT DeleteFromContainer(EntryListBox& box, const std::vector<int>& selected);
  void OnNewEntry();
  bool AddNewEntry(ULONG size, ENTRYID* identifier);
  void OnOk();
  bool ChooseOne();
  bool ChooseFromWells();

  INT_PTR OnMeasure(MEASUREITEMSTRUCT& measure) const;
  INT_PTR OnDraw(const DRAWITEMSTRUCT& draw) const;
  INT_PTR OnKey(WORD key, HWND window);

  void Close(INT_PTR result);
  void ReleaseAll();

  // While it lives no other command runs; a refresh that came in between is posted again at its end.
  class Busy {
   public:
    explicit Busy(AddressDialog& dialog) : dialog_(dialog) { dialog_.busy_ = true; }
    ~Busy();
    Busy(const Busy&) = delete;
    Busy& operator=(const Busy&) = delete;

   private:
    AddressDialog& dialog_;
  };

  bool IsWellOrEntries(int control) const;
  EntryListBox List(int control) const { return EntryListBox(Item(control)); }
  EntryListBox Entries() const { return List(address::kEntries); }
  ContainerDropDown Containers() const { return ContainerDropDown(Item(address::kContainers)); }

  IAddrBook& book_;
  const ADRPARM& parameters_;
  ADRLIST*& list_;
  HRESULT result_ = S_OK;

  std::optional<EntryIcons> icons_;
  HICON windowIcon_ = nullptr;
  ComPtr<CAdviseSink> sink_;
  ComPtr<IABContainer> container_;
  EntryItem::Ptr containerId_;
  ULONG connection_ = 0;
  // The next notification is of a change that this dialog made itself and shows already.
  bool skipNextRefresh_ = false;
  // A command runs; providers may pump messages in it, and what they bring waits until it is done.
  bool busy_ = false;
  bool refreshWaits_ = false;
  DialogHelp help_;
};

// Shows the dialog over an address book and gives the result that a client gets. One at a time in the process:
// MAPI_E_CALL_FAILED when one is open already or the dialog cannot be shown.
HRESULT ShowAddressDialog(HWND owner, HMODULE resources, IAddrBook* book, ADRPARM* parameters, ADRLIST** list);

}  // namespace orv::ui
