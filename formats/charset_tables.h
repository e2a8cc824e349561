// Character sets of one byte and of several, by tables that are made when the project is built.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace formats {

// The number of a character set by which Windows knows it, or one of ours; 0 for a name that is not known. Letter case and
// punctuation of the name do not matter.
unsigned CodePageOf(std::string_view charset);

struct DecodedText {
  std::string text;          // UTF-8
  bool isMalformed = false;  // some bytes are no character of the set; U+FFFD stands for them
};

// No value for a code page without a table.
std::optional<DecodedText> DecodeCodePage(std::string_view bytes, unsigned codePage);

}  // namespace formats
