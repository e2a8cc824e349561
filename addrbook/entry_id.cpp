// Reading of entry identifiers; see entry_id.h. Leans on nothing but the public structures.
#include "addrbook/entry_id.h"

#include <cstring>

#include "orv/orvguids.h"

namespace orv {

const std::array<BYTE, ORV_MIN_ENTRYID> kUserInfoEntryId = {0, 0, 0, 0, ORV_USER_INFO_UID_BYTES};

const MAPIUID* RoutingUid(ULONG size, const ENTRYID* entryId) {
  if (entryId == nullptr || size < ORV_MIN_ENTRYID) return nullptr;
  // A MAPIUID is bytes throughout, so it may be looked at wherever it lies.
  return reinterpret_cast<const MAPIUID*>(entryId->ab);
}

bool IsUserInfoEntryId(ULONG size, const ENTRYID* entryId) {
  if (size != ORV_MIN_ENTRYID) return false;
  const MAPIUID* uid = RoutingUid(size, entryId);
  return uid != nullptr &&
         std::memcmp(uid, kUserInfoEntryId.data() + ORV_ENTRYID_UID_OFFSET, sizeof(MAPIUID)) == 0;
}

}  // namespace orv
