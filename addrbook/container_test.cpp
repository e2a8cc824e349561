#include "addrbook/container_test.h"

#include "orv/orvflags.h"
#include "orv/orvtags.h"
#include "platform/buffer.h"
#include "platform/com_ptr.h"

namespace orv {

bool ContainerHasFlags(IAddrBook* book, ULONG flags, const SBinary& entryId) {
  ComPtr<IUnknown> entry;
  ULONG type = 0;
  const auto id = reinterpret_cast<LPENTRYID>(entryId.lpb);
  if (FAILED(book->OpenEntry(entryId.cb, id, nullptr, 0, &type, entry.Put())) || !entry) return false;
  // Without an interface asked for, what opens is the entry's own one, and that begins with IMAPIProp.
  auto* properties = static_cast<IMAPIProp*>(entry.Get());
  SPropTagArray tags = {1, {PR_CONTAINER_FLAGS}};
  PropValues found;
  if (FAILED(properties->GetProps(&tags, MAPI_UNICODE, &found.count, found.values.Put()))) return false;
  if (found.count == 0 || found.values[0].ulPropTag != PR_CONTAINER_FLAGS) return false;
  return (found.values[0].Value.ul & flags) == flags;
}

}  // namespace orv
