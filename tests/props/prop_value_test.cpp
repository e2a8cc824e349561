#include "props/prop_value.h"

#include <gtest/gtest.h>

#include <array>

#include "platform/faults.h"
#include "tests/props/samples.h"

namespace orv::test {
namespace {

constexpr ULONG kText = PROP_TAG(PT_UNICODE, 0x6601);
constexpr ULONG kBytes = PROP_TAG(PT_BINARY, 0x6602);
constexpr ULONG kNumber = PROP_TAG(PT_LONG, 0x6603);
constexpr ULONG kList = PROP_TAG(PT_MV_STRING8, 0x6604);
constexpr ULONG kDoubles = PROP_TAG(PT_MV_DOUBLE, 0x6605);

TEST(PropValue, CopiesOwnTheirDataInOneChain) {
  const std::array<const char*, 2> strings = {"one", "two"};
  std::vector<SPropValue> values = {Unicode(kText, ORV_W("text")), Array(kList, 2, strings.data()),
                                    Unicode(kText, nullptr), Binary(kBytes, nullptr, 3)};
  const long alive = faults::LiveTaskBlocks();
  SRow copy = {};
  ASSERT_EQ(S_OK, DuplicateRow(copy, Row(values)));
  EXPECT_EQ(alive + 3, faults::LiveTaskBlocks());
  ASSERT_EQ(4u, copy.cValues);
  EXPECT_EQ(WStringView(ORV_W("text")), copy.lpProps[0].Value.lpszW);
  EXPECT_STREQ("two", copy.lpProps[1].Value.MVszA.lppszA[1]);
  EXPECT_NE(strings[1], copy.lpProps[1].Value.MVszA.lppszA[1]);
  EXPECT_EQ(nullptr, copy.lpProps[2].Value.lpszW);
  EXPECT_EQ(0u, copy.lpProps[3].Value.bin.cb);
  OrvFreeBuffer(copy.lpProps);
}

TEST(PropValue, OnlyTheLastCopyDecidesAndFailuresAreMarked) {
  std::vector<SPropValue> values = {Array(kDoubles, 0, nullptr), Long(kNumber, 7)};
  SRow copy = {};
  ASSERT_EQ(S_OK, DuplicateRow(copy, Row(values)));
  EXPECT_EQ(CHANGE_PROP_TYPE(kDoubles, PT_ERROR), copy.lpProps[0].ulPropTag);
  EXPECT_EQ(7, copy.lpProps[1].Value.l);
  OrvFreeBuffer(copy.lpProps);

  std::swap(values[0], values[1]);
  EXPECT_EQ(MAPI_E_NO_SUPPORT, DuplicateRow(copy, Row(values)));
  EXPECT_EQ(nullptr, copy.lpProps);
}

TEST(PropValue, TagsMatchByIdentifierAndTypeUnlessUnspecified) {
  const ULONG any = CHANGE_PROP_TYPE(kText, PT_UNSPECIFIED);
  const ULONG other = CHANGE_PROP_TYPE(kText, PT_STRING8);
  std::vector<SPropValue> values = {Long(kNumber, 1), Unicode(kText, ORV_W("x"))};
  EXPECT_EQ(&values[1], FindValue(values.data(), 2, any));
  EXPECT_EQ(nullptr, FindValue(values.data(), 2, other));
  EXPECT_TRUE(HasTag(any, Tags{kNumber, kText}.Get()));
  EXPECT_FALSE(HasTag(other, Tags{kNumber, kText}.Get()));
  EXPECT_FALSE(HasTag(any, nullptr));
}

TEST(PropValue, TagArraysAreReducedInOrder) {
  Tags tags = {kText, kBytes, kNumber, kList};
  EXPECT_TRUE(SubtractTags(
      tags.Get(), Tags{CHANGE_PROP_TYPE(kText, PT_STRING8), CHANGE_PROP_TYPE(kBytes, 0), kNumber}.Get()));
  EXPECT_EQ((std::vector<ULONG>{kText, kList}), List(tags.Get()));
  EXPECT_FALSE(SubtractTags(tags.Get(), nullptr));

  const ULONG object = CHANGE_PROP_TYPE(kText, PT_OBJECT);
  const ULONG binaries = CHANGE_PROP_TYPE(kText, PT_MV_BINARY);
  MapiBuffer<SPropTagArray> kept;
  ASSERT_EQ(S_OK, DropBinaryColumns(Tags{kBytes, kText, object, binaries, kNumber}.Get(), kept));
  EXPECT_EQ((std::vector<ULONG>{kText, kNumber}), List(kept.Get()));
  EXPECT_EQ(MAPI_E_NOT_FOUND, DropBinaryColumns(Tags{kBytes, object}.Get(), kept));
}

ADRENTRY Entry(std::vector<SPropValue> values) {
  SRow row = {};
  EXPECT_EQ(S_OK, DuplicateRow(row, Row(values)));
  return {0, row.cValues, row.lpProps};
}

TEST(PropValue, MergeOrdersByTagsThenTheTargetsRest) {
  ADRENTRY target = Entry({Long(kNumber, 1), Binary(kBytes, "old"), Unicode(kText, ORV_W("target"))});
  std::vector<SPropValue> source = {Unicode(kText, ORV_W("source")), Binary(kBytes, "not asked for")};
  ASSERT_EQ(S_OK, MergeIntoAddressEntry(*Tags{kList, kText, kNumber}, Row(source), target));
  ASSERT_EQ(4u, target.cValues);
  EXPECT_EQ(CHANGE_PROP_TYPE(kList, PT_ERROR), target.rgPropVals[0].ulPropTag);
  EXPECT_EQ(MAPI_E_NOT_FOUND, target.rgPropVals[0].Value.err);
  EXPECT_EQ(WStringView(ORV_W("source")), target.rgPropVals[1].Value.lpszW);
  EXPECT_EQ(1, target.rgPropVals[2].Value.l);
  EXPECT_EQ(3u, target.rgPropVals[3].Value.bin.cb);
  OrvFreeBuffer(target.rgPropVals);
}

TEST(PropValue, FailedMergeLeavesTheTarget) {
  // A tag asked for twice that the target has once does not fit what was counted.
  ADRENTRY target = Entry({Long(kNumber, 1)});
  SPropValue* const before = target.rgPropVals;
  EXPECT_EQ(MAPI_E_CALL_FAILED, MergeIntoAddressEntry(*Tags{kNumber, kNumber}, SRow{}, target));
  faults::Arm(faults::Site::kTaskAllocation, 2);
  std::vector<SPropValue> source = {Unicode(kText, ORV_W("source"))};
  EXPECT_EQ(MAPI_E_NOT_ENOUGH_MEMORY, MergeIntoAddressEntry(*Tags{kText}, Row(source), target));
  EXPECT_TRUE(faults::Fired(faults::Site::kTaskAllocation));
  EXPECT_EQ(before, target.rgPropVals);
  EXPECT_EQ(1u, target.cValues);
  OrvFreeBuffer(target.rgPropVals);
}

TEST(PropValue, DuplicatedBinaryIsOneBlock) {
  const SBinary source = Binary(kBytes, "entry").Value.bin;
  const long alive = faults::LiveTaskBlocks();
  MapiBuffer<SBinary> copy;
  ASSERT_TRUE(DuplicateBinary(copy, &source));
  EXPECT_EQ(alive + 1, faults::LiveTaskBlocks());
  EXPECT_TRUE(BinaryEqual(source, *copy));
  EXPECT_EQ(reinterpret_cast<BYTE*>(copy.Get() + 1), copy->lpb);
  EXPECT_TRUE(DuplicateBinary(copy, nullptr));
  EXPECT_FALSE(copy);
  faults::Arm(faults::Site::kTaskAllocation, 1);
  EXPECT_FALSE(DuplicateBinary(copy, &source));
}

}  // namespace
}  // namespace orv::test
