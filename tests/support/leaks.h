// Leaks that callers rely on and tests demand at their exact size; everything else must be gone at the end.
#pragma once

namespace orv::test {

// Adds to the objects that may be alive when the program ends. Asserted exactly: fewer fail like more.
void ExpectLeakedObjects(long count);

}  // namespace orv::test
