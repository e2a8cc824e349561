// Libraries that a service names: a bare file name, taken from one folder.
#pragma once

#include "platform/module.h"
#include "platform/win.h"

namespace orv {

// From `folder`, a full path that ends in a backslash. Nothing is loaded for a name with a folder of its own, which
// could lead anywhere, for an empty name or folder, or when both together exceed 260 characters.
Module LoadNamedLibrary(const WString& folder, WStringView name);

// From the folder of our own library.
Module LoadLibraryBesideUs(WStringView name);

}  // namespace orv
