// The entries of a caller's address list, of which there may be very many.
#pragma once

#include "orv/orvtags.h"
#include "orv/orvtypes.h"
#include "platform/readable_pages.h"

namespace orv {

// The first PR_ENTRYID, or null. The search stands here to be inlined: a call a value would be a tenth of what a
// recipient costs.
inline const SBinary* IdentifierOf(const ADRENTRY& entry) {
  const SPropValue* const end = entry.rgPropVals + entry.cValues;
  for (const SPropValue* value = entry.rgPropVals; value != end; ++value) {
    if (value->ulPropTag == PR_ENTRYID) return &value->Value.bin;
  }
  return nullptr;
}

// Whether the caller's properties and identifiers can be read. They are remembered apart: each kind lies close to its
// like.
class RecipientPages {
 public:
  bool Hold(const ADRENTRY& entry) {
    return arrays_.Hold(entry.rgPropVals, entry.cValues * sizeof(SPropValue));
  }
  bool Hold(const SBinary& identifier) { return identifiers_.Hold(identifier.lpb, identifier.cb); }

 private:
  ReadablePages arrays_;
  ReadablePages identifiers_;
};

}  // namespace orv
