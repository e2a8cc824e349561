// How listings are laid out for people.
#include "tools/orvctl/listing.h"

#include <gtest/gtest.h>

namespace orvctl {
namespace {

Listing Of(std::string name, std::string note) {
  return {{{"name", "Name"}, {"note", "Note"}, {"id"}},
          {{"a", "b", "1"}, {std::move(name), std::move(note), "2"}}};
}

std::string Text(size_t terminalWidth, Listing listing, bool wraps = false) {
  listing.wraps = wraps;
  return ToText(Report::Of(std::move(listing), ""), terminalWidth);
}

std::string Many(size_t count, const std::string& text) {
  std::string all;
  for (size_t i = 0; i < count; ++i) all += text;
  return all;
}

TEST(Listing, AHugeCellNeitherIsCutInAPipeNorPadsTheOthers) {
  const std::string huge = Many(1000, "x");
  EXPECT_EQ("Name" + Many(58, " ") + "Note\n" + Many(60, "-") + "  ----\na" + Many(61, " ") + "b\n" + huge +
                "  n\n",
            Text(0, Of(huge, "n")));
}

TEST(Listing, OnATerminalEachLineFits) {
  // Wide characters are never halved.
  EXPECT_EQ(
      "Name      Note\n--------  --------\na         b\nxxxxxxx\xE2\x80\xA6  "
      "\xE4\xBD\x90\xE4\xBD\x90\xE4\xBD\x90\xE2\x80\xA6\n",
      Text(19, Of(Many(30, "x"), Many(20, "\xE4\xBD\x90"))));
  // One that is too narrow for anything gets what there is.
  EXPECT_EQ("Name      Note\n--------  --------\na         b\nxxxxxxx\xE2\x80\xA6  yyyyyyy\xE2\x80\xA6\n",
            Text(5, Of(Many(30, "x"), Many(30, "y"))));
}

TEST(Listing, TheLastColumnGoesOnBelowItself) {
  const std::string text = Text(0, Of("n", Many(40, "word ") + Many(200, "y")), true);
  EXPECT_NE(text.find("n     word word"), std::string::npos);
  size_t begin = 0, longest = 0;
  for (size_t end = text.find('\n'); end != std::string::npos; begin = end + 1, end = text.find('\n', begin))
    longest = std::max(longest, end - begin);
  EXPECT_EQ(120u, longest);
  EXPECT_NE(text.find("\n      word"), std::string::npos);
}

TEST(Listing, ColumnsOfATerminal) {
  const struct {
    const char* text;
    size_t columns;
  } cases[] = {{"", 0},
               {"a\xCC\x88", 1},                                     // ä in two
               {"\xE4\xBD\x90\xE8\x97\xA4", 4},                      // CJK
               {"\xE1\x84\x92\xE1\x85\xA1\xE1\x86\xAB", 2},          // Jamo, one syllable
               {"\xD7\xA9\xD6\xB8", 1},                              // Hebrew with its vowel
               {"\xE0\xB8\x97\xE0\xB8\xB5\xE0\xB9\x88", 1},          // Thai, vowel and tone
               {"\xE0\xA4\xA8\xE0\xA5\x8D\xE0\xA4\xA6", 2},          // Devanagari, joined
               {"\xF0\x9F\x91\x8D\xF0\x9F\x8F\xBD", 2},              // emoji with its tone
               {"\xF0\x9F\x91\xA9\xE2\x80\x8D\xF0\x9F\x92\xBB", 2},  // joined emoji
               {"\xE2\x9D\xA4\xEF\xB8\x8F", 2},                      // drawn as emoji
               {"\xC2\xAD", 1}};
  for (const auto& each : cases) EXPECT_EQ(each.columns, DisplayWidth(each.text)) << each.text;
}

}  // namespace
}  // namespace orvctl
