// Entry identifiers as far as the library reads them: four flag bytes, then the UID of the provider that
// issued them. The one identifier of our own is that of the user information mail user.
#pragma once

#include <array>

#include "orv/orvtypes.h"

namespace orv {

// The user information mail user, byte for byte as clients may compare it.
extern const std::array<BYTE, ORV_MIN_ENTRYID> kUserInfoEntryId;

// The UID by which an identifier is routed; null for one that is null or too short to have it.
const MAPIUID* RoutingUid(ULONG size, const ENTRYID* entryId);

// Exactly 20 bytes with our UID; the flag bytes do not count. A longer one that begins alike belongs to a
// provider.
bool IsUserInfoEntryId(ULONG size, const ENTRYID* entryId);

}  // namespace orv
