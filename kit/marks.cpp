#include "marks.hpp"

#include <algorithm>

namespace orv::kit {

BOOKMARK Marks::Create() {
  while (next_ < kFirstOwn || own_.count(next_) != 0) ++next_;
  own_.emplace(next_, Mark{current_.position, false});
  return next_++;
}

void Marks::Reset() noexcept {
  own_.clear();
  current_ = {};
}

std::optional<size_t> Marks::Find(BOOKMARK bookmark, size_t count, bool* moved) noexcept {
  *moved = false;
  if (bookmark == BOOKMARK_BEGINNING) return 0;
  if (bookmark == BOOKMARK_END) return count;
  if (bookmark == BOOKMARK_CURRENT) return current_.position;
  const auto found = own_.find(bookmark);
  if (found == own_.end()) return std::nullopt;
  *moved = std::exchange(found->second.hasMoved, false);
  return found->second.position;
}

template <class Change>
void Marks::ForEach(const Change& change) noexcept {
  change(current_);
  for (auto& [bookmark, mark] : own_) change(mark);
}

// A mark at the end stays there, before the rows that are appended: whoever has read everything reads them next.
void Marks::Inserted(size_t position, size_t count) noexcept {
  ForEach([=](Mark& mark) {
    const bool isPushed = mark.position == position && mark.position < count;
    if (mark.position > position || isPushed) ++mark.position;
  });
}

void Marks::Removed(size_t position) noexcept {
  ForEach([=](Mark& mark) {
    mark.hasMoved = mark.hasMoved || mark.position == position;
    if (mark.position > position) --mark.position;
  });
}

void Marks::Moved(size_t from, size_t to) noexcept {
  ForEach([=](Mark& mark) {
    if (mark.position == from) {
      mark.position = to;
    } else if (from < mark.position && mark.position <= to) {
      --mark.position;
    } else if (to <= mark.position && mark.position < from) {
      ++mark.position;
    }
  });
}

// A mark on a row that moved goes with it. All others are counted off by the rows that left their places in front of
// them and by those that came there.
void Marks::Followed(const std::vector<FollowedRow>& rows, size_t count) {
  std::map<size_t, size_t> left;
  std::vector<size_t> arrived;
  for (const FollowedRow& each : rows) {
    if (each.before == each.after) continue;
    if (each.before != FollowedRow::kNowhere) left.emplace(each.before, each.after);
    if (each.after != FollowedRow::kNowhere) arrived.push_back(each.after);
  }
  std::sort(arrived.begin(), arrived.end());
  ForEach([&](Mark& mark) {
    const bool isAtEnd = mark.position == count;
    const auto own = left.find(mark.position);
    const bool hasMoved = own != left.end() && own->second != FollowedRow::kNowhere;
    mark.hasMoved = mark.hasMoved || (own != left.end() && !hasMoved);
    size_t position = mark.position;
    position -= static_cast<size_t>(std::distance(left.begin(), left.lower_bound(mark.position)));
    for (const size_t each : arrived) position += each < position || (each == position && !isAtEnd);
    mark.position = hasMoved ? own->second : position;
  });
}

void Marks::AllChanged(size_t count) noexcept {
  ForEach([=](Mark& mark) { mark = {std::min(mark.position, count), true}; });
}

}  // namespace orv::kit
