#include "props/base_table.h"

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

TEST_F(Table, EveryReadFollowsASeekFromWhereTheLastOneLeftThePosition) {
  const std::vector<LONG> all = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
  const struct {
    BOOKMARK origin;
    LONG seek, sought, count;
    ULONG flags;
    std::vector<LONG> rows;
    ULONG position;
  } steps[] = {
      {BOOKMARK_BEGINNING, 0, 0, 3, 0, {0, 1, 2}, 3},
      {BOOKMARK_CURRENT, 3, 3, 5, TBL_NOADVANCE, {6, 7, 8, 9}, 6},
      {BOOKMARK_CURRENT, -100, -6, 0x7FFFFFFF, 0, all, 10},
      // A read without rows returns to the beginning.
      {BOOKMARK_CURRENT, 0, 0, 5, TBL_NOADVANCE, {}, 10},
      {BOOKMARK_END, 5, 0, 5, 0, {}, 0},
      {BOOKMARK_BEGINNING, -1, 0, -1, 0, {}, 0},
      // Backward reads come in table order and leave the position where it was.
      {BOOKMARK_BEGINNING, 5, 5, -2, 0, {3, 4}, 5},
      {BOOKMARK_CURRENT, -2, -2, -10, 0, {0, 1, 2}, 3},
      {BOOKMARK_BEGINNING, 100, 10, static_cast<LONG>(0x80000000), 0, all, 10},
      {BOOKMARK_END, -3, -3, 0, 0, {-1}, 7},
  };
  Make(10);
  LONG sought = 77;
  for (const auto& step : steps) {
    SCOPED_TRACE(&step - steps);
    EXPECT_EQ(table_->SeekRow(step.origin, step.seek, &sought), S_OK);
    EXPECT_EQ(sought, step.sought);
    EXPECT_EQ(Read(step.count, step.flags), step.rows);
    EXPECT_EQ(Position(), step.position);
  }
  EXPECT_EQ(table_->SeekRow(3, 1, &sought), MAPI_E_INVALID_BOOKMARK);
  EXPECT_EQ(sought, -3);
  EXPECT_EQ(Position(), 7u);
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
