#include "props/base_table.h"

#include <gtest/gtest.h>

#include "orv/orvguids.h"
#include "platform/com_ptr.h"
#include "tests/props/samples.h"

namespace orv::test {
namespace {

constexpr ULONG kNumber = PROP_TAG(PT_LONG, 0x6601);
constexpr ULONG kText = PROP_TAG(PT_UNICODE, 0x6602);

class Table : public testing::Test {
 protected:
  // Rows numbered from 0 in the table's order, so handed over from the last to the first.
  void Make(LONG count) {
    MapiBuffer<SRowSet> set;
    ASSERT_EQ(S_OK, set.Allocate(CbNewSRowSet(static_cast<std::size_t>(count))));
    std::vector<std::vector<SPropValue>> rows;
    for (LONG i = count; i-- > 0;) rows.push_back({Long(kNumber, i), Unicode(kText, ORV_W("text"))});
    for (auto& row : rows) set->aRow[set->cRows++] = Row(row);
    ASSERT_EQ(S_OK, CreateTable(set.Get(), table_.Put()));
  }
  ULONG Position() {
    ULONG row = 0, numerator = 0, denominator = 0;
    EXPECT_EQ(S_OK, table_->QueryPosition(&row, &numerator, &denominator));
    EXPECT_EQ(row, numerator);
    return row;
  }
  // Numbers of the rows that a read gives; -1 for a read that fails.
  std::vector<LONG> Read(LONG count, ULONG flags = 0) {
    RowSetPtr rows;
    if (FAILED(table_->QueryRows(count, flags, rows.Put()))) return {-1};
    std::vector<LONG> numbers;
    for (ULONG i = 0; i < rows->cRows; ++i) numbers.push_back(rows->aRow[i].lpProps[0].Value.l);
    return numbers;
  }
  void SeekTo(LONG row) { ASSERT_EQ(S_OK, table_->SeekRow(BOOKMARK_BEGINNING, row, nullptr)); }

  ComPtr<IMAPITable> table_;
};

TEST_F(Table, TheFirstBadRowFailsTheWhole) {
  std::vector<SPropValue> good = {Long(kNumber, 1)};
  std::vector<SPropValue> refused = {Array(PROP_TAG(PT_MV_DOUBLE, 1), 0, nullptr)};
  SizedSRowSet(3, set) = {3, {Row(good), {0, 0, nullptr}, Row(refused)}};
  EXPECT_EQ(MAPI_E_INVALID_PARAMETER, CreateTable(reinterpret_cast<SRowSet*>(&set), table_.Put()));
  std::swap(set.aRow[1], set.aRow[2]);
  EXPECT_EQ(MAPI_E_NO_SUPPORT, CreateTable(reinterpret_cast<SRowSet*>(&set), table_.Put()));
  EXPECT_FALSE(table_);
}

TEST_F(Table, ReadsAndWhereTheyLeaveThePosition) {
  const struct {
    LONG start, count;
    ULONG flags;
    std::vector<LONG> rows;
    ULONG position;
  } cases[] = {
      {0, 3, 0, {0, 1, 2}, 3},
      {8, 5, TBL_NOADVANCE, {8, 9}, 8},
      {0, 0x7FFFFFFF, 0, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9}, 10},
      // Backward reads come in table order and leave the position where it was.
      {5, -2, 0, {3, 4}, 5},
      {3, -10, 0, {0, 1, 2}, 3},
      {10, static_cast<LONG>(0x80000000), 0, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9}, 10},
      // A read without rows returns to the beginning.
      {10, 5, 0, {}, 0},
      {10, 5, TBL_NOADVANCE, {}, 10},
      {0, -1, 0, {}, 0},
      {4, 0, 0, {-1}, 4},
  };
  Make(10);
  for (const auto& read : cases) {
    SCOPED_TRACE(&read - cases);
    SeekTo(read.start);
    EXPECT_EQ(read.rows, Read(read.count, read.flags));
    EXPECT_EQ(read.position, Position());
  }
}

TEST_F(Table, SeeksStopAtEitherEnd) {
  const struct {
    BOOKMARK origin;
    LONG count;
    HRESULT expected;
    LONG sought;
    ULONG position;
  } cases[] = {
      {BOOKMARK_BEGINNING, 100, S_OK, 10, 10}, {BOOKMARK_BEGINNING, -1, S_OK, 0, 0},
      {BOOKMARK_CURRENT, 3, S_OK, 3, 7},       {BOOKMARK_CURRENT, -100, S_OK, -4, 0},
      {BOOKMARK_CURRENT, 0, S_OK, 0, 4},       {BOOKMARK_END, -3, S_OK, -3, 7},
      {BOOKMARK_END, 5, S_OK, 0, 10},          {3, 1, MAPI_E_INVALID_BOOKMARK, 77, 4},
  };
  Make(10);
  for (const auto& seek : cases) {
    SCOPED_TRACE(&seek - cases);
    SeekTo(4);
    LONG sought = 77;
    EXPECT_EQ(seek.expected, table_->SeekRow(seek.origin, seek.count, &sought));
    EXPECT_EQ(seek.sought, sought);
    EXPECT_EQ(seek.position, Position());
  }
}

TEST_F(Table, ApproximateSeeks) {
  const struct {
    ULONG numerator, denominator, position;
  } cases[] = {{1, 2, 4}, {0, 5, 0}, {4, 3, 7}, {0, 0, 7}, {0x80000000, 0xFFFFFFFF, 4}, {1, 0x80000000, 0}};
  Make(7);
  for (const auto& seek : cases) {
    EXPECT_EQ(S_OK, table_->SeekRowApprox(seek.numerator, seek.denominator));
    EXPECT_EQ(seek.position, Position()) << seek.numerator << "/" << seek.denominator;
  }
}

TEST_F(Table, ColumnsSelectAndOrderTheValues) {
  Make(2);
  MapiBuffer<SPropTagArray> columns;
  const ULONG missing = PROP_TAG(PT_LONG, 0x7777);
  Tags set{kText, PR_NULL, missing};
  ASSERT_EQ(S_OK, table_->SetColumns(set.Get(), 0));
  EXPECT_EQ(MAPI_E_INVALID_PARAMETER, table_->SetColumns(nullptr, 0));
  ASSERT_EQ(S_OK, table_->QueryColumns(0, columns.Put()));
  EXPECT_EQ(List(set.Get()), List(columns.Get()));
  ASSERT_EQ(S_OK, table_->QueryColumns(TBL_ALL_COLUMNS, columns.Put()));
  EXPECT_EQ((std::vector<ULONG>{kNumber, kText}), List(columns.Get()));

  RowSetPtr rows;
  ASSERT_EQ(MAPI_W_ERRORS_RETURNED, table_->QueryRows(1, 0, rows.Put()));
  const SRow& row = rows->aRow[0];
  ASSERT_EQ(3u, row.cValues);
  EXPECT_EQ(WStringView(ORV_W("text")), row.lpProps[0].Value.lpszW);
  EXPECT_EQ(PR_NULL, row.lpProps[1].ulPropTag);
  EXPECT_EQ(CHANGE_PROP_TYPE(missing, PT_ERROR), row.lpProps[2].ulPropTag);
}

TEST_F(Table, WithoutRowsThereAreNoColumnsButThoseSet) {
  ASSERT_EQ(S_OK, CreateTable(nullptr, table_.Put()));
  MapiBuffer<SPropTagArray> columns;
  EXPECT_EQ(MAPI_E_TABLE_EMPTY, table_->QueryColumns(0, columns.Put()));
  ASSERT_EQ(S_OK, table_->SetColumns(Tags{kText}.Get(), 0));
  EXPECT_EQ(S_OK, table_->QueryColumns(0, columns.Put()));
  EXPECT_EQ(MAPI_E_TABLE_EMPTY, table_->QueryColumns(TBL_ALL_COLUMNS, columns.Put()));
  EXPECT_EQ((std::vector<LONG>{}), Read(5));
}

}  // namespace
}  // namespace orv::test
