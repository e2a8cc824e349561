// Libraries that a service names: a bare file name, taken from one folder.
#pragma once

#include "platform/module.h"
#include "platform/win.h"

namespace orv {

// From `folder`, which ends in a backslash, or the system's way when that is empty. Nothing is loaded for a name with a
// folder of its own, which could lead anywhere, for an empty one, or when name and folder exceed 260 characters.
Module LoadNamedLibrary(const WString& folder, WStringView name);

// From the folder of our own library.
Module LoadLibraryBesideUs(WStringView name);

}  // namespace orv
