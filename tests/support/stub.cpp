// A library that is little more than a file name and a module handle. Its one export throws, for callers that have
// loaded it for the call and free it right after.
#include <stdexcept>

#include "orv/orvspi.h"

extern "C" {

BOOL WINAPI DllMain(HINSTANCE, DWORD, void*) { return TRUE; }

__declspec(dllexport) HRESULT STDAPICALLTYPE
    ThrowingServiceEntry(HINSTANCE, ULONG_PTR, ULONG, ULONG, ULONG, LPSPropValue, LPPROFSECT, LPORVSUPPORT,
                         ULONG_PTR);
HRESULT STDAPICALLTYPE ThrowingServiceEntry(HINSTANCE, ULONG_PTR, ULONG, ULONG, ULONG, LPSPropValue,
                                            LPPROFSECT, LPORVSUPPORT, ULONG_PTR) {
  throw std::runtime_error("thrown by a library that is about to be freed");
}

}  // extern "C"
