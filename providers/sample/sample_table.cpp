#include "sample_table.h"

#include <algorithm>
#include <mutex>

namespace sample {
namespace {

class Table final : public orv::sdk::RefusingTable {
 public:
  Table(BookPtr book, Rows rows, Tags columns)
      : book_(std::move(book)), rows_(std::move(rows)), all_(columns), columns_(std::move(columns)) {}

  HRESULT STDMETHODCALLTYPE SetColumns(LPSPropTagArray tags, ULONG) override {
    if (tags == nullptr || tags->cValues == 0) return MAPI_E_INVALID_PARAMETER;
    return Guarded([&] {
      Tags columns = TagsOf(*tags);
      const std::lock_guard guard(lock_);
      columns_.swap(columns);
      return S_OK;
    });
  }

  HRESULT STDMETHODCALLTYPE QueryColumns(ULONG flags, LPSPropTagArray* tags) override {
    if (tags == nullptr) return MAPI_E_INVALID_PARAMETER;
    return Guarded([&] {
      const std::lock_guard guard(lock_);
      const Tags& columns = (flags & TBL_ALL_COLUMNS) != 0 ? all_ : columns_;
      *tags = static_cast<LPSPropTagArray>(book_->allocator().CopyTags(columns).release());
      return S_OK;
    });
  }

  HRESULT STDMETHODCALLTYPE GetRowCount(ULONG, ULONG* count) override {
    if (count == nullptr) return MAPI_E_INVALID_PARAMETER;
    *count = static_cast<ULONG>(rows_.count);
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE SeekRow(BOOKMARK origin, LONG wanted, LONG* moved) override {
    if (origin > BOOKMARK_END) return MAPI_E_INVALID_BOOKMARK;
    const std::lock_guard guard(lock_);
    const auto end = static_cast<LONGLONG>(rows_.count);
    LONGLONG from = static_cast<LONGLONG>(position_);
    if (origin != BOOKMARK_CURRENT) from = origin == BOOKMARK_END ? end : 0;
    const LONGLONG to = std::clamp<LONGLONG>(from + wanted, 0, end);
    if (moved != nullptr) *moved = static_cast<LONG>(to - from);
    position_ = static_cast<size_t>(to);
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE SeekRowApprox(ULONG numerator, ULONG denominator) override {
    const std::lock_guard guard(lock_);
    position_ = numerator < denominator ? rows_.count * numerator / denominator : rows_.count;
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE QueryPosition(ULONG* row, ULONG* numerator, ULONG* denominator) override {
    if (row == nullptr || numerator == nullptr || denominator == nullptr) return MAPI_E_INVALID_PARAMETER;
    const std::lock_guard guard(lock_);
    *row = *numerator = static_cast<ULONG>(position_);
    *denominator = static_cast<ULONG>(rows_.count);
    return S_OK;
  }

  // Rows from the position on, or before it for a negative number; in table order either way.
  HRESULT STDMETHODCALLTYPE QueryRows(LONG wanted, ULONG flags, LPSRowSet* rows) override {
    if (wanted == 0 || rows == nullptr) return MAPI_E_INVALID_PARAMETER;
    return Guarded([&] {
      const std::lock_guard guard(lock_);
      const auto span = static_cast<size_t>(wanted < 0 ? -LONGLONG{wanted} : LONGLONG{wanted});
      const size_t first = wanted > 0 ? position_ : position_ - std::min(span, position_);
      const size_t last = wanted > 0 ? position_ + std::min(span, rows_.count - position_) : position_;
      orv::sdk::RowSetBuilder builder(book_->allocator(), last - first);
      for (size_t row = first; row < last; ++row) {
        builder.Add(CopyValues(book_->allocator(), rows_.at(row, columns_), columns_), columns_.size());
      }
      *rows = builder.Release();
      if ((flags & TBL_NOADVANCE) == 0) position_ = wanted > 0 ? last : first;
      return S_OK;
    });
  }

 private:
  const BookPtr book_;
  const Rows rows_;
  const Tags all_;
  orv::sdk::Lock lock_;  // guards the two below
  Tags columns_;
  size_t position_ = 0;  // of the row that is read next
};

}  // namespace

LPMAPITABLE MakeTable(const BookPtr& book, const Rows& rows, Tags columns) {
  return new Table(book, rows, std::move(columns));
}

}  // namespace sample
