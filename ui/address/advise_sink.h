// Tells a dialog that something changed: every notification becomes one command posted to its window.
#pragma once

#include <atomic>

#include "orv/orvapi.h"
#include "platform/com_object.h"
#include "platform/com_ptr.h"

namespace orv::ui {

class CAdviseSink final : public ComObject<IMAPIAdviseSink> {
 public:
  static ComPtr<CAdviseSink> Create(HWND window);

  // Any thread may call; the notifications themselves are not read.
  ULONG STDMETHODCALLTYPE OnNotify(ULONG count, LPNOTIFICATION notifications) override;

  // The window goes; who still holds the sink notifies nobody.
  void Detach() noexcept { window_ = nullptr; }

 private:
  explicit CAdviseSink(HWND window) noexcept : window_(window) {}
  ~CAdviseSink() override = default;
  bool Supports(REFIID iid) const override;

  std::atomic<HWND> window_;
};

}  // namespace orv::ui
