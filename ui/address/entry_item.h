// What the lists of the Address dialog keep for each line: an icon and a copy of the entry identifier.
#pragma once

#include <memory>

#include "platform/win.h"
#include "props/entry_id.h"
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

// A list box keeps the pointer as item data and owns it.
struct EntryItem {
  HICON icon;
  EntryId entryId;
};
using EntryItemPtr = std::unique_ptr<EntryItem>;

}  // namespace orv::ui
