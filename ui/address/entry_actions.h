// What the Address dialog has providers do with entries, and how its lines follow. Results are the providers'.
#pragma once

#include "orv/orvapi.h"
#include "platform/win.h"
#include "ui/address/entry_item.h"
#include "ui/address/entry_list_box.h"
#include "ui/address/open_container.h"

namespace orv::ui {

// Providers' exceptions do not pass; std::bad_alloc may.
class EntryActions {
 public:
  EntryActions(IAddrBook& book, const OpenContainer& container, const EntryIcons& icons) noexcept
      : book_(book), container_(container), icons_(icons) {}

  // Shows the details of a line's entry over `dialog`, then the line anew; S_FALSE for a line without an entry.
  HRESULT ShowDetails(HWND dialog, EntryListBox box, int line) const;
  // Deletes the entries of the lines, and the lines of those that are gone; `left` is how many the container kept of
  // them while it told success.
  HRESULT Delete(EntryListBox box, const std::vector<int>& lines, ULONG& left) const;
  // Has an entry made in a container; its identifier, empty where the provider told none.
  HRESULT MakeNew(HWND dialog, const EntryId& container, EntryId& made) const;
  // Appends a line for an entry; false for one that cannot be opened or does not tell its name.
  bool AddLine(EntryListBox box, const EntryId& entryId) const;

 private:
  HRESULT RemoveGone(EntryListBox box, std::vector<int> lines, const std::vector<EntryId>& entries,
                     ULONG& left) const;
  void RefreshLine(EntryListBox box, int line, const EntryId& entryId) const;

  IAddrBook& book_;
  const OpenContainer& container_;
  const EntryIcons& icons_;
};

}  // namespace orv::ui
