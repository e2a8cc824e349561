// A provider's own words for a failure of its.
#pragma once

#include "orv/orvapi.h"
#include "props/entry_id.h"

namespace orv::ui {

// Empty where the object has none. None of its exceptions passes.
WString WordsOf(IMAPIProp& object, HRESULT hr);
// The same of the provider that issued an identifier.
WString WordsOfIssuer(IAddrBook& book, const EntryId& entryId, HRESULT hr);

}  // namespace orv::ui
