// Whether a printer port is one that faxes go to, as the driver's fax settings list them.
#pragma once

#include "platform/win.h"

namespace orv::ui {

// True when the port begins with one of the comma-separated prefixes; case counts, empty pieces do not.
bool StartsWithListedPrefix(WStringView port, WStringView prefixes);

// The same with the prefixes of the fax settings file of this model in the printer-driver directory. Nothing in the
// library calls it yet.
bool IsFaxPort(WStringView port, HMODULE library);

}  // namespace orv::ui
