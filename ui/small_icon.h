// Owner of one icon of a resource library, at the system's small size.
#pragma once

#include "platform/win.h"

namespace orv::ui {

class SmallIcon {
 public:
  // Empty when the library has no such icon; what draws it then draws nothing.
  SmallIcon(HMODULE resources, WORD identifier) noexcept
      : handle_(static_cast<HICON>(LoadImageW(resources, MAKEINTRESOURCEW(identifier), IMAGE_ICON,
                                              GetSystemMetrics(SM_CXSMICON), GetSystemMetrics(SM_CYSMICON),
                                              LR_DEFAULTCOLOR))) {}
  ~SmallIcon() {
    if (handle_ != nullptr) DestroyIcon(handle_);
  }
  SmallIcon(const SmallIcon&) = delete;
  SmallIcon& operator=(const SmallIcon&) = delete;

  HICON Get() const noexcept { return handle_; }

 private:
  HICON handle_;
};

}  // namespace orv::ui
