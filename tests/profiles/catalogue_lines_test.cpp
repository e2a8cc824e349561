// Lines and values of the catalogue: tables of what is taken, ignored and refused.
#include "profiles/catalogue_lines.h"

#include <gtest/gtest.h>

namespace orv::catalogue {
namespace {

TEST(CatalogueLines, ServiceLineSplitsAtTheFirstEquals) {
  ServiceLine parsed{};
  EXPECT_EQ(ParseServiceLine(ORV_W(" \tAbc \t=\t Text = more  "), parsed), S_OK);
  EXPECT_TRUE(parsed.name == ORV_W("Abc") && parsed.text == ORV_W("Text = more  "));
  EXPECT_EQ(ParseServiceLine(ORV_W("=Text"), parsed), S_OK);
  EXPECT_TRUE(parsed.name.empty() && parsed.text == ORV_W("Text"));
}

TEST(CatalogueLines, ServiceLineWithoutEqualsOrTextIsBad) {
  for (const WStringView line : {ORV_W(""), ORV_W("Abc"), ORV_W("Abc =  "), ORV_W("Abc Def=Text")}) {
    ServiceLine parsed{};
    EXPECT_EQ(ParseServiceLine(line, parsed), MAPI_E_BAD_VALUE);
  }
}

TEST(CatalogueLines, KeysAreKnownByTheirExactSpelling) {
  const struct {
    WStringView line;
    ULONG tag;  // 0: the line says nothing
    WStringView value;
  } cases[] = {
      {ORV_W("PR_DISPLAY_NAME=A b "), PR_DISPLAY_NAME_W, ORV_W("A b ")},
      {ORV_W("  PR_SERVICE_DLL_NAME = x%c.dll"), PR_SERVICE_DLL_NAME_W, ORV_W("x%c.dll")},
      {ORV_W("PR_RESOURCE_FLAGS=\t"), PR_RESOURCE_FLAGS, ORV_W("")},
      {ORV_W("pr_display_name=A"), 0, {}},
      {ORV_W("PR_DISPLAY_NAME_W=A"), 0, {}},
      {ORV_W("PR_DISPLAY_NAM=A"), 0, {}},
      {ORV_W("PR_DISPLAY_NAME"), 0, {}},
  };
  for (const auto& c : cases) {
    const auto parsed = ParseKeyLine(c.line);
    ASSERT_EQ(parsed.has_value(), c.tag != 0);
    EXPECT_TRUE(!parsed || (parsed->tag == c.tag && parsed->value == c.value));
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
