// Something that one thread waits for and others bring about.
#pragma once

#include <new>

#include "platform/win.h"

namespace orv {

// Each Set lets one Wait pass, also one that comes after it.
class Event {
 public:
  Event() : handle_(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {
    if (handle_ == nullptr) throw std::bad_alloc();
  }
  ~Event() { CloseHandle(handle_); }
  Event(const Event&) = delete;
  Event& operator=(const Event&) = delete;

  void Set() noexcept { SetEvent(handle_); }

  // What other threads send to windows of this one is dispatched meanwhile: one of them may show a dialog over such a
  // window, and could neither close it nor go on.
  void Wait() noexcept {
    while (MsgWaitForMultipleObjectsEx(1, &handle_, INFINITE, QS_SENDMESSAGE, 0) == WAIT_OBJECT_0 + 1) {
      MSG message;
      PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE | PM_QS_SENDMESSAGE);
    }
  }

 private:
  const HANDLE handle_;
};

}  // namespace orv
