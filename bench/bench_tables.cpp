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

// A link, flags and the record's header; then the data, padded to multiples of 8, at least 8.
constexpr std::size_t kNodeHeader = 16 + 32;
std::size_t NodeBytes(std::size_t data) { return kNodeHeader + std::max<std::size_t>(8, (data + 7) / 8 * 8); }

// Rows as a provider keeps them, in the order in which the table shows them.
class Rows {
 public:
  explicit Rows(ULONG count) : count_(count) {
    for (ULONG i = 0; i < count; ++i) {
      Row& row = rows_.emplace_back();
      row.name = ORV_W("Recipient number ") + std::to_wstring(i);
      row.address = std::to_wstring(i) + ORV_W("@example.invalid");
      row.id.fill(static_cast<BYTE>(i));
      row.values = {Number(PR_OBJECT_TYPE, 6), Text(PR_DISPLAY_NAME_W, row.name),
                    Text(PR_EMAIL_ADDRESS_W, row.address), Number(PR_DISPLAY_TYPE, 0), Number(PR_ENTRYID, 0)};
      row.values[4].Value.bin = {static_cast<ULONG>(row.id.size()), row.id.data()};
      std::transform(row.values.begin(), row.values.end(), row.known.begin(), WithLength);
    }
  }

  ULONG Count() const { return count_; }
  const HandValue* operator[](ULONG index) const { return rows_[index].known.data(); }

  ComPtr<IMAPITable> MakeTable() const {
    MapiBuffer<SRowSet> set;
    Require(set.Allocate(CbNewSRowSet(std::size_t{count_})) == S_OK, "row set");
    set->cRows = count_;
    for (ULONG i = 0; i < count_; ++i)
      set->aRow[count_ - 1 - i] = {0, kColumns, const_cast<SPropValue*>(rows_[i].values.data())};
    ComPtr<IMAPITable> table;
    Require(CreateTable(set.Get(), table.Put()) == S_OK, "table");
    return table;
  }

  std::size_t TotalNodeBytes() const {
    std::size_t total = 0;
    for (const Row& row : rows_) {
      for (const HandValue& value : row.known) total += NodeBytes(value.size);
    }
    return total;
  }

 private:
  struct Row {
    WString name;
    WString address;
    std::array<BYTE, 40> id;
    std::array<SPropValue, kColumns> values;
    std::array<HandValue, kColumns> known;
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

// Growth is told by the ratios: a large table misses the caches, and so does the copy of its rows by hand.
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
    Report("QueryRows of one row of " + std::to_string(count), result, 1.25);
    if (atHundred == 0) {
      atHundred = result.ratio;
    } else {
      Report("the same, growth of the ratio from 100 rows", result.ratio, atHundred, "x", 1.2);
    }
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
  Report("QueryRows of a whole table of 10000 rows", Compare(ours, floor), 1.15);
}

// Every property as a block of its own, of the size of ours, filled and freed by hand.
void MakeAndFreeByHand(const Rows& rows) {
  std::vector<void*> blocks;
  blocks.reserve(std::size_t{rows.Count()} * kColumns);
  for (ULONG row = 0; row < rows.Count(); ++row) {
    for (ULONG column = 0; column < kColumns; ++column) {
      const HandValue& known = rows[row][column];
      auto* block = static_cast<std::byte*>(::operator new(NodeBytes(known.size)));
      std::memcpy(block, &known.value, sizeof known.value);
      if (known.size != 0) std::memcpy(block + kNodeHeader, BytesOf(known), known.size);
      blocks.push_back(block);
    }
  }
  for (void* block : blocks) ::operator delete(block);
}

void CompareCreation() {
  double atThousand = 0;
  for (const ULONG count : {1000u, 100000u}) {
    const Rows rows(count);
    const Comparison result = Compare([&] { rows.MakeTable(); }, [&] { MakeAndFreeByHand(rows); });
    Report("creating a table of " + std::to_string(count), result, 1.5);
    if (atThousand == 0) atThousand = result.ratio;
    if (count != 1000)
      Report("the same, growth of the ratio from 1000 rows", result.ratio, atThousand, "x", 1.2);
  }
}

void MeasureMemory() {
  const Rows rows(100000);
  const std::size_t before = CommittedBytes();
  const auto table = rows.MakeTable();
  const std::size_t used = CommittedBytes() - before;
  Report("memory of a table of 100000 rows to its nodes", static_cast<double>(used) / 1e6,
         static_cast<double>(rows.TotalNodeBytes()) / 1e6, "MB", 1.3);
}

// Memory first, while the heap has nothing to reuse.
const Benchmark kTables("tables", [] {
  MeasureMemory();
  CompareSingleRows();
  CompareWholeTable();
  CompareCreation();
});

}  // namespace
}  // namespace orv::bench
