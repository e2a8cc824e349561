// Reading a profile's service table, row by row.
#pragma once

#include <functional>

#include "orv/orvapi.h"

namespace orv::ui {

// Asks for a new table, sets its columns and hands over each row from the first on. The first failure ends it.
HRESULT ReadServiceTable(IABServiceAdmin& services, LPSPropTagArray columns,
                         const std::function<void(const SRow&)>& use);
// The same for the first row only.
HRESULT ReadFirstService(IABServiceAdmin& services, LPSPropTagArray columns,
                         const std::function<void(const SRow&)>& use);

}  // namespace orv::ui
