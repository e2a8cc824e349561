// What the library holds for the process, from its first attach to its last detach.
#pragma once

#include "platform/win.h"

namespace orv {

// The first attach records the module, loads the resource library (which may be missing) and obtains the task
// allocator, without which it fails. Further ones are only counted.
bool Attach(HMODULE library);
void Detach();

}  // namespace orv
