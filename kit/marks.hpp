// Places in a table that stay with their rows: the current position and the bookmarks of clients.
#pragma once

#include <map>
#include <optional>

#include "orv/kit/rows.hpp"

namespace orv::kit {

class Marks {
 public:
  static constexpr BOOKMARK kFirstOwn = BOOKMARK_END + 1;

  size_t Current() const noexcept { return current_.position; }
  void SetCurrent(size_t position) noexcept { current_ = {position, false}; }

  // Marks the current position; throws std::bad_alloc.
  BOOKMARK Create();
  bool Free(BOOKMARK bookmark) noexcept { return own_.erase(bookmark) != 0; }
  size_t Size() const noexcept { return own_.size(); }
  // Back to the beginning, without bookmarks.
  void Reset() noexcept;

  // Where a bookmark stands in a table of that many rows, a fixed one too; nothing when there is no such. *moved tells
  // once that its row has gone.
  std::optional<size_t> Find(BOOKMARK bookmark, size_t count, bool* moved) noexcept;

  // What happened to rows; `count` is the number of rows before.
  void Inserted(size_t position, size_t count) noexcept;
  void Removed(size_t position) noexcept;
  void Moved(size_t from, size_t to) noexcept;
  // All at once; throws std::bad_alloc before anything is done.
  void Followed(const std::vector<FollowedRow>& rows, size_t count);
  void AllChanged(size_t count) noexcept;

 private:
  struct Mark {
    size_t position = 0;
    bool hasMoved = false;
  };
  template <class Change>
  void ForEach(const Change& change) noexcept;

  Mark current_;
  std::map<BOOKMARK, Mark> own_;
  BOOKMARK next_ = kFirstOwn;
};

}  // namespace orv::kit
