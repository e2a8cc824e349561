// Conversions between the encodings that contact files come in.
#include "formats/text_codec.h"

#include <gtest/gtest.h>

namespace formats {
namespace {

TEST(TextCodec, MalformedUtf8IsRefusedAndReplaced) {
  for (const std::string_view bad : {"\x80", "\xC0\xAF", "\xE0\x80\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80",
                                     "\xF8\x88\x80\x80\x80", "\xE2\x82", "\xFF"}) {
    EXPECT_FALSE(IsUtf8(bad)) << testing::PrintToString(std::string(bad));
    EXPECT_NE(ToUtf16(bad).find(u'\xFFFD'), std::u16string::npos);
  }
}

TEST(TextCodec, CodePointsOfEveryLengthSurviveAndUnpairedSurrogatesAreReplaced) {
  const std::u16string text = u"a\x7F\x80\x7FF\x800\xFFFD\xD7FF\xE000\U00010000\U0010FFFF";
  EXPECT_TRUE(IsUtf8(ToUtf8(text)));
  EXPECT_EQ(ToUtf16(ToUtf8(text)), text);
  const std::u16string unpaired = {0xDC00, u'a', 0xD800, u'b', 0xD800};
  EXPECT_EQ(ToUtf8(unpaired), "\xEF\xBF\xBD\x61\xEF\xBF\xBD\x62\xEF\xBF\xBD");
}

TEST(TextCodec, CharsetsAreFoundWhateverTheirSpelling) {
  const struct {
    const char *bytes, *charset, *utf8;
  } cases[] = {
      {"\x80", "iso_8859-1", "\xE2\x82\xAC"},  // Latin-1 is read as its Windows superset
      {"\x84x\x93", "Windows-1252", "\xE2\x80\x9Ex\xE2\x80\x9C"},
      {"M\xF6", "UTF-8", "M\xC3\xB6"},  // a lie: it is not UTF-8, so the ANSI code page
      {"M\xC3\xB6", "x-unheard-of", "M\xC3\xB6"},
      {"\xEB", "KOI8-R", "\xD0\x9A"},
      {"\xA4", "koi8-u", "\xD1\x94"},
      {"\xA4\xE1", "ISO-8859-15", "\xE2\x82\xAC\xC3\xA1"},
      {"\xB1", "iso-8859-2", "\xC4\x85"},
      {"\xEA", "windows-1251", "\xD0\xBA"},
      {"\x83\x65\x83\x58\x83\x67\xB1", "Shift_JIS", "\xE3\x83\x86\xE3\x82\xB9\xE3\x83\x88\xEF\xBD\xB1"},
      {"\xA5\xC6\x8E\xB1\x8F\xB0\xA1", "EUC-JP", "\xE3\x83\x86\xEF\xBD\xB1\xE4\xB8\x82"},
      {"\x1B$B%F\x1B(Ba\x1B(I1\n%F", "ISO-2022-JP", "\xE3\x83\x86\x61\xEF\xBD\xB1\n%F"},
      {"\xD6\xD0\x80", "GBK", "\xE4\xB8\xAD\xE2\x82\xAC"},
      {"\xD6\xD0\x81\x30\x84\x36\x94\x39\xDA\x33", "GB18030", "\xE4\xB8\xAD\xC2\xA5\xF0\x9F\x92\xA9"},
      {"\xA4\xA4", "Big5", "\xE4\xB8\xAD"},
      {"\xC7\xD1", "EUC-KR", "\xED\x95\x9C"},
      {"\x83x\xFF", "Shift_JIS", "\xE3\x83\x99\xEF\xBF\xBD"},
  };
  for (const auto& c : cases) EXPECT_EQ(DecodeCharset(c.bytes, c.charset), c.utf8) << c.charset;
}

TEST(TextCodec, FilesAreBroughtToUtf8WithoutMark) {
  using namespace std::string_literals;
  EXPECT_EQ(NormaliseFile("\xEF\xBB\xBFx"), "x");
  EXPECT_EQ(NormaliseFile("\xFF\xFE\xE4\0\x3D\xD8\x00\xDE"s), "\xC3\xA4\xF0\x9F\x98\x80");
  EXPECT_EQ(NormaliseFile("\xFE\xFF\0\xE4\x20"s), "\xC3\xA4");  // half a unit at the end is dropped
  EXPECT_EQ(NormaliseFile("a\rb\r"), "a\nb\n");
  EXPECT_EQ(NormaliseFile("a\rb\r\n"), "a\rb\r\n");
}

}  // namespace
}  // namespace formats
