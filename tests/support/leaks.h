// Leaks that callers rely on and tests demand at their exact size; everything else must be gone at the end.
#pragma once

namespace orv::test {

struct Leaks {
  long objects = 0;
  long taskBlocks = 0;
};

// Adds to what may be alive when the program ends. Asserted exactly: fewer fail like more.
void ExpectLeaks(const Leaks& leaks);

}  // namespace orv::test
