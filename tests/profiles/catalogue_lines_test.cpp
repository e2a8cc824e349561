// Lines and values of the catalogue: tables of what is taken, ignored and refused.
#include "profiles/catalogue_lines.h"

#include <gtest/gtest.h>

namespace orv::catalogue {
namespace {

TEST(CatalogueLines, ALineSplitsAtTheFirstEquals) {
  const struct {
    WStringView line, name, text;  // no text: refused
  } cases[] = {
      {ORV_W(" \tAbc \t=\t Text = more  "), ORV_W("Abc"), ORV_W("Text = more  ")},
      {ORV_W("=Text"), {}, ORV_W("Text")},
      {ORV_W(""), {}, {}},
      {ORV_W("Abc"), {}, {}},
      {ORV_W("Abc =  "), {}, {}},
      {ORV_W("Abc Def=Text"), {}, {}},
  };
  for (const auto& c : cases) {
    ServiceLine parsed{};
    EXPECT_EQ(ParseServiceLine(c.line, parsed), c.text.empty() ? MAPI_E_BAD_VALUE : S_OK) << &c - cases;
    EXPECT_TRUE(c.text.empty() || (parsed.name == c.name && parsed.text == c.text)) << &c - cases;
  }
  const auto key = ParseKeyLine(ORV_W("  PR_DISPLAY_NAME = A b "));
  ASSERT_TRUE(key);
  EXPECT_TRUE(key->tag == PR_DISPLAY_NAME_W && key->value == ORV_W("A b "));
  for (const WStringView line : {ORV_W("pr_display_name=A"), ORV_W("PR_DISPLAY_NAME_W=A"),
                                 ORV_W("PR_DISPLAY_NAM=A"), ORV_W("PR_DISPLAY_NAME")}) {
    EXPECT_FALSE(ParseKeyLine(line));
  }
}

TEST(CatalogueLines, FormatsKnowTheLetterAndThePercentSign) {
  struct Case {
    WStringView format;
    WCHAR letter;
    std::size_t room;
    const WCHAR* expected;  // null: refused
  };
  constexpr WCHAR kA = ORV_W('A');
  const Case cases[] = {
      {ORV_W("plain.dll"), kA, 16, ORV_W("plain.dll")},
      {ORV_W("x%cy%c.dll"), kA, 16, ORV_W("xAyA.dll")},
      {ORV_W("100%%"), 0, 16, ORV_W("100%")},
      {ORV_W("%c"), 0, 16, nullptr},
      {ORV_W("%s"), kA, 16, nullptr},
      {ORV_W("%1c"), kA, 16, nullptr},
      {ORV_W("tail%"), kA, 16, nullptr},
      {ORV_W("123456789012345"), kA, 16, ORV_W("123456789012345")},
      {ORV_W("1234567890123456"), kA, 16, nullptr},
      {ORV_W("12345678901234%%5"), kA, 16, nullptr},
  };
  for (const Case& c : cases) {
    WString formatted;
    const HRESULT hr = FormatWithLetter(c.format, c.letter, c.room, formatted);
    EXPECT_EQ(hr, c.expected == nullptr ? MAPI_E_BAD_VALUE : S_OK);
    EXPECT_TRUE(c.expected == nullptr || formatted == c.expected);
  }
}

}  // namespace
}  // namespace orv::catalogue
