// What a container says of itself, asked through the address book that routes to its provider.
#pragma once

#include "orv/orvapi.h"

namespace orv {

// True when the entry opens and its PR_CONTAINER_FLAGS has every one of `flags`; every failure is false, an exception
// of the provider's included.
bool ContainerHasFlags(IAddrBook& book, ULONG flags, const SBinary& entryId);

}  // namespace orv
