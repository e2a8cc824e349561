// Where the rows of a table come from: a provider's own data, seen row by row, or a vector of property lists.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "orv/kit/restriction.hpp"
#include "orv/kit/values.hpp"

namespace orv::kit {

// One row that changed, as a source tells of it by itself: where it was shown before and where it is shown now. One that
// was modified has both, the same or not.
struct FollowedRow {
  static constexpr size_t kNowhere = static_cast<size_t>(-1);
  size_t before = kNowhere;
  size_t after = kNowhere;
  std::vector<BYTE> key;  // of one that has gone: its PR_INSTANCE_KEY
};

// What a provider implements to show its data as a table. Each table has a source of its own, so a source may keep what
// it is reading; what it reads from is shared by whatever means it likes.
//
// All methods are called under the table's lock: one at a time, never from a call of this table's that is running. They
// must not call the table. They may throw std::bad_alloc, which fails the table's method and leaves the source as it
// was.
//
// The rows are numbered from 0, in the source's own order or in the one that Sort set. Numbers, rows and count stay as
// they are until Refresh or Sort: what changes in the data meanwhile must not show. A source over a shared_ptr to
// constant data has that by itself.
class RowSource {
 public:
  virtual ~RowSource() = default;

  virtual size_t Count() = 0;

  // Why the rows cannot be told, where they cannot: asked before rows or their number are handed out, which then fail
  // alike. Rows that could not be read must not look like none.
  virtual HRESULT Status() { return S_OK; }

  // The values of one row, good until the next call of any method: at least those of `columns` that it has, in any
  // order (found fastest when in that order), and as many others as is convenient. A row below Count() is there;
  // failures are those of reading it and become the result of the table's method.
  virtual HRESULT RowAt(size_t row, std::span<const ULONG> columns, sdk::ValueView* values) = 0;

  // All columns that rows may have; shown until the client chooses its own. They should hold PR_INSTANCE_KEY, or else
  // PR_ENTRYID: without either a client hears of a change in the table, but not in which row.
  virtual std::vector<ULONG> Columns() = 0;

  // The first row, in the present order, whose `column` is not less than the key (Count() when there is none); with
  // isPrefix the rows whose column begins with the key lie together from there on, whatever their case. Nothing: cannot
  // be told faster than by reading, as when the rows are not ordered by that column.
  virtual std::optional<size_t> Seek([[maybe_unused]] ULONG column, [[maybe_unused]] const SPropValue& key,
                                     [[maybe_unused]] bool isPrefix) {
    return std::nullopt;
  }

  // The first row from `start` on, backward the last up to `start`, that satisfies the restriction; Count() when there is
  // none. Nothing: cannot be told faster than by reading row by row.
  virtual std::optional<size_t> Find([[maybe_unused]] const Restriction& restriction,
                                     [[maybe_unused]] size_t start, [[maybe_unused]] bool isBackward) {
    return std::nullopt;
  }

  // True: the rows are numbered in this order from now on. False: the source cannot, and nothing has changed; the table
  // then sorts numbers of rows by itself. Without keys: the source's own order, which is always possible.
  virtual bool Sort(const std::vector<SSortOrder>& order) { return order.empty(); }

  // True: the source now has the rows that satisfy the restriction and no others, numbered in the present order, until
  // it is narrowed again; an empty restriction gives all rows back, which is always possible. False: the source cannot,
  // and nothing has changed; the table then asks Select. Sort, Seek and Refresh keep to the rows that it was narrowed to.
  virtual bool Narrow(const Restriction& restriction) { return restriction.IsEmpty(); }

  // The numbers of the rows that satisfy the restriction, ascending. Nothing: the table asks row by row.
  virtual std::optional<std::vector<ULONG>> Select([[maybe_unused]] const Restriction& restriction) {
    return std::nullopt;
  }

  // Shows the newest data from now on, in the order of the last Sort; how many changes (calls of TableSet::Changed) lie
  // between it and what was shown before. Only for tables that follow changes.
  virtual ULONG Refresh() { return 0; }

  // As Refresh, with the rows that changed, as they are numbered in the present arrangement (Sort, Narrow), which stays;
  // none where nothing has changed. For changes that are told without their rows, of tables that show the source's
  // numbers. Nothing: not known row by row, and nothing was done; Refresh is called then.
  virtual std::optional<std::vector<FollowedRow>> Follow() { return std::nullopt; }
};

// A source over rows that are all there. Columns are those given; without any, those of the rows, in the order in which
// they first come.
std::unique_ptr<RowSource> MakeRows(std::vector<PropList> rows, std::vector<ULONG> columns = {});

}  // namespace orv::kit
