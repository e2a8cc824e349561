#include "platform/named_lock.h"

#include <sddl.h>

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

}  // namespace

NamedLock::~NamedLock() {
  if (mutex_ == nullptr) return;
  ReleaseMutex(mutex_);
  CloseHandle(mutex_);
}

// A lock that was abandoned is had like any other: what its holder left half done, others know how to find.
NamedLock NamedLock::Take(const WString& name, const WString& owner, DWORD milliseconds) {
  NamedLock lock;
  Descriptor descriptor(owner);
  const HANDLE mutex = CreateMutexExW(descriptor.Get(), name.c_str(), 0, SYNCHRONIZE | MUTEX_MODIFY_STATE);
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
