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
    ASSERT_EQ(set.Allocate(CbNewSRowSet(static_cast<std::size_t>(count))), S_OK);
    std::vector<std::vector<SPropValue>> rows;
    for (LONG i = count; i-- > 0;) rows.push_back({Long(kNumber, i), Unicode(kText, ORV_W("text"))});
    for (auto& row : rows) set->aRow[set->cRows++] = Row(row);
    ASSERT_EQ(CreateTable(set.Get(), table_.Put()), S_OK);
  }
  ULONG Position() {
    ULONG row = 0, numerator = 0, denominator = 0;
    EXPECT_EQ(table_->QueryPosition(&row, &numerator, &denominator), S_OK);
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
  void SeekTo(LONG row) { ASSERT_EQ(table_->SeekRow(BOOKMARK_BEGINNING, row, nullptr), S_OK); }

  ComPtr<IMAPITable> table_;
};

TEST_F(Table, TheFirstBadRowFailsTheWhole) {
  std::vector<SPropValue> good = {Long(kNumber, 1)};
  std::vector<SPropValue> refused = {Array(PROP_TAG(PT_MV_DOUBLE, 1), 0, nullptr)};
  SizedSRowSet(3, set) = {3, {Row(good), {0, 0, nullptr}, Row(refused)}};
  EXPECT_EQ(CreateTable(reinterpret_cast<SRowSet*>(&set), table_.Put()), MAPI_E_INVALID_PARAMETER);
  std::swap(set.aRow[1], set.aRow[2]);
  EXPECT_EQ(CreateTable(reinterpret_cast<SRowSet*>(&set), table_.Put()), MAPI_E_NO_SUPPORT);
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
    EXPECT_EQ(Read(read.count, read.flags), read.rows);
    EXPECT_EQ(Position(), read.position);
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
    EXPECT_EQ(table_->SeekRow(seek.origin, seek.count, &sought), seek.expected);
    EXPECT_EQ(sought, seek.sought);
    EXPECT_EQ(Position(), seek.position);
  }
}

TEST_F(Table, ApproximateSeeks) {
  const struct {
    ULONG numerator, denominator, position;
  } cases[] = {{1, 2, 4}, {0, 5, 0}, {4, 3, 7}, {0, 0, 7}, {0x80000000, 0xFFFFFFFF, 4}, {1, 0x80000000, 0}};
  Make(7);
  for (const auto& seek : cases) {
    EXPECT_EQ(table_->SeekRowApprox(seek.numerator, seek.denominator), S_OK);
    EXPECT_EQ(Position(), seek.position) << seek.numerator << "/" << seek.denominator;
  }
}

TEST_F(Table, ColumnsSelectAndOrderTheValues) {
  Make(2);
  MapiBuffer<SPropTagArray> columns;
  const ULONG missing = PROP_TAG(PT_LONG, 0x7777);
  Tags set{kText, PR_NULL, missing};
  ASSERT_EQ(table_->SetColumns(set.Get(), 0), S_OK);
  ASSERT_EQ(table_->QueryColumns(0, columns.Put()), S_OK);
  EXPECT_EQ(List(columns.Get()), List(set.Get()));
  ASSERT_EQ(table_->QueryColumns(TBL_ALL_COLUMNS, columns.Put()), S_OK);
  EXPECT_EQ(List(columns.Get()), (std::vector<ULONG>{kNumber, kText}));

  RowSetPtr rows;
  ASSERT_EQ(table_->QueryRows(1, 0, rows.Put()), MAPI_W_ERRORS_RETURNED);
  const SRow& row = rows->aRow[0];
  ASSERT_EQ(row.cValues, 3u);
  EXPECT_EQ(row.lpProps[0].Value.lpszW, WStringView(ORV_W("text")));
  EXPECT_EQ(row.lpProps[1].ulPropTag, PR_NULL);
  EXPECT_EQ(row.lpProps[2].ulPropTag, CHANGE_PROP_TYPE(missing, PT_ERROR));
}

TEST_F(Table, PointersAreTestedBeforeAnythingIsDone) {
  ULONG number = 0;
  Make(2);
  const HRESULT refused[] = {table_->GetStatus(Unreadable(), &number),
                             table_->GetStatus(&number, Unreadable()),
                             table_->SetColumns(Unreadable(), 0),
                             table_->SetColumns(nullptr, 0),
                             table_->QueryColumns(0, Unreadable()),
                             table_->GetRowCount(0, Unreadable()),
                             table_->SeekRow(BOOKMARK_BEGINNING, 1, Unreadable()),
                             table_->QueryPosition(Unreadable(), &number, &number),
                             table_->QueryPosition(&number, Unreadable(), &number),
                             table_->QueryPosition(&number, &number, Unreadable()),
                             table_->QueryRows(1, 0, Unreadable()),
                             table_->QueryInterface(IID_IMAPITable, Unreadable())};
  for (const HRESULT& hr : refused) EXPECT_EQ(hr, MAPI_E_INVALID_PARAMETER) << "call " << (&hr - refused);
  EXPECT_EQ(Position(), 0u);
}

TEST_F(Table, WithoutRowsThereAreNoColumnsButThoseSet) {
  ASSERT_EQ(CreateTable(nullptr, table_.Put()), S_OK);
  MapiBuffer<SPropTagArray> columns;
  EXPECT_EQ(table_->QueryColumns(0, columns.Put()), MAPI_E_TABLE_EMPTY);
  ASSERT_EQ(table_->SetColumns(Tags{kText}.Get(), 0), S_OK);
  EXPECT_EQ(table_->QueryColumns(0, columns.Put()), S_OK);
  EXPECT_EQ(table_->QueryColumns(TBL_ALL_COLUMNS, columns.Put()), MAPI_E_TABLE_EMPTY);
  EXPECT_EQ(Read(5), (std::vector<LONG>{}));
}

}  // namespace
}  // namespace orv::test
