// The fault seam of faults.h as exports of the library's test build, for programs that drive it from outside.
#pragma once

#include <cstddef>

#include "platform/win.h"

extern "C" {

// Sites by their number in faults::Site.
void STDAPICALLTYPE OrvSeamArm(unsigned site, std::size_t nth);
std::size_t STDAPICALLTYPE OrvSeamCalls(unsigned site);
int STDAPICALLTYPE OrvSeamFired(unsigned site);
long STDAPICALLTYPE OrvSeamLiveObjects();
long STDAPICALLTYPE OrvSeamLiveTaskBlocks();
long STDAPICALLTYPE OrvSeamLiveNewBlocks();

}  // extern "C"
