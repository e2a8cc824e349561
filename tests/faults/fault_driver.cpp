// The driver's loop over sites and positions.
#include "tests/faults/fault_driver.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <ios>

namespace orv::test {
namespace {

// No scenario allocates as often; one that never gets through is stuck.
constexpr std::size_t kLimit = 5'000;

bool IsDocumented(const Scenario& scenario, HRESULT hr) {
  return hr == MAPI_E_NOT_ENOUGH_MEMORY ||
         std::find(scenario.results.begin(), scenario.results.end(), hr) != scenario.results.end();
}

HRESULT RunUnarmed(const Scenario& scenario) {
  scenario.prepare();
  return scenario.run();
}

// True when the failure was met.
bool RunArmed(const SeamClient& client, const Scenario& scenario, faults::Site site, std::size_t nth) {
  scenario.prepare();
  client.Arm(site, nth);
  const HRESULT hr = scenario.run();
  const bool fired = client.Fired(site);
  client.Arm(site, 0);
  if (!fired) {
    EXPECT_EQ(hr, S_OK);
    return false;
  }
  EXPECT_TRUE(IsDocumented(scenario, hr)) << "result 0x" << std::hex << static_cast<ULONG>(hr);
  scenario.verify(hr);
  return true;
}

// How many failures were met.
std::size_t DriveSite(const SeamClient& client, const Scenario& scenario, faults::Site site) {
  // What is made once and kept is made now.
  EXPECT_EQ(RunUnarmed(scenario), S_OK);
  const LiveCounts before = client.Live();
  for (std::size_t nth = 1; nth < kLimit && !testing::Test::HasFatalFailure(); ++nth) {
    SCOPED_TRACE(testing::Message() << "site " << static_cast<unsigned>(site) << ", failure " << nth);
    const bool fired = RunArmed(client, scenario, site, nth);
    EXPECT_EQ(client.Live(), before);
    if (!fired) return nth - 1;
    EXPECT_EQ(RunUnarmed(scenario), S_OK) << "not usable afterwards";
    EXPECT_EQ(client.Live(), before) << "after the run that follows";
  }
  ADD_FAILURE() << "the scenario does not come to an end";
  return 0;
}

}  // namespace

void Drive(const SeamClient& client, const Scenario& scenario) {
  const std::size_t buffers = DriveSite(client, scenario, faults::Site::kTaskAllocation);
  const std::size_t heap = DriveSite(client, scenario, faults::Site::kOperatorNew);
  EXPECT_GT(buffers + heap, 0u) << "the scenario allocates nothing";
  std::printf("    failures met: %zu of buffers, %zu of the heap\n", buffers, heap);
}

}  // namespace orv::test
