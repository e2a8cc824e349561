#include "ui/address/entry_item.h"

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

}  // namespace orv::ui
