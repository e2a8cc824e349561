// The call of a service's entry function: its library is loaded for the one call, handed a support object
// made for it, and freed again.
#pragma once

#include "orv/orvspi.h"
#include "platform/win.h"

namespace orv {

struct ServiceEntryCall {
  ULONG_PTR uiParam = 0;
  ULONG flags = 0;
  ULONG context = 0;  // MSG_SERVICE_*, ORV_SERVICE_EXTRA_CONFIG
  ULONG valueCount = 0;
  LPSPropValue values = nullptr;
};

// For a service of a profile: the section names library and entry (MAPI_E_INVALID_OBJECT when it does not),
// the library lies beside ours. MAPI_E_NOT_FOUND: no such library; MAPI_E_CALL_FAILED: no such entry, or it
// threw.
HRESULT CallServiceEntry(IProfSect* section, const ServiceEntryCall& call);

// For a service of a catalogue, when it is installed or uninstalled: without a section, the library taken from `folder`
// and from nowhere else, whatever the system would find under its name. Results as above.
HRESULT CallServiceEntryOnce(const WString& folder, const WString& library, const char* entryName,
                             const ServiceEntryCall& call);

}  // namespace orv
