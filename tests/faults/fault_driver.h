// The library's test build as a client sees it, with its fault seam, and the driver that lets the first, second, third
// ... allocation of a scenario fail until it gets through without meeting the failure.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <stdexcept>
#include <string>
#include <tuple>

#include "orv/orvbase.hpp"
#include "platform/faults.h"
#include "tests/support/fake_provider/fake_script.h"

namespace orv::test {

class SeamClient {
  HMODULE library_;

 public:
  explicit SeamClient(HMODULE library) : library_(library) {}

  template <class Function>
  Function Find(const char* name) const {
    const auto found = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library_, name)));
    if (found == nullptr) throw std::runtime_error(std::string("the library does not export ") + name);
    return found;
  }
  void Arm(faults::Site site, std::size_t nth) const {
    Find<void(STDAPICALLTYPE*)(unsigned, std::size_t)>("OrvSeamArm")(static_cast<unsigned>(site), nth);
  }
  bool Fired(faults::Site site) const {
    return Find<int(STDAPICALLTYPE*)(unsigned)>("OrvSeamFired")(static_cast<unsigned>(site)) != 0;
  }
  // Objects, task blocks and heap blocks that are alive in the library.
  std::tuple<long, long, long> Live() const {
    const auto count = [&](const char* name) { return Find<long(STDAPICALLTYPE*)()>(name)(); };
    return {count("OrvSeamLiveObjects"), count("OrvSeamLiveTaskBlocks"), count("OrvSeamLiveNewBlocks")};
  }
  // What the library hands out goes back to it.
  template <class T>
  sdk::Buffer<T> Own(T* handedOut = nullptr) const {
    return sdk::Buffer<T>(buffers.free, handedOut);
  }

  const LPORVOPEN open = Find<LPORVOPEN>("OrvOpen");
  const LPORVADMINPROFILES adminProfiles = Find<LPORVADMINPROFILES>("OrvAdminProfiles");
  const LPORVOPENUSERINFO openUserInfo = Find<LPORVOPENUSERINFO>("OrvOpenUserInfo");
  const FakeBuffers buffers{Find<LPALLOCATEBUFFER>("OrvAllocateBuffer"),
                            Find<LPALLOCATEMORE>("OrvAllocateMore"), Find<LPFREEBUFFER>("OrvFreeBuffer")};
};

struct Scenario {
  // Armed. Gives back all that it obtained; its result is the first failing one.
  std::function<HRESULT()> run;
  // Unarmed, before every run.
  std::function<void()> prepare = [] {};
  // Unarmed, after a run that met the failure.
  std::function<void(HRESULT)> verify = [](HRESULT) {};
  // Documented results besides MAPI_E_NOT_ENOUGH_MEMORY. S_OK where a step's failure is not looked at.
  std::set<HRESULT> results = {};
};

// No scenario allocates as often; one that never gets through is stuck.
inline constexpr std::size_t kScenarioLimit = 5'000;

// How many failures were met.
inline std::size_t DriveSite(const SeamClient& client, const Scenario& scenario, faults::Site site) {
  const auto runUnarmed = [&] {
    scenario.prepare();
    EXPECT_EQ(scenario.run(), S_OK) << "not usable";
  };
  // What is made once and kept is made now.
  runUnarmed();
  const auto before = client.Live();
  for (std::size_t nth = 1; nth < kScenarioLimit && !testing::Test::HasFatalFailure(); ++nth) {
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

// Every time: a documented result, nothing left behind, and it works afterwards.
inline void Drive(const SeamClient& client, Scenario scenario) {
  scenario.results.insert(MAPI_E_NOT_ENOUGH_MEMORY);
  std::size_t met = 0;
  for (const auto site : {faults::Site::kTaskAllocation, faults::Site::kOperatorNew})
    met += DriveSite(client, scenario, site);
  EXPECT_GT(met, 0u) << "the scenario allocates nothing";
}

}  // namespace orv::test
