// Where a table stands: seeks, reads both ways, the largest numbers.
#include <algorithm>
#include <cmath>
#include <limits>

#include "tools/orvctl/check/table_rows.h"

namespace orvctl::check {
namespace {

// Of longer tables only so many rows are compared, and nothing is asked of their end.
constexpr size_t kMostKeys = 5000;
constexpr LONG kLargest = std::numeric_limits<LONG>::max(), kSmallest = std::numeric_limits<LONG>::min();

// A table and the rows that it has, read from the first to the last.
struct Known {
  explicit Known(const Stage& stage, size_t least = 4) : longest(stage, least), probe(stage.probe) {
    keys = ReadOn(probe, longest.Make().Get(), kMostKeys);
    Require(keys.size() >= least,
            "only " + Count(keys.size(), "row") + " of " + std::to_string(longest.rows) + " can be read");
    table = longest.Make();
  }
  bool IsWhole() const { return keys.size() < kMostKeys; }
  LONG size() const { return static_cast<LONG>(keys.size()); }
  void RequireAt(LONG row, const std::string& when) const {
    RequireRows(KeysOf(QueryRows(probe, table.Get(), 1)), keys, static_cast<size_t>(row), 1, when);
  }

  LongestTable longest;
  Probe& probe;
  std::vector<RowKey> keys;
  ComPtr<IMAPITable> table;
};

const char* PlaceName(BOOKMARK origin) {
  return origin == BOOKMARK_BEGINNING ? "BOOKMARK_BEGINNING"
         : origin == BOOKMARK_END     ? "BOOKMARK_END"
                                      : "BOOKMARK_CURRENT";
}

// Seeks from row `start`, expects to have moved so far and to stand at row `to`.
void RequireSeek(const Known& known, LONG start, BOOKMARK origin, LONG rows, LONG moved, LONG to) {
  IMAPITable* const table = known.table.Get();
  Seek(known.probe, table, BOOKMARK_BEGINNING, start);
  const std::string what = "SeekRow " + std::to_string(rows) + " from " + PlaceName(origin);
  const LONG told = Seek(known.probe, table, origin, rows);
  Require(told == moved,
          what + " says that it moved by " + std::to_string(told) + ", not " + std::to_string(moved));
  known.RequireAt(to, "after " + what);
}

Verdict CheckSeeks(Probe& probe) {
  const Stage stage(probe);
  const Known known(stage);
  const LONG n = known.size();
  RequireSeek(known, 2, BOOKMARK_BEGINNING, 0, 0, 0);
  RequireSeek(known, 2, BOOKMARK_BEGINNING, n / 2, n / 2, n / 2);
  RequireSeek(known, 2, BOOKMARK_BEGINNING, -5, 0, 0);
  RequireSeek(known, 1, BOOKMARK_CURRENT, 2, 2, 3);
  RequireSeek(known, 3, BOOKMARK_CURRENT, -2, -2, 1);
  RequireSeek(known, 3, BOOKMARK_CURRENT, -n - 100, -3, 0);
  if (known.IsWhole()) {
    RequireSeek(known, 0, BOOKMARK_END, -1, -1, n - 1);
    RequireSeek(known, 0, BOOKMARK_END, 5, 0, n);
    RequireSeek(known, 0, BOOKMARK_BEGINNING, n + 100, n, n);
    RequireSeek(known, 0, BOOKMARK_END, -n - 100, -n, 0);
  }
  const HRESULT unknown =
      probe.Call("IMAPITable::SeekRow", [&] { return known.table->SeekRow(0x7777, 0, nullptr); });
  Require(unknown == MAPI_E_INVALID_BOOKMARK, "an unknown bookmark answered " + Name(unknown));
  probe.Succeed("IMAPITable::SeekRow without lplRowsSought",
                [&] { return known.table->SeekRow(BOOKMARK_BEGINNING, 1, nullptr); });
  return Ok("from every place");
}

Verdict CheckExtremes(Probe& probe) {
  const Stage stage(probe);
  const Known known(stage);
  const LONG n = known.size();
  IMAPITable* const table = known.table.Get();
  RequireSeek(known, 3, BOOKMARK_CURRENT, kSmallest, -3, 0);
  if (known.IsWhole()) {
    RequireSeek(known, 3, BOOKMARK_CURRENT, kLargest, n - 3, n);
    RequireSeek(known, 3, BOOKMARK_END, kLargest, 0, n);
    Seek(probe, table, BOOKMARK_BEGINNING, n - 3);
    RequireRows(KeysOf(QueryRows(probe, table, kLargest)), known.keys, static_cast<size_t>(n) - 3, 3,
                "reading 2147483647 rows");
  }
  Seek(probe, table, BOOKMARK_BEGINNING, 3);
  RequireRows(KeysOf(QueryRows(probe, table, kSmallest)), known.keys, 0, 3, "reading -2147483648 rows");
  for (const auto& [numerator, denominator] :
       {std::pair{0xFFFFFFFFul, 1ul}, {0xFFFFFFFFul, 0xFFFFFFFFul}, {1ul, 0ul}, {0ul, 0ul}})
    probe.Call("IMAPITable::SeekRowApprox",
               [&, a = numerator, b = denominator] { return table->SeekRowApprox(a, b); });
  Seek(probe, table, BOOKMARK_BEGINNING, 0);
  RowSet rows(Ledger::FreeRoot);
  const HRESULT none =
      probe.Call("IMAPITable::QueryRows of 0 rows", [&] { return table->QueryRows(0, 0, rows.Put()); });
  if (FAILED(none)) static_cast<void>(rows.Detach());
  Require(none == MAPI_E_INVALID_PARAMETER, "reading 0 rows answered " + Name(none));
  return Ok("no harm done");
}

Verdict CheckNoAdvance(Probe& probe) {
  const Stage stage(probe);
  const Known known(stage);
  Seek(probe, known.table.Get(), BOOKMARK_BEGINNING, 1);
  RequireRows(KeysOf(QueryRows(probe, known.table.Get(), 2, TBL_NOADVANCE)), known.keys, 1, 2,
              "with TBL_NOADVANCE");
  RequireRows(KeysOf(QueryRows(probe, known.table.Get(), 2)), known.keys, 1, 2,
              "after a read with TBL_NOADVANCE");
  RequireRows(KeysOf(QueryRows(probe, known.table.Get(), 1)), known.keys, 3, 1, "after a read without it");
  return Ok("kept");
}

Verdict CheckBackward(Probe& probe) {
  const Stage stage(probe);
  const Known known(stage);
  for (const LONG from : {3L, 2L, 1L, 0L}) {
    Seek(probe, known.table.Get(), BOOKMARK_BEGINNING, from);
    const LONG there = std::min(from, 2L);
    const std::vector<RowKey> rows = KeysOf(QueryRows(probe, known.table.Get(), -2));
    Require(static_cast<LONG>(rows.size()) == there,
            "two rows before row " + std::to_string(from) + " are " + Count(rows.size(), "row"));
    RequireRows(rows, known.keys, static_cast<size_t>(from - there), static_cast<size_t>(there),
                "before row " + std::to_string(from));
  }
  return Ok("in table order");
}

Verdict CheckRandomAccess(Probe& probe) {
  constexpr LONG kPlaces = 64;
  const Stage stage(probe);
  const Known known(stage);
  const LONG step = std::max(known.size() / kPlaces, 1L);
  for (LONG row = known.size() - 1; row >= 0; row -= step) {
    Seek(probe, known.table.Get(), BOOKMARK_BEGINNING, row);
    const LONG count = std::min(known.size() - row, 3L);
    RequireRows(KeysOf(QueryRows(probe, known.table.Get(), count)), known.keys, static_cast<size_t>(row),
                static_cast<size_t>(count), "sought for row " + std::to_string(row));
  }
  return Ok("every row the same");
}

ULONG Position(const Known& known) {
  ULONG row = 0, numerator = 0, denominator = 0;
  const HRESULT result = known.probe.Call("IMAPITable::QueryPosition", [&] {
    return known.table->QueryPosition(&row, &numerator, &denominator);
  });
  if (result == MAPI_E_NO_SUPPORT) NotOffered("QueryPosition is not offered");
  Require(SUCCEEDED(result), "QueryPosition answered " + Name(result));
  const double fraction = denominator != 0 ? double{1} * numerator / denominator : 0;
  Require(std::abs(fraction * known.longest.rows - row) <= 1,
          "QueryPosition says row " + std::to_string(row) + " and the fraction " + std::to_string(numerator) +
              "/" + std::to_string(denominator));
  return row;
}

Verdict CheckPosition(Probe& probe) {
  const Stage stage(probe);
  const Known known(stage);
  for (const LONG row : {0L, 1L, known.size() - 1}) {
    Seek(probe, known.table.Get(), BOOKMARK_BEGINNING, row);
    const ULONG told = Position(known);
    Require(told == static_cast<ULONG>(row),
            "at row " + std::to_string(row) + " QueryPosition says " + std::to_string(told));
  }
  for (const ULONG half : {0ul, 1ul, 2ul}) {
    const HRESULT result =
        probe.Call("IMAPITable::SeekRowApprox", [&] { return known.table->SeekRowApprox(half, 2); });
    if (result == MAPI_E_NO_SUPPORT) NotOffered("SeekRowApprox is not offered");
    Require(SUCCEEDED(result), "SeekRowApprox answered " + Name(result));
    const double wanted = known.longest.rows / 2.0 * half, told = Position(known);
    Require(std::abs(told - wanted) <= 1,
            "after SeekRowApprox " + std::to_string(half) + "/2 it stands at row " + std::to_string(told));
  }
  return Ok("told and kept");
}

constexpr NamedCheck kSeekChecks[] = {{"table.seeks", CheckSeeks},
                                      {"table.extremes", CheckExtremes},
                                      {"table.no-advance", CheckNoAdvance},
                                      {"table.backward", CheckBackward},
                                      {"table.random-access", CheckRandomAccess},
                                      {"table.position", CheckPosition}};

}  // namespace

std::span<const NamedCheck> SeekChecks() { return kSeekChecks; }

}  // namespace orvctl::check
