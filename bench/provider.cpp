// The provider library of the logon's benchmark: opens at once and has nothing.
#include "orv/orvspi.h"

extern "C" {

ABPROVIDEROPEN ABProviderOpen;
HRESULT STDAPICALLTYPE ABProviderOpen(HINSTANCE, LPORVSUPPORT, LPPROFSECT, ULONG_PTR, ULONG, LPALLOCATEBUFFER,
                                      LPALLOCATEMORE, LPFREEBUFFER, LPADRBOOK*, ULONG_PTR) {
  return S_OK;
}

ORVSERVICEENTRY BenchServiceEntry;
HRESULT STDAPICALLTYPE BenchServiceEntry(HINSTANCE, ULONG_PTR, ULONG, ULONG, ULONG, LPSPropValue, LPPROFSECT,
                                         LPORVSUPPORT, ULONG_PTR) {
  return S_OK;
}

}  // extern "C"
