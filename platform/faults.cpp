// Counters and armed failures of the test build. Empty in the delivered build.
#include "platform/faults.h"

#if defined(ORV_FAULT_SEAM)
#include <array>
#include <atomic>

namespace orv::faults {
namespace {

struct SiteState {
  std::atomic<std::size_t> calls{0};
  std::atomic<std::size_t> failing{0};
  std::atomic<bool> fired{false};
};

std::array<SiteState, static_cast<std::size_t>(Site::kCount)> g_sites;
std::atomic<long> g_objects{0};
std::atomic<long> g_blocks{0};

SiteState& State(Site site) noexcept { return g_sites[static_cast<std::size_t>(site)]; }

}  // namespace

bool ShouldFail(Site site) noexcept {
  SiteState& state = State(site);
  const std::size_t call = ++state.calls;
  const std::size_t failing = state.failing.load();
  if (failing == 0 || call != failing) return false;
  state.fired = true;
  return true;
}

void Arm(Site site, std::size_t nth) noexcept {
  SiteState& state = State(site);
  state.failing = 0;
  state.calls = 0;
  state.fired = false;
  state.failing = nth;
}

std::size_t Calls(Site site) noexcept { return State(site).calls; }
bool Fired(Site site) noexcept { return State(site).fired; }
void ObjectBorn() noexcept { ++g_objects; }
void ObjectDied() noexcept { --g_objects; }
void TaskBlockBorn() noexcept { ++g_blocks; }
void TaskBlockDied() noexcept { --g_blocks; }
long LiveObjects() noexcept { return g_objects; }
long LiveTaskBlocks() noexcept { return g_blocks; }

}  // namespace orv::faults
#endif
