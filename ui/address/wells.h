// The recipient wells of the Address dialog: up to three lists, each with a button that fills it and a label.
#pragma once

#include <array>
#include <vector>

#include "orv/orvtypes.h"
#include "platform/win.h"
#include "ui/address/address_ids.h"
#include "ui/address/address_result.h"
#include "ui/address/entry_item.h"
#include "ui/address/entry_list_box.h"

namespace orv::ui {

class Wells {
 public:
  // At most three wells, each with its recipient type. `parameters` must outlive the wells.
  explicit Wells(const ADRPARM& parameters);

  void Attach(HWND dialog) noexcept { dialog_ = dialog; }
  int Count() const noexcept { return static_cast<int>(parameters_.cDestFields); }
  bool Has(int control) const noexcept {
    return control >= address::kFirstWell && control < address::kFirstWell + Count();
  }
  EntryListBox At(int well) const { return EntryListBox(GetDlgItem(dialog_, address::kFirstWell + well)); }
  // The button of the well that the caller wants first.
  int FirstButton() const noexcept;

  // The caller's texts over the wells, on the buttons and labels, where it gives any.
  void SetTexts() const;
  // Recipients go to the first well of their type. Long names are cut in the caller's own buffer.
  void Fill(ADRLIST& list, const EntryIcons& icons) const;
  std::vector<ChosenRecipient> Recipients() const;
  void RemoveAll() const;

 private:
  void SetTitles() const;
  template <class Action>
  void ForEachTitle(Action action) const;
  void SetText(int control, const WString& text) const;
  void Add(ADRENTRY& entry, const EntryIcons& icons) const;

  const ADRPARM& parameters_;
  std::array<ULONG, address::kMaxWells> types_{};
  HWND dialog_ = nullptr;
};

}  // namespace orv::ui
