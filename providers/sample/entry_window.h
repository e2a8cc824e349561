// The window of a contact or list: what the file says of it, a line each.
#pragma once

#include <string>
#include <vector>

#include "formats/contact.h"
#include "orv/kit/window.hpp"

namespace sample {

namespace kit = orv::kit;

// `members`: of a list, their names. MAPI_E_CALL_FAILED where no window can be shown.
HRESULT ShowEntry(HWND owner, const kit::Language& language, const formats::Contact& contact,
                  const std::vector<std::string>& members);

}  // namespace sample
