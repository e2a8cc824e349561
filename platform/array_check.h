// Pointer tests for what interfaces hand over in structures of their own: objects, counted arrays, entry identifiers.
#pragma once

#include "orv/orvtypes.h"
#include "platform/pointer_check.h"

namespace orv {

// An object of somebody else's is readable when the pointer to its methods is.
inline bool IsReadableObject(const void* object) { return IsReadable(object, sizeof(void*)); }

// Arrays behind their counts.
inline bool IsReadableRowSet(const SRowSet* rows) {
  return IsReadable(rows, CbNewSRowSet(0)) && IsReadable(rows, CbSRowSet(rows));
}
inline bool IsReadableAddressList(const ADRLIST* list) {
  return IsReadable(list, CbNewADRLIST(0)) && IsReadable(list, CbADRLIST(list));
}

// True for a null or too short entry identifier as well: those have codes of their own, and nobody reads them.
inline bool IsReadableEntryId(ULONG size, const void* entryId) {
  return entryId == nullptr || size < ORV_MIN_ENTRYID || IsReadable(entryId, size);
}

}  // namespace orv
