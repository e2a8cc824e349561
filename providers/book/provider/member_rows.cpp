#include "providers/book/provider/member_rows.h"

#include <algorithm>
#include <map>

#include "providers/book/provider/row_values.h"
#include "providers/book/provider/words.h"

namespace book {
namespace {

constexpr size_t kWindow = 64;
constexpr size_t kMostFollowed = 256;

bool IsShownAlike(const Member& one, const Member& other) {
  return one.isGone == other.isGone && one.row.version == other.row.version &&
         AreNamedAlike(one.row, other.row);
}

}  // namespace

MemberRows::MemberRows(LocalBook& book, const EntryKey& list) : book_(book), list_(list) {
  LookAnew();
  book_.TableOpened();
}

// A book that cannot be opened shows no members. Where one is open, members that cannot be told must not be passed over.
void MemberRows::LookAnew() {
  failure_ = view_ ? S_OK : book_.OpenView(&store_, &view_);
  if (!store_) failure_ = S_OK;
  uint64_t count = 0;
  if (view_) failure_ = view_->MemberCount(list_, &count);
  count_ = SUCCEEDED(failure_) ? static_cast<size_t>(count) : 0;
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

// Members are few as a rule: both looks are gone through.
std::optional<std::vector<kit::FollowedRow>> MemberRows::Follow() {
  if (!view_ || FAILED(failure_) || !view_->IsSnapshot()) return std::nullopt;
  std::vector<kit::FollowedRow> followed;
  int64_t last = 0;
  if (SUCCEEDED(store_->LastChange(&last)) && last == view_->LastChange()) return followed;
  std::unique_ptr<View> newer;
  if (FAILED(store_->OpenView(&newer)) || !CompareMembers(*newer, &followed)) return std::nullopt;
  uint64_t count = 0;
  if (FAILED(newer->MemberCount(list_, &count))) return std::nullopt;
  view_ = std::move(newer);
  count_ = static_cast<size_t>(count);
  window_.clear();
  return followed;
}

bool MemberRows::CompareMembers(View& newer, std::vector<kit::FollowedRow>* followed) {
  std::vector<Member> before, after;
  if (count_ > kMostFollowed || FAILED(view_->Members(list_, 0, kMostFollowed, &before)) ||
      FAILED(newer.Members(list_, 0, kMostFollowed + 1, &after)) || after.size() > kMostFollowed)
    return false;
  // By identifiers: one that has gone, or has got a second number, has another.
  std::map<std::vector<BYTE>, size_t> former;
  for (size_t i = 0; i < before.size(); ++i) former.emplace(book_.KeyOfMember(list_, before[i]), i);
  for (size_t i = 0; i < after.size(); ++i) {
    const auto known = former.find(book_.KeyOfMember(list_, after[i]));
    const size_t place = known != former.end() ? known->second : kit::FollowedRow::kNowhere;
    if (known != former.end()) former.erase(known);
    const bool isSame = place == i && IsShownAlike(before[place], after[i]);
    if (!isSame) followed->push_back({place, i, {}});
  }
  for (const auto& [key, place] : former) followed->push_back({place, kit::FollowedRow::kNowhere, key});
  return true;
}

}  // namespace book
