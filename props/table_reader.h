// Reads the rows of a table, whoever made it; the one place that knows what a table may answer.
#pragma once

#include "orv/orvapi.h"
#include "platform/buffer.h"
#include "platform/com_ptr.h"
#include "props/foreign_values.h"
#include "props/tag_array.h"

namespace orv {

// Calls the table's owner; what that throws is MAPI_E_CALL_FAILED (memory exhaustion its own code).
class TableReader {
 public:
  enum class Start { kBeginning, kWhereItStands };

  // Sets the columns, then goes to the start. `rowsAtOnce` are asked of the table in one call; where such a call fails
  // its rows are read one by one, so that those before the failing one are still seen. A null table is
  // MAPI_E_CALL_FAILED.
  template <std::size_t Columns>
  HRESULT Open(ComPtr<IMAPITable> table, const TagArray<Columns>& columns, LONG rowsAtOnce = 1,
               Start start = Start::kBeginning) {
    TagArray<Columns> copy = columns;
    return OpenWith(std::move(table), copy.Get(), rowsAtOnce, start);
  }

  // For a table whose columns and position are others' too: row by row, both as they left them.
  HRESULT OpenAsItStands(ComPtr<IMAPITable> table);

  // S_OK with Row() at the next row, S_FALSE behind the last one; a failure ends the reading too. No array, or an array
  // without rows, is a table's end; a row without values comes with none.
  HRESULT Next();

  // Good until the next step.
  ForeignValues Row() const noexcept { return ForeignValues(*row_); }
  // The row's own array, for a reader that keeps it; Row() is empty afterwards.
  PropValues TakeRow() noexcept;

  bool IsOpen() const noexcept { return static_cast<bool>(table_); }

 private:
  HRESULT OpenWith(ComPtr<IMAPITable> table, LPSPropTagArray columns, LONG rowsAtOnce, Start start);
  HRESULT Query();

  ComPtr<IMAPITable> table_;
  RowSetPtr rows_;
  SRow* row_ = nullptr;
  ULONG next_ = 0;
  LONG rowsAtOnce_ = 1;
};

}  // namespace orv
