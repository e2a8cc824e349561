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

}  // namespace
}  // namespace orvctl
