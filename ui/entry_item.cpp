// Item data of the Address dialog's lists, and the icons that the items show.
#include "ui/entry_item.h"

#include <cstring>
#include <new>

#include "orv/orvflags.h"
#include "ui/address_ids.h"

namespace orv::ui {
namespace {

HICON LoadSmallIcon(HMODULE resources, WORD identifier) noexcept {
  return static_cast<HICON>(LoadImageW(resources, MAKEINTRESOURCEW(identifier), IMAGE_ICON,
                                       GetSystemMetrics(SM_CXSMICON), GetSystemMetrics(SM_CYSMICON),
                                       LR_DEFAULTCOLOR));
}

}  // namespace

EntryIcons::EntryIcons(HMODULE resources) noexcept
    : group_(LoadSmallIcon(resources, address::kGroupIcon)),
      person_(LoadSmallIcon(resources, address::kPersonIcon)) {}

EntryIcons::~EntryIcons() {
  if (group_ != nullptr) DestroyIcon(group_);
  if (person_ != nullptr) DestroyIcon(person_);
}

HICON EntryIcons::For(ULONG objectType) const noexcept {
  switch (objectType) {
    case MAPI_DISTLIST: return group_;
    case MAPI_MAILUSER: return person_;
    default: return nullptr;
  }
}

EntryItem::Ptr EntryItem::Create(HICON icon, ULONG size, const void* identifier) noexcept {
  void* block = ::operator new(sizeof(EntryItem) + size, std::nothrow);
  if (block == nullptr) return nullptr;
  Ptr item(new (block) EntryItem(icon, size));
  if (size != 0) std::memcpy(item->Id(), identifier, size);
  return item;
}

void EntryItem::Free::operator()(EntryItem* item) const noexcept { ::operator delete(item); }

}  // namespace orv::ui
