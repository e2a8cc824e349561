// The drop-down of address-book containers, in the Address dialog and in the new-entry dialog.
#pragma once

#include "orv/orvapi.h"
#include "platform/win.h"
#include "props/entry_id.h"
#include "props/foreign_values.h"

namespace orv::ui {

// Which containers are listed, and which one is chosen at first.
struct ContainerChoice {
  ULONG requiredFlags = 0;  // only containers that have all of these are listed
  // Answers the identifier that becomes the selection; the first line when it is not listed.
  HRESULT (STDMETHODCALLTYPE IAddrBook::*preferred)(ULONG*, LPENTRYID*) = nullptr;
};

class ContainerDropDown {
 public:
  explicit ContainerDropDown(HWND window) noexcept : window_(window) {}

  // One line a container, indented by depth, each owning a copy of its identifier. What was read before a
  // failure stays. Calls providers; none of their exceptions passes.
  void Fill(IAddrBook& book, const ContainerChoice& choice);
  // The identifier of the selected container; empty for none.
  EntryId Selected() const;
  void RemoveAll();

 private:
  HRESULT ReadRows(IAddrBook& book, const ContainerChoice& choice);
  void AddRow(const ForeignValues& row, ULONG requiredFlags, const EntryId& preferred);
  EntryId* IdAt(LRESULT index) const;
  LRESULT Send(UINT message, LRESULT index = 0, LPARAM lParam = 0) const {
    return SendMessageW(window_, message, static_cast<WPARAM>(index), lParam);
  }

  HWND window_;
};

}  // namespace orv::ui
