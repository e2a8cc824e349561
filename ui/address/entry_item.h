// What the lists of the Address dialog keep for each line: an icon and a copy of the entry identifier.
#pragma once

#include "orv/orvtypes.h"
#include "platform/buffer.h"
#include "platform/win.h"
#include "ui/small_icon.h"

namespace orv::ui {

// The icons of the entries, loaded once and shared by all lines.
class EntryIcons {
 public:
  explicit EntryIcons(HMODULE resources) noexcept;

  // By PR_OBJECT_TYPE; null for a type without an icon.
  HICON For(ULONG objectType) const noexcept;

 private:
  SmallIcon group_;
  SmallIcon person_;
};

// One block: this header with the identifier's bytes behind it. A list box keeps the pointer as item data.
struct EntryItem {
  HICON icon;
  SBinary identifier;

  ENTRYID* Id() const noexcept { return reinterpret_cast<ENTRYID*>(identifier.lpb); }
};
using EntryItemPtr = MapiBuffer<EntryItem>;

// A new item with a copy of the identifier; std::bad_alloc when there is no memory.
EntryItemPtr MakeEntryItem(HICON icon, const SBinary& identifier);

}  // namespace orv::ui
