// What the reader makes of well-formed and of merely common vCard text.
#include "formats/vcard.h"

#include <gtest/gtest.h>

namespace formats {
namespace {

VCard ParseOne(const std::string& version, const std::string& lines) {
  const VCardFile file =
      VCardFile::FromBytes("BEGIN:VCARD\r\nVERSION:" + version + "\r\n" + lines + "END:VCARD\r\n");
  EXPECT_EQ(file.size(), 1u) << lines;
  EXPECT_EQ(file.skipped(), 0u) << lines;
  return file.size() == 1 ? file.Parse(0) : VCard();
}

TEST(VCard, NamesAndNotesAreReadAsTheirVersionWritesThem) {
  constexpr auto kName = &VCard::displayName, kNote = &VCard::note;
  const struct {
    std::u16string VCard::*field;
    const char* version;
    const char* lines;
    const char16_t* text;
  } cases[] = {
      // The name comes from the best property there is.
      {kName, "3.0", "N:Roe;Jane;Q.;Dr.;MD\r\nFN:Jane\\, the Roe\r\n", u"Jane, the Roe"},
      {kName, "3.0", "FN:\r\nN:Roe;Jane;Q.;Dr.;MD\r\n", u"Dr. Jane Q. Roe MD"},
      {kName, "3.0", "N:;;;;\r\nNICKNAME:Jay\r\nORG:Acme\r\n", u"Jay"},
      {kName, "3.0", "ORG:Acme;Sales;East\r\n", u"Acme"},
      {kName, "4.0", "EMAIL:mailto:jane@example.com\r\n", u"jane@example.com"},
      {kName, "2.1", "TEL;FAX:+1 555 0100\r\n", u"+1 555 0100"},
      {kName, "3.0", "FN:two\\nlines\r\n", u"two lines"},
      {kName, "3.0", "FN;X-A=\"q;uoted:\":after the quotes\r\n", u"after the quotes"},
      {kName, "3.0", "FN;X-A=\"open:unclosed quote\r\n", u"unclosed quote"},
      {kName, "3.0", "fn : blanks \r\n", u"blanks"},
      {kName, "3.0", "FN:a\\;b\\\\c\\:d\\xe\\N\r\n", u"a;b\\c:d\\xe"},
      // Version 2.1 escapes nothing but separators: names of domains stay whole.
      {kName, "2.1", "FN:HOME\\nick\\;x\r\n", u"HOME\\nick;x"},
      {kName, "2.1", "N:Roe\\;Poe;Jane\r\n", u"Jane Roe;Poe"},
      // An agent's record is not the contact.
      {kName, "2.1", "AGENT:\r\nBEGIN:VCARD\r\nFN:Agent\r\nEND:VCARD\r\nFN:Boss\r\n", u"Boss"},
      {kName, "3.0", "FN:  two  blanks\t\r\n", u"two blanks"},
      // Unfolding and encodings.
      {kNote, "3.0", "NOTE:one\r\n two\r\n\tthree\r\n", u"onetwothree"},
      {kNote, "2.1", "NOTE:one\r\n two\r\n", u"one two"},
      {kNote, "3.0", "NO\r\n TE:name\r\n", u"name"},
      // A fold may cut a character in two.
      {kNote, "3.0", "NOTE:\xC3\r\n \xB6\r\n", u"\xF6"},
      {kNote, "2.1", "NOTE;QUOTED-PRINTABLE:a=\r\nb=3D=\r\n=20c\r\n", u"ab= c"},
      {kNote, "2.1", "NOTE;ENCODING=QUOTED-PRINTABLE;CHARSET=UTF-8:=C3=\r\n=B6=0D=0Ax\r\n", u"\xF6\nx"},
      {kNote, "2.1", "NOTE;ENCODING=QUOTED-PRINTABLE:=E4= \r\n=zz=4\r\n", u"\xE4=zz=4"},
      {kNote, "2.1", "NOTE;CHARSET=ISO-8859-1:\xC3\xB6\r\n", u"\xC3\xB6"},
      {kNote, "2.1", "NOTE:no coding=\r\nX-OTHER:1\r\n", u"no coding="},
      {kNote, "3.0", "NOTE;ENCODING=b:aGVsbG8g\r\n w7Y=\r\n", u"hello \xF6"},
      // Text that is not UTF-8 and names no character set.
      {kNote, "3.0", "NOTE:\x80 \xF6\r\n", u"\x20AC \xF6"},
      {kNote, "3.0", "NOTE:bell\a nul\r\n", u"bell nul"},
      {kNote, "3.0", "PHOTO;ENCODING=b:/9j/4AAQ\r\n SkZJRgABAQ==\r\n\r\nNOTE:after the picture\r\n",
       u"after the picture"},
      {kNote, "2.1", "PHOTO;JPEG;BASE64:\r\n/9j/4AAQ\r\nSkZJ==\r\n\r\nNOTE:unindented\r\n", u"unindented"},
      // The encoding is cut off; the record's end is not part of it.
      {kNote, "2.1", "NOTE;QUOTED-PRINTABLE:cut=\r\n", u"cut"},
  };
  for (const auto& c : cases) {
    const std::string lines = std::string(c.field == kNote ? "FN:x\r\n" : "") + c.lines;
    EXPECT_EQ(ParseOne(c.version, lines).*c.field, c.text) << lines;
  }
}

TEST(VCard, FaxNumbersAreRecognisedHoweverTheyAreMarked) {
  const struct {
    const char* lines;
    bool fax;
    VCardPlace place;
    const char16_t* number;
  } cases[] = {
      {"TEL;TYPE=fax,home:2\r\n", true, VCardPlace::kHome, u"2"},
      {"TEL;TYPE=\"work,fax\";VALUE=uri:tel:+1-555;ext=102\r\n", true, VCardPlace::kWork, u"+1-555"},
      {"TEL;TYPE=WORKFAX:4\r\n", true, VCardPlace::kWork, u"4"},
      {"TEL;VALUE=uri:fax:+5\r\n", true, VCardPlace::kUnknown, u"+5"},
      {"item1.TEL:6\r\nitem1.X-ABLabel:_$!<HomeFAX>!$_\r\n", true, VCardPlace::kHome, u"6"},
      {"Item1.X-ABLabel:Telefax\r\nitem1.TEL;TYPE=VOICE:7\r\n", true, VCardPlace::kUnknown, u"7"},
      {"item1.TEL:8\r\nitem2.X-ABLabel:Fax\r\n", false, VCardPlace::kUnknown, u"8"},
      {"TEL;TYPE=WORK,VOICE:9\r\n", false, VCardPlace::kWork, u"9"},
  };
  for (const auto& c : cases) {
    const VCard card = ParseOne("3.0", c.lines);
    ASSERT_EQ(card.phones.size(), 1u) << c.lines;
    EXPECT_EQ(card.phones[0].fax, c.fax) << c.lines;
    EXPECT_EQ(card.phones[0].place, c.place) << c.lines;
    EXPECT_EQ(card.phones[0].number, c.number) << c.lines;
  }
  EXPECT_EQ(ParseOne("4.0", "TEL:tel:1;x=2;ext=34;y\r\n").phones[0].extension, u"34");
}

TEST(VCard, PreferredAddressesComeFirst) {
  const VCard card = ParseOne("4.0",
                              "EMAIL:last@x\r\nEMAIL;PREF=50:third@x\r\nEMAIL;PREF=2:second@x\r\n"
                              "EMAIL;TYPE=INTERNET,PREF:first@x\r\nEMAIL;PREF=999:later@x\r\nEMAIL:\r\n");
  EXPECT_EQ(card.emails,
            (std::vector<std::u16string>{u"first@x", u"second@x", u"third@x", u"last@x", u"later@x"}));
}

TEST(VCardFile, UnreadableRecordsAreCountedAndTheRestIsServed) {
  const struct {
    const char* bytes;
    size_t size, skipped;
  } cases[] = {
      {"", 0, 0},
      {"not a contact file at all\r\nreally\r\n", 0, 1},
      {"BEGIN:VCARD\r\nFN:a\r\nBEGIN:VCARD\r\nFN:b\r\nEND:VCARD\r\n", 1, 1},
      {"BEGIN:VCARD\r\nVERSION:3.0\r\nNOTE:nameless\r\nEND:VCARD\r\n", 0, 1},
      {"BEGIN:VCARD\r\nFN:\\n\r\nN:;;;;\r\nEMAIL:mailto:\r\nEND:VCARD\r\n", 0, 1},
      {"BEGIN:VCARD\r\nVERSION:2.1\r\nFN;QUOTED-PRINTABLE:=20=0D=0A\r\nEND:VCARD\r\n", 0, 1},
      {"stray\r\nBEGIN:VCARD\r\nFN:a\r\nEND:VCARD\r\nstray\r\nmore\r\n", 1, 2},
      {"begin:vcard\nfn:lower case\nend:vcard", 1, 0},
      {"BEGIN:VCARD \nFN:a\n END : VCARD\n", 0, 1},  // a folded line is no end
      {"begin:vcard\nfn:a\nEND:VCARD\n\xEF\xBB\xBF"
       "BEGIN:VCARD\nFN:joined files\nEND:VCARD\n",
       2, 0},
      {"BEGIN:VCARD\nFN:a\nAGENT:\nBEGIN:VCARD\nFN:b\nBEGIN:VCARD\nFN:c\nEND:VCARD\n", 1, 1},
  };
  for (const auto& c : cases) {
    const VCardFile file = VCardFile::FromBytes(c.bytes);
    EXPECT_EQ(file.size(), c.size) << c.bytes;
    EXPECT_EQ(file.skipped(), c.skipped) << c.bytes;
  }
  // What a dropped record said about itself must not answer for the next one.
  const VCardFile file =
      VCardFile::FromBytes("BEGIN:VCARD\nUID:gone\nEMAIL:gone@x\nBEGIN:VCARD\nFN:b\nUID:here\nEND:VCARD\n");
  EXPECT_EQ(file.FindByUid(u"gone"), std::nullopt);
  EXPECT_EQ(file.FindByEmail(u"gone@x"), std::nullopt);
  EXPECT_EQ(file.FindByUid(u"URN:UUID:Here"), 0u);
  EXPECT_EQ(file.FindByUid(u""), std::nullopt);
}

}  // namespace
}  // namespace formats
