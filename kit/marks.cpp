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

void Marks::AllChanged(size_t count) noexcept {
  ForEach([=](Mark& mark) { mark = {std::min(mark.position, count), true}; });
}

}  // namespace orv::kit
