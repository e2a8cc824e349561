// IMAPITable over a source of rows: columns, positions, bookmarks, searching, restricting, sorting, notifications.
// Reading costs what the rows read cost, wherever they lie; nothing is copied but what is handed out.
//
// What clients get (codes are the published ones; a null out argument is MAPI_E_INVALID_PARAMETER throughout):
// - SetColumns: MAPI_E_INVALID_PARAMETER without columns or with more than kMostColumns. A column that a row lacks is
//   PT_ERROR with MAPI_E_NOT_FOUND in it, PR_NULL keeps its place. QueryColumns: those set, with TBL_ALL_COLUMNS those
//   of the source.
// - SeekRow, SeekRowApprox, QueryRows stop at the ends. QueryRows backward gives the rows before the position, in the
//   table's order, and goes to the first of them; at either end it gives none, with success. A count of 0 and a
//   denominator of 0 are MAPI_E_INVALID_PARAMETER. The position of an empty table is 0 of 1.
// - FindRow begins with the row at the bookmark, in both directions (backward from the end: with the last); not found:
//   MAPI_E_NOT_FOUND, and the position stays.
// - Restrict and SortTable are done when they return, go to the beginning and take all bookmarks away. Null takes the
//   restriction away, an order without keys the order. Rows that lack a column come last, equal ones in the source's
//   order. MAPI_E_TOO_COMPLEX: categories, more than kMostKeys keys, an instance column, a restriction on sub-objects.
//   After a failure all is as before.
// - Bookmarks stay with their row when rows change: those behind a new or deleted row move along, one on a row that
//   moves goes with it. One whose row was deleted stands on the next, and SeekRow and FindRow from it answer
//   MAPI_W_POSITION_CHANGED once; so do all after a change that is not known row by row, each then keeping its number
//   as far as there are rows. The current position behaves alike; at the end it stays before what is appended. At most
//   kMostBookmarks: MAPI_E_UNABLE_TO_COMPLETE. Freeing the three fixed ones does nothing.
// - Advise: fnevTableModified events with PR_INSTANCE_KEY (of a row that has none its PR_ENTRYID) and, for new and
//   modified rows, the columns set; delivered as AdviseList says.
// - Any thread, several at once. ExpandRow, CollapseRow, GetCollapseState, SetCollapseState, GetLastError:
//   MAPI_E_NO_SUPPORT.
#pragma once

#include <memory>
#include <vector>

#include "orv/kit/advise.hpp"
#include "orv/kit/rows.hpp"

namespace orv::kit {

class TableCore;

inline constexpr ULONG kMostColumns = 4096;
inline constexpr ULONG kMostKeys = 16;
inline constexpr size_t kMostBookmarks = 4096;

// One row that changed. Numbers are those of the source's own order: of a deleted row before all changes of the call,
// of the others after them.
struct RowChange {
  enum Kind { kAdded, kDeleted, kModified };
  Kind kind;
  size_t row;
};

// The open tables that show one set of rows. It knows them without keeping them: a table that its client has released
// is gone, and one may outlive the set.
class TableSet {
 public:
  TableSet() = default;
  TableSet(const TableSet&) = delete;
  TableSet& operator=(const TableSet&) = delete;

  // Call it once for every change of the data, after the change can be seen by RowSource::Refresh, without a lock that
  // sources need or sinks may meet. Every table moves on to the newest data and tells its sinks, on this thread unless
  // it has a worker. Without changes named the source is asked which rows they are (RowSource::Follow); where it does not
  // know, or there are many, anything may have changed. Threads that change things need not take turns: a table that
  // finds more than one change behind it tells of a changed table.
  void Changed(const std::vector<RowChange>& changes = {}) noexcept;

  // Throws std::bad_alloc. For MakeTable.
  void Add(const std::shared_ptr<TableCore>& table);

 private:
  std::shared_ptr<TableCore> At(size_t index) noexcept;

  sdk::Lock lock_;
  std::vector<std::weak_ptr<TableCore>> tables_;
};

// A table at its first row, with one reference. With a set it follows changes (TBLTYPE_DYNAMIC), else it stays as it is
// (TBLTYPE_SNAPSHOT); with a worker it notifies on that. Throws std::bad_alloc only.
sdk::ComPtr<IMAPITable> MakeTable(const sdk::Allocator& allocator, std::shared_ptr<RowSource> source,
                                  TableSet* set = nullptr, std::shared_ptr<Worker> worker = nullptr);

// The same over rows that are all there, for short.
inline sdk::ComPtr<IMAPITable> MakeTable(const sdk::Allocator& allocator, std::vector<PropList> rows,
                                         std::vector<ULONG> columns = {}) {
  return MakeTable(allocator, MakeRows(std::move(rows), std::move(columns)));
}

}  // namespace orv::kit
