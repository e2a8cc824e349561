// Finding the exports.
#include "tests/faults/seam_client.h"

#include <ostream>
#include <stdexcept>

namespace orv::test {
namespace {

const SeamClient* g_current = nullptr;

template <class Function>
Function Find(HMODULE library, const char* name) {
  const auto found = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
  if (found == nullptr) throw std::runtime_error(std::string("the library does not export ").append(name));
  return found;
}

}  // namespace

void PrintTo(const LiveCounts& live, std::ostream* out) {
  *out << live.objects << " objects, " << live.taskBlocks << " task blocks, " << live.newBlocks
       << " heap blocks";
}

SeamClient::SeamClient(HMODULE library)
    : open(Find<LPORVOPEN>(library, "OrvOpen")),
      adminProfiles(Find<LPORVADMINPROFILES>(library, "OrvAdminProfiles")),
      openUserInfo(Find<LPORVOPENUSERINFO>(library, "OrvOpenUserInfo")),
      freeProws(Find<LPFREEPROWS>(library, "OrvFreeProws")),
      freePadrlist(Find<LPFREEPADRLIST>(library, "OrvFreePadrlist")),
      buffers{Find<LPALLOCATEBUFFER>(library, "OrvAllocateBuffer"),
              Find<LPALLOCATEMORE>(library, "OrvAllocateMore"), Find<LPFREEBUFFER>(library, "OrvFreeBuffer")},
      library_(library) {
  g_current = this;
}

SeamClient::~SeamClient() { g_current = nullptr; }

const SeamClient& SeamClient::Current() { return *g_current; }

void SeamClient::Arm(faults::Site site, std::size_t nth) const {
  Find<void(STDAPICALLTYPE*)(unsigned, std::size_t)>(library_, "OrvSeamArm")(static_cast<unsigned>(site),
                                                                             nth);
}

bool SeamClient::Fired(faults::Site site) const {
  return Find<int(STDAPICALLTYPE*)(unsigned)>(library_, "OrvSeamFired")(static_cast<unsigned>(site)) != 0;
}

LiveCounts SeamClient::Live() const {
  const auto count = [&](const char* name) { return Find<long(STDAPICALLTYPE*)()>(library_, name)(); };
  return {count("OrvSeamLiveObjects"), count("OrvSeamLiveTaskBlocks"), count("OrvSeamLiveNewBlocks")};
}

}  // namespace orv::test
