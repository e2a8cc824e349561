// Common controls 6 for the dialogs of a resource library: its manifest is in force while this object lives.
#pragma once

#include "platform/win.h"

namespace orv::ui {

class ActivationContext {
 public:
  // Without a library or a manifest nothing changes: the dialogs then look older and work the same.
  explicit ActivationContext(HMODULE resources) noexcept;
  ~ActivationContext();
  ActivationContext(const ActivationContext&) = delete;
  ActivationContext& operator=(const ActivationContext&) = delete;

  bool IsActive() const noexcept { return active_; }

 private:
  HANDLE context_ = INVALID_HANDLE_VALUE;
  ULONG_PTR cookie_ = 0;
  bool active_ = false;
};

}  // namespace orv::ui
