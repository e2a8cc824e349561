#include "props/table_reader.h"

#include <utility>

#include "orv/orvcodes.h"
#include "platform/boundary.h"
#include "platform/pointer_check.h"

namespace orv {

HRESULT TableReader::OpenAsItStands(ComPtr<IMAPITable> table) {
  if (!table) return MAPI_E_CALL_FAILED;
  rows_.Reset();
  next_ = 0;
  rowsAtOnce_ = 1;
  table_ = std::move(table);
  return S_OK;
}

HRESULT TableReader::OpenWith(ComPtr<IMAPITable> table, LPSPropTagArray columns, LONG rowsAtOnce,
                              Start start) {
  if (const HRESULT hr = OpenAsItStands(std::move(table)); FAILED(hr)) return hr;
  rowsAtOnce_ = rowsAtOnce;
  return GuardedForeign([&] {
    const HRESULT hr = table_->SetColumns(columns, 0);
    if (FAILED(hr) || start == Start::kWhereItStands) return hr;
    return table_->SeekRow(BOOKMARK_BEGINNING, 0, nullptr);
  });
}

HRESULT TableReader::Query() {
  next_ = 0;
  return HandedOut(rows_, [&] { return table_->QueryRows(rowsAtOnce_, 0, rows_.Put()); });
}

HRESULT TableReader::Next() {
  if (!rows_ || next_ == rows_->cRows) {
    HRESULT hr = Query();
    if (FAILED(hr) && rowsAtOnce_ > 1) {
      rowsAtOnce_ = 1;
      hr = Query();
    }
    if (FAILED(hr)) return hr;
    if (!rows_ || rows_->cRows == 0) return S_FALSE;
    if (!IsReadable(rows_.Get(), CbSRowSet(rows_.Get()))) {
      // A count that lies: nobody can tell what of it may be freed.
      static_cast<void>(rows_.Detach());
      return MAPI_E_CALL_FAILED;
    }
  }
  row_ = &rows_->aRow[next_++];
  return S_OK;
}

PropValues TableReader::TakeRow() noexcept {
  PropValues taken{Row().Count(), MapiBuffer<SPropValue>(std::exchange(row_->lpProps, nullptr))};
  row_->cValues = 0;
  return taken;
}

}  // namespace orv
