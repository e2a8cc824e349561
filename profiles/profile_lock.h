// Holds programs and threads apart on profiles: one lock a profile, and one for the list of them.
#pragma once

#include <array>
#include <span>

#include "platform/named_lock.h"
#include "platform/win.h"

namespace orv {

// While it lives nobody else reads or changes what it names. Locks of several profiles are always taken in one order,
// and the list's last, so that no two holders wait for each other. A thread may take a profile again that it holds.
class [[nodiscard]] ProfileLock {
 public:
  ProfileLock() noexcept = default;
  ProfileLock(ProfileLock&&) noexcept = default;
  ProfileLock& operator=(ProfileLock&&) noexcept = default;

  // MAPI_E_BUSY when somebody else does not let go within ten seconds. May throw std::bad_alloc.
  HRESULT TakeProfile(const WString& profile);
  HRESULT TakeProfiles(const WString& one, const WString& other);
  // For whoever lists the profiles, or adds one to the list or takes one out.
  HRESULT TakeList();

 private:
  // Released in the order opposite to that of taking.
  NamedLock first_;
  NamedLock second_;
  NamedLock list_;
};

}  // namespace orv
