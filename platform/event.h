// Something that one thread waits for and others bring about.
#pragma once

#include "platform/win.h"

namespace orv {

// Each Set lets one Wait pass, also one that comes after it. Without a handle to be had every Wait passes, a little
// later.
class Event {
 public:
  Event() noexcept : handle_(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {}
  ~Event() {
    if (handle_ != nullptr) CloseHandle(handle_);
  }
  Event(const Event&) = delete;
  Event& operator=(const Event&) = delete;

  void Set() noexcept { SetEvent(handle_); }

  // What other threads send to windows of this one is dispatched meanwhile: one of them may show a dialog over such a
  // window, and could neither close it nor go on.
  void Wait() noexcept {
    const DWORD handles = handle_ == nullptr ? 0 : 1;
    const DWORD longest = handle_ == nullptr ? kLongestWithoutHandle : INFINITE;
    while (MsgWaitForMultipleObjectsEx(handles, &handle_, longest, QS_SENDMESSAGE, 0) ==
           WAIT_OBJECT_0 + handles) {
      MSG message;
      PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE | PM_QS_SENDMESSAGE);
    }
  }

 private:
  static constexpr DWORD kLongestWithoutHandle = 10;  // milliseconds

  const HANDLE handle_;
};

}  // namespace orv
