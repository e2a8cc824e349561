// The library's entry point.
#include "orv/kit/unload.hpp"
#include "session/attach.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, LPVOID processEnds);

extern "C" BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, LPVOID processEnds) {
  if (reason == DLL_PROCESS_ATTACH) return orv::Attach(library) ? TRUE : FALSE;
  // When the process ends, other libraries may be gone already and the system takes everything back.
  if (reason == DLL_PROCESS_DETACH && processEnds == nullptr) {
    orv::Detach();
    orv::sdk::GiveBackRunTime(library);
  }
  return TRUE;
}
