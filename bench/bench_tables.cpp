// Snapshot tables of five columns against copies of the same rows by hand; growth; memory.
#include <algorithm>
#include <array>
#include <deque>

#include "bench/harness.h"
#include "bench/values.h"
#include "platform/com_ptr.h"
#include "props/base_table.h"

namespace orv::bench {
namespace {

constexpr ULONG kColumns = 5;

// Rows as a provider keeps them, in the order in which the table shows them.
class Rows {
 public:
  explicit Rows(ULONG count) : count_(count) {
    const std::string number = "00000000";
    for (ULONG i = 0; i < count; ++i) {
      Row& row = rows_.emplace_back();
      row.name = ORV_W("Recipient number ") + std::to_wstring(i);
      row.address = std::to_wstring(i) + ORV_W("@example.invalid");
      row.id.fill(static_cast<BYTE>(i));
      row.values = {Number(PR_OBJECT_TYPE, 6), Text(PR_DISPLAY_NAME_W, row.name),
                    Text(PR_EMAIL_ADDRESS_W, row.address), Number(PR_DISPLAY_TYPE, 0), Number(PR_ENTRYID, 0)};
      row.values[4].Value.bin = {static_cast<ULONG>(row.id.size()), row.id.data()};
    }
  }

  ULONG Count() const { return count_; }
  const SPropValue* operator[](ULONG index) const { return rows_[index].values.data(); }

  ComPtr<IMAPITable> MakeTable() const {
    MapiBuffer<SRowSet> set;
    Require(set.Allocate(CbNewSRowSet(std::size_t{count_})) == S_OK, "row set");
    set->cRows = count_;
    for (ULONG i = 0; i < count_; ++i)
      set->aRow[count_ - 1 - i] = {0, kColumns, const_cast<SPropValue*>((*this)[i])};
    ComPtr<IMAPITable> table;
    Require(CreateTable(set.Get(), table.Put()) == S_OK, "table");
    return table;
  }

  // 16 bytes and the record each: 32 bytes and the data, padded to multiples of 8, at least 8.
  std::size_t NodeBytes() const {
    const auto node = [](std::size_t data) { return 16 + 32 + std::max<std::size_t>(8, (data + 7) / 8 * 8); };
    std::size_t total = 0;
    for (const Row& row : rows_) {
      total += 2 * node(0) + node((row.name.size() + 1) * sizeof(WCHAR)) +
               node((row.address.size() + 1) * sizeof(WCHAR)) + node(row.id.size());
    }
    return total;
  }

 private:
  struct Row {
    WString name;
    WString address;
    std::array<BYTE, 40> id;
    std::array<SPropValue, kColumns> values;
  };
  std::deque<Row> rows_;
  const ULONG count_;
};

void CopyAndFreeByHand(const Rows& rows, ULONG first, ULONG count) {
  auto* set = static_cast<SRowSet*>(AllocateByHand(CbNewSRowSet(std::size_t{count}), nullptr));
  set->cRows = count;
  for (ULONG i = 0; i < count; ++i) set->aRow[i] = {0, kColumns, CopyByHand(rows[first + i], kColumns)};
  for (ULONG i = 0; i < count; ++i) FreeByHand(set->aRow[i].lpProps);
  FreeByHand(set);
}

// One call reads the next row; from the last one on from the start again.
Work ReaderOf(IMAPITable* table) {
  return [table] {
    RowSetPtr rows;
    table->QueryRows(1, 0, rows.Put());
    if (rows->cRows == 0) table->QueryRows(1, 0, rows.Put());
  };
}

void CompareSingleRows() {
  double atHundred = 0;
  for (const ULONG count : {100u, 10000u, 100000u}) {
    const Rows rows(count);
    const auto table = rows.MakeTable();
    ULONG next = 0;
    const auto floor = [&] {
      CopyAndFreeByHand(rows, next, 1);
      next = next + 1 == count ? 0 : next + 1;
    };
    const Comparison result = Compare(ReaderOf(table.Get()), floor);
    Report("QueryRows of one row of " + std::to_string(count), result, 1.4);
    if (atHundred == 0) atHundred = result.ours;
    Report("the same, growth from 100 rows", result.ours, atHundred, "ns", 1.5);
  }
}

void CompareWholeTable() {
  const Rows rows(10000);
  const auto table = rows.MakeTable();
  const auto ours = [&] {
    RowSetPtr all;
    table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr);
    table->QueryRows(0x7FFFFFFF, 0, all.Put());
  };
  const auto floor = [&] { CopyAndFreeByHand(rows, 0, rows.Count()); };
  Report("QueryRows of a whole table of 10000 rows", Compare(ours, floor), 1.3);
}

void MeasureCreation() {
  const auto perRow = [](ULONG count) {
    const Rows rows(count);
    return Measure([&] { rows.MakeTable(); }) / count;
  };
  Report("creating a table, a row of 100000 to one of 1000", perRow(100000), perRow(1000), "ns", 2.0);
}

void MeasureMemory() {
  const Rows rows(100000);
  const std::size_t before = CommittedBytes();
  const auto table = rows.MakeTable();
  const std::size_t used = CommittedBytes() - before;
  Report("memory of a table of 100000 rows to its nodes", static_cast<double>(used) / 1e6,
         static_cast<double>(rows.NodeBytes()) / 1e6, "MB", 1.3);
}

// Memory first, while the heap has nothing to reuse.
const Benchmark kTables("tables", [] {
  MeasureMemory();
  CompareSingleRows();
  CompareWholeTable();
  MeasureCreation();
});

}  // namespace
}  // namespace orv::bench
