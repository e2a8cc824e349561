// Buffers against the task allocator's own allocation, clearing and freeing of the same sizes.
#include <array>
#include <cstring>

#include "bench/harness.h"
#include "bench/values.h"
#include "platform/buffer.h"

namespace orv::bench {
namespace {

void* AllocateClear(std::size_t size) {
  void* block = TaskAllocator().Alloc(size + kBlockOverhead);
  std::memset(block, 0, size);
  return block;
}

void CompareOne(const char* name, ULONG size) {
  const auto ours = [size] {
    void* buffer = nullptr;
    OrvAllocateBuffer(size, &buffer);
    OrvFreeBuffer(buffer);
  };
  const auto floor = [size] { TaskAllocator().Free(AllocateClear(size)); };
  Report(name, Compare(ours, floor), 1.08);
}

// A property array with twenty strings hanging off it.
void CompareChain() {
  constexpr std::size_t kChained = 20;
  constexpr ULONG kRoot = 480;
  const auto sizeOf = [](std::size_t i) { return static_cast<ULONG>(16 + 8 * i); };
  const auto ours = [&] {
    void* root = nullptr;
    void* chained = nullptr;
    OrvAllocateBuffer(kRoot, &root);
    for (std::size_t i = 0; i < kChained; ++i) OrvAllocateMore(sizeOf(i), root, &chained);
    OrvFreeBuffer(root);
  };
  const auto floor = [&] {
    std::array<void*, kChained + 1> blocks;
    blocks[0] = AllocateClear(kRoot);
    // Newest first behind the root, the order in which ours are freed.
    for (std::size_t i = 0; i < kChained; ++i) blocks[kChained - i] = AllocateClear(sizeOf(i));
    for (void* block : blocks) TaskAllocator().Free(block);
  };
  Report("root with 20 chained buffers, allocated and freed", Compare(ours, floor), 1.08);
}

const Benchmark kBuffers("buffers", [] {
  CompareOne("buffer of 64 bytes, allocated and freed", 64);
  CompareOne("buffer of 1024 bytes, allocated and freed", 1024);
  CompareChain();
});

}  // namespace
}  // namespace orv::bench
