// Tables: their rows, columns, and what else they offer.
#include <algorithm>
#include <chrono>

#include "tools/orvctl/check/table_rows.h"

namespace orvctl::check {

std::vector<RowKey> KeysOf(const RowSet& rows) {
  std::vector<RowKey> keys;
  for (ULONG i = 0; i < rows->cRows; ++i) keys.push_back(KeyOf(rows->aRow[i]));
  return keys;
}

std::vector<RowKey> ReadOn(Probe& probe, IMAPITable* table, size_t most) {
  constexpr LONG kBlock = 50;
  std::vector<RowKey> keys;
  while (keys.size() < most) {
    const std::vector<RowKey> block = KeysOf(QueryRows(probe, table, kBlock));
    if (block.empty()) break;
    keys.insert(keys.end(), block.begin(), block.end());
  }
  return keys;
}

void RequireRows(const std::vector<RowKey>& read, const std::vector<RowKey>& keys, size_t first, size_t count,
                 const std::string& when) {
  const size_t there = std::min(count, keys.size() - std::min(first, keys.size()));
  Require(read.size() == there,
          when + ": " + Count(read.size(), "row") + " instead of " + std::to_string(there));
  for (size_t i = 0; i < there; ++i) {
    Require(read[i] == keys[first + i], when + ": in the place of row " + std::to_string(first + i) +
                                            " is '" + ToUtf8(read[i].name) + "', not '" +
                                            ToUtf8(keys[first + i].name) + "'");
  }
}

namespace {

using Clock = std::chrono::steady_clock;

Verdict CheckCount(Probe& probe) {
  const Stage stage(probe);
  const LongestTable longest(stage, 0);
  const ComPtr<IMAPITable> table = longest.Make();
  const size_t count = RowCount(probe, table.Get());
  const size_t read = ReadOn(probe, table.Get(), count + 1000).size();
  Require(read == count, "GetRowCount says " + std::to_string(count) + ", and " + Count(read, "row") +
                             (read > count ? " and more" : "") + " can be read");
  return Ok(Count(count, "row"));
}

Verdict CheckEnds(Probe& probe) {
  const Stage stage(probe);
  const LongestTable longest(stage, 0);
  const ComPtr<IMAPITable> table = longest.Make();
  Seek(probe, table.Get(), BOOKMARK_END, 0);
  const size_t behind = QueryRows(probe, table.Get(), 10)->cRows;
  Require(behind == 0, "behind the last row a read gives " + Count(behind, "row"));
  return Ok("no rows behind the last one");
}

// The least time of many single reads of one row: what else the machine does can only add to it.
class ReadCost {
 public:
  ReadCost(BOOKMARK origin, LONG rows) : origin_(origin), rows_(rows) {}

  // Steps are told once for both calls, as telling one costs more than most rows.
  void Measure(Probe& probe, IMAPITable* table) {
    RowSet rows(Ledger::FreeRoot);
    probe.Succeed("IMAPITable::SeekRow, QueryRows", [&] {
      const auto begin = Clock::now();
      HRESULT result = table->SeekRow(origin_, rows_, nullptr);
      if (SUCCEEDED(result)) result = table->QueryRows(1, 0, rows.Put());
      if (FAILED(result)) static_cast<void>(rows.Detach());
      least_ = std::min(least_, std::chrono::duration<double, std::micro>(Clock::now() - begin).count());
      return result;
    });
  }
  double microseconds() const { return least_; }
  std::string Describe() const { return std::to_string(static_cast<int>(least_)); }

 private:
  const BOOKMARK origin_;
  const LONG rows_;
  double least_ = 1e12;
};

// A row may cost more than the first one by a few cache misses, not by the rows before it.
bool IsAlike(const ReadCost& first, const ReadCost& last) {
  constexpr double kRatio = 10, kMicroseconds = 50;
  return last.microseconds() < first.microseconds() * kRatio ||
         last.microseconds() - first.microseconds() < kMicroseconds;
}

Verdict CheckCost(Probe& probe) {
  constexpr size_t kEnough = 500;
  constexpr int kReads = 40, kMostReads = 200;
  const Stage stage(probe);
  const LongestTable longest(stage, kEnough);
  const ComPtr<IMAPITable> table = longest.Make();
  ReadCost first(BOOKMARK_BEGINNING, 0), last(BOOKMARK_END, -1);
  // In turns, so that a busy spell meets both; longer where the first readings look bad.
  for (int i = 0; i < kReads || (i < kMostReads && !IsAlike(first, last)); ++i) {
    first.Measure(probe, table.Get());
    last.Measure(probe, table.Get());
  }
  const std::string seen = "first row " + first.Describe() + " microseconds, row " +
                           std::to_string(longest.rows) + " " + last.Describe();
  Require(IsAlike(first, last), seen);
  return Ok(seen);
}

Verdict CheckColumns(Probe& probe) {
  const Stage stage(probe);
  const LongestTable longest(stage, 1);
  const ComPtr<IMAPITable> table = longest.Make();
  const Tags columns = {PR_DISPLAY_NAME_W, kUnknownTag, PR_ENTRYID};
  SetColumns(probe, table.Get(), columns);
  const RowSet rows = QueryRows(probe, table.Get(), 10);
  for (ULONG i = 0; i < rows->cRows; ++i) {
    const SRow& row = rows->aRow[i];
    const std::string what = "row " + std::to_string(i);
    Require(row.cValues == columns.size(),
            what + " has " + Count(row.cValues, "value") + " for three columns");
    const auto isAt = [&](size_t place) {
      return PROP_ID(row.lpProps[place].ulPropTag) == PROP_ID(columns[place]);
    };
    Require(isAt(0) && isAt(2), what + " does not have the columns in the order set");
    Require(row.lpProps[1].ulPropTag == CHANGE_PROP_TYPE(kUnknownTag, PT_ERROR),
            what + " has " + diag::PropTagName(row.lpProps[1].ulPropTag) + " for a column that nobody has");
  }
  return Ok(Count(rows->cRows, "row"));
}

Verdict CheckNullColumn(Probe& probe) {
  const Stage stage(probe);
  const LongestTable longest(stage, 1);
  const ComPtr<IMAPITable> table = longest.Make();
  SetColumns(probe, table.Get(), {PR_NULL, PR_ENTRYID});
  const RowSet rows = QueryRows(probe, table.Get(), 1);
  Require(rows->cRows == 1 && rows->aRow[0].cValues == 2, "a row does not have both columns");
  const SPropValue* values = rows->aRow[0].lpProps;
  Require(values[0].ulPropTag == PR_NULL,
          "in the place of PR_NULL is " + diag::PropTagName(values[0].ulPropTag));
  Require(values[1].ulPropTag == PR_ENTRYID, "behind PR_NULL is " + diag::PropTagName(values[1].ulPropTag));
  return Ok("kept");
}

Verdict CheckBookmarks(Probe& probe) {
  const Stage stage(probe);
  const LongestTable longest(stage, 3);
  const ComPtr<IMAPITable> table = longest.Make();
  const std::vector<RowKey> keys = ReadOn(probe, table.Get(), 50);
  Seek(probe, table.Get(), BOOKMARK_BEGINNING, 1);
  BOOKMARK bookmark = 0;
  const HRESULT result =
      probe.Call("IMAPITable::CreateBookmark", [&] { return table->CreateBookmark(&bookmark); });
  if (result == MAPI_E_NO_SUPPORT) NotOffered("there are no bookmarks");
  Require(SUCCEEDED(result), "CreateBookmark answered " + Name(result));
  Require(bookmark > BOOKMARK_END, "CreateBookmark gave the number of a fixed place");
  Seek(probe, table.Get(), BOOKMARK_END, 0);
  Seek(probe, table.Get(), bookmark, 0);
  RequireRows(KeysOf(QueryRows(probe, table.Get(), 1)), keys, 1, 1, "at the bookmark");
  Seek(probe, table.Get(), bookmark, 1);
  RequireRows(KeysOf(QueryRows(probe, table.Get(), 1)), keys, 2, 1, "one behind the bookmark");
  probe.Succeed("IMAPITable::FreeBookmark", [&] { return table->FreeBookmark(bookmark); });
  const HRESULT freed =
      probe.Call("IMAPITable::SeekRow", [&] { return table->SeekRow(bookmark, 0, nullptr); });
  Require(freed == MAPI_E_INVALID_BOOKMARK, "a bookmark that was freed answered " + Name(freed));
  return Ok("created, used, freed");
}

HRESULT FindName(Probe& probe, IMAPITable* table, const WideString& name, BOOKMARK origin, ULONG flags) {
  WideString text = name;
  SPropValue value = TextValue(PR_DISPLAY_NAME_W, text);
  SRestriction restriction{};
  restriction.rt = RES_PROPERTY;
  restriction.res.resProperty = {RELOP_EQ, PR_DISPLAY_NAME_W, &value};
  return probe.Call("IMAPITable::FindRow", [&] { return table->FindRow(&restriction, origin, flags); });
}

void RequireFound(Probe& probe, IMAPITable* table, const WideString& name, BOOKMARK origin, ULONG flags) {
  const std::string what =
      std::string(flags == DIR_BACKWARD ? "backwards" : "forwards") + " for '" + ToUtf8(name) + "': ";
  const HRESULT result = FindName(probe, table, name, origin, flags);
  Require(SUCCEEDED(result), what + Name(result));
  const std::vector<RowKey> found = KeysOf(QueryRows(probe, table, 1));
  Require(found.size() == 1, what + "found, but no row follows");
  const bool isSame = CompareStringOrdinal(found[0].name.c_str(), -1, name.c_str(), -1, TRUE) == CSTR_EQUAL;
  Require(isSame, what + "found '" + ToUtf8(found[0].name) + "'");
}

Verdict CheckFindRow(Probe& probe) {
  const Stage stage(probe);
  const LongestTable longest(stage, 2);
  const ComPtr<IMAPITable> table = longest.Make();
  const std::vector<RowKey> keys = ReadOn(probe, table.Get(), 50);
  Tour(stage).RequireColumn(PR_DISPLAY_NAME_W);
  const HRESULT absent = FindName(probe, table.Get(), kNobody, BOOKMARK_BEGINNING, 0);
  if (absent == MAPI_E_NO_SUPPORT || absent == MAPI_E_TOO_COMPLEX)
    NotOffered("FindRow answered " + Name(absent));
  Require(absent == MAPI_E_NOT_FOUND, "for a name that nobody has it answered " + Name(absent));
  for (const size_t row : {size_t{0}, keys.size() / 2, keys.size() - 1}) {
    RequireFound(probe, table.Get(), keys[row].name, BOOKMARK_BEGINNING, 0);
    RequireFound(probe, table.Get(), keys[row].name, BOOKMARK_END, DIR_BACKWARD);
  }
  return Ok("both ways");
}

Verdict CheckIndependent(Probe& probe) {
  const Stage stage(probe);
  const LongestTable longest(stage, 2);
  const ComPtr<IMAPITable> one = longest.Make();
  const std::vector<RowKey> keys = ReadOn(probe, one.Get(), 50);
  const ComPtr<IMAPITable> other = longest.Make();
  RequireRows(KeysOf(QueryRows(probe, other.Get(), 1)), keys, 0, 1, "a new table, after another was read");
  Seek(probe, one.Get(), BOOKMARK_BEGINNING, 0);
  SetColumns(probe, one.Get(), {PR_OBJECT_TYPE});
  RequireRows(KeysOf(QueryRows(probe, other.Get(), 1)), keys, 1, 1,
              "after another table was sought in and had its columns set");
  return Ok("two tables");
}

constexpr NamedCheck kTableChecks[] = {{"table.count", CheckCount},
                                       {"table.ends", CheckEnds},
                                       {"table.cost", CheckCost},
                                       {"table.columns", CheckColumns},
                                       {"table.null-column", CheckNullColumn},
                                       {"table.bookmarks", CheckBookmarks},
                                       {"table.find-row", CheckFindRow},
                                       {"table.independent", CheckIndependent}};

}  // namespace

std::span<const NamedCheck> TableChecks() { return kTableChecks; }

}  // namespace orvctl::check
