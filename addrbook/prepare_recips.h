// Recipients handed to the providers that know them, one call a provider whatever the number of recipients.
#pragma once

#include "orv/orvapi.h"

namespace orv {

class CABServiceList;

// Groups the recipients by provider in list order, those of no provider last, each group in the list's
// order, and has each group completed: by its provider, the last one here. The list comes back in that
// order; callers rely on finding it grouped. After a failure it keeps its own order. Calls providers; their
// exceptions become codes.
HRESULT PrepareRecipients(const CABServiceList* providers, SPropTagArray* tags, ADRLIST& list);

}  // namespace orv
