#include "addrbook/container_test.h"

#include "hosting/open_entry.h"
#include "orv/orvtags.h"
#include "props/foreign_values.h"

namespace orv {

bool ContainerHasFlags(IAddrBook& book, ULONG flags, const SBinary& entryId) {
  static constexpr TagArray kTag{PR_CONTAINER_FLAGS};
  // An empty identifier would open the root, which is no container of anybody's.
  if (entryId.cb == 0 || entryId.lpb == nullptr) return false;
  ComPtr<IUnknown> entry;
  ULONG type = 0;
  auto* id = reinterpret_cast<ENTRYID*>(entryId.lpb);
  const HRESULT opened =
      HandedOut(entry, [&] { return book.OpenEntry(entryId.cb, id, nullptr, 0, &type, entry.Put()); });
  if (FAILED(opened) || !entry) return false;
  // Without an interface asked for, what opens is the entry's own one, and that begins with IMAPIProp.
  PropValues found;
  if (FAILED(ReadProps(static_cast<IMAPIProp&>(*entry), kTag, found))) return false;
  const SPropValue* has = ForeignValues(found).At(0, PR_CONTAINER_FLAGS);
  return has != nullptr && (NumberOf(has) & flags) == flags;
}

}  // namespace orv
