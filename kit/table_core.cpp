#include "table_core.hpp"

#include <algorithm>
#include <mutex>

namespace orv::kit {

TableCore::TableCore(const sdk::Allocator& allocator, std::shared_ptr<RowSource> source, bool followsChanges,
                     std::shared_ptr<Worker> worker)
    : allocator_(allocator),
      followsChanges_(followsChanges),
      hasWorker_(worker != nullptr),
      advised_(std::move(worker)),
      source_(std::move(source)),
      columns_(source_->Columns()) {
  // Without restriction and order there is nothing that could fail but memory.
  if (FAILED(rows_.Build(*source_, {}, {}))) throw std::bad_alloc();
}

HRESULT TableCore::SetColumns(const SPropTagArray& tags) {
  if (tags.cValues == 0 || tags.cValues > kMostColumns) return MAPI_E_INVALID_PARAMETER;
  std::vector<ULONG> columns = sdk::TagsOf(tags);
  const std::lock_guard guard(lock_);
  columns_.swap(columns);
  return S_OK;
}

HRESULT TableCore::QueryColumns(bool all, LPSPropTagArray* tags) {
  const std::lock_guard guard(lock_);
  *tags = static_cast<LPSPropTagArray>(allocator_.CopyTags(all ? source_->Columns() : columns_).release());
  return S_OK;
}

HRESULT TableCore::GetRowCount(ULONG* count) {
  const std::lock_guard guard(lock_);
  if (const HRESULT hr = source_->Status(); FAILED(hr)) return hr;
  *count = sdk::Allocator::CountOf(rows_.Count());
  return S_OK;
}

HRESULT TableCore::SeekRow(BOOKMARK origin, LONG wanted, LONG* moved) {
  const std::lock_guard guard(lock_);
  bool hasMoved = false;
  const std::optional<size_t> start = marks_.Find(origin, rows_.Count(), &hasMoved);
  if (!start) return MAPI_E_INVALID_BOOKMARK;
  const auto from = static_cast<LONGLONG>(*start);
  const LONGLONG to = std::clamp<LONGLONG>(from + wanted, 0, static_cast<LONGLONG>(rows_.Count()));
  marks_.SetCurrent(static_cast<size_t>(to));
  if (moved != nullptr) *moved = static_cast<LONG>(to - from);
  return hasMoved ? MAPI_W_POSITION_CHANGED : S_OK;
}

HRESULT TableCore::SeekRowApprox(ULONG numerator, ULONG denominator) {
  if (denominator == 0) return MAPI_E_INVALID_PARAMETER;
  const std::lock_guard guard(lock_);
  const ULONGLONG count = rows_.Count();
  marks_.SetCurrent(static_cast<size_t>(numerator < denominator ? count * numerator / denominator : count));
  return S_OK;
}

HRESULT TableCore::QueryPosition(ULONG* row, ULONG* numerator, ULONG* denominator) {
  const std::lock_guard guard(lock_);
  *row = *numerator = sdk::Allocator::CountOf(marks_.Current());
  *denominator = std::max<ULONG>(sdk::Allocator::CountOf(rows_.Count()), 1);
  return S_OK;
}

HRESULT TableCore::FindRow(const Restriction& restriction, BOOKMARK origin, bool backward) {
  if (restriction.LooksBelow()) return MAPI_E_TOO_COMPLEX;
  const std::lock_guard guard(lock_);
  bool hasMoved = false;
  const std::optional<size_t> start = marks_.Find(origin, rows_.Count(), &hasMoved);
  if (!start) return MAPI_E_INVALID_BOOKMARK;
  size_t found = 0;
  if (const HRESULT hr = FindLocked(restriction, *start, backward, &found); FAILED(hr)) return hr;
  marks_.SetCurrent(found);
  return hasMoved ? MAPI_W_POSITION_CHANGED : S_OK;
}

// By the source's own means where it has them, else row by row.
HRESULT TableCore::FindLocked(const Restriction& restriction, size_t start, bool backward, size_t* found) {
  if (const HRESULT hr = source_->Status(); FAILED(hr)) return hr;
  if (!rows_.IsAll()) return SearchLocked(restriction, start, backward, found);
  HRESULT hr = backward ? MAPI_E_NO_SUPPORT : LookUpLocked(restriction, start, found);
  if (hr != MAPI_E_NO_SUPPORT) return hr;
  const std::optional<size_t> known = source_->Find(restriction, start, backward);
  if (!known) return SearchLocked(restriction, start, backward, found);
  *found = *known;
  return *known < rows_.Count() ? S_OK : MAPI_E_NOT_FOUND;
}

// By the source's own means. What it found is tried as well: its idea of an order may differ from ours, and rows in
// front of the start do not count.
HRESULT TableCore::LookUpLocked(const Restriction& restriction, size_t start, size_t* found) {
  const auto lookup = restriction.AsLookup();
  if (!lookup) return MAPI_E_NO_SUPPORT;
  const std::optional<size_t> first = source_->Seek(lookup->tag, *lookup->value, lookup->isPrefix);
  if (!first) return MAPI_E_NO_SUPPORT;
  *found = std::max(*first, start);
  if (!lookup->isPrefix) return SearchLocked(restriction, *found, false, found);
  return FindBeginningLocked(restriction, found);
}

// Rows that begin so but for case and accents lie together; the first of them that satisfies the restriction.
HRESULT TableCore::FindBeginningLocked(const Restriction& restriction, size_t* found) {
  SRestriction wider = *restriction.Get();
  wider.res.resContent.ulFuzzyLevel |= FL_LOOSE;
  Restriction alike;
  if (const HRESULT hr = Restriction::Copy(&wider, &alike); FAILED(hr)) return hr;
  const std::vector<ULONG> columns = restriction.Tags();
  for (size_t position = *found; position < rows_.Count(); ++position) {
    bool holds = false, isAlike = false;
    if (const HRESULT hr = TestLocked(restriction, columns, position, &holds); FAILED(hr)) return hr;
    if (holds) {
      *found = position;
      return S_OK;
    }
    if (const HRESULT hr = TestLocked(alike, columns, position, &isAlike); FAILED(hr)) return hr;
    if (!isAlike) break;
  }
  return MAPI_E_NOT_FOUND;
}

HRESULT TableCore::SearchLocked(const Restriction& restriction, size_t start, bool backward, size_t* found) {
  const std::vector<ULONG> columns = restriction.Tags();
  const size_t count = rows_.Count();
  const size_t first = std::min(start, count);
  // Backward the row at the start is the first that is looked at; behind the last there is none.
  const size_t steps = backward ? std::min(first + 1, count) : count - first;
  const size_t from = backward ? steps - 1 : first;
  for (size_t i = 0; i < steps; ++i) {
    const size_t position = backward ? from - i : from + i;
    bool holds = false;
    if (const HRESULT hr = TestLocked(restriction, columns, position, &holds); FAILED(hr)) return hr;
    if (!holds) continue;
    *found = position;
    return S_OK;
  }
  return MAPI_E_NOT_FOUND;
}

HRESULT TableCore::TestLocked(const Restriction& restriction, const std::vector<ULONG>& columns,
                              size_t position, bool* holds) {
  sdk::ValueView values(nullptr, 0);
  if (const HRESULT hr = source_->RowAt(rows_.RowAt(position), columns, &values); FAILED(hr)) return hr;
  *holds = restriction.Holds(values);
  return S_OK;
}

HRESULT TableCore::Restrict(Restriction restriction) {
  if (restriction.LooksBelow()) return MAPI_E_TOO_COMPLEX;
  const std::lock_guard guard(lock_);
  if (const HRESULT hr = RearrangeLocked(restriction, order_); FAILED(hr)) return hr;
  restriction_ = std::move(restriction);
  return S_OK;
}

HRESULT TableCore::SortTable(SortOrder order) {
  const std::lock_guard guard(lock_);
  if (const HRESULT hr = RearrangeLocked(restriction_, order); FAILED(hr)) return hr;
  order_ = std::move(order);
  return S_OK;
}

HRESULT TableCore::RearrangeLocked(const Restriction& restriction, const SortOrder& order) {
  const HRESULT hr = sdk::Guarded([&] { return rows_.Build(*source_, restriction, order); });
  if (FAILED(hr)) {
    rows_.Arrange(*source_, restriction_, order_);
    return hr;
  }
  marks_.Reset();
  return S_OK;
}

HRESULT TableCore::QuerySortOrder(LPSSortOrderSet* order) {
  const std::lock_guard guard(lock_);
  auto copy = allocator_.Make<SSortOrderSet>(CbNewSSortOrderSet(order_.size()));
  copy->cSorts = static_cast<ULONG>(order_.size());
  std::copy(order_.begin(), order_.end(), copy->aSort);
  *order = copy.Detach();
  return S_OK;
}

HRESULT TableCore::CreateBookmark(BOOKMARK* bookmark) {
  const std::lock_guard guard(lock_);
  if (marks_.Size() >= kMostBookmarks) return MAPI_E_UNABLE_TO_COMPLETE;
  *bookmark = marks_.Create();
  return S_OK;
}

HRESULT TableCore::FreeBookmark(BOOKMARK bookmark) {
  if (bookmark < Marks::kFirstOwn) return S_OK;
  const std::lock_guard guard(lock_);
  return marks_.Free(bookmark) ? S_OK : MAPI_E_INVALID_BOOKMARK;
}

HRESULT TableCore::QueryRows(LONG wanted, bool advance, LPSRowSet* rows) {
  if (wanted == 0) return MAPI_E_INVALID_PARAMETER;
  const std::lock_guard guard(lock_);
  if (const HRESULT hr = source_->Status(); FAILED(hr)) return hr;
  const size_t position = marks_.Current();
  const auto span = static_cast<size_t>(wanted < 0 ? -LONGLONG{wanted} : LONGLONG{wanted});
  const size_t first = wanted > 0 ? position : position - std::min(span, position);
  const size_t last = wanted > 0 ? position + std::min(span, rows_.Count() - position) : position;
  if (const HRESULT hr = CopyRowsLocked(first, last, rows); FAILED(hr)) return hr;
  if (advance) marks_.SetCurrent(wanted > 0 ? last : first);
  return S_OK;
}

HRESULT TableCore::CopyRowsLocked(size_t first, size_t last, LPSRowSet* rows) {
  sdk::RowSetBuilder builder(allocator_, last - first);
  for (size_t position = first; position < last; ++position) {
    sdk::ValueView values(nullptr, 0);
    if (const HRESULT hr = source_->RowAt(rows_.RowAt(position), columns_, &values); FAILED(hr)) return hr;
    auto copy = CopyRow(allocator_, values, columns_.data(), columns_.size());
    builder.Add(allocator_.Adopt(copy.Detach()), columns_.size());
  }
  *rows = builder.Release();
  return S_OK;
}

}  // namespace orv::kit
