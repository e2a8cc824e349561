// Main program of every test: buffers come from the task allocator, and what lived at the start is all that
// lives at the end. A program that expects a documented leak says so with ExpectLeakedObjects().
#include <gtest/gtest.h>

#include <cstdio>

#include "platform/faults.h"
#include "platform/process.h"
#include "tests/support/leaks.h"

namespace orv::test {
namespace {
long g_leakedObjects = 0;
}

void ExpectLeakedObjects(long count) { g_leakedObjects += count; }

}  // namespace orv::test

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  if (!orv::process::AcquireTaskAllocator()) return 2;
  const int failed = RUN_ALL_TESTS();
  const long objects = orv::faults::LiveObjects() - orv::test::g_leakedObjects;
  const long blocks = orv::faults::LiveTaskBlocks();
  if (objects != 0 || blocks != 0) {
    std::printf("LEAK: %ld objects and %ld task blocks beyond the expected ones are alive\n", objects,
                blocks);
    return 3;
  }
  std::printf("test program complete\n");
  return failed;
}
