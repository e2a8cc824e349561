// For libraries built with mingw that have their run-time linked in: what that takes while the library is loaded and
// does not give back by itself. A provider is loaded and freed at every logon, so what one load leaves adds up until
// the process has no more. Needs the kit's library at linking; libraries of other compilers need nothing of this.
#pragma once

#include <windows.h>

namespace orv::sdk {

// Frees the memory that is kept for throwing when there is none, the calling thread's records (with their handles) and
// the thread-local slots. Call it last in the library's own DllMain, where it is unloaded while the process goes on
// (DLL_PROCESS_DETACH with a null third argument). Nothing of the library may throw or use a stream afterwards.
void GiveBackRunTime(HMODULE self) noexcept;

}  // namespace orv::sdk
