#include "ui/services/service_call.h"

#include "hosting/service_entry.h"
#include "orv/orvflags.h"
#include "props/prop_value.h"
#include "ui/services/row_values.h"

namespace orv::ui {

HRESULT CallServiceOnce(const WString& folder, const SRow& service, ULONG context, HWND dialog) {
  const SPropValue* entry = FindValue(service.lpProps, service.cValues, PR_SERVICE_ENTRY_NAME);
  if (entry == nullptr || entry->Value.lpszA == nullptr) return MAPI_E_CALL_FAILED;
  ServiceEntryCall call;
  call.uiParam = reinterpret_cast<ULONG_PTR>(dialog);
  call.flags = MAPI_UNICODE | SERVICE_UI_ALLOWED;
  call.context = context;
  return CallServiceEntryOnce(folder, TextOf(service, PR_SERVICE_DLL_NAME_W), entry->Value.lpszA, call);
}

}  // namespace orv::ui
