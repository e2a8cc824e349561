// Containers of the whole hierarchy, found by what they are good for: the fallback for a default that is
// not there, and the search path when none is stored. Everything here calls providers; their exceptions
// pass through.
#pragma once

#include <vector>

#include "orv/orvapi.h"
#include "platform/buffer.h"

namespace orv {

struct OwnedEntryId {
  ULONG size = 0;
  MapiBuffer<ENTRYID> id;
};

// A copy in one root buffer.
HRESULT CopyEntryId(const SBinary& source, OwnedEntryId& copy);

// The first container of the hierarchy that has every one of `flags`; MAPI_E_CALL_FAILED when none has.
HRESULT FindContainer(IAddrBook& book, ULONG flags, OwnedEntryId& found);

// The containers that have every one of `flags`, in table order. A walk that breaks off finds nothing.
HRESULT CollectContainers(IAddrBook& book, ULONG flags, std::vector<std::vector<BYTE>>& found);

}  // namespace orv
