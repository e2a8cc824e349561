// The profile section: the property set that one service keeps in a profile, as a copy in memory.
#pragma once

#include "orv/orvapi.h"
#include "platform/win.h"

namespace orv {

class CABServiceAdmin;

// A section filled from the stored row of the service; it keeps the administration object alive. MAPI_E_NOT_FOUND
// without such a row. May throw std::bad_alloc; `out` is written on success only.
HRESULT OpenProfSect(CABServiceAdmin& owner, const MAPIUID& uid, IProfSect** out);

}  // namespace orv
