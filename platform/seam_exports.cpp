// The exports, one line each.
#include "platform/seam_exports.h"

#include "platform/faults.h"

namespace faults = orv::faults;

void STDAPICALLTYPE OrvSeamArm(unsigned site, std::size_t nth) {
  faults::Arm(static_cast<faults::Site>(site), nth);
}

std::size_t STDAPICALLTYPE OrvSeamCalls(unsigned site) {
  return faults::Calls(static_cast<faults::Site>(site));
}

int STDAPICALLTYPE OrvSeamFired(unsigned site) {
  return faults::Fired(static_cast<faults::Site>(site)) ? 1 : 0;
}

long STDAPICALLTYPE OrvSeamLiveObjects() { return faults::LiveObjects(); }

long STDAPICALLTYPE OrvSeamLiveTaskBlocks() { return faults::LiveTaskBlocks(); }
