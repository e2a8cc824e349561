#include "row_order.hpp"

#include <algorithm>
#include <numeric>

namespace orv::kit {
namespace {

ULONG NumberOf(size_t row) { return sdk::Allocator::CountOf(row); }

std::vector<ULONG> AllRows(size_t count) {
  std::vector<ULONG> rows(NumberOf(count));
  std::iota(rows.begin(), rows.end(), 0UL);
  return rows;
}

HRESULT KeyOf(RowSource& source, const SortOrder& order, const std::vector<ULONG>& columns, size_t row,
              std::vector<BYTE>* key) {
  sdk::ValueView values(nullptr, 0);
  if (const HRESULT hr = source.RowAt(row, columns, &values); FAILED(hr)) return hr;
  key->clear();
  AppendSortKey(order, values, *key);
  return S_OK;
}

}  // namespace

HRESULT RowOrder::Build(RowSource& source, const Restriction& restriction, const SortOrder& order) {
  const Restriction none;
  const bool isNarrowed = source.Narrow(restriction);
  if (!isNarrowed) source.Narrow(none);
  const bool isSorted = source.Sort(order);
  if (!isSorted) source.Sort({});
  RowOrder built;
  built.count_ = source.Count();
  built.isNarrowedBySource_ = isNarrowed && !restriction.IsEmpty();
  built.isSortedBySource_ = isSorted && !order.empty();
  built.isAll_ = isSorted && isNarrowed;
  if (!built.isAll_) {
    const HRESULT hr = built.Select(source, isNarrowed ? none : restriction);
    if (FAILED(hr)) return hr;
  }
  if (!isSorted) {
    if (const HRESULT hr = SortRows(source, order, built.rows_); FAILED(hr)) return hr;
  }
  *this = std::move(built);
  return S_OK;
}

void RowOrder::Arrange(RowSource& source, const Restriction& restriction, const SortOrder& order) const {
  const Restriction none;
  source.Narrow(isNarrowedBySource_ ? restriction : none);
  source.Sort(isSortedBySource_ ? order : SortOrder());
}

HRESULT RowOrder::Select(RowSource& source, const Restriction& restriction) {
  if (restriction.IsEmpty()) {
    rows_ = AllRows(count_);
    return S_OK;
  }
  if (auto selected = source.Select(restriction)) {
    rows_ = std::move(*selected);
    return S_OK;
  }
  const std::vector<ULONG> columns = restriction.Tags();
  for (size_t row = 0; row < count_; ++row) {
    sdk::ValueView values(nullptr, 0);
    if (const HRESULT hr = source.RowAt(row, columns, &values); FAILED(hr)) return hr;
    if (restriction.Holds(values)) rows_.push_back(NumberOf(row));
  }
  return S_OK;
}

std::optional<size_t> RowOrder::Find(size_t row) const noexcept {
  if (isAll_) return row < count_ ? std::optional(row) : std::nullopt;
  const auto found = std::find(rows_.begin(), rows_.end(), row);
  if (found == rows_.end()) return std::nullopt;
  return static_cast<size_t>(found - rows_.begin());
}

std::optional<size_t> RowOrder::Remove(size_t row) {
  const std::optional<size_t> position = Find(row);
  if (isAll_) {
    if (position) --count_;
    return position;
  }
  if (position) TakeOut(*position);
  for (ULONG& each : rows_) each -= each > row;
  return position;
}

void RowOrder::Renumber(size_t row) noexcept {
  for (ULONG& each : rows_) each += each >= row;
}

HRESULT RowOrder::Insert(RowSource& source, const SortOrder& order, size_t row, size_t* position) {
  if (isAll_) {
    ++count_;
    *position = row;
    return S_OK;
  }
  const std::vector<ULONG> columns = ColumnsOf(order);
  std::vector<BYTE> key, other;
  if (const HRESULT hr = KeyOf(source, order, columns, row, &key); FAILED(hr)) return hr;
  size_t first = 0, last = rows_.size();
  while (first < last) {
    const size_t middle = first + (last - first) / 2;
    if (const HRESULT hr = KeyOf(source, order, columns, rows_[middle], &other); FAILED(hr)) return hr;
    const bool isBefore = other != key ? other < key : rows_[middle] < row;
    (isBefore ? first : last) = isBefore ? middle + 1 : middle;
  }
  rows_.insert(rows_.begin() + static_cast<std::ptrdiff_t>(first), NumberOf(row));
  *position = first;
  return S_OK;
}

void RowOrder::TakeOut(size_t position) noexcept {
  rows_.erase(rows_.begin() + static_cast<std::ptrdiff_t>(position));
}

void RowOrder::Clamp(size_t count) noexcept {
  count_ = count;
  rows_.erase(std::remove_if(rows_.begin(), rows_.end(), [count](ULONG row) { return row >= count; }),
              rows_.end());
}

}  // namespace orv::kit
