// Who we are: our file name and folder, and the printer model that our file name stands for.
#pragma once

#include <optional>

#include "platform/win.h"

namespace orv {

// How a file name is compared with the rows of the model table. Both are relied on: file names of companions
// are formed for any spelling of our name, catalogue values only for the exact one.
enum class NameMatch { kIgnoreCase, kExact };

// Full path of a module; empty when the system does not tell it within 260 characters.
WString ModulePath(HMODULE module);
// Its last component.
WString ModuleFileName(HMODULE module);
// The module's path with everything after its last backslash replaced by `name`; empty as above.
WString PathBeside(HMODULE module, WStringView name);

// Model name of the row for this module's file name (case of A to Z ignored); none when there is no row.
std::optional<WString> ModelName(HMODULE module);
// Model letter likewise; 0 when there is no row.
WCHAR ModelLetter(HMODULE module, NameMatch match);

// "name" is a bare file name: neither empty nor holding a separator or a colon, and neither "." nor "..".
bool IsBareFileName(WStringView name);

// Equal but for the case of A to Z.
bool EqualIgnoringAsciiCase(WStringView a, WStringView b);

}  // namespace orv
