// How many columns of a terminal a text takes.
#include "formats/text_codec.h"
#include "tools/orvctl/code_ranges.h"
#include "tools/orvctl/listing.h"

namespace orvctl {
namespace {

#include "tools/orvctl/width_ranges.inc"

constexpr char32_t kJoiner = 0x200D, kAsEmoji = 0xFE0F;
constexpr Range kSkinTones[] = {{0x1F3FB, 0x1F3FF}};

size_t ColumnsOf(char32_t value) {
  if (IsIn(kNoColumn, value)) return 0;
  return IsIn(kTwoColumns, value) ? 2 : 1;
}

}  // namespace

// Emoji that are joined, and one with its skin tone, are drawn as a single one.
size_t DisplayWidth(std::string_view utf8) {
  if (IsPlainAscii(utf8)) return utf8.size();
  size_t width = 0, last = 0;
  char32_t before = 0;
  for (size_t at = 0; at < utf8.size();) {
    const char32_t value = formats::NextCodePoint(utf8, at);
    const bool isPart = last == 2 && (before == kJoiner || IsIn(kSkinTones, value));
    const size_t columns = isPart ? 0 : ColumnsOf(value);
    const bool isWidened = value == kAsEmoji && last == 1;
    width += columns + (isWidened ? 1 : 0);
    if (isWidened) last = 2;
    if (columns != 0) last = columns;
    before = value;
  }
  return width;
}

}  // namespace orvctl
