// Positions in and reading from a snapshot of rows, and the object that hands it out.
#include "props/base_table.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "orv/orvguids.h"
#include "platform/boundary.h"
#include "platform/com_object.h"

namespace orv {
namespace {

constexpr ULONG kInvalidPosition = 0xFFFFFFFF;

HRESULT CopyTagArray(const SPropTagArray& tags, MapiBuffer<SPropTagArray>& copy) noexcept {
  const std::size_t size = CbNewSPropTagArray(std::size_t{tags.cValues});
  MapiBuffer<SPropTagArray> made;
  if (const HRESULT hr = made.Allocate(size); FAILED(hr)) return hr;
  std::memcpy(static_cast<void*>(made.Get()), &tags, size);
  copy = std::move(made);
  return S_OK;
}

HRESULT FirstFailure(const SRowSet& rows) {
  for (ULONG i = 0; i < rows.cRows; ++i) {
    PropList row;
    if (const HRESULT hr = BuildRow(rows.aRow[i], row); FAILED(hr)) return hr;
  }
  return S_OK;
}

}  // namespace

// Built from the last row to the first, so that neighbours in the table are neighbours in memory. Which failure
// is told goes by the order in which the rows were given.
HRESULT CBaseTable::Initialise(const SRowSet* rows) {
  RowList made;
  const ULONG count = rows != nullptr ? rows->cRows : 0;
  for (ULONG i = count; i-- > 0;) {
    if (FAILED(made.Add(rows->aRow[i], made.Count()))) return FirstFailure(*rows);
  }
  rows_ = std::move(made);
  return S_OK;
}

HRESULT CBaseTable::SetColumns(const SPropTagArray& columns) noexcept {
  if (columns.cValues == 0) return MAPI_E_INVALID_PARAMETER;
  return CopyTagArray(columns, columns_);
}

HRESULT CBaseTable::QueryColumns(ULONG flags, MapiBuffer<SPropTagArray>& columns) const noexcept {
  if (columns_ && !(flags & TBL_ALL_COLUMNS)) return CopyTagArray(*columns_, columns);
  return rows_.GetColumnTags(columns);
}

HRESULT CBaseTable::SeekRow(BOOKMARK origin, LONG rowCount, LONG* rowsSought) noexcept {
  ULONG start = 0;
  switch (origin) {
    case BOOKMARK_BEGINNING:
      break;
    case BOOKMARK_CURRENT:
      start = position_;
      break;
    case BOOKMARK_END:
      start = rows_.Count();
      break;
    default:
      return MAPI_E_INVALID_BOOKMARK;
  }
  if (start == kInvalidPosition) return MAPI_E_INVALID_BOOKMARK;
  // Either end stops the walk without a word.
  const std::int64_t forward = std::max<std::int64_t>(0, std::int64_t{rows_.Count()} - start);
  const std::int64_t steps = std::clamp<std::int64_t>(rowCount, -std::int64_t{start}, forward);
  if (rowsSought != nullptr) *rowsSought = static_cast<LONG>(steps);
  position_ = static_cast<ULONG>(start + steps);
  return S_OK;
}

void CBaseTable::SeekRowApprox(ULONG numerator, ULONG denominator) noexcept {
  if (numerator >= denominator) {
    position_ = rows_.Count();
    return;
  }
  if ((numerator | denominator) >> 31 != 0) {
    numerator /= 2;
    denominator /= 2;
  }
  position_ = static_cast<ULONG>(
      MulDiv(static_cast<int>(rows_.Count()), static_cast<int>(numerator), static_cast<int>(denominator)));
}

HRESULT CBaseTable::QueryRows(LONG rowCount, ULONG flags, RowSetPtr& rows) noexcept {
  if (rowCount == 0) return MAPI_E_INVALID_PARAMETER;
  const std::int64_t count = rows_.Count();
  const std::int64_t start =
      rowCount > 0 ? position_ : std::max<std::int64_t>(0, std::int64_t{position_} + rowCount);
  const std::int64_t end = rowCount > 0 ? start + rowCount : position_;
  return ReadRows(static_cast<ULONG>(start), static_cast<ULONG>(std::max(start, std::min(end, count))), flags,
                  rows);
}

HRESULT CBaseTable::ReadRows(ULONG start, ULONG end, ULONG flags, RowSetPtr& rows) noexcept {
  RowSetPtr set;
  void* buffer = nullptr;
  const HRESULT hr = AllocateToFill(CbNewSRowSet(std::size_t{end - start}), nullptr, &buffer);
  if (FAILED(hr)) return hr;
  // Rows are written whole and counted then.
  std::memset(buffer, 0, offsetof(SRowSet, aRow));
  set.Reset(static_cast<SRowSet*>(buffer));
  HRESULT result = S_OK;
  for (ULONG i = start; i < end; ++i) {
    result = rows_[i].GetRow(columns_.Get(), set->aRow[set->cRows]);
    if (FAILED(result)) return result;
    ++set->cRows;
  }
  // A read backward leaves the position behind its rows, and one that finds none returns to the start, so that
  // a client that read to the end begins anew.
  if (!(flags & TBL_NOADVANCE)) position_ = start == end ? 0 : end;
  rows = std::move(set);
  return result;
}

namespace {

// CBaseTable as IMAPITable: checks the pointers, takes the lock, refuses what snapshots do not offer.
class CMAPITable final : public ComObject<IMAPITable> {
 public:
  explicit CMAPITable(CBaseTable table) : table_(std::move(table)) {}

  HRESULT STDMETHODCALLTYPE GetStatus(ULONG* status, ULONG* type) override {
    if (!AreWritableOuts(status, type)) return MAPI_E_INVALID_PARAMETER;
    *status = TBLSTAT_COMPLETE;
    *type = TBLTYPE_SNAPSHOT;
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE SetColumns(LPSPropTagArray columns, ULONG) override {
    if (!IsReadableTagArray(columns)) return MAPI_E_INVALID_PARAMETER;
    LockGuard guard(ObjectLock());
    return table_.SetColumns(*columns);
  }

  HRESULT STDMETHODCALLTYPE QueryColumns(ULONG flags, LPSPropTagArray* columns) override {
    if (!IsWritableOut(columns)) return MAPI_E_INVALID_PARAMETER;
    MapiBuffer<SPropTagArray> found;
    LockGuard guard(ObjectLock());
    const HRESULT hr = table_.QueryColumns(flags, found);
    if (SUCCEEDED(hr)) *columns = found.Detach();
    return hr;
  }

  HRESULT STDMETHODCALLTYPE GetRowCount(ULONG, ULONG* count) override {
    if (!IsWritableOut(count)) return MAPI_E_INVALID_PARAMETER;
    LockGuard guard(ObjectLock());
    *count = table_.Rows().Count();
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE SeekRow(BOOKMARK origin, LONG rowCount, LONG* rowsSought) override {
    if (rowsSought != nullptr && !IsWritableOut(rowsSought)) return MAPI_E_INVALID_PARAMETER;
    LockGuard guard(ObjectLock());
    return table_.SeekRow(origin, rowCount, rowsSought);
  }

  HRESULT STDMETHODCALLTYPE SeekRowApprox(ULONG numerator, ULONG denominator) override {
    LockGuard guard(ObjectLock());
    table_.SeekRowApprox(numerator, denominator);
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE QueryPosition(ULONG* row, ULONG* numerator, ULONG* denominator) override {
    if (!AreWritableOuts(row, numerator) || !IsWritableOut(denominator)) return MAPI_E_INVALID_PARAMETER;
    LockGuard guard(ObjectLock());
    *row = *numerator = table_.Position();
    *denominator = table_.Rows().Count();
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE QueryRows(LONG rowCount, ULONG flags, LPSRowSet* rows) override {
    if (!IsWritableOut(rows)) return MAPI_E_INVALID_PARAMETER;
    RowSetPtr found;
    LockGuard guard(ObjectLock());
    const HRESULT hr = table_.QueryRows(rowCount, flags, found);
    if (SUCCEEDED(hr)) *rows = found.Detach();
    return hr;
  }

  HRESULT STDMETHODCALLTYPE Abort() override { return S_OK; }

  HRESULT STDMETHODCALLTYPE GetLastError(HRESULT, ULONG, LPMAPIERROR*) override { return MAPI_E_NO_SUPPORT; }
  HRESULT STDMETHODCALLTYPE Advise(ULONG, LPMAPIADVISESINK, ULONG*) override { return MAPI_E_NO_SUPPORT; }
  HRESULT STDMETHODCALLTYPE Unadvise(ULONG) override { return MAPI_E_NO_SUPPORT; }
  HRESULT STDMETHODCALLTYPE FindRow(LPSRestriction, BOOKMARK, ULONG) override { return MAPI_E_NO_SUPPORT; }
  HRESULT STDMETHODCALLTYPE Restrict(LPSRestriction, ULONG) override { return MAPI_E_NO_SUPPORT; }
  HRESULT STDMETHODCALLTYPE CreateBookmark(BOOKMARK*) override { return MAPI_E_NO_SUPPORT; }
  HRESULT STDMETHODCALLTYPE FreeBookmark(BOOKMARK) override { return MAPI_E_NO_SUPPORT; }
  HRESULT STDMETHODCALLTYPE SortTable(LPSSortOrderSet, ULONG) override { return MAPI_E_NO_SUPPORT; }
  HRESULT STDMETHODCALLTYPE QuerySortOrder(LPSSortOrderSet*) override { return MAPI_E_NO_SUPPORT; }
  HRESULT STDMETHODCALLTYPE ExpandRow(ULONG, LPBYTE, ULONG, ULONG, LPSRowSet*, ULONG*) override {
    return MAPI_E_NO_SUPPORT;
  }
  HRESULT STDMETHODCALLTYPE CollapseRow(ULONG, LPBYTE, ULONG, ULONG*) override { return MAPI_E_NO_SUPPORT; }
  HRESULT STDMETHODCALLTYPE WaitForCompletion(ULONG, ULONG, ULONG*) override { return MAPI_E_NO_SUPPORT; }
  HRESULT STDMETHODCALLTYPE GetCollapseState(ULONG, ULONG, LPBYTE, ULONG*, LPBYTE*) override {
    return MAPI_E_NO_SUPPORT;
  }
  HRESULT STDMETHODCALLTYPE SetCollapseState(ULONG, ULONG, LPBYTE, BOOKMARK*) override {
    return MAPI_E_NO_SUPPORT;
  }

 private:
  bool Supports(REFIID iid) const override { return IsOneOf(iid, IID_IUnknown, IID_IMAPITable); }

  CBaseTable table_;
};

}  // namespace

HRESULT CreateTable(const SRowSet* rows, IMAPITable** table) {
  return Guarded([&] {
    CBaseTable made;
    const HRESULT hr = made.Initialise(rows);
    return FAILED(hr) ? hr : CreateTable(std::move(made), table);
  });
}

HRESULT CreateTable(CBaseTable rows, IMAPITable** table) {
  return Guarded([&] {
    *table = new CMAPITable(std::move(rows));
    return S_OK;
  });
}

}  // namespace orv
