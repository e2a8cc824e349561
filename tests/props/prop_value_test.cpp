#include "props/prop_value.h"

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

TEST(PropValue, CopiesOwnTheirDataInOneChainAndTheLastOneDecides) {
  const std::array<const char*, 2> strings = {"one", "two"};
  std::vector<SPropValue> values = {Unicode(kText, ORV_W("text")), Array(kList, 2, strings.data()),
                                    Unicode(kText, nullptr), Array(kDoubles, 0, nullptr),
                                    Binary(kBytes, nullptr, 3)};
  const long alive = faults::LiveTaskBlocks();
  SRow copy = {};
  ASSERT_EQ(DuplicateRow(copy, Row(values)), S_OK);
  EXPECT_EQ(faults::LiveTaskBlocks(), alive + 3);
  ASSERT_EQ(copy.cValues, 5u);
  EXPECT_EQ(copy.lpProps[0].Value.lpszW, WStringView(ORV_W("text")));
  EXPECT_STREQ(copy.lpProps[1].Value.MVszA.lppszA[1], "two");
  EXPECT_NE(copy.lpProps[1].Value.MVszA.lppszA[1], strings[1]);
  EXPECT_EQ(copy.lpProps[2].Value.lpszW, nullptr);
  EXPECT_EQ(copy.lpProps[3].ulPropTag, CHANGE_PROP_TYPE(kDoubles, PT_ERROR));
  EXPECT_EQ(copy.lpProps[4].Value.bin.cb, 0u);
  OrvFreeBuffer(copy.lpProps);
  std::swap(values[3], values[4]);
  EXPECT_EQ(DuplicateRow(copy, Row(values)), MAPI_E_NO_SUPPORT);
  EXPECT_EQ(copy.lpProps, nullptr);

  // Data of nobody's would never be freed; what has none needs no root.
  const std::pair<SPropValue, HRESULT> rootless[] = {{values[0], MAPI_E_INVALID_PARAMETER},
                                                     {values[1], MAPI_E_INVALID_PARAMETER},
                                                     {values[2], S_OK},
                                                     {values[3], S_OK},
                                                     {Long(kNumber, 1), S_OK}};
  SPropValue out;
  for (const auto& [value, expected] : rootless) EXPECT_EQ(CopyValue(out, value, nullptr), expected);
  EXPECT_EQ(faults::LiveTaskBlocks(), alive);
}

TEST(PropValue, TagsMatchByIdentifierAndTypeUnlessUnspecified) {
  const ULONG any = CHANGE_PROP_TYPE(kText, PT_UNSPECIFIED), other = CHANGE_PROP_TYPE(kText, PT_STRING8);
  const ULONG object = CHANGE_PROP_TYPE(kText, PT_OBJECT), binaries = CHANGE_PROP_TYPE(kText, PT_MV_BINARY);
  std::vector<SPropValue> values = {Long(kNumber, 1), Unicode(kText, ORV_W("x"))};
  EXPECT_EQ(FindValue(values.data(), 2, any), &values[1]);
  EXPECT_EQ(FindValue(values.data(), 2, other), nullptr);
  Tags tags = {kText, kBytes, kNumber, kList};
  EXPECT_TRUE(HasTag(any, tags.Get()));
  EXPECT_FALSE(HasTag(other, tags.Get()));
  EXPECT_FALSE(HasTag(any, nullptr));
  EXPECT_TRUE(SubtractTags(tags.Get(), Tags{other, CHANGE_PROP_TYPE(kBytes, 0), kNumber}.Get()));
  EXPECT_EQ(List(tags.Get()), (std::vector<ULONG>{kText, kList}));
  EXPECT_FALSE(SubtractTags(tags.Get(), nullptr));
  MapiBuffer<SPropTagArray> kept;
  ASSERT_EQ(DropBinaryColumns(Tags{kBytes, kText, object, binaries, kNumber}.Get(), kept), S_OK);
  EXPECT_EQ(List(kept.Get()), (std::vector<ULONG>{kText, kNumber}));
  EXPECT_EQ(DropBinaryColumns(Tags{kBytes, object}.Get(), kept), MAPI_E_NOT_FOUND);
}

TEST(PropValue, MergeOrdersByTagsThenTheTargetsRestAndFailsWithoutATrace) {
  std::vector<SPropValue> values = {Long(kNumber, 1), Binary(kBytes, "old"), Unicode(kText, ORV_W("target"))};
  std::vector<SPropValue> source = {Unicode(kText, ORV_W("source")), Binary(kBytes, "not asked for")};
  ADRENTRY target = {0, 3, values.data()};
  // A tag asked for twice that the target has once does not fit what was counted.
  EXPECT_EQ(MergeIntoAddressEntry(*Tags{kNumber, kNumber}, SRow{}, target), MAPI_E_CALL_FAILED);
  EXPECT_EQ(target.rgPropVals, values.data());
  SRow copy = {};
  ASSERT_EQ(DuplicateRow(copy, Row(values)), S_OK);
  target.rgPropVals = copy.lpProps;
  ASSERT_EQ(MergeIntoAddressEntry(*Tags{kList, kText, kNumber}, Row(source), target), S_OK);
  ASSERT_EQ(target.cValues, 4u);
  EXPECT_EQ(target.rgPropVals[0].ulPropTag, CHANGE_PROP_TYPE(kList, PT_ERROR));
  EXPECT_EQ(target.rgPropVals[1].Value.lpszW, WStringView(ORV_W("source")));
  EXPECT_EQ(target.rgPropVals[2].Value.l, 1);
  EXPECT_EQ(target.rgPropVals[3].Value.bin.cb, 3u);
  OrvFreeBuffer(target.rgPropVals);
}

}  // namespace
}  // namespace orv::test
