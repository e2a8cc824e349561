#include "providers/book/provider/member_rows.h"

#include <algorithm>

#include "providers/book/provider/row_values.h"

namespace book {
namespace {

constexpr size_t kWindow = 64;

}  // namespace

MemberRows::MemberRows(LocalBook& book, const EntryKey& list) : book_(book), list_(list) {
  LookAnew();
  book_.TableOpened();
}

void MemberRows::LookAnew() {
  const HRESULT hr = view_ ? S_OK : book_.OpenView(&store_, &view_);
  uint64_t count = 0;
  const bool isThere = SUCCEEDED(hr) && SUCCEEDED(view_->MemberCount(list_, &count));
  count_ = isThere ? static_cast<size_t>(count) : 0;
  window_.clear();
}

HRESULT MemberRows::Load(size_t row) {
  if (row >= windowStart_ && row - windowStart_ < window_.size()) return S_OK;
  std::vector<Member> members;
  const size_t first = row - row % kWindow;
  if (const HRESULT hr = view_->Members(list_, first, kWindow, &members); FAILED(hr)) return hr;
  window_ = std::move(members);
  windowStart_ = first;
  return row - first < window_.size() ? S_OK : MAPI_E_NOT_FOUND;
}

HRESULT MemberRows::RowAt(size_t row, std::span<const ULONG> columns, orv::sdk::ValueView* values) {
  if (const HRESULT hr = Load(row); FAILED(hr)) return hr;
  row_.Clear();
  const HRESULT hr = book_.DescribeMember(list_, window_[row - windowStart_], *view_, columns, row_);
  if (SUCCEEDED(hr)) *values = row_.View();
  return hr;
}

std::vector<ULONG> MemberRows::Columns() { return RowColumns(); }

ULONG MemberRows::Refresh() {
  bool changed = !view_;
  if (view_ && FAILED(view_->Refresh(&changed))) changed = true;
  if (!changed) return 0;
  LookAnew();
  return 1;
}

}  // namespace book
