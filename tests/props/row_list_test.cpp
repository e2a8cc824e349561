#include "props/row_list.h"

#include "tests/props/samples.h"

namespace orv::test {
namespace {

constexpr ULONG kKey = PROP_TAG(PT_LONG, 0x6601);
constexpr ULONG kName = PROP_TAG(PT_UNICODE, 0x6602);
constexpr ULONG kTime = PROP_TAG(PT_SYSTIME, 0x6603);

RowList Numbered(LONG count) {
  RowList list;
  for (LONG i = 1; i <= count; ++i) {
    std::vector<SPropValue> values = {Long(kKey, i), Unicode(kName, ORV_W("Name")), Value(kTime)};
    EXPECT_EQ(list.Add(Row(values), list.Count()), S_OK);
  }
  return list;
}

std::vector<LONG> Keys(const RowList& list) {
  std::vector<LONG> keys;
  for (const PropList& row : list) keys.push_back(row.begin()->record.value.Value.l);
  return keys;
}

TEST(RowList, IndexesZeroAndOneBothRemoveTheFirstRow) {
  const std::vector<LONG> left[] = {{2, 3}, {2, 3}, {1, 3}, {1, 2}};
  for (ULONG index = 0; index < 4; ++index) {
    RowList list = Numbered(3);
    PropList removed;
    EXPECT_EQ(list.RemoveAt(index, &removed), S_OK);
    EXPECT_EQ(Keys(list), left[index]);
    EXPECT_EQ(removed.Count(), 3u);
  }
  EXPECT_EQ(Numbered(3).RemoveAt(4), MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(RowList().RemoveAt(0), MAPI_E_INVALID_PARAMETER);
}

TEST(RowList, LookupsWithoutAMatchTellTheLastComparison) {
  RowList list = Numbered(2), empty;
  const struct {
    RowList* list;
    SPropValue key;
    HRESULT expected;
  } cases[] = {{&list, Unicode(kName, ORV_W("name")), MAPI_E_NOT_FOUND},
               {&list, Value(kTime), MAPI_E_NO_SUPPORT},
               {&empty, Value(kTime), MAPI_E_NOT_FOUND}};
  for (const auto& lookup : cases) {
    SRow row = {1, 2, nullptr};
    EXPECT_EQ(lookup.list->GetRow(lookup.key, row), lookup.expected);
    EXPECT_EQ(row.cValues, 0u);
    EXPECT_EQ(lookup.list->Delete(lookup.key), lookup.expected);
    // Modifying knows only found and not found.
    EXPECT_EQ(lookup.list->Modify(lookup.key, std::span(&lookup.key, 1)), MAPI_E_NOT_FOUND);
  }
}

TEST(RowList, FirstMatchingRowIsModifiedUpToTheFirstFailureAndDeleted) {
  RowList list = Numbered(3);
  const SPropValue key = Unicode(kName, ORV_W("Name"));
  const SPropValue values[] = {Long(kKey, 7), Array(PROP_TAG(PT_MV_DOUBLE, 1), 0, nullptr), Long(kTime, 1)};
  PropList* modified = nullptr;
  EXPECT_EQ(list.Modify(key, values, &modified), MAPI_E_NO_SUPPORT);
  EXPECT_EQ(modified, &list[0]);
  EXPECT_EQ(list.Modify(key, {}, &modified), MAPI_E_NOT_FOUND);
  EXPECT_EQ(Keys(list), (std::vector<LONG>{7, 2, 3}));

  EXPECT_EQ(list.CopyRow(&list[0], 1), S_OK);
  for (const PropNode& node : list[1]) EXPECT_EQ(node.flags, PROPNODE_MODIFIED);
  EXPECT_EQ(list.CopyRow(Unreadable(), 0), MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(list.Delete(key), S_OK);
  EXPECT_EQ(Keys(list), (std::vector<LONG>{7, 2, 3}));
}

}  // namespace
}  // namespace orv::test
