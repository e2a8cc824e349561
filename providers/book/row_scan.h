// Searches that very many rows answer: these are gone through in their order, where sorting the hits would take longer.
#pragma once

#include <algorithm>
#include <bitset>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "providers/book/arrangement.h"
#include "providers/book/types.h"

namespace book {

// More hits than these are not sorted for the sake of a few rows: these are come by soonest by going through the rows
// from the first on, for as long as that takes no longer.
inline constexpr std::size_t kFewRows = 256;
inline constexpr int64_t kManyHits = 4000;
inline constexpr int64_t kMostWalked = 8000;

// As the engine takes it.
inline int64_t Limit(std::size_t limit) {
  return static_cast<int64_t>(std::min<std::size_t>(limit, INT64_MAX));
}

inline RowRef RefIn(const Query& query) { return {query.Integer(0), static_cast<int32_t>(query.Integer(1))}; }

inline std::vector<RowRef> RowsOf(Query& query) {
  std::vector<RowRef> rows;
  while (query.Next()) rows.push_back(RefIn(query));
  return rows;
}

// Entries by their number. They lie close together, so a bit each is enough.
class EntrySet {
 public:
  // False where it was there.
  bool Insert(int64_t id) {
    auto bit = stretches_[id / kStretch][static_cast<std::size_t>(id % kStretch)];
    const bool isNew = !bit;
    bit = true;
    return isNew;
  }
  bool Contains(int64_t id) const {
    const auto stretch = stretches_.find(id / kStretch);
    return stretch != stretches_.end() && stretch->second[static_cast<std::size_t>(id % kStretch)];
  }

 private:
  static constexpr int64_t kStretch = 4096;
  std::unordered_map<int64_t, std::bitset<kStretch>> stretches_;
};

// Of all rows, in their order.
template <class IsWanted>
std::vector<RowRef> RowsWhere(Database& database, const Arrangement& arrangement, const IsWanted& isWanted) {
  std::vector<RowRef> rows;
  Query all(database,
            "SELECT entry, ordinal FROM row WHERE sort >= ? AND sort < ? ORDER BY sort, entry, ordinal",
            BytesOf(arrangement.begin()), BytesOf(arrangement.end()));
  while (all.Next()) {
    if (const RowRef row = RefIn(all); isWanted(row)) rows.push_back(row);
  }
  return rows;
}

}  // namespace book
