// What somebody who mistyped a word may have meant.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orvctl {

// The known word that takes the fewest changes, at most one in three letters; empty where none is that close.
std::string ClosestWord(std::string_view word, const std::vector<std::string>& known);

}  // namespace orvctl
