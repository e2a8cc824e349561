// A catalogue for those who look after it: what it offers, and of every other line why it offers nothing.
#pragma once

#include "orv/orvapi.h"
#include "platform/win.h"

namespace orv::catalogue {

// The export OrvOpenCatalogue behind its checks: `path` may be null, the other outs are null. May throw std::bad_alloc.
HRESULT Open(const WCHAR* file, LPWSTR* path, LPSRowSet* services, LPSRowSet* leftOut);

}  // namespace orv::catalogue
