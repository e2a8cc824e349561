#include "providers/book/windows/found_entries.h"

#include <algorithm>
#include <iterator>

#include "providers/book/text.h"

namespace book {
namespace {

bool ComesBefore(const FoundEntry& one, const FoundEntry& other) { return one.sort < other.sort; }

}  // namespace

void MergeFound(std::vector<FoundEntry> more, std::vector<FoundEntry>* all) {
  const SortKeys keys = SortKeys::OfUser();
  for (FoundEntry& each : more) {
    if (each.sort.empty()) each.sort = keys.Key(ToUtf8(each.name));
  }
  const auto middle = static_cast<std::ptrdiff_t>(all->size());
  std::move(more.begin(), more.end(), std::back_inserter(*all));
  std::inplace_merge(all->begin(), all->begin() + middle, all->end(), ComesBefore);
}

}  // namespace book
