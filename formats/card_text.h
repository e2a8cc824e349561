// The texts of a card's lines: cleaned for a contact, and escaped for version 4.0.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "formats/vcard_lines.h"

namespace formats {

enum class TextLayout { kOneLine, kManyLines };

// Whether a control character from U+0080 to U+009F, which are C2 and their own number, stands at `at`.
bool IsHighControl(std::string_view text, std::size_t at);

// Without control characters and blanks at its ends; tabs are blanks. On one line every run of blanks and line ends is
// one blank; otherwise line ends are line feeds. `text` is UTF-8.
std::string CleanText(std::string_view text, TextLayout layout);
// Whether CleanText on one line would change nothing.
bool IsCleanText(std::string_view text);

// Removes the prefix as often as it stands there, whatever the case of its letters.
std::string_view StripPrefix(std::string_view text, std::string_view prefix);

// Backslashes, commas, semicolons and line feeds, as versions 3.0 and 4.0 write them.
void AppendEscaped(std::string* out, std::string_view text);

}  // namespace formats
