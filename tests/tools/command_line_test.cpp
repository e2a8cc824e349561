// What is made of a command line before anything is done.
#include "tools/orvctl/command_line.h"

#include <gtest/gtest.h>

#include "tools/orvctl/contact_fields.h"
#include "tools/orvctl/file_formats.h"
#include "tools/orvctl/profile_name.h"
#include "tools/orvctl/suggestion.h"

namespace orvctl {
namespace {

TEST(CommandLine, MistypedWordsAreToldFromOtherOnes) {
  const std::vector<std::string> known = {"list", "show", "create", "default", "remove"};
  const struct {
    const char *typed, *meant;
  } cases[] = {
      {"lsit", "list"}, {"lis", "list"}, {"craete", "create"}, {"defaults", "default"}, {"remvoe", "remove"},
      {"xyz", ""},      {"", ""},        {"listing", ""}};
  for (const auto& each : cases) EXPECT_EQ(each.meant, ClosestWord(each.typed, known)) << each.typed;
  EXPECT_EQ("", ClosestWord("list", {}));
}

TEST(CommandLine, GlobalOptionsStandAnywhere) {
  const std::vector<std::vector<std::string>> lines = {
      {"--json", "--fields", "id,name", "book", "list", "P", "--limit", "3"},
      {"book", "list", "P", "--limit", "3", "--fields", "id,name", "--json"},
      {"book", "--fields=id,,name", "list", "--limit", "3", "P", "--json"}};
  for (const auto& line : lines) {
    const ParseResult parsed = ParseCommandLine(line);
    ASSERT_TRUE(parsed.options) << parsed.errors;
    EXPECT_EQ(Command::kBookList, parsed.options->command);
    EXPECT_EQ((std::vector<std::string>{"id", "name"}), parsed.options->fields);
    EXPECT_EQ(3u, parsed.options->limit);
    EXPECT_TRUE(parsed.options->json);
    EXPECT_EQ("P", parsed.options->profile);
  }
}

TEST(CommandLine, NamesThatNobodyCouldUseAgainAreRefused) {
  const struct {
    std::string name;
    bool isRefused;
  } cases[] = {{"Büro 東", false},
               {std::string(31, 'x'), false},
               {std::string(32, 'x'), true},
               {std::string(65, 'x'), false},  // the library's own rule, with its own code
               {"-", true},
               {"  ", true},
               {"\xE3\x80\x80", true},
               {"a\nb", true},
               {"a\xE2\x80\xAE"
                "b",
                true},
               {"a\xE2\x81\xA6"
                "b",
                true}};
  for (const auto& each : cases)
    EXPECT_EQ(each.isRefused, !WhyBadProfileName(each.name).empty()) << each.name;
}

TEST(CommandLine, EachNumberGoesToThePropertyOfItsKind) {
  ContactFields fields;
  fields.faxes = {"1", "2:home", "3:OTHER", "4:business"};
  fields.phones = {"5", "6:business", "7:preferred", ":home"};
  fields.note = "";
  std::vector<std::pair<ULONG, std::string>> made;
  for (const FieldValue& value : FieldValues(fields)) made.emplace_back(value.tag, value.text);
  const std::vector<std::pair<ULONG, std::string>> expected = {{PR_BUSINESS_FAX_NUMBER_W, "1"},
                                                               {PR_HOME_FAX_NUMBER_W, "2"},
                                                               {PR_PRIMARY_FAX_NUMBER_W, "3"},
                                                               {PR_NULL, "4"},
                                                               {PR_BUSINESS_TELEPHONE_NUMBER_W, "5"},
                                                               {PR_BUSINESS2_TELEPHONE_NUMBER_W, "6"},
                                                               {PR_PRIMARY_TELEPHONE_NUMBER_W, "7"},
                                                               {PR_HOME_TELEPHONE_NUMBER_W, ""},
                                                               {PR_COMMENT_W, ""}};
  EXPECT_EQ(expected, made);
  EXPECT_FALSE(ParseNumber("1:mobil"));
}

TEST(CommandLine, WhatIsNoNumberIsRefusedBeforeAnythingIsDone) {
  const struct {
    const char* text;
    bool isFax, isPhone;
  } cases[] = {{"+49 40 1", true, true}, {"1:home", true, true},      {"170 1:mobile", false, true},
               {"abc", false, false},    {"abc:home", false, false},  {":home", true, true},
               {"1:nix", false, false},  {"\xEF\xBC\x91", true, true}};
  for (const auto& each : cases) {
    EXPECT_EQ(each.isFax, WhyBadNumber(each.text, NumberOf::kFax).empty()) << each.text;
    EXPECT_EQ(each.isPhone, WhyBadNumber(each.text, NumberOf::kPhone).empty()) << each.text;
  }
}

TEST(CommandLine, TheFormatOfANewFileIsToldByItsNameOrRefused) {
  const struct {
    const char *format, *file, *meant;
  } cases[] = {
      {"", "a.VCF", "vcard"}, {"", "a.b.csv", "csv"}, {"", "a.ldi", "ldif"}, {"vcard30", "a.x", "vcard30"},
      {"", "-", "vcard"},     {"", "a.x", ""},        {"", "csv", ""},       {"", "a", ""}};
  for (const auto& each : cases) {
    const FormatName* const found = FormatOf(each.format, each.file);
    EXPECT_EQ(std::string(each.meant), found != nullptr ? found->name : "") << each.file;
  }
}

}  // namespace
}  // namespace orvctl
