// The order of entries that were found.
#pragma once

#include "providers/book/windows/directory.h"

namespace book {

// Both come as the user's language sorts their names, and so does what they become; of one name those of `all` first.
void MergeFound(std::vector<FoundEntry> more, std::vector<FoundEntry>* all);

}  // namespace book
