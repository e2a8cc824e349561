#include "providers/book/provider/store_rows.h"

#include <algorithm>

#include "providers/book/provider/row_follow.h"
#include "providers/book/provider/row_search.h"
#include "providers/book/provider/row_values.h"
#include "providers/book/text.h"

namespace book {
namespace {

// Rows read at once, from a multiple of it on, so that reading backward is as quick.
constexpr size_t kWindow = 64;
// Mostly the row that is looked for is among the first ones that fit.
constexpr size_t kFirstMatches = 64;

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

bool IsBeginningOfName(const SRestriction& one) {
  constexpr ULONG kModeBits = 0xFFFF;
  const auto& content = one.res.resContent;
  return one.rt == RES_CONTENT && (content.ulFuzzyLevel & kModeBits) == FL_PREFIX &&
         IsName(content.ulPropTag) && PROP_TYPE(content.lpProp->ulPropTag) == PT_UNICODE;
}

// By name backward is the own order from its end: so are then the numbers of one contact, whose names differ too.
HRESULT ReadOrder(View& view, uint64_t count, const std::vector<SortColumn>& order,
                  std::vector<RowRef>* refs) {
  const bool isReverse = order.size() == 1 && order[0].column == Column::kName;
  if (!isReverse) return view.Order(order, refs);
  const HRESULT hr = view.Refs(0, static_cast<size_t>(count), refs);
  std::reverse(refs->begin(), refs->end());
  return hr;
}

}  // namespace

StoreRows::StoreRows(LocalBook& book) : book_(book) {
  LookAnew();
  book_.TableOpened();
}

// A book that cannot be opened shows no rows; its container says why.
void StoreRows::LookAnew() {
  failure_ = view_ ? S_OK : book_.OpenView(&store_, &view_);
  if (!store_) failure_ = S_OK;
  uint64_t count = 0;
  if (view_) failure_ = view_->Count(&count);
  count_ = SUCCEEDED(failure_) ? static_cast<size_t>(count) : 0;
  window_.clear();
}

HRESULT StoreRows::Load(size_t row) {
  if (row >= windowStart_ && row - windowStart_ < window_.size()) return S_OK;
  const size_t first = row - row % kWindow, count = std::min(kWindow, Count() - first);
  std::vector<Row> rows;
  HRESULT hr = S_OK;
  if (shown_.refs) {
    hr = view_->Rows(std::span(*shown_.refs).subspan(first, count), &rows);
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

std::optional<size_t> StoreRows::Seek(ULONG column, const SPropValue& key, bool isPrefix) {
  const bool isByName = !shown_.refs && view_ && IsName(column) &&
                        IsName(CHANGE_PROP_TYPE(key.ulPropTag, PT_UNICODE)) &&
                        PROP_TYPE(key.ulPropTag) == PT_UNICODE && key.Value.lpszW != nullptr;
  if (!isByName) return std::nullopt;
  uint64_t first = 0, end = 0;
  if (FAILED(view_->SeekName(ToUtf8(key.Value.lpszW), &first, &end))) return std::nullopt;
  // Nobody is listed so: who is called so in another form is looked for by Find.
  if (isPrefix && first == end) return std::nullopt;
  return static_cast<size_t>(first);
}

std::optional<size_t> StoreRows::Find(const kit::Restriction& restriction, size_t start, bool isBackward) {
  if (!view_ || restriction.IsEmpty()) return std::nullopt;
  if (isBackward && !shown_.refs && IsBeginningOfName(*restriction.Get())) {
    if (const std::optional<size_t> last = FindLastBeginning(restriction, start)) return last;
  }
  Refs found;
  if (!isBackward && !shown_.refs) {
    if (FAILED(FindMatches(*restriction.Get(), kFirstMatches, &found))) return std::nullopt;
    const std::optional<size_t> first = PlaceOfFirst(found, start);
    if (!first || *first < count_ || found.size() < kFirstMatches) return first;
    found.clear();
  }
  if (FAILED(FindMatches(*restriction.Get(), count_, &found))) return std::nullopt;
  return isBackward ? PlaceOfLast(found, start) : PlaceOfFirst(found, start);
}

// The first of what an index of the store leads to; MAPI_E_NO_SUPPORT for all else.
HRESULT StoreRows::FindMatches(const SRestriction& restriction, size_t most, Refs* found) {
  if (const std::optional<kit::EntryRef> wanted = book_.WantedBy(restriction)) {
    const std::optional<RowKey> key = RowKeyOf(*wanted);
    Row row;
    const HRESULT hr = key ? view_->RowOf(*key, &row) : MAPI_E_NOT_FOUND;
    if (SUCCEEDED(hr) && RefOfRow(row) == *wanted) found->push_back(row.ref);
    return hr == MAPI_E_NOT_FOUND ? S_OK : hr;
  }
  if (!RowSearch::IsIndexed(restriction)) return MAPI_E_NO_SUPPORT;
  return RowSearch(book_, *view_, count_).FindFirst(restriction, most, found);
}

// Names that begin so lie together, and what is asked for besides is looked for among them; nothing where there are none.
std::optional<size_t> StoreRows::FindLastBeginning(const kit::Restriction& restriction, size_t start) {
  uint64_t first = 0, end = 0;
  const SPropValue& name = *restriction.Get()->res.resContent.lpProp;
  if (FAILED(view_->SeekName(ToUtf8(name.Value.lpszW), &first, &end))) return std::nullopt;
  if (first == end) return std::nullopt;
  const std::vector<ULONG> columns = restriction.Tags();
  for (uint64_t row = std::min<uint64_t>(end, uint64_t{start} + 1); row-- > first;) {
    orv::sdk::ValueView values(nullptr, 0);
    if (FAILED(RowAt(static_cast<size_t>(row), columns, &values))) return std::nullopt;
    if (restriction.Holds(values)) return static_cast<size_t>(row);
  }
  return count_;
}

// What was found is in the store's order: the first that does not stand in front of the start.
std::optional<size_t> StoreRows::PlaceOfFirst(const Refs& found, size_t start) {
  if (shown_.refs) {
    const Refs& refs = *shown_.refs;
    const auto from = refs.begin() + static_cast<std::ptrdiff_t>(std::min(start, refs.size()));
    return static_cast<size_t>(FirstAmong(from, refs.end(), found) - refs.begin());
  }
  bool hasFailed = false;
  const auto first = std::partition_point(found.begin(), found.end(), [&](const RowRef& each) {
    uint64_t position = 0;
    hasFailed = hasFailed || FAILED(view_->PositionOf(each, &position));
    return position < start;
  });
  uint64_t position = count_;
  hasFailed = hasFailed || (first != found.end() && FAILED(view_->PositionOf(*first, &position)));
  return hasFailed ? std::nullopt : std::optional(static_cast<size_t>(position));
}

std::optional<size_t> StoreRows::PlaceOfLast(const Refs& found, size_t start) {
  if (shown_.refs) {
    const Refs& refs = *shown_.refs;
    const auto skipped = static_cast<std::ptrdiff_t>(refs.size() - std::min(start + 1, refs.size()));
    const auto last = FirstAmong(refs.rbegin() + skipped, refs.rend(), found);
    return last == refs.rend() ? refs.size() : static_cast<size_t>(refs.rend() - last) - 1;
  }
  bool hasFailed = false;
  uint64_t position = 0;
  const auto behind = std::partition_point(found.begin(), found.end(), [&](const RowRef& each) {
    hasFailed = hasFailed || FAILED(view_->PositionOf(each, &position));
    return position <= start;
  });
  if (hasFailed) return std::nullopt;
  if (behind == found.begin()) return count_;
  if (FAILED(view_->PositionOf(*(behind - 1), &position))) return std::nullopt;
  return static_cast<size_t>(position);
}

bool StoreRows::Sort(const std::vector<SSortOrder>& order) {
  const auto columns = ColumnsOf(order);
  if (!columns) return false;
  if (order_.empty() && columns->empty()) return true;
  Selection shown{shown_.narrowed, {}};
  if (view_ && FAILED(Arrange(*view_, count_, *columns, &shown))) return false;
  shown_ = std::move(shown);
  order_ = *columns;
  window_.clear();
  return true;
}

bool StoreRows::Narrow(const kit::Restriction& restriction) {
  if (restriction.IsEmpty() && restriction_.IsEmpty()) return true;
  Selection shown;
  kit::Restriction kept;
  if (!view_ && !restriction.IsEmpty()) return false;
  if (view_ && (FAILED(FindRefs(*view_, count_, restriction, &shown)) ||
                FAILED(Arrange(*view_, count_, order_, &shown))))
    return false;
  if (FAILED(kit::Restriction::Copy(restriction.Get(), &kept))) return false;
  restriction_ = std::move(kept);
  shown_ = std::move(shown);
  window_.clear();
  return true;
}

HRESULT StoreRows::FindRefs(View& view, uint64_t count, const kit::Restriction& restriction,
                            Selection* shown) const {
  if (restriction.IsEmpty()) return S_OK;
  RowSearch search(book_, view, static_cast<size_t>(count));
  return search.Find(*restriction.Get(), &shown->narrowed.emplace());
}

HRESULT StoreRows::Arrange(View& view, uint64_t count, const std::vector<SortColumn>& order,
                           Selection* shown) const {
  shown->refs = shown->narrowed;
  if (order.empty()) return S_OK;
  Refs sorted;
  if (const HRESULT hr = ReadOrder(view, count, order, &sorted); FAILED(hr)) return hr;
  shown->refs = shown->narrowed ? Intersection(sorted, *shown->narrowed) : std::move(sorted);
  return S_OK;
}

// The table narrows and sorts again after a change.
ULONG StoreRows::Refresh() {
  bool changed = !view_;
  if (view_ && FAILED(view_->Refresh(&changed))) changed = true;
  if (!changed) return 0;
  LookAnew();
  restriction_ = {};
  order_.clear();
  shown_ = {};
  return 1;
}

bool StoreRows::IsUnchanged() const {
  int64_t last = 0;
  return SUCCEEDED(store_->LastChange(&last)) && last == view_->LastChange();
}

// The new look is taken beside the old one, since places in the table are told of both.
std::optional<std::vector<kit::FollowedRow>> StoreRows::Follow() {
  if (!view_ || FAILED(failure_)) return std::nullopt;
  std::vector<kit::FollowedRow> followed;
  if (IsUnchanged()) return followed;
  std::unique_ptr<View> newer;
  uint64_t count = 0;
  Selection shown;
  if (FAILED(store_->OpenView(&newer)) || FAILED(newer->Count(&count)) ||
      FAILED(FindRefs(*newer, count, restriction_, &shown)) || FAILED(Arrange(*newer, count, order_, &shown)))
    return std::nullopt;
  std::vector<Row> gone;
  const auto refsOf = [](const Selection& each) { return each.refs ? &*each.refs : nullptr; };
  if (!FollowRows({*view_, refsOf(shown_)}, {*newer, refsOf(shown)}, &followed, &gone)) return std::nullopt;
  for (size_t i = 0; i < gone.size(); ++i) followed[i].key = book_.Ids().Make(RefOfRow(gone[i]));
  view_ = std::move(newer);
  count_ = static_cast<size_t>(count);
  shown_ = std::move(shown);
  window_.clear();
  return followed;
}

}  // namespace book
