#include "platform/buffer.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>

#include "platform/faults.h"
#include "tests/props/samples.h"

namespace orv::test {
namespace {

struct Header {
  ULONG signature;
  ULONG size;
  void* previous;
  void* next;
};

Header HeaderOf(const void* buffer) {
  Header header;
  std::memcpy(&header, static_cast<const char*>(buffer) - sizeof header, sizeof header);
  return header;
}
void* BlockOf(void* buffer) { return static_cast<char*>(buffer) - sizeof(Header); }

TEST(Buffer, BlockIsHeaderZeroPayloadAndGuard) {
  for (const ULONG size : {0u, 1u, 5u, 24u, 4096u}) {
    void* buffer = nullptr;
    ASSERT_EQ(S_OK, OrvAllocateBuffer(size, &buffer));
    const Header header = HeaderOf(buffer);
    EXPECT_EQ(123u, header.signature);
    EXPECT_EQ(size, header.size);
    EXPECT_EQ(nullptr, header.previous);
    EXPECT_EQ(nullptr, header.next);
    const std::string payload(static_cast<char*>(buffer), size + 1);
    EXPECT_EQ(std::string(size, '\0') + '}', payload);
    EXPECT_EQ(0u, OrvFreeBuffer(buffer));
  }
}

TEST(Buffer, ChainRunsFromRootOverNewestToOldest) {
  const long alive = faults::LiveTaskBlocks();
  std::array<void*, 4> buffer{};
  ASSERT_EQ(S_OK, OrvAllocateBuffer(8, &buffer[0]));
  for (std::size_t i = 1; i < buffer.size(); ++i) {
    ASSERT_EQ(S_OK, OrvAllocateMore(static_cast<ULONG>(i), buffer[0], &buffer[i]));
    EXPECT_EQ(0, static_cast<char*>(buffer[i])[0] & ~'}');
  }
  const std::array<std::size_t, 4> order = {0, 3, 2, 1};
  for (std::size_t i = 0; i < order.size(); ++i) {
    const Header header = HeaderOf(buffer[order[i]]);
    EXPECT_EQ(i == 0 ? nullptr : BlockOf(buffer[order[i - 1]]), header.previous);
    EXPECT_EQ(i == 3 ? nullptr : BlockOf(buffer[order[i + 1]]), header.next);
  }
  EXPECT_EQ(alive + 4, faults::LiveTaskBlocks());
  EXPECT_EQ(0u, OrvFreeBuffer(buffer[0]));
  EXPECT_EQ(alive, faults::LiveTaskBlocks());
}

TEST(Buffer, OnlyRootsAreExtendedAndFreed) {
  const ULONG invalid = static_cast<ULONG>(MAPI_E_INVALID_PARAMETER);
  MapiBuffer<char> root;
  ASSERT_EQ(S_OK, root.Allocate(8));
  void* chained = nullptr;
  ASSERT_EQ(S_OK, root.More(8, &chained));
  std::array<char, 64> foreign{};

  for (void* wrong : {static_cast<void*>(nullptr), chained, static_cast<void*>(foreign.data() + 32)}) {
    void* out = &foreign;
    EXPECT_EQ(MAPI_E_INVALID_PARAMETER, OrvAllocateMore(1, wrong, &out));
    EXPECT_EQ(nullptr, out);
    EXPECT_EQ(invalid, OrvFreeBuffer(wrong));
  }
  EXPECT_EQ(BlockOf(chained), HeaderOf(root.Get()).next);
}

TEST(Buffer, SizeThatWrapsIsRefusedWithoutAskingTheAllocator) {
  MapiBuffer<char> root;
  ASSERT_EQ(S_OK, root.Allocate(1));
  for (const ULONG size : {0xFFFFFFE7u, 0xFFFFFFF0u, 0xFFFFFFFFu}) {
    faults::Arm(faults::Site::kTaskAllocation, 0);
    void* out = root.Get();
    EXPECT_EQ(MAPI_E_NOT_ENOUGH_MEMORY, OrvAllocateBuffer(size, &out));
    EXPECT_EQ(nullptr, out);
    EXPECT_EQ(MAPI_E_NOT_ENOUGH_MEMORY, OrvAllocateMore(size, root.Get(), &out));
    EXPECT_EQ(0u, faults::Calls(faults::Site::kTaskAllocation));
  }
}

TEST(Buffer, ExhaustionLeavesChainAsItWas) {
  MapiBuffer<char> root;
  ASSERT_EQ(S_OK, root.Allocate(1));
  void* out = root.Get();
  faults::Arm(faults::Site::kTaskAllocation, 1);
  EXPECT_EQ(MAPI_E_NOT_ENOUGH_MEMORY, OrvAllocateMore(1, root.Get(), &out));
  EXPECT_EQ(nullptr, out);
  EXPECT_EQ(nullptr, HeaderOf(root.Get()).next);
}

TEST(Buffer, RowSetsAndAddressListsTakeTheirArraysAlong) {
  static_assert(CbNewSRowSet(3) == CbNewADRLIST(3));
  const long alive = faults::LiveTaskBlocks();
  for (const bool rows : {true, false}) {
    // Two arrays and between them a null one; a row set and an address list are laid out alike.
    void* out = nullptr;
    ASSERT_EQ(S_OK, OrvAllocateBuffer(CbNewSRowSet(3), &out));
    auto* set = static_cast<SRowSet*>(out);
    set->cRows = 3;
    for (const std::size_t index : {0u, 2u}) {
      ASSERT_EQ(S_OK, OrvAllocateBuffer(24, &out));
      set->aRow[index].lpProps = static_cast<SPropValue*>(out);
    }
    EXPECT_EQ(alive + 3, faults::LiveTaskBlocks());
    rows ? OrvFreeProws(set) : OrvFreePadrlist(reinterpret_cast<ADRLIST*>(set));
    EXPECT_EQ(alive, faults::LiveTaskBlocks());
  }
  OrvFreeProws(nullptr);
  OrvFreePadrlist(nullptr);
}

}  // namespace
}  // namespace orv::test
