#include "props/row_list.h"

#include <gtest/gtest.h>

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
    EXPECT_EQ(S_OK, list.Add(Row(values), list.Count()));
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
    EXPECT_EQ(S_OK, list.RemoveAt(index, index == 2 ? &removed : nullptr));
    EXPECT_EQ(left[index], Keys(list));
    EXPECT_EQ(index == 2 ? 3u : 0u, removed.Count());
  }
  RowList list = Numbered(3);
  EXPECT_EQ(MAPI_E_INVALID_PARAMETER, list.RemoveAt(4));
  EXPECT_EQ(MAPI_E_INVALID_PARAMETER, RowList().RemoveAt(0));
}

TEST(RowList, LookupsWithoutAMatchTellTheLastComparison) {
  RowList list = Numbered(2);
  RowList empty;
  const struct {
    RowList* list;
    SPropValue key;
    HRESULT expected;
  } cases[] = {{&list, Long(kKey, 9), MAPI_E_NOT_FOUND},
               {&list, Unicode(kName, ORV_W("name")), MAPI_E_NOT_FOUND},
               {&list, Value(kTime), MAPI_E_NO_SUPPORT},
               {&empty, Value(kTime), MAPI_E_NOT_FOUND}};
  for (const auto& lookup : cases) {
    SRow row = {1, 2, nullptr};
    EXPECT_EQ(nullptr, lookup.list->Find(lookup.key));
    EXPECT_EQ(lookup.expected, lookup.list->GetRow(lookup.key, row));
    EXPECT_EQ(0u, row.cValues);
    EXPECT_EQ(lookup.expected, lookup.list->Delete(lookup.key));
    // Modifying knows only found and not found.
    EXPECT_EQ(MAPI_E_NOT_FOUND, lookup.list->Modify(lookup.key, std::span(&lookup.key, 1)));
  }
  EXPECT_EQ(2u, list.Count());
}

TEST(RowList, FirstMatchingRowIsReadModifiedAndDeleted) {
  RowList list = Numbered(3);
  const SPropValue key = Unicode(kName, ORV_W("Name"));
  SRow row = {};
  ASSERT_EQ(S_OK, list.GetRow(key, row));
  EXPECT_EQ(3u, row.cValues);
  EXPECT_EQ(1, row.lpProps[0].Value.l);
  OrvFreeBuffer(row.lpProps);

  // Up to the first failure, and what was set before it stays.
  const SPropValue values[] = {Long(kKey, 7), Array(PROP_TAG(PT_MV_DOUBLE, 1), 0, nullptr), Long(kTime, 1)};
  PropList* modified = nullptr;
  EXPECT_EQ(MAPI_E_NO_SUPPORT, list.Modify(key, values, &modified));
  EXPECT_EQ(&list[0], modified);
  EXPECT_EQ((std::vector<LONG>{7, 2, 3}), Keys(list));
  EXPECT_EQ(MAPI_E_NOT_FOUND, list.Modify(key, {}, &modified));

  EXPECT_EQ(S_OK, list.Delete(key));
  EXPECT_EQ((std::vector<LONG>{2, 3}), Keys(list));
}

TEST(RowList, CopiedRowsAreMarkedAndBadSourcesRefused) {
  const RowList source = Numbered(2);
  RowList list;
  ASSERT_EQ(S_OK, list.CopyRow(&source[1], 0));
  EXPECT_EQ(S_OK, list[0].FindAndCompare(Unicode(kName, ORV_W("Name"))));
  for (const PropNode& node : list[0]) EXPECT_EQ(PROPNODE_MODIFIED, node.flags);

  EXPECT_EQ(MAPI_E_INVALID_PARAMETER, list.CopyRow(nullptr, 0));
  EXPECT_EQ(MAPI_E_INVALID_PARAMETER, list.CopyRow(reinterpret_cast<const PropList*>(std::uintptr_t{64}), 0));
  EXPECT_EQ(1u, list.Count());
}

}  // namespace
}  // namespace orv::test
