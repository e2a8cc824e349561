#include "providers/book/windows/found_entries.h"

#include <algorithm>
#include <iterator>

#include "providers/book/text.h"

namespace book {
namespace {

void MakeKeys(std::vector<FoundEntry>* entries) {
  const SortKeys keys = SortKeys::OfUser();
  for (FoundEntry& each : *entries) each.sort = keys.Key(ToUtf8(each.name));
}

bool ComesBefore(const FoundEntry& one, const FoundEntry& other) { return one.sort < other.sort; }

}  // namespace

void SortFound(std::vector<FoundEntry>* entries) {
  MakeKeys(entries);
  std::stable_sort(entries->begin(), entries->end(), ComesBefore);
}

void MergeFound(std::vector<FoundEntry> more, std::vector<FoundEntry>* all) {
  MakeKeys(&more);
  const auto middle = static_cast<std::ptrdiff_t>(all->size());
  std::move(more.begin(), more.end(), std::back_inserter(*all));
  std::inplace_merge(all->begin(), all->begin() + middle, all->end(), ComesBefore);
}

}  // namespace book
