// What is made of cards that are well formed, and of those that are merely common.
#include <gtest/gtest.h>

#include "formats/contact_io.h"

namespace formats {
namespace {

struct CardsRead {
  std::vector<Contact> contacts;
  size_t rejected = 0;
};

CardsRead ReadCards(const std::string& bytes) {
  CardsRead file;
  MemorySource source(bytes);
  ReadOptions options;
  options.format = FileFormat::kVCard;
  OpenResult opened;
  const auto reader = ContactReader::Open(source, options, &opened);
  Contact contact;
  for (ReadResult result; reader && (result = reader->Next(&contact)) != ReadResult::kEnd;) {
    if (result == ReadResult::kRecord) file.contacts.push_back(contact);
    file.rejected += result == ReadResult::kRejected;
  }
  EXPECT_TRUE(!reader || reader->hasRecognised() == (bytes.find(':') != bytes.npos)) << bytes;
  return file;
}

Contact ReadOne(const std::string& version, const std::string& lines) {
  const CardsRead file = ReadCards("BEGIN:VCARD\r\nVERSION:" + version + "\r\n" + lines + "END:VCARD\r\n");
  EXPECT_EQ(file.contacts.size(), 1u) << lines;
  EXPECT_EQ(file.rejected, 0u) << lines;
  return file.contacts.size() == 1 ? file.contacts[0] : Contact();
}

TEST(Card, NamesAndNotesAreReadAsTheirVersionWritesThem) {
  constexpr auto kName = &Contact::name, kNote = &Contact::note;
  const struct {
    std::string Contact::*field;
    const char* version;
    const char* lines;
    const char* text;
  } cases[] = {
      // The name comes from the best property there is.
      {kName, "3.0", "N:Roe;Jane;Q.;Dr.;MD\r\nFN:Jane\\, the Roe\r\n", "Jane, the Roe"},
      {kName, "3.0", "FN:\r\nN:Roe;Jane;Q.;Dr.;MD\r\n", "Dr. Jane Q. Roe MD"},
      {kName, "3.0", "N:;;;;\r\nNICKNAME:Jay\r\nORG:Acme\r\n", "Jay"},
      {kName, "3.0", "ORG:Acme;Sales;East\r\n", "Acme"},
      {kName, "4.0", "EMAIL:mailto:jane@example.com\r\n", "jane@example.com"},
      {kName, "2.1", "TEL;FAX:+1 555 0100\r\n", "+1 555 0100"},
      {kName, "3.0", "FN:two\\nlines\r\n", "two lines"},
      {kName, "3.0", "FN;X-A=\"q;uoted:\":after the quotes\r\n", "after the quotes"},
      {kName, "3.0", "FN;X-A=\"open:unclosed quote\r\n", "unclosed quote"},
      {kName, "3.0", "fn : blanks \r\n", "blanks"},
      {kName, "3.0", "FN:a\\;b\\\\c\\:d\\xe\\N\r\n", "a;b\\c:d\\xe"},
      // Version 2.1 escapes nothing but separators: names of domains stay whole.
      {kName, "2.1", "FN:HOME\\nick\\;x\r\n", "HOME\\nick;x"},
      {kName, "2.1", "N:Roe\\;Poe;Jane\r\n", "Jane Roe;Poe"},
      // An agent's record is not the contact.
      {kName, "2.1", "AGENT:\r\nBEGIN:VCARD\r\nFN:Agent\r\nEND:VCARD\r\nFN:Boss\r\n", "Boss"},
      {kName, "3.0", "FN:  two  blanks\t\r\n", "two blanks"},
      // Unfolding and encodings.
      {kNote, "3.0", "NOTE:one\r\n two\r\n\tthree\r\n", "onetwothree"},
      {kNote, "2.1", "NOTE:one\r\n two\r\n", "one two"},
      {kNote, "3.0", "NO\r\n TE:name\r\n", "name"},
      // A fold may cut a character in two.
      {kNote, "3.0", "NOTE:\xC3\r\n \xB6\r\n", "\xC3\xB6"},
      {kNote, "2.1", "NOTE;QUOTED-PRINTABLE:a=\r\nb=3D=\r\n=20c\r\n", "ab= c"},
      {kNote, "2.1", "NOTE;ENCODING=QUOTED-PRINTABLE;CHARSET=UTF-8:=C3=\r\n=B6=0D=0Ax\r\n", "\xC3\xB6\nx"},
      {kNote, "2.1", "NOTE;ENCODING=QUOTED-PRINTABLE:=E4= \r\n=zz=4\r\n", "\xC3\xA4=zz=4"},
      {kNote, "2.1", "NOTE;CHARSET=ISO-8859-1:\xC3\xB6\r\n", "\xC3\x83\xC2\xB6"},
      {kNote, "2.1", "NOTE:no coding=\r\nX-OTHER:1\r\n", "no coding="},
      {kNote, "3.0", "NOTE;ENCODING=b:aGVsbG8g\r\n w7Y=\r\n", "hello \xC3\xB6"},
      // Text that is not UTF-8 and names no character set.
      {kNote, "3.0", "NOTE:\x80 \xF6\r\n", "\xE2\x82\xAC \xC3\xB6"},
      {kNote, "3.0", "NOTE:bell\a nul\r\n", "bell nul"},
      {kNote, "3.0", "PHOTO;ENCODING=b:/9j/4AAQ\r\n SkZJRgABAQ==\r\n\r\nNOTE:after the picture\r\n",
       "after the picture"},
      {kNote, "2.1", "PHOTO;JPEG;BASE64:\r\n/9j/4AAQ\r\nSkZJ==\r\n\r\nNOTE:unindented\r\n", "unindented"},
      // The encoding is cut off; the record's end is not part of it.
      {kNote, "2.1", "NOTE;QUOTED-PRINTABLE:cut=\r\n", "cut"},
  };
  for (const auto& c : cases) {
    const std::string lines = std::string(c.field == kNote ? "FN:x\r\n" : "") + c.lines;
    EXPECT_EQ(ReadOne(c.version, lines).*c.field, c.text) << lines;
  }
}

TEST(Card, UnreadableRecordsAreCountedAndTheRestIsServed) {
  const struct {
    const char* bytes;
    size_t contacts, rejected;
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
    const CardsRead file = ReadCards(c.bytes);
    EXPECT_EQ(file.contacts.size(), c.contacts) << c.bytes;
    EXPECT_EQ(file.rejected, c.rejected) << c.bytes;
  }
}

}  // namespace
}  // namespace formats
