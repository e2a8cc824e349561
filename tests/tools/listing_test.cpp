// Tables for people, JSON for machines.
#include "tools/orvctl/listing.h"

#include <gtest/gtest.h>

namespace orvctl {
namespace {

TEST(Listing, ColumnsAlignByWhatTheTerminalShows) {
  Listing listing{{{"name", "Name"}, {"id"}, {"fax", "Fax"}}, {}};
  listing.rows.push_back({"\xE4\xBD\x90\xE8\x97\xA4", "1", "+81"});  // two wide characters
  listing.rows.push_back({"J\xC3\xBCrgen", "2", ""});
  listing.rows.push_back({"e\xCC\x81", "3", Cell::Number(7)});  // a letter and its accent
  EXPECT_EQ(ToText(Report::Of(listing, "nothing")),
            "Name    Fax\n"
            "------  ---\n"
            "\xE4\xBD\x90\xE8\x97\xA4    +81\n"
            "J\xC3\xBCrgen\n"
            "e\xCC\x81       7\n");
  const Json json = Json::parse(ToJson(Report::Of(listing, "nothing")));
  ASSERT_EQ(json.size(), 3u);
  EXPECT_EQ(json[0], (Json{{"name", "\xE4\xBD\x90\xE8\x97\xA4"}, {"id", "1"}, {"fax", "+81"}}));
  EXPECT_EQ(json[2]["fax"], 7);
}

TEST(Listing, ForeignTextCannotReachTheTerminal) {
  EXPECT_EQ(Printable("a\nb\tc\x1B[2J\x7F \xC2\x9B \xC2\xA9"), "a\\nb\\tc\\x1B[2J\\x7F \\x9B \xC2\xA9");
  Listing listing{{{"name", "Name"}}, {{"two\nlines"}, {"x"}}};
  EXPECT_EQ(ToText(Report::Of(listing, "")), "Name\n----------\ntwo\\nlines\nx\n");
  EXPECT_EQ(Json::parse(ToJson(Report::Of(listing, "")))[0]["name"], "two\nlines");
}

TEST(Listing, BrokenUtf8StaysParsable) {
  const Report report = Report::Of({{{"a", "A"}}, {{"x\xFFy"}}}, "");
  EXPECT_EQ(Json::parse(ToJson(report))[0]["a"], "x\xEF\xBF\xBDy");
  EXPECT_FALSE(ToText(report).empty());
}

}  // namespace
}  // namespace orvctl
