// What a dialog took is given back, however often it is shown.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <utility>

#include "platform/faults.h"
#include "tests/support/handle_probe.h"

namespace orv::test {

// What the first times create for the process, and what the system then keeps for the next window, stays; every later
// one must leave everything as it was.
inline void ExpectNothingStays(const std::function<void()>& once) {
  constexpr int kTimes = 24;
  const auto countAfter = [&](int times) {
    for (int i = 0; i < times; ++i) once();
    return CountHandles();
  };
  HandleCounts before = countAfter(8);
  const long objects = faults::LiveObjects();
  const long blocks = faults::LiveTaskBlocks();
  HandleCounts after = countAfter(kTimes);
  // What the system makes late it makes once, whereas a leak keeps something in every batch.
  for (int batch = 1; batch < 4; ++batch) {
    if (after.drawing == before.drawing && after.cached < before.cached + kTimes / 4) break;
    before = std::exchange(after, countAfter(kTimes));
  }
  EXPECT_EQ(after.windows, before.windows);
  EXPECT_EQ(after.menus, before.menus);
  EXPECT_EQ(after.icons, before.icons);
  EXPECT_EQ(after.drawing, before.drawing);
  EXPECT_LT(after.cached, before.cached + kTimes / 4) << "one in four showings keeps something";
  EXPECT_EQ(faults::LiveObjects(), objects);
  EXPECT_EQ(faults::LiveTaskBlocks(), blocks);
}

}  // namespace orv::test
