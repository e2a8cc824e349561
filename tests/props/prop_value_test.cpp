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
  ASSERT_EQ(DuplicateRow(copy, Row(values)), S_OK);
  EXPECT_EQ(faults::LiveTaskBlocks(), alive + 3);
  ASSERT_EQ(copy.cValues, 4u);
  EXPECT_EQ(copy.lpProps[0].Value.lpszW, WStringView(ORV_W("text")));
  EXPECT_STREQ(copy.lpProps[1].Value.MVszA.lppszA[1], "two");
  EXPECT_NE(copy.lpProps[1].Value.MVszA.lppszA[1], strings[1]);
  EXPECT_EQ(copy.lpProps[2].Value.lpszW, nullptr);
  EXPECT_EQ(copy.lpProps[3].Value.bin.cb, 0u);
  OrvFreeBuffer(copy.lpProps);
}

TEST(PropValue, OnlyTheLastCopyDecidesAndFailuresAreMarked) {
  std::vector<SPropValue> values = {Array(kDoubles, 0, nullptr), Long(kNumber, 7)};
  SRow copy = {};
  ASSERT_EQ(DuplicateRow(copy, Row(values)), S_OK);
  EXPECT_EQ(copy.lpProps[0].ulPropTag, CHANGE_PROP_TYPE(kDoubles, PT_ERROR));
  EXPECT_EQ(copy.lpProps[1].Value.l, 7);
  OrvFreeBuffer(copy.lpProps);

  std::swap(values[0], values[1]);
  EXPECT_EQ(DuplicateRow(copy, Row(values)), MAPI_E_NO_SUPPORT);
  EXPECT_EQ(copy.lpProps, nullptr);
}

TEST(PropValue, TagsMatchByIdentifierAndTypeUnlessUnspecified) {
  const ULONG any = CHANGE_PROP_TYPE(kText, PT_UNSPECIFIED);
  const ULONG other = CHANGE_PROP_TYPE(kText, PT_STRING8);
  std::vector<SPropValue> values = {Long(kNumber, 1), Unicode(kText, ORV_W("x"))};
  EXPECT_EQ(FindValue(values.data(), 2, any), &values[1]);
  EXPECT_EQ(FindValue(values.data(), 2, other), nullptr);
  EXPECT_TRUE(HasTag(any, Tags{kNumber, kText}.Get()));
  EXPECT_FALSE(HasTag(other, Tags{kNumber, kText}.Get()));
  EXPECT_FALSE(HasTag(any, nullptr));
}

TEST(PropValue, TagArraysAreReducedInOrder) {
  Tags tags = {kText, kBytes, kNumber, kList};
  EXPECT_TRUE(SubtractTags(
      tags.Get(), Tags{CHANGE_PROP_TYPE(kText, PT_STRING8), CHANGE_PROP_TYPE(kBytes, 0), kNumber}.Get()));
  EXPECT_EQ(List(tags.Get()), (std::vector<ULONG>{kText, kList}));
  EXPECT_FALSE(SubtractTags(tags.Get(), nullptr));

  const ULONG object = CHANGE_PROP_TYPE(kText, PT_OBJECT);
  const ULONG binaries = CHANGE_PROP_TYPE(kText, PT_MV_BINARY);
  MapiBuffer<SPropTagArray> kept;
  ASSERT_EQ(DropBinaryColumns(Tags{kBytes, kText, object, binaries, kNumber}.Get(), kept), S_OK);
  EXPECT_EQ(List(kept.Get()), (std::vector<ULONG>{kText, kNumber}));
  EXPECT_EQ(DropBinaryColumns(Tags{kBytes, object}.Get(), kept), MAPI_E_NOT_FOUND);
}

ADRENTRY Entry(std::vector<SPropValue> values) {
  SRow row = {};
  EXPECT_EQ(DuplicateRow(row, Row(values)), S_OK);
  return {0, row.cValues, row.lpProps};
}

TEST(PropValue, MergeOrdersByTagsThenTheTargetsRest) {
  ADRENTRY target = Entry({Long(kNumber, 1), Binary(kBytes, "old"), Unicode(kText, ORV_W("target"))});
  std::vector<SPropValue> source = {Unicode(kText, ORV_W("source")), Binary(kBytes, "not asked for")};
  ASSERT_EQ(MergeIntoAddressEntry(*Tags{kList, kText, kNumber}, Row(source), target), S_OK);
  ASSERT_EQ(target.cValues, 4u);
  EXPECT_EQ(target.rgPropVals[0].ulPropTag, CHANGE_PROP_TYPE(kList, PT_ERROR));
  EXPECT_EQ(target.rgPropVals[0].Value.err, MAPI_E_NOT_FOUND);
  EXPECT_EQ(target.rgPropVals[1].Value.lpszW, WStringView(ORV_W("source")));
  EXPECT_EQ(target.rgPropVals[2].Value.l, 1);
  EXPECT_EQ(target.rgPropVals[3].Value.bin.cb, 3u);
  OrvFreeBuffer(target.rgPropVals);
}

TEST(PropValue, FailedMergeLeavesTheTarget) {
  // A tag asked for twice that the target has once does not fit what was counted.
  ADRENTRY target = Entry({Long(kNumber, 1)});
  SPropValue* const before = target.rgPropVals;
  EXPECT_EQ(MergeIntoAddressEntry(*Tags{kNumber, kNumber}, SRow{}, target), MAPI_E_CALL_FAILED);
  faults::Arm(faults::Site::kTaskAllocation, 2);
  std::vector<SPropValue> source = {Unicode(kText, ORV_W("source"))};
  EXPECT_EQ(MergeIntoAddressEntry(*Tags{kText}, Row(source), target), MAPI_E_NOT_ENOUGH_MEMORY);
  EXPECT_TRUE(faults::Fired(faults::Site::kTaskAllocation));
  EXPECT_EQ(target.rgPropVals, before);
  EXPECT_EQ(target.cValues, 1u);
  OrvFreeBuffer(target.rgPropVals);
}

TEST(PropValue, DuplicatedBinaryIsOneBlock) {
  const SBinary source = Binary(kBytes, "entry").Value.bin;
  const long alive = faults::LiveTaskBlocks();
  MapiBuffer<SBinary> copy;
  ASSERT_TRUE(DuplicateBinary(copy, &source));
  EXPECT_EQ(faults::LiveTaskBlocks(), alive + 1);
  EXPECT_TRUE(BinaryEqual(source, *copy));
  EXPECT_EQ(reinterpret_cast<BYTE*>(copy.Get() + 1), copy->lpb);
  EXPECT_TRUE(DuplicateBinary(copy, nullptr));
  EXPECT_FALSE(copy);
  faults::Arm(faults::Site::kTaskAllocation, 1);
  EXPECT_FALSE(DuplicateBinary(copy, &source));
}

}  // namespace
}  // namespace orv::test
