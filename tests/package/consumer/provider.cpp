// A provider library outside the project, linked to the kit with a throw of its own in it.
#include <orv/orvcodes.h>
#include <orv/kit/unload.hpp>

extern "C" __declspec(dllexport) HRESULT ABProviderOpen() {
  try {
    throw 1;
  } catch (int) {
  }
  return MAPI_E_NO_SUPPORT;
}

extern "C" BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, LPVOID processEnds) {
  if (reason == DLL_PROCESS_DETACH && processEnds == nullptr) orv::sdk::GiveBackRunTime(library);
  return TRUE;
}
