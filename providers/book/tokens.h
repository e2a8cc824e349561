// Words as the index of words takes texts apart.
#pragma once

#include <string>
#include <string_view>

#include "providers/book/database.h"

namespace book {

// What is asked of the index for entries in which each of `words` begins a word. Empty where there is no word.
std::string MatchOfWords(Database& database, std::string_view words);

}  // namespace book
