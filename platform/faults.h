// A seam for tests: fail the N-th allocation or registry call, count what lives. In the delivered build every
// function here is empty and inlined away.
#pragma once

#include <cstddef>

namespace orv::faults {

enum class Site : unsigned {
  kTaskAllocation,  // blocks from the COM task allocator
  kOperatorNew,     // blocks from the library's own heap
  kRegistry,        // calls of platform/reg_key
  kCount,
};

#if defined(ORV_FAULT_SEAM)
// True when this call of the site is the one that was armed to fail. Counts the call in any case.
bool ShouldFail(Site site) noexcept;
void ObjectBorn() noexcept;
void ObjectDied() noexcept;
void TaskBlockBorn() noexcept;
void TaskBlockDied() noexcept;

// The `nth` call from now (1 is the next) fails, once; 0 disarms. Process-wide.
void Arm(Site site, std::size_t nth) noexcept;
// Calls of the site since it was last armed or disarmed.
std::size_t Calls(Site site) noexcept;
// True when the armed failure has been delivered.
bool Fired(Site site) noexcept;
long LiveObjects() noexcept;
long LiveTaskBlocks() noexcept;
#else
inline constexpr bool ShouldFail(Site) noexcept { return false; }
inline void ObjectBorn() noexcept {}
inline void ObjectDied() noexcept {}
inline void TaskBlockBorn() noexcept {}
inline void TaskBlockDied() noexcept {}
#endif

// Base of every counted object: the tests demand that as many die as were born.
class Counted {
 protected:
  Counted() noexcept { ObjectBorn(); }
  Counted(const Counted&) noexcept { ObjectBorn(); }
  Counted& operator=(const Counted&) = default;
  ~Counted() { ObjectDied(); }
};

}  // namespace orv::faults
