// The support object that a provider library receives: allocation routines, registration of the UIDs in its
// entry identifiers, property copies.
#pragma once

#include "orv/orvtypes.h"

struct IOrvSupport;

namespace orv {

class CABServiceList;
class ProviderRecord;

// A support object with one reference. List and record are both given (a provider's logon) or both null (a
// call of a service entry function), else MAPI_E_INVALID_PARAMETER. The object holds the list and observes
// the record.
HRESULT CreateSupport(CABServiceList* list, ProviderRecord* record, IOrvSupport** out);

}  // namespace orv
