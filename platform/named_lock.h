// A lock that programs share by its name. One thread holds it at a time, and a thread may take it again while it holds
// it. Whoever dies with it leaves it to the next one.
#pragma once

#include <utility>

#include "platform/win.h"

namespace orv {

class [[nodiscard]] NamedLock {
 public:
  NamedLock() noexcept = default;
  NamedLock(NamedLock&& other) noexcept
      : mutex_(std::exchange(other.mutex_, nullptr)), name_(std::move(other.name_)) {}
  NamedLock& operator=(NamedLock&& other) noexcept {
    std::swap(mutex_, other.mutex_);
    std::swap(name_, other.name_);
    return *this;
  }
  // In the thread that took it.
  ~NamedLock();

  // Waits at most so long. Empty when the lock cannot be had by then, or not at all. A lock that this call makes is for
  // the user `owner` (a SID as text), whatever rights his programs run with.
  static NamedLock Take(const WString& name, const WString& owner, DWORD milliseconds);

  explicit operator bool() const noexcept { return mutex_ != nullptr; }

 private:
  HANDLE mutex_ = nullptr;
  WString name_;
};

}  // namespace orv
