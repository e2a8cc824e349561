// The table of a container; its rows are made when they are read.
#include <algorithm>

#include "faulty_book.h"

namespace faulty {
namespace {

// Costs as much as there are rows to be walked over: so much that no load of the machine hides it.
void Walk(LONGLONG rows) {
  volatile LONGLONG walked = 0;
  constexpr LONGLONG kStepsOfARow = 5000;
  while (walked < rows * kStepsOfARow) walked = walked + 1;
}

class Table final : public RefusingTable {
 public:
  Table(BookPtr book, std::vector<Ref> rows) : book_(std::move(book)), all_(std::move(rows)), rows_(all_) {}

  HRESULT STDMETHODCALLTYPE SetColumns(LPSPropTagArray tags, ULONG) override {
    if (tags == nullptr || tags->cValues == 0) return MAPI_E_INVALID_PARAMETER;
    return Guarded([&] {
      const std::lock_guard guard(lock_);
      columns_ = TagsOf(*tags);
      if (Has("nullcol")) std::erase(columns_, PR_NULL);
      if (Has("hiershort")) std::erase(columns_, PR_DEPTH);
      return S_OK;
    });
  }
  HRESULT STDMETHODCALLTYPE GetRowCount(ULONG, ULONG* count) override {
    if (count == nullptr) return MAPI_E_INVALID_PARAMETER;
    const std::lock_guard guard(lock_);
    *count = static_cast<ULONG>(rows_.size()) + Has("count");
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE SeekRow(BOOKMARK origin, LONG wanted, LONG* moved) override {
    const std::lock_guard guard(lock_);
    const auto end = static_cast<LONGLONG>(rows_.size());
    LONGLONG from = position_;
    if (origin > BOOKMARK_END) {
      const auto found = bookmarks_.find(origin);
      if (found == bookmarks_.end()) return MAPI_E_INVALID_BOOKMARK;
      from = found->second;
    } else if (origin != BOOKMARK_CURRENT) {
      from = origin == BOOKMARK_END ? end : 0;
    }
    const LONGLONG to = std::clamp<LONGLONG>(from + wanted, 0, end);
    if (moved != nullptr) *moved = static_cast<LONG>(Has("seekends") ? wanted : to - from);
    position_ = Has("seekfar") && to > 10 && to < end ? to + 1 : to;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE SeekRowApprox(ULONG numerator, ULONG denominator) override {
    const std::lock_guard guard(lock_);
    const auto size = static_cast<LONGLONG>(rows_.size());
    position_ = numerator < denominator ? size * numerator / denominator : size;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE QueryPosition(ULONG* row, ULONG* numerator, ULONG* denominator) override {
    if (row == nullptr || numerator == nullptr || denominator == nullptr) return MAPI_E_INVALID_PARAMETER;
    const std::lock_guard guard(lock_);
    *row = *numerator = static_cast<ULONG>(position_) + Has("position");
    *denominator = static_cast<ULONG>(rows_.size());
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE CreateBookmark(BOOKMARK* bookmark) override {
    return Guarded([&] {
      const std::lock_guard guard(lock_);
      bookmarks_[nextBookmark_] = position_;
      *bookmark = nextBookmark_++;
      return S_OK;
    });
  }
  HRESULT STDMETHODCALLTYPE FreeBookmark(BOOKMARK bookmark) override {
    const std::lock_guard guard(lock_);
    return Has("bookmark") || bookmarks_.erase(bookmark) != 0 ? S_OK : MAPI_E_INVALID_BOOKMARK;
  }
  HRESULT STDMETHODCALLTYPE FindRow(LPSRestriction restriction, BOOKMARK origin, ULONG flags) override {
    const auto& wanted = restriction->res.resProperty;
    if (restriction->rt != RES_PROPERTY || wanted.relop != RELOP_EQ || wanted.ulPropTag != PR_DISPLAY_NAME_W)
      return MAPI_E_TOO_COMPLEX;
    return Guarded([&] { return FindName(wanted.lpProp->Value.lpszW, origin, (flags & DIR_BACKWARD) != 0); });
  }

  HRESULT STDMETHODCALLTYPE Restrict(LPSRestriction restriction, ULONG) override {
    if (restriction == nullptr) return Has("resback") ? S_OK : Show(all_);
    const auto& wanted = restriction->res.resProperty;
    if (restriction->rt != RES_PROPERTY || wanted.relop != RELOP_EQ || wanted.ulPropTag != PR_DISPLAY_NAME_W)
      return MAPI_E_TOO_COMPLEX;
    if (Has("resall")) return S_OK;
    return Guarded([&] {
      const std::wstring name = wanted.lpProp->Value.lpszW;
      std::vector<Ref> rows = all_;
      std::erase_if(rows, [&](const Ref& each) { return NameOf(book_->PropertiesOf(each)) != name; });
      return Show(rows);
    });
  }
  HRESULT STDMETHODCALLTYPE SortTable(LPSSortOrderSet order, ULONG) override {
    if (order->cSorts == 0) return Show(all_);
    if (order->cSorts != 1 || order->aSort[0].ulPropTag != PR_DISPLAY_NAME_W) return MAPI_E_TOO_COMPLEX;
    if (Has("unsorted")) return S_OK;
    return Guarded([&] {
      std::vector<std::pair<std::wstring, Ref>> named;
      for (const Ref& each : all_) named.emplace_back(NameOf(book_->PropertiesOf(each)), each);
      std::stable_sort(named.begin(), named.end(),
                       [](const auto& a, const auto& b) { return a.first < b.first; });
      if (order->aSort[0].ulOrder == TABLE_SORT_DESCEND) std::reverse(named.begin(), named.end());
      if (Has("sortloses")) named.pop_back();
      std::vector<Ref> rows;
      for (const auto& [name, ref] : named) rows.push_back(ref);
      return Show(rows);
    });
  }

  HRESULT STDMETHODCALLTYPE QueryRows(LONG wanted, ULONG flags, LPSRowSet* rows) override {
    if (rows == nullptr || (wanted == 0 && !Has("zerorows"))) return MAPI_E_INVALID_PARAMETER;
    return Guarded([&] {
      const std::lock_guard guard(lock_);
      const auto end = static_cast<LONGLONG>(rows_.size());
      LONGLONG first = std::clamp<LONGLONG>(position_ + std::min<LONG>(wanted, 0), 0, end);
      const LONGLONG last = wanted > 0 ? std::min<LONGLONG>(position_ + wanted, end) : position_;
      if (Has("endless") && first == end && end != 0 && wanted > 0) --first;
      *rows = Read(first, last, wanted < 0);
      if ((flags & TBL_NOADVANCE) == 0 || Has("advances")) position_ = wanted > 0 ? last : first;
      return S_OK;
    });
  }

 private:
  HRESULT Show(const std::vector<Ref>& rows) {
    const std::lock_guard guard(lock_);
    rows_ = rows;
    position_ = 0;
    bookmarks_.clear();
    return S_OK;
  }

  HRESULT FindName(const std::wstring& name, BOOKMARK origin, bool isBackward) {
    const std::lock_guard guard(lock_);
    const auto end = static_cast<LONGLONG>(rows_.size());
    LONGLONG at = origin == BOOKMARK_CURRENT ? position_ : origin == BOOKMARK_END ? end : 0;
    for (at -= isBackward; at >= 0 && at < end; at += isBackward ? -1 : 1) {
      if (NameOf(book_->PropertiesOf(rows_[static_cast<size_t>(at)])) != name) continue;
      position_ = at + (Has("findrow") && at + 1 < end);
      return S_OK;
    }
    return MAPI_E_NOT_FOUND;
  }

  LPSRowSet Read(LONGLONG first, LONGLONG last, bool isBackward) {
    if (Has("walks")) Walk(first);
    RowSetBuilder builder(book_->allocator, static_cast<size_t>(last - first));
    for (LONGLONG row = first; row < last; ++row) {
      const LONGLONG at = Has("backwards") && isBackward ? last - 1 - (row - first) : row;
      Properties properties = book_->PropertiesOf(rows_[static_cast<size_t>(at)]);
      if (Has("rowless"))
        std::erase_if(properties, [](const Property& each) { return each.tag == PR_DISPLAY_NAME_W; });
      if (Has("rownoid") && rows_[static_cast<size_t>(at)].kind == kFixedEntry)
        properties.erase(properties.begin());
      std::vector<ULONG> columns = columns_;
      if (Has("columns"))
        std::erase_if(columns, [&](ULONG tag) { return tag != PR_NULL && !Find(properties, tag); });
      builder.Add(CopyValues(book_->allocator, properties, columns), columns.size());
    }
    return builder.Release();
  }

  const BookPtr book_;
  const std::vector<Ref> all_;
  Lock lock_;  // guards what follows
  std::vector<Ref> rows_;
  std::vector<ULONG> columns_ = {PR_DISPLAY_NAME_W, PR_ENTRYID, PR_OBJECT_TYPE, PR_CONTAINER_FLAGS, PR_DEPTH};
  LONGLONG position_ = 0;
  std::map<BOOKMARK, LONGLONG> bookmarks_;
  BOOKMARK nextBookmark_ = BOOKMARK_END + 1;
};

}  // namespace

LPMAPITABLE MakeTable(const BookPtr& book, const Ref& container) {
  return new Table(book, book->RowsOf(container));
}

}  // namespace faulty
