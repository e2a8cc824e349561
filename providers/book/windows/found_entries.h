// The order of entries that were found.
#pragma once

#include "providers/book/windows/directory.h"

namespace book {

// By name, as the user's language sorts.
void SortFound(std::vector<FoundEntry>* entries);

// Both come in that order, and so does what they become.
void MergeFound(std::vector<FoundEntry> more, std::vector<FoundEntry>* all);

}  // namespace book
