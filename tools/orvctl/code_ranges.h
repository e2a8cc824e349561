// Ranges of characters in tables that are sorted and do not overlap.
#pragma once

#include <algorithm>
#include <iterator>

namespace orvctl {

struct Range {
  char32_t first, last;
};

template <size_t kSize>
bool IsIn(const Range (&ranges)[kSize], char32_t value) {
  const auto at = std::lower_bound(std::begin(ranges), std::end(ranges), value,
                                   [](const Range& range, char32_t wanted) { return range.last < wanted; });
  return at != std::end(ranges) && at->first <= value;
}

}  // namespace orvctl
