// Whether a test may judge by the clock: only where the machine has nothing else to do, which ./soak.sh says.
#pragma once

#include <cstdlib>

namespace orv::test {

inline bool IsTimed() { return std::getenv("ORV_TIMED") != nullptr; }

}  // namespace orv::test
