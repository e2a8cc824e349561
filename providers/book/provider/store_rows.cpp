#include "providers/book/provider/store_rows.h"

#include <algorithm>

#include "providers/book/provider/row_search.h"
#include "providers/book/provider/row_values.h"
#include "providers/book/text.h"

namespace book {
namespace {

// Rows read at once, from a multiple of it on, so that reading backward is as quick.
constexpr size_t kWindow = 64;

// Nothing where the store has no such column.
std::optional<std::vector<SortColumn>> ColumnsOf(const std::vector<SSortOrder>& order) {
  std::vector<SortColumn> columns;
  for (const SSortOrder& each : order) {
    const std::optional<Column> column = ColumnOf(each.ulPropTag);
    if (!column) return std::nullopt;
    columns.push_back({*column, each.ulOrder == TABLE_SORT_DESCEND});
  }
  // The store's own order: equal names follow each other by age there, whatever else is asked for.
  const bool isOwn = columns.size() == 1 && columns[0].column == Column::kName && !columns[0].isDescending;
  if (isOwn) columns.clear();
  return columns;
}

bool IsName(ULONG tag) { return tag == PR_DISPLAY_NAME || tag == PR_TRANSMITABLE_DISPLAY_NAME; }

}  // namespace

StoreRows::StoreRows(LocalBook& book) : book_(book) {
  LookAnew();
  book_.TableOpened();
}

// A book that cannot be opened shows no rows; its container says why.
void StoreRows::LookAnew() {
  const HRESULT hr = view_ ? S_OK : book_.OpenView(&store_, &view_);
  uint64_t count = 0;
  const bool isThere = SUCCEEDED(hr) && SUCCEEDED(view_->Count(&count));
  count_ = isThere ? static_cast<size_t>(count) : 0;
  window_.clear();
}

HRESULT StoreRows::Load(size_t row) {
  if (row >= windowStart_ && row - windowStart_ < window_.size()) return S_OK;
  const size_t first = row - row % kWindow, count = std::min(kWindow, Count() - first);
  std::vector<Row> rows;
  HRESULT hr = S_OK;
  if (refs_) {
    hr = view_->Rows(std::span(*refs_).subspan(first, count), &rows);
  } else {
    hr = view_->Window(first, count, &rows);
  }
  if (FAILED(hr)) return hr;
  window_ = std::move(rows);
  windowStart_ = first;
  return row - first < window_.size() ? S_OK : MAPI_E_NOT_FOUND;
}

HRESULT StoreRows::RowAt(size_t row, std::span<const ULONG> columns, orv::sdk::ValueView* values) {
  if (const HRESULT hr = Load(row); FAILED(hr)) return hr;
  row_.Clear();
  const Row& loaded = window_[row - windowStart_];
  if (!loaded.isGone) {
    const HRESULT hr = book_.DescribeRowAs(RefOfRow(loaded), *view_, loaded, columns, row_);
    if (FAILED(hr) && hr != MAPI_E_NOT_FOUND) return hr;
  }
  *values = row_.View();
  return S_OK;
}

std::vector<ULONG> StoreRows::Columns() { return RowColumns(); }

std::optional<size_t> StoreRows::Seek(ULONG column, const SPropValue& key, bool) {
  const bool isByName = !refs_ && view_ && IsName(column) &&
                        IsName(CHANGE_PROP_TYPE(key.ulPropTag, PT_UNICODE)) &&
                        PROP_TYPE(key.ulPropTag) == PT_UNICODE && key.Value.lpszW != nullptr;
  if (!isByName) return std::nullopt;
  uint64_t first = 0, end = 0;
  if (FAILED(view_->SeekName(ToUtf8(key.Value.lpszW), &first, &end))) return std::nullopt;
  return static_cast<size_t>(first);
}

bool StoreRows::Sort(const std::vector<SSortOrder>& order) {
  const auto columns = ColumnsOf(order);
  return columns && (order_.empty() && columns->empty() ? true : SUCCEEDED(Arrange(narrowed_, *columns)));
}

bool StoreRows::Narrow(const kit::Restriction& restriction) {
  std::optional<Refs> narrowed;
  if (!restriction.IsEmpty()) {
    if (!view_) return false;
    const HRESULT hr = RowSearch(book_, *view_, count_).Find(*restriction.Get(), &narrowed.emplace());
    if (FAILED(hr)) return false;
  }
  if (!narrowed && !narrowed_) return true;
  return SUCCEEDED(Arrange(narrowed, order_));
}

HRESULT StoreRows::Arrange(const std::optional<Refs>& narrowed, const std::vector<SortColumn>& order) {
  std::optional<Refs> refs = narrowed;
  if (!order.empty() && view_) {
    Refs sorted;
    if (const HRESULT hr = ReadOrder(order, &sorted); FAILED(hr)) return hr;
    refs = narrowed ? Intersection(sorted, *narrowed) : std::move(sorted);
  }
  narrowed_ = narrowed;
  order_ = order;
  refs_ = std::move(refs);
  window_.clear();
  return S_OK;
}

// By name backward is the own order from its end: so are then the numbers of one contact, whose names differ too.
HRESULT StoreRows::ReadOrder(const std::vector<SortColumn>& order, Refs* refs) {
  const bool isReverse = order.size() == 1 && order[0].column == Column::kName;
  if (!isReverse) return view_->Order(order, refs);
  const HRESULT hr = view_->Refs(0, count_, refs);
  std::reverse(refs->begin(), refs->end());
  return hr;
}

// The table narrows and sorts again after a change.
ULONG StoreRows::Refresh() {
  bool changed = !view_;
  if (view_ && FAILED(view_->Refresh(&changed))) changed = true;
  if (!changed) return 0;
  LookAnew();
  narrowed_.reset();
  order_.clear();
  refs_.reset();
  return 1;
}

}  // namespace book
