// Critical section and its guard. The standard mutexes of this toolchain keep a heap block each, so not those.
#pragma once

#include "platform/win.h"

namespace orv {

class Lock {
 public:
  Lock() noexcept { InitializeCriticalSection(&section_); }
  ~Lock() { DeleteCriticalSection(&section_); }
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;

  void Enter() noexcept { EnterCriticalSection(&section_); }
  void Leave() noexcept { LeaveCriticalSection(&section_); }

 private:
  CRITICAL_SECTION section_;
};

class [[nodiscard]] LockGuard {
 public:
  explicit LockGuard(Lock& lock) noexcept : lock_(lock) { lock_.Enter(); }
  ~LockGuard() { lock_.Leave(); }
  LockGuard(const LockGuard&) = delete;
  LockGuard& operator=(const LockGuard&) = delete;

 private:
  Lock& lock_;
};

// A lock that needs no making: for what exists before the library runs and after.
class [[nodiscard]] ExclusiveGuard {
 public:
  explicit ExclusiveGuard(SRWLOCK& lock) noexcept : lock_(lock) { AcquireSRWLockExclusive(&lock_); }
  ~ExclusiveGuard() { ReleaseSRWLockExclusive(&lock_); }
  ExclusiveGuard(const ExclusiveGuard&) = delete;
  ExclusiveGuard& operator=(const ExclusiveGuard&) = delete;

 private:
  SRWLOCK& lock_;
};

}  // namespace orv
