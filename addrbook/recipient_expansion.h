// Replaces the distribution lists of an address list by their members, however deep they nest.
#pragma once

#include "orv/orvapi.h"

namespace orv {

// `*list` is readable and holds at least one entry. Every distribution list in it gives way to its members, each with
// the recipient type of the list that brought it in; no entry identifier appears twice, the first occurrence wins.
// `*list` is replaced or reused; after a failure it holds the recipients collected so far, or is null when there is no
// memory for that. MAPI_E_INVALID_PARAMETER, with nothing touched, for properties or identifiers that cannot be read.
// Lists are opened through `book`, whose answers are believed in nothing; time is proportional to the rows read, cycles
// end.
HRESULT ExpandRecipientLists(IAddrBook* book, ADRLIST** list);

}  // namespace orv
