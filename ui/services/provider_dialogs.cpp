#include "ui/services/provider_dialogs.h"

#include "platform/com_ptr.h"
#include "ui/services/profile_dialog.h"

namespace orv::ui {

INT_PTR ShowProfileDialog(HWND owner, HMODULE resources, IABServiceAdmin* services) {
  ProfileDialog dialog(resources, ComPtr<IABServiceAdmin>::Share(services));
  return dialog.Show(owner);
}

}  // namespace orv::ui
