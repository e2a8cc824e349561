// The driver's loop over sites and positions.
#include "tests/faults/fault_driver.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace orv::test {
namespace {

// No scenario allocates as often; one that never gets through is stuck.
constexpr std::size_t kLimit = 5'000;

// How many failures were met.
std::size_t DriveSite(const SeamClient& client, const Scenario& scenario, faults::Site site) {
  const auto runUnarmed = [&] {
    scenario.prepare();
    EXPECT_EQ(scenario.run(), S_OK) << "not usable";
  };
  // What is made once and kept is made now.
  runUnarmed();
  const auto before = client.Live();
  for (std::size_t nth = 1; nth < kLimit && !testing::Test::HasFatalFailure(); ++nth) {
    SCOPED_TRACE(testing::Message() << "site " << static_cast<unsigned>(site) << ", failure " << nth);
    scenario.prepare();
    client.Arm(site, nth);
    const HRESULT hr = scenario.run();
    const bool fired = client.Fired(site);
    client.Arm(site, 0);
    EXPECT_TRUE(fired ? scenario.results.contains(hr) : hr == S_OK) << std::hex << static_cast<ULONG>(hr);
    if (fired) scenario.verify(hr);
    EXPECT_EQ(client.Live(), before);
    if (!fired) return nth - 1;
    runUnarmed();
    EXPECT_EQ(client.Live(), before) << "after the run that follows";
  }
  ADD_FAILURE() << "the scenario does not come to an end";
  return 0;
}

}  // namespace

void Drive(const SeamClient& client, Scenario scenario) {
  scenario.results.insert(MAPI_E_NOT_ENOUGH_MEMORY);
  const std::size_t buffers = DriveSite(client, scenario, faults::Site::kTaskAllocation);
  const std::size_t heap = DriveSite(client, scenario, faults::Site::kOperatorNew);
  EXPECT_GT(buffers + heap, 0u) << "the scenario allocates nothing";
  std::printf("    failures met: %zu of buffers, %zu of the heap\n", buffers, heap);
}

}  // namespace orv::test
