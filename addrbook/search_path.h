// Containers of the whole hierarchy, found by what they are good for: the fallback for a default that is
// not there, and the search path when none is stored.
#pragma once

#include <vector>

#include "orv/orvapi.h"
#include "props/entry_id.h"

namespace orv {

// Both call providers, whose exceptions become codes, and may throw std::bad_alloc.

// The first container of the hierarchy that has every one of `flags`; MAPI_E_CALL_FAILED when none has.
HRESULT FindContainer(IAddrBook& book, ULONG flags, EntryId& found);

// The containers that have every one of `flags`, in table order. A walk that breaks off finds nothing.
HRESULT CollectContainers(IAddrBook& book, ULONG flags, std::vector<EntryId>& found);

}  // namespace orv
