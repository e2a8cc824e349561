// Item data of the Address dialog's lists, and the icons that the items show.
#include "ui/address/entry_item.h"

#include <cstring>
#include <new>

#include "orv/orvflags.h"
#include "ui/address/address_ids.h"

namespace orv::ui {

EntryIcons::EntryIcons(HMODULE resources) noexcept
    : group_(resources, address::kGroupIcon), person_(resources, address::kPersonIcon) {}

HICON EntryIcons::For(ULONG objectType) const noexcept {
  switch (objectType) {
    case MAPI_DISTLIST:
      return group_.Get();
    case MAPI_MAILUSER:
      return person_.Get();
    default:
      return nullptr;
  }
}

EntryItemPtr MakeEntryItem(HICON icon, const SBinary& identifier) {
  const ULONG size = identifier.lpb == nullptr ? 0 : identifier.cb;
  EntryItemPtr item;
  if (FAILED(item.Allocate(sizeof(EntryItem) + size))) throw std::bad_alloc();
  auto* bytes = reinterpret_cast<BYTE*>(item.Get() + 1);
  if (size != 0) std::memcpy(bytes, identifier.lpb, size);
  *item = {icon, {size, bytes}};
  return item;
}

}  // namespace orv::ui
