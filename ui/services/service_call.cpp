#include "ui/services/service_call.h"

#include "hosting/service_entry.h"
#include "orv/orvflags.h"
#include "orv/orvtags.h"
#include "props/foreign_values.h"
#include "ui/window_utils.h"

namespace orv::ui {

HRESULT CallServiceOnce(const WString& folder, const SRow& service, ULONG context, HWND dialog) {
  const ForeignValues values(service);
  const WCHAR* library = TextOf(values.Find(PR_SERVICE_DLL_NAME_W));
  const char* entry = Text8Of(values.Find(PR_SERVICE_ENTRY_NAME));
  if (library == nullptr || entry == nullptr) return MAPI_E_CALL_FAILED;
  ServiceEntryCall call;
  call.uiParam = reinterpret_cast<ULONG_PTR>(dialog);
  call.flags = MAPI_UNICODE | SERVICE_UI_ALLOWED;
  call.context = context;
  const WaitPointer pointer;
  return CallServiceEntryOnce(folder, library, entry, call);
}

}  // namespace orv::ui
