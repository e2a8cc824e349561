#include "platform/named_lock.h"

#include <sddl.h>

#include <array>

#include "platform/lock.h"

namespace orv {
namespace {

// All rights for one user; with the label, for his programs of lesser rights too when one of greater rights made it.
class Descriptor {
 public:
  explicit Descriptor(const WString& owner) {
    const WString text = L"D:(A;;GA;;;" + owner + L")S:(ML;;NW;;;ME)";
    ConvertStringSecurityDescriptorToSecurityDescriptorW(text.c_str(), SDDL_REVISION_1, &descriptor_,
                                                         nullptr);
    attributes_ = {sizeof attributes_, descriptor_, FALSE};
  }
  ~Descriptor() { LocalFree(descriptor_); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  // Null, which is the system's choice, where it cannot be made.
  SECURITY_ATTRIBUTES* Get() { return descriptor_ == nullptr ? nullptr : &attributes_; }

 private:
  PSECURITY_DESCRIPTOR descriptor_ = nullptr;
  SECURITY_ATTRIBUTES attributes_{};
};

// The handles last used, kept open for whoever takes the same locks next: a logon takes two of them again and again,
// and making a lock known to the system costs more than taking it. None of these is held by anybody here.
class KeptHandles {
 public:
  KeptHandles() = default;
  ~KeptHandles() {
    for (const Kept& each : kept_) Close(each.mutex);
  }
  KeptHandles(const KeptHandles&) = delete;
  KeptHandles& operator=(const KeptHandles&) = delete;

  // Null when there is none of the name. What is taken is the caller's alone.
  HANDLE Take(const WString& name) noexcept {
    const ExclusiveGuard guard(lock_);
    for (Kept& each : kept_) {
      if (each.mutex != nullptr && each.name == name) return std::exchange(each.mutex, nullptr);
    }
    return nullptr;
  }
  // The one kept longest goes.
  void Keep(WString name, HANDLE mutex) noexcept {
    {
      const ExclusiveGuard guard(lock_);
      Kept& oldest = kept_[next_++ % kept_.size()];
      std::swap(oldest.name, name);
      std::swap(oldest.mutex, mutex);
    }
    Close(mutex);
  }

 private:
  struct Kept {
    WString name;
    HANDLE mutex = nullptr;
  };
  static void Close(HANDLE mutex) noexcept {
    if (mutex != nullptr) CloseHandle(mutex);
  }

  SRWLOCK lock_ = SRWLOCK_INIT;
  std::array<Kept, 2> kept_;
  std::size_t next_ = 0;
};
KeptHandles g_kept;

HANDLE OpenLock(const WString& name, const WString& owner) {
  if (const HANDLE kept = g_kept.Take(name)) return kept;
  Descriptor descriptor(owner);
  return CreateMutexExW(descriptor.Get(), name.c_str(), 0, SYNCHRONIZE | MUTEX_MODIFY_STATE);
}

}  // namespace

NamedLock::~NamedLock() {
  if (mutex_ == nullptr) return;
  ReleaseMutex(mutex_);
  g_kept.Keep(std::move(name_), mutex_);
}

// A lock that was abandoned is had like any other: what its holder left half done, others know how to find.
NamedLock NamedLock::Take(const WString& name, const WString& owner, DWORD milliseconds) {
  NamedLock lock;
  lock.name_ = name;
  const HANDLE mutex = OpenLock(name, owner);
  if (mutex == nullptr) return lock;
  const DWORD outcome = WaitForSingleObject(mutex, milliseconds);
  if (outcome == WAIT_OBJECT_0 || outcome == WAIT_ABANDONED) {
    lock.mutex_ = mutex;
  } else {
    CloseHandle(mutex);
  }
  return lock;
}

}  // namespace orv
