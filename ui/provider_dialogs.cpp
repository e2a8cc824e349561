#include "ui/provider_dialogs.h"

#include "platform/com_ptr.h"
#include "platform/process.h"
#include "ui/profile_dialog.h"

namespace orv::ui {

INT_PTR ShowProfileDialog(HWND owner, IABServiceAdmin* services) {
  ProfileDialog dialog(process::ResourceLibrary(), ComPtr<IABServiceAdmin>::Share(services));
  return dialog.Show(owner);
}

}  // namespace orv::ui
