// The snapshot table: rows given once, read by position. As a plain class it is also the store of a profile's
// services; CreateTable puts it behind IMAPITable with a lock.
#pragma once

#include "orv/orvapi.h"
#include "props/row_list.h"

namespace orv {

// Not locked. Method results are those of IMAPITable's methods of the same name.
class CBaseTable {
 public:
  // Every row goes to the front, so the table presents them in reverse: profile administration and the root container
  // hand rows over reversed where the order matters. No rows stay after a failure. May throw std::bad_alloc.
  HRESULT Initialise(const SRowSet* rows);

  RowList& Rows() noexcept { return rows_; }
  const RowList& Rows() const noexcept { return rows_; }

  HRESULT SetColumns(const SPropTagArray& columns) noexcept;
  HRESULT QueryColumns(ULONG flags, MapiBuffer<SPropTagArray>& columns) const noexcept;
  HRESULT SeekRow(BOOKMARK origin, LONG rowCount, LONG* rowsSought) noexcept;
  void SeekRowApprox(ULONG numerator, ULONG denominator) noexcept;
  ULONG Position() const noexcept { return position_; }
  HRESULT QueryRows(LONG rowCount, ULONG flags, RowSetPtr& rows) noexcept;

 private:
  HRESULT ReadRows(ULONG start, ULONG end, ULONG flags, RowSetPtr& rows) noexcept;

  RowList rows_;
  MapiBuffer<SPropTagArray> columns_;
  ULONG position_ = 0;  // the row that QueryRows reads next
};

// A table of a copy of the rows, none when null; handed out with one reference.
HRESULT CreateTable(const SRowSet* rows, IMAPITable** table);
// The same over a table that its owner gives away as it stands, columns and position included.
HRESULT CreateTable(CBaseTable rows, IMAPITable** table);

}  // namespace orv
