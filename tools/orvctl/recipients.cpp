#include "tools/orvctl/recipients.h"

namespace orvctl {

void AppendRecipient(const Allocator& allocator, ADRLIST& list, const Bytes& entryId, const std::string& name,
                     ULONG type, ULONG recipientType) {
  constexpr ULONG kValues = 4;
  Allocator::Root root = allocator.AllocateRoot(kValues * sizeof(SPropValue));
  auto* values = static_cast<SPropValue*>(root.get());
  values[0].ulPropTag = PR_ENTRYID;
  values[0].Value.bin = allocator.CopyBytes(values, entryId.data(), entryId.size());
  values[1].ulPropTag = PR_RECIPIENT_TYPE;
  values[1].Value.ul = recipientType;
  values[2].ulPropTag = PR_OBJECT_TYPE;
  values[2].Value.ul = type;
  values[3].ulPropTag = PR_DISPLAY_NAME_W;
  values[3].Value.lpszW = allocator.CopyText(values, ToWide(name));
  list.aEntries[list.cEntries++] = {0, kValues, static_cast<SPropValue*>(root.release())};
}

}  // namespace orvctl
