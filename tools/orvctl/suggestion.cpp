#include "tools/orvctl/suggestion.h"

#include <algorithm>
#include <numeric>

namespace orvctl {
namespace {

// Letters put in, taken out, replaced, or swapped with the next one.
size_t Changes(std::string_view a, std::string_view b) {
  std::vector<size_t> before(b.size() + 1), last(b.size() + 1), now(b.size() + 1);
  std::iota(last.begin(), last.end(), size_t{0});
  for (size_t i = 1; i <= a.size(); ++i) {
    now[0] = i;
    for (size_t j = 1; j <= b.size(); ++j) {
      const size_t replaced = last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
      now[j] = std::min({replaced, last[j] + 1, now[j - 1] + 1});
      const bool isSwap = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
      if (isSwap) now[j] = std::min(now[j], before[j - 2] + 1);
    }
    before.swap(last);
    last.swap(now);
  }
  return last[b.size()];
}

}  // namespace

std::string ClosestWord(std::string_view word, const std::vector<std::string>& known) {
  constexpr size_t kLettersToOneChange = 3;
  const auto isCloser = [&](const std::string& a, const std::string& b) {
    return Changes(word, a) < Changes(word, b);
  };
  const auto closest = std::min_element(known.begin(), known.end(), isCloser);
  const size_t most = std::max(word.size() / kLettersToOneChange, size_t{1});
  return closest != known.end() && Changes(word, *closest) <= most ? *closest : std::string();
}

}  // namespace orvctl
