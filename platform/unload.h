// What the statically linked run-time takes while the library is loaded and does not give back by itself.
#pragma once

#include "platform/win.h"

namespace orv {

// At the library's unloading, not at the process's end: frees the memory that is kept for throwing when there is none,
// the calling thread's records (with their handles), and the thread-local slots. Nothing may throw afterwards.
void GiveBackRunTime(HMODULE self) noexcept;

}  // namespace orv
