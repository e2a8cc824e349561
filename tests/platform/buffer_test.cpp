#include "platform/buffer.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>

#include "platform/faults.h"

namespace orv::test {
namespace {

struct Header {
  ULONG signature, size;
  void *previous, *next;
};

Header HeaderOf(const void* buffer) {
  Header header;
  std::memcpy(&header, static_cast<const char*>(buffer) - sizeof header, sizeof header);
  return header;
}
void* BlockOf(void* buffer) { return static_cast<char*>(buffer) - sizeof(Header); }

TEST(Buffer, BlockIsHeaderZeroPayloadAndGuard) {
  for (const ULONG size : {0u, 1u, 5u, 24u, 4096u}) {
    for (const bool cleared : {true, false}) {
      void* buffer = nullptr;
      ASSERT_EQ(cleared ? OrvAllocateBuffer(size, &buffer) : AllocateToFill(size, nullptr, &buffer), S_OK);
      const Header header = HeaderOf(buffer);
      EXPECT_EQ(header.signature, 123u);
      EXPECT_EQ(header.size, size);
      if (!cleared) std::memset(buffer, 0, size);
      EXPECT_EQ(std::string(static_cast<char*>(buffer), size + 1), std::string(size, '\0') + '}');
      // What the next one may be given again is not zero.
      std::memset(buffer, 'x', size);
      EXPECT_EQ(OrvFreeBuffer(buffer), 0u);
    }
  }
}

TEST(Buffer, ChainRunsFromRootOverNewestToOldestAndOnlyItsRootIsExtendedAndFreed) {
  const long alive = faults::LiveTaskBlocks();
  std::array<void*, 4> buffer{};
  ASSERT_EQ(OrvAllocateBuffer(8, &buffer[0]), S_OK);
  ASSERT_EQ(OrvAllocateMore(1, buffer[0], &buffer[1]), S_OK);
  ASSERT_EQ(OrvAllocateMore(0, buffer[0], &buffer[2]), S_OK);
  ASSERT_EQ(AllocateToFill(3, buffer[0], &buffer[3]), S_OK);
  EXPECT_EQ(static_cast<char*>(buffer[1])[0], 0);
  EXPECT_EQ(static_cast<char*>(buffer[3])[3], '}');
  std::array<char, 64> foreign{};
  for (void* wrong : {static_cast<void*>(nullptr), buffer[1], static_cast<void*>(foreign.data() + 32)}) {
    void* out = &foreign;
    EXPECT_EQ(OrvAllocateMore(1, wrong, &out), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(OrvFreeBuffer(wrong), static_cast<ULONG>(MAPI_E_INVALID_PARAMETER));
  }
  const std::array<std::size_t, 4> order = {0, 3, 2, 1};
  for (std::size_t i = 0; i < order.size(); ++i) {
    const Header header = HeaderOf(buffer[order[i]]);
    EXPECT_EQ(header.previous, i == 0 ? nullptr : BlockOf(buffer[order[i - 1]]));
    EXPECT_EQ(header.next, i == 3 ? nullptr : BlockOf(buffer[order[i + 1]]));
  }
  EXPECT_EQ(faults::LiveTaskBlocks(), alive + 4);
  EXPECT_EQ(OrvFreeBuffer(buffer[0]), 0u);
  EXPECT_EQ(faults::LiveTaskBlocks(), alive);
}

TEST(Buffer, WithoutMemoryTheChainStaysAsItWas) {
  MapiBuffer<char> root;
  ASSERT_EQ(root.Allocate(1), S_OK);
  // Sizes that wrap with their overhead are refused without asking the allocator; the last one is let ask and fail.
  for (const ULONG size : {0xFFFFFFE7u, 0xFFFFFFF0u, 0xFFFFFFFFu, 1u}) {
    for (const bool chained : {false, true}) {
      faults::Arm(faults::Site::kTaskAllocation, 1);
      void* out = root.Get();
      EXPECT_EQ(chained ? OrvAllocateMore(size, root.Get(), &out) : OrvAllocateBuffer(size, &out),
                MAPI_E_NOT_ENOUGH_MEMORY);
      EXPECT_EQ(out, nullptr);
      EXPECT_EQ(faults::Calls(faults::Site::kTaskAllocation), size == 1 ? 1u : 0u);
    }
  }
  faults::Arm(faults::Site::kTaskAllocation, 0);
  EXPECT_EQ(HeaderOf(root.Get()).next, nullptr);
}

}  // namespace
}  // namespace orv::test
