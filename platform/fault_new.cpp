// The heap of the library's test build: fails when the seam says so and counts what lives. In a file of its own,
// which only that build links.
#include <atomic>
#include <cstdlib>
#include <new>

#include "platform/faults.h"
#include "platform/seam_exports.h"

namespace {
std::atomic<long> g_liveBlocks{0};
}

long STDAPICALLTYPE OrvSeamLiveNewBlocks() { return g_liveBlocks; }

void* operator new(std::size_t size) {
  if (orv::faults::ShouldFail(orv::faults::Site::kOperatorNew)) throw std::bad_alloc();
  void* block = std::malloc(size == 0 ? 1 : size);
  if (block == nullptr) throw std::bad_alloc();
  ++g_liveBlocks;
  return block;
}

void operator delete(void* block) noexcept {
  if (block == nullptr) return;
  --g_liveBlocks;
  std::free(block);
}

void operator delete(void* block, std::size_t) noexcept { operator delete(block); }
