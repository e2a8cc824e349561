// Recipients handed to the providers that know them, one call a provider whatever the number of recipients.
#pragma once

#include "orv/orvapi.h"

namespace orv {

class CABServiceList;

// Groups the recipients by provider in list order, those of no provider last, each group in the list's order, and has
// each group completed: by its provider, the last one here. The list comes back in that order, which clients count on.
// After a failure it keeps its own order. MAPI_E_INVALID_PARAMETER, with nothing touched, for tags, properties or
// identifiers that cannot be read; the list itself must be. Calls providers; their exceptions become codes.
HRESULT PrepareRecipients(const CABServiceList* providers, SPropTagArray* tags, ADRLIST& list);

}  // namespace orv
