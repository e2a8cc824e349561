// Contact files of every format in and out, in the shapes that other programs write.
#include "formats/contact_io.h"

#include <gtest/gtest.h>

namespace formats {
namespace {

struct FileRead {
  OpenResult opened = OpenResult::kOk;
  std::vector<Contact> contacts;
  std::vector<std::pair<std::uint64_t, RejectReason>> rejected;
};

FileRead ReadFile(std::string_view bytes, const ReadOptions& options = {}) {
  FileRead file;
  MemorySource source(bytes);
  const auto reader = ContactReader::Open(source, options, &file.opened);
  for (Contact contact; reader;) {
    const ReadResult result = reader->Next(&contact);
    if (result == ReadResult::kEnd || result == ReadResult::kFailed) break;
    if (result == ReadResult::kRecord) file.contacts.push_back(contact);
    if (result == ReadResult::kRejected)
      file.rejected.emplace_back(reader->rejection().line, reader->rejection().reason);
  }
  return file;
}

std::vector<std::string> UnknownColumnsOf(std::string_view bytes, const ReadOptions& options) {
  MemorySource source(bytes);
  OpenResult opened = OpenResult::kOk;
  const auto reader = ContactReader::Open(source, options, &opened);
  for (Contact contact; reader && reader->Next(&contact) != ReadResult::kEnd;) {
  }
  return reader ? reader->unknownColumns() : std::vector<std::string>{"not opened"};
}

std::string WriteFile(const std::vector<Contact>& contacts, WriteFormat format) {
  StringSink sink;
  const auto writer = ContactWriter::Create(sink, format);
  for (const Contact& contact : contacts) EXPECT_TRUE(writer->Write(contact));
  EXPECT_TRUE(writer->Finish());
  return sink.bytes;
}

// The canonical lines of the one record of a file, without those that every card has.
std::string LinesOf(std::string_view bytes, const ReadOptions& options = {}) {
  const FileRead file = ReadFile(bytes, options);
  if (file.contacts.size() != 1 || !file.rejected.empty()) return "no single record";
  std::string card;
  WriteCard(file.contacts[0], &card);
  const std::string begin = "BEGIN:VCARD\nVERSION:4.0\n", end = "END:VCARD\n";
  return card.substr(begin.size(), card.size() - begin.size() - end.size());
}

constexpr std::string_view kRichFile =
    "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:urn:uuid:6d1b8a7e-3b7f-4f5a-9c38-0b1d6f1c0a01\r\n"
    "FN;LANGUAGE=de:J\xC3\xBCrgen Wei\xC3\x9F\r\nN;SORT-AS=\"Weiss,J\":Wei\xC3\x9F;J\xC3\xBCrgen;;Dr.;\r\n"
    "ORG:Kontor;Einkauf\r\nTITLE:Chef\r\nNOTE:eins\\nzwei\\, drei \\\\ vier\r\n"
    "TEL;TYPE=voice,home:1\r\nTEL;TYPE=fax,work,pref;X-A=b:+49 40 2\r\nTEL;TYPE=fax,cell:3\r\n"
    "item1.TEL:4\r\nitem1.X-ABLabel:Ferienhaus\r\nTEL;TYPE=pager:5\r\nTEL;TYPE=telex:6\r\nTEL;TYPE=fax,work:"
    "7\r\n"
    "EMAIL;TYPE=internet,work:a@x\r\nEMAIL:b@x\r\nEMAIL:c@x\r\nEMAIL:d@x\r\n"
    "ADR;TYPE=work:box;floor;Kai 4\\nHof;Hamburg;HH;20457;DE\r\nADR;TYPE=home:;;Weg 1;;;;\r\n"
    "PHOTO;ENCODING=b;TYPE=JPEG:/9j/\r\n 4AAQ\r\nBDAY:1970-01-01\r\nX-Q;X-P=1:y\r\nEND:VCARD\r\n"
    "BEGIN:VCARD\r\nVERSION:4.0\r\nKIND:group\r\nFN:Alle\r\n"
    "MEMBER:urn:uuid:6d1b8a7e-3b7f-4f5a-9c38-0b1d6f1c0a01\r\nMEMBER:Anna Berg\r\nMEMBER:tel:+49 40 2\r\n"
    "MEMBER:mailto:a@x?subject=no\r\nEND:VCARD\r\n";

TEST(ContactIo, WhatIsWrittenIsReadAndWrittenAgainAsTheSameBytes) {
  const std::vector<Contact> contacts = ReadFile(kRichFile).contacts;
  ASSERT_EQ(contacts.size(), 2u);
  EXPECT_EQ(ReadFile(WriteFile(contacts, WriteFormat::kVCard40)).contacts, contacts);
  for (const WriteFormat format : {WriteFormat::kVCard40, WriteFormat::kVCard30, WriteFormat::kVCard21,
                                   WriteFormat::kCsv, WriteFormat::kLdif}) {
    const std::string bytes = WriteFile(contacts, format);
    const FileRead again = ReadFile(bytes);
    EXPECT_TRUE(again.rejected.empty());
    EXPECT_EQ(WriteFile(again.contacts, format), bytes);
    ASSERT_EQ(again.contacts.size(), 2u);
    ASSERT_EQ(again.contacts[0].numbers.size(), contacts[0].numbers.size());
    for (std::size_t i = 0; i < contacts[0].numbers.size(); ++i) {
      EXPECT_EQ(again.contacts[0].numbers[i].text, contacts[0].numbers[i].text) << i;
      EXPECT_EQ(again.contacts[0].numbers[i].kind, contacts[0].numbers[i].kind) << i;
      EXPECT_EQ(again.contacts[0].numbers[i].place, contacts[0].numbers[i].place) << i;
      EXPECT_EQ(again.contacts[0].numbers[i].isPreferred, contacts[0].numbers[i].isPreferred) << i;
    }
    EXPECT_EQ(again.contacts[1].members.size(), 4u);
  }
}

// What is not told to be lost comes back.
TEST(ContactIo, WritersTellWhatTheirFormatHasNoPlaceFor) {
  const std::string_view extra =
      "BEGIN:VCARD\nVERSION:4.0\nFN:a\nADR;TYPE=work:;;Kai 4;;;;\nADR;TYPE=work:;;Kai 5;;;;\nNICKNAME:n\n"
      "NICKNAME:m\nURL:http://x/a\\,b\nURL;TYPE=home:y\nBDAY:1970-01-01\nBDAY:1971-01-01\n"
      "X-CSV-COLUMN;X-ORV-NAME=\"Kd-Nr., alt\":4711\nPHOTO:data:image/jpeg;base64,/9j/\n"
      "PHOTO:data:image/png;base64,AAAA\nX-LDIF-X-A:b\nEND:VCARD\n"
      "BEGIN:VCARD\nVERSION:4.0\nKIND:group\nFN:g\nMEMBER:urn:uuid:a\n"
      "MEMBER;X-ORV-ENTRYID=00112233445566778899AABBCCDDEEFF0011223344:b\nEND:VCARD\n"
      "BEGIN:VCARD\nVERSION:4.0\nFN:plain\nTEL;TYPE=fax:1\nNICKNAME:p\nEND:VCARD\n";
  using Names = std::vector<std::string>;
  const struct {
    WriteFormat format;
    Names contact, list, plain;
  } cases[] = {{WriteFormat::kCsv,
                {"ADR", "NICKNAME", "URL", "BDAY", "Kd-Nr., alt", "PHOTO", "X-LDIF-X-A"},
                {"MEMBER"},
                {}},
               {WriteFormat::kLdif,
                {"ADR", "NICKNAME", "URL", "BDAY", "Kd-Nr., alt", "PHOTO"},
                {"MEMBER"},
                {"NICKNAME"}},
               {WriteFormat::kVCard40, {}, {}, {}}};
  const std::vector<Contact> contacts = ReadFile(extra).contacts;
  ASSERT_EQ(contacts.size(), 3u);
  for (const auto& each : cases) {
    StringSink sink;
    const auto writer = ContactWriter::Create(sink, each.format);
    std::vector<Names> lost;
    for (const Contact& contact : contacts) {
      EXPECT_TRUE(writer->Write(contact));
      lost.push_back(writer->lost());
    }
    EXPECT_EQ(lost, (std::vector<Names>{each.contact, each.list, each.plain}));
    const bool keepsAll = each.plain.empty();
    EXPECT_EQ(ReadFile(sink.bytes).contacts.back() == contacts.back(), keepsAll);
  }
}

TEST(ContactIo, CardsOfAllVersionsBecomeCanonical) {
  const struct {
    const char *version, *lines, *canonical;
  } cases[] = {
      // What is said of a number, in types of every sort and in labels.
      {"2.1", "FN:x\nTEL;FAX;WORK;PREF:1", "FN:x\nTEL;TYPE=fax,work;PREF=1:1\n"},
      {"3.0", "FN:x\nTEL;TYPE=X-Telefax:1\nTEL;TYPE=HOMEFAX:2",
       "FN:x\nTEL;TYPE=fax:1\nTEL;TYPE=fax,home:2\n"},
      {"3.0",
       "FN:x\nTEL;TYPE=\"T\xC3\xA9l\xC3\xA9"
       "copie,domicile\":1",
       "FN:x\nTEL;TYPE=fax,home:1\n"},
      {"3.0", "FN:x\nTEL;TYPE=\xE3\x83\x95\xE3\x82\xA1\xE3\x83\x83\xE3\x82\xAF\xE3\x82\xB9:1",
       "FN:x\nTEL;TYPE=fax:1\n"},
      {"3.0", "FN:x\nTEL;TYPE=\xD9\x81\xD8\xA7\xD9\x83\xD8\xB3:1", "FN:x\nTEL;TYPE=fax:1\n"},
      {"3.0", "FN:x\nX-FAX:1\nX-Home-Fax;PREF=1:2\nX-FAX-NOTE:3\nX-FAX:none",
       "FN:x\nTEL;TYPE=fax:1\nTEL;TYPE=fax,home;PREF=1:2\nX-FAX-NOTE:3\nX-FAX:none\n"},
      {"3.0", "FN:x\nTEL;TYPE=X-Custom-Fax,cell:1", "FN:x\nTEL;TYPE=fax;TYPE=cell,X-Custom-Fax:1\n"},
      {"3.0", "FN:x\na.TEL:1\na.X-ABLabel:_$!<HomeFAX>!$_", "FN:x\nTEL;TYPE=fax,home:1\n"},
      {"3.0", "FN:x\na.TEL:1\na.X-ABLabel:Fax Nord", "FN:x\na.TEL;TYPE=fax:1\na.X-ABLabel:Fax Nord\n"},
      {"4.0", "FN:x\nTEL;VALUE=uri;PREF=3;TYPE=fax:tel:+1-5;ext=2;a=b\nTEL;PREF=9;TYPE=fax:3",
       "FN:x\nTEL;TYPE=fax;PREF=1;X-ORV-MORE=\";a=b\":+1-5 ext. 2\nTEL;TYPE=fax;PREF=9:3\n"},
      {"4.0", "FN:x\nTEL:tel:1;a ;ext=2\nADR:;;;;;;c;d\\ne",
       "FN:x\nTEL;X-ORV-MORE=\";a\":1 ext. 2\nADR;X-ORV-MORE=d^ne:;;;;;;c\n"},
      {"4.0", "FN:x\nTEL;X-ORV-KEY=7:1\nTEL;X-ORV-KEY=-7:2", "FN:x\nTEL;X-ORV-KEY=7:1\nTEL:2\n"},
      // What has no place stays as it came, in the form of version 4.0.
      {"2.1", "FN:x\nX-PATH;CHARSET=ISO-8859-1;QUOTED-PRINTABLE:C:\\n=E4\\;b",
       "FN:x\nX-PATH:C:\\\\n\xC3\xA4\\;b\n"},
      {"2.1", "FN:x\nPHOTO;JPEG;BASE64:\n /9j/\n\nNOTE:n",
       "FN:x\nNOTE:n\nPHOTO:data:image/jpeg;base64,/9j/\n"},
      {"3.0", "FN:x\nPHOTO;ENCODING=b;TYPE=J\xC2\x8FPG;X-P=a\xC2\x80:/9j/",
       "FN:x\nPHOTO;X-P=a:data:image/jpg;base64,/9j/\n"},
      {"3.0", "FN:x\nNOTE:a\nNOTE:b\nORG;SORT-AS=y:z", "FN:x\nORG;SORT-AS=y:z\nNOTE:a\nNOTE:b\n"},
      {"2.1", "FN:x\nAGENT:\nBEGIN:VCARD\nFN:y\nEND:VCARD", "FN:x\nAGENT:BEGIN:VCARD\\nFN:y\\nEND:VCARD\n"},
      {"3.0", "fn:x\nx-y;p:z\n.:a\nb.:c\n.x-d:e", "FN:x\nX-Y;TYPE=p:z\nX-D:e\n"},
      // Names come from the best there is.
      {"3.0", "N:Roe;Jane;;;\nUID:URN:UUID:a", "UID:a\nFN:Jane Roe\nN:Roe;Jane;;;\n"},
      {"3.0", "NICKNAME:J\nTEL:1", "FN:J\nTEL:1\nNICKNAME:J\n"},
      {"3.0", "X-ADDRESSBOOKSERVER-KIND:group\nFN:g\nX-ADDRESSBOOKSERVER-MEMBER:urn:uuid:a",
       "KIND:group\nFN:g\nMEMBER:urn:uuid:a\n"},
  };
  for (const auto& c : cases) {
    const std::string file =
        "BEGIN:VCARD\nVERSION:" + std::string(c.version) + "\n" + c.lines + "\nEND:VCARD\n";
    EXPECT_EQ(LinesOf(file), c.canonical) << c.lines;
  }
}

TEST(ContactIo, TablesOfOtherProgramsAreReadByTheirColumns) {
  const struct {
    const char *file, *canonical;
  } cases[] = {
      {"First Name,Last Name,Company,Job Title,Title,Business Fax,Home Fax,Other Fax,E-mail Address,E-mail "
       "Display Name\r\n"
       "Jane,Roe,\"Acme, Inc.\",Boss,Dr.,1,2,3,j@x,Jane Roe\r\n",
       "FN:Dr. Jane Roe\nN:Roe;Jane;;Dr.;\nORG:Acme\\, "
       "Inc.\nTITLE:Boss\nTEL;TYPE=fax,work:1\nTEL;TYPE=fax,home:2\n"
       "TEL;TYPE=fax,other:3\nEMAIL:j@x\n"},
      {"Vorname;Name;Stra\xDF"
       "e gesch\xE4"
       "ftlich;Ort gesch\xE4"
       "ftlich;Fax gesch\xE4"
       "ftlich;Mobiltelefon\n"
       "J\xFCrgen;Wei\xDF;\"Kai 4\nHof\";Hamburg;1;2\n",
       "FN:J\xC3\xBCrgen Wei\xC3\x9F\nN:Wei\xC3\x9F;J\xC3\xBCrgen;;;\nTEL;TYPE=fax,work:1\nTEL;TYPE=cell:2\n"
       "ADR;TYPE=work:;;Kai 4\\nHof;Hamburg;;;\n"},
      {"Pr\xC3\xA9nom\tNom\tSoci\xC3\xA9t\xC3\xA9\tT\xC3\xA9l\xC3\xA9"
       "copie (bureau)\tVille (domicile)\nA\tB\tC\t1\tLyon\n",
       "FN:A B\nN:B;A;;;\nORG:C\nTEL;TYPE=fax,work:1\nADR;TYPE=home:;;;Lyon;;;\n"},
      {"\xE5\xA7\x93,\xE5\x90\x8D,\xE4\xBC\x9A\xE7\xA4\xBE "
       "FAX,\xE8\x87\xAA\xE5\xAE\x85\xE9\x9B\xBB\xE8\xA9\xB1\na,b,1,2\n",
       "FN:b a\nN:a;b;;;\nTEL;TYPE=fax,work:1\nTEL;TYPE=home:2\n"},
      {"\xD8\xA7\xD9\x84\xD8\xA7\xD8\xB3\xD9\x85|\xD9\x81\xD8\xA7\xD9\x83\xD8\xB3 "
       "\xD8\xA7\xD9\x84\xD8\xB9\xD9\x85\xD9\x84\na|1\n",
       "FN:a\nTEL;TYPE=fax,work:1\n"},
      {"Name,Phone 1 - Type,Phone 1 - Value,Phone 2 - Label,Phone 2 - Value\na,* Work Fax,1 ::: 2,Mobile,3\n",
       "FN:a\nTEL;TYPE=fax,work;PREF=1:1\nTEL;TYPE=fax,work;PREF=1:2\nTEL;TYPE=cell:3\n"},
      // A form of address and a job's title may have the same name; courtesy is no part of a name.
      {"Titre;Pr\xC3\xA9nom;Nom;T\xC3\xA9l\xC3\xA9"
       "copie\nMme;A;B;1\n",
       "FN:A B\nN:B;A;;Mme;\nTEL;TYPE=fax:1\n"},
      {"Titre;Nom complet\nDirectrice;A\n", "FN:A\nTITLE:Directrice\n"},
      {"Anrede;Titel;Vorname;Name;Fax\nHerr;Dr.;A;B;1\n", "FN:Dr. A B\nN:B;A;;Herr Dr.;\nTEL;TYPE=fax:1\n"},
      {"Anrede;Name;Fax\nFrau;Frau;1\n", "FN:Frau\nN:;;;Frau;\nTEL;TYPE=fax:1\n"},
      // Columns that nobody knows are kept, those behind the header too.
      {"Name,\"Kd-Nr., alt\",,Fax,Relation 1 - Value\na,\"4;7\n8\",x,1,,y\n",
       "FN:a\nTEL;TYPE=fax:1\nX-CSV-COLUMN;X-ORV-NAME=\"Kd-Nr., alt\":4\\;7\\n8\n"
       "X-CSV-COLUMN;X-ORV-NAME=3:x\nX-CSV-COLUMN;X-ORV-NAME=6:y\n"},
      {"Name,Fax,Phone\na,tel:+1-5;ext=2,tel:3;b=c\n", "FN:a\nTEL;TYPE=fax:+1-5 ext. 2\nTEL:3\\;b=c\n"},
      {"sep=;\nRecipient;Fax Number\na;\"1 \"\"b\"\"\"\n", "FN:a\nTEL;TYPE=fax:1 \"b\"\n"},
      // A quotation mark in the header that has no other, or only one of a later row, takes nothing along.
      {"Name,\"Fax,Company\na,1,b\n", "FN:a\nORG:b\nTEL;TYPE=fax:1\n"},
      {"sep=;\n\nName;Fax\";\"Company\na;1;\"b; c\"\n", "FN:a\nORG:b\\; c\nTEL;TYPE=fax:1\n"},
      {"Name,\"Fax\nNumber\",Company\na,1,b\n", "FN:a\nORG:b\nTEL;TYPE=fax:1\n"},
      {"Name,Fax,Nickname,Web Page\na,none,n,x\n", "FN:a\nTEL;TYPE=fax:none\nNICKNAME:n\nURL:x\n"},
  };
  for (const auto& c : cases) EXPECT_EQ(LinesOf(c.file), c.canonical) << c.file;
  ReadOptions mapped;
  mapped.columns = {{"2", "fax work"}, {"1", "name"}};
  EXPECT_EQ(LinesOf("a;12345\n", mapped), "FN:a\nTEL;TYPE=fax,work:12345\n");
  mapped.columns = {{"Nummer 7", "fax"}, {"Wer", "name"}};
  EXPECT_EQ(LinesOf("Wer;Nummer 7\na;12345\n", mapped), "FN:a\nTEL;TYPE=fax:12345\n");
  EXPECT_EQ(UnknownColumnsOf("Wer;Nummer 7;Leer;Rest\na;12345;;b\n", mapped),
            std::vector<std::string>{"Rest"});
  mapped.columns.emplace_back("Rest", "ignore");
  EXPECT_EQ(LinesOf("Wer;Nummer 7;Rest\na;12345;b\n", mapped), "FN:a\nTEL;TYPE=fax:12345\n");
  mapped.columns = {{"1", "shoe size"}};
  EXPECT_EQ(ReadFile("a;1\n", mapped).opened, OpenResult::kBadColumns);
}

TEST(ContactIo, DirectoryEntriesAreReadAsPersonsAndGroups) {
  EXPECT_EQ(
      LinesOf(
          "dn: cn=J\\, R,ou=x\nobjectClass: inetOrgPerson\ncn: J\nsn: J\nfacsimileTelephoneNumber: 1$fine\n"
          "# one\n  two\ntelephoneNumber;x-home: 2\nl: Ci\n ty\nc: DE\nco: Germany\ndescription:: w4Q=\nx-a: "
          "b\n"),
      "FN:J\nNOTE:\xC3\x84\nTEL;TYPE=fax,work:1\nTEL;TYPE=home:2\nADR;TYPE=work:;;;City;;;Germany\nX-LDIF-X-"
      "A:b\n");
  EXPECT_EQ(LinesOf("version: 1\n\ndn: cn=G\nchangetype: add\ncn: G\nmember: uid=a\\2Cb,ou=x\nuniqueMember: "
                    "cn=M,mail=m@x\n"),
            "KIND:group\nFN:G\nMEMBER:urn:uuid:a\\,b\nMEMBER;X-ORV-NAME=M:mailto:m@x\n");
}

TEST(ContactIo, RejectedRecordsAreToldByLineAndReasonAndTheNextOneIsRead) {
  using Rejected = std::vector<std::pair<std::uint64_t, RejectReason>>;
  const std::string large(kMaxRecordSize, 'a'), half(kMaxRecordSize / 2, 'a');
  const struct {
    std::string file;
    std::size_t contacts;
    Rejected rejected;
  } cases[] = {
      {"stray\r\n\nBEGIN:VCARD\rFN:a\nEND:VCARD\r\nBEGIN:VCARD\nFN:b\nBEGIN:VCARD\nNOTE:c\nEND:VCARD\nBEGIN:"
       "VCARD",
       1,
       {{1, RejectReason::kNotARecord},
        {6, RejectReason::kNoEnd},
        {8, RejectReason::kNameless},
        {11, RejectReason::kNoEnd}}},
      {"BEGIN:VCARD\nFN:a\nNOTE:" + large + "\nEND:VCARD\nBEGIN:VCARD\nFN:b\nEND:VCARD\n",
       1,
       {{1, RejectReason::kTooLarge}}},
      // A row that does not end costs its first line only.
      {"name,fax\n\"" + half + "\n" + half + "\nx\",1\nb,2\n,\n,\"3\n",
       3,
       {{2, RejectReason::kTooLarge}, {7, RejectReason::kNoEnd}}},
      {"name,fax\n\"a,1\nb,\"\"\n\nc,3\n" + large + large + "\"\n\"d\ne\",4\n\"f,5\n\"\"g\"\"\nh,6",
       5,
       {{2, RejectReason::kTooLarge}, {6, RejectReason::kTooLarge}, {9, RejectReason::kNoEnd}}},
      // So does one that would be ended by the mark of a later row.
      {"name,fax,note\na,1,\"ok\nb,2,x\nc,3,\"a \"\"b\"\" c\"\n\"d\nd\" ,4,\"e\nf\",5\n",
       3,
       {{2, RejectReason::kNoEnd}}},
      {"name;fax\n\"a;1\nb;\"2\"\n\"c\";\"3\"\n", 2, {{2, RejectReason::kNoEnd}}},
      {"name;fax;mobile\na;1;1,7E+11\nb;2;4.9e+9\nc;3;1E\nd;4;12E+1\ne;3E+10;1\n",
       2,
       {{2, RejectReason::kMalformed}, {3, RejectReason::kMalformed}, {6, RejectReason::kMalformed}}},
      {"name\tfax\n\"a\nb\"\t1\n", 1, {}},
      {"dn: cn=a\ncn: a\ndescription: " + large +
           "\n\ndn: cn=b\ncn: b\n\ndn: o=x\nobjectClass: organization\no: x\n\n"
           "dn: cn=c\nchangetype: delete\n\ncn: d\njpegPhoto:< file:///x\n\ncn: e\nno attribute\n",
       1,
       {{1, RejectReason::kTooLarge},
        {8, RejectReason::kNotARecord},
        {12, RejectReason::kUnsupported},
        {15, RejectReason::kUnsupported},
        {18, RejectReason::kMalformed}}},
  };
  for (const auto& c : cases) {
    const FileRead file = ReadFile(c.file);
    EXPECT_EQ(file.contacts.size(), c.contacts) << c.file.substr(0, 60);
    EXPECT_EQ(file.rejected, c.rejected) << c.file.substr(0, 60);
  }
  const std::pair<const char*, OpenResult> opened[] = {{"", OpenResult::kEmpty},
                                                       {" \n\t", OpenResult::kEmpty},
                                                       {"just a text\n", OpenResult::kUnknownFormat},
                                                       {"a,b\nc,d\n", OpenResult::kUnknownColumns}};
  for (const auto& [bytes, result] : opened) EXPECT_EQ(ReadFile(bytes).opened, result) << bytes;
}

TEST(ContactIo, EncodingsAreFoundOrTakenAsNamed) {
  using namespace std::string_literals;
  const std::string card = "BEGIN:VCARD\nFN:\xC3\xA4\nEND:VCARD\n";
  const auto wide = [&card](bool isBig) {
    std::string bytes;
    for (std::size_t i = 0; i < card.size(); ++i) {
      const char low = card[i] == '\xC3' ? card[++i] == '\xA4' ? '\xE4' : '?' : card[i];
      bytes += isBig ? std::string{'\0', low} : std::string{low, '\0'};
    }
    return bytes;
  };
  for (const std::string& file :
       {card, "\xEF\xBB\xBF" + card, wide(false), wide(true), "\xFF\xFE" + wide(false),
        "\xFE\xFF" + wide(true), "BEGIN:VCARD\nFN:\xE4\nEND:VCARD\n"s})
    EXPECT_EQ(LinesOf(file), "FN:\xC3\xA4\n");
  ReadOptions named;
  named.charset = "Shift_JIS";
  EXPECT_EQ(LinesOf("name,fax\n\x8D\xB2\x93\xA1 \x83\x5C,1\n", named),
            "FN:\xE4\xBD\x90\xE8\x97\xA4 \xE3\x82\xBD\nTEL;TYPE=fax:1\n");
  named.charset = "no such set";
  EXPECT_EQ(ReadFile(card, named).opened, OpenResult::kUnknownCharset);
}

// A file of one format that is read as another, or that has nothing in it, is told from one whose records are rejected.
TEST(ContactIo, WhatIsNoContactFileIsRecognisedAsNone) {
  const struct {
    FileFormat format;
    const char* bytes;
    bool isRecognised;
  } cases[] = {
      {FileFormat::kVCard, "just a text\nof two lines\n", false},
      {FileFormat::kVCard, "END:VCARD\n", false},
      {FileFormat::kVCard, "BEGIN:VCARD\nNOTE:nameless\nEND:VCARD\n", true},
      {FileFormat::kVCard, "BEGIN:VCARD\nFN:without an end\n", true},
      {FileFormat::kLdif, "just a text\n\nof two lines\n", false},
      {FileFormat::kLdif, "version: 1\n", true},
      {FileFormat::kLdif, "dn: o=x\nobjectClass: organization\n", true},
      {FileFormat::kLdif, "cn: without a dn\n", true},
      {FileFormat::kCsv, "name,fax\n", true},
  };
  for (const auto& c : cases) {
    MemorySource source(c.bytes);
    ReadOptions options;
    options.format = c.format;
    OpenResult opened;
    const auto reader = ContactReader::Open(source, options, &opened);
    ASSERT_NE(reader, nullptr) << c.bytes;
    for (Contact contact; reader->Next(&contact) != ReadResult::kEnd;) continue;
    EXPECT_EQ(reader->hasRecognised(), c.isRecognised) << c.bytes;
  }
}

// The system's own tables lack some of these.
TEST(ContactIo, CharacterSetsAreKnownByName) {
  const struct {
    const char *charset, *bytes, *text;
  } cases[] = {
      {"ISO-2022-JP", "\x1B$B:4F#\x1B(B", "\xE4\xBD\x90\xE8\x97\xA4"},
      {"GB18030",
       "\xD5\xC5\xCE\xB0\x95"
       "2\x82"
       "6",
       "\xE5\xBC\xA0\xE4\xBC\x9F\xF0\xA0\x80\x80"},
      {"EUC-JP", "\xBA\xB4\xC6\xA3", "\xE4\xBD\x90\xE8\x97\xA4"},
      {"KOI8-R", "\xE9\xD7\xC1\xCE", "\xD0\x98\xD0\xB2\xD0\xB0\xD0\xBD"},
      {"KOI8-U", "\xB7\xD7\xC7\xC1", "\xD0\x87\xD0\xB2\xD0\xB3\xD0\xB0"},
      {"windows-1251", "\xC8\xE2\xE0\xED", "\xD0\x98\xD0\xB2\xD0\xB0\xD0\xBD"},
      {"windows-1256", "\xC3\xCD\xE3\xCF", "\xD8\xA3\xD8\xAD\xD9\x85\xD8\xAF"},
      {"ISO-8859-2", "\xA3ukasz", "\xC5\x81ukasz"},
      {"ISO-8859-7", "\xC3\xE9\xFE\xF1\xE3\xEF\xF2",
       "\xCE\x93\xCE\xB9\xCF\x8E\xCF\x81\xCE\xB3\xCE\xBF\xCF\x82"},
      {"ISO-8859-15", "\xBC \xA4", "\xC5\x92 \xE2\x82\xAC"},
      {"Big5", "\xB1i\xB0\xB6", "\xE5\xBC\xB5\xE5\x81\x89"},
      {"EUC-KR", "\xB1\xE8\xC3\xB6\xBC\xF6", "\xEA\xB9\x80\xEC\xB2\xA0\xEC\x88\x98"},
  };
  for (const auto& c : cases) {
    const std::string card = std::string("BEGIN:VCARD\nVERSION:2.1\nFN;CHARSET=") + c.charset + ":" + c.bytes;
    EXPECT_EQ(LinesOf(card + "\nEND:VCARD\n"), std::string("FN:") + c.text + "\n") << c.charset;
    ReadOptions named;
    named.charset = c.charset;
    EXPECT_EQ(LinesOf(std::string("name,fax\n") + c.bytes + ",1\n", named),
              std::string("FN:") + c.text + "\nTEL;TYPE=fax:1\n")
        << c.charset;
  }
}

// The header rows of one mail program in its languages, of which each has to give the same contact.
TEST(ContactIo, HeaderRowsAreKnownInOurLanguages) {
  for (const char* header : {
           "Display Name,First Name,Last Name,Company,Department,Job Title,Business Fax,Home Fax,Other "
           "Fax,Business Phone,Mobile Phone,E-mail Address,Business Street,Business City,Business Postal "
           "Code,Business Country/Region,Notes",
           "Anzeigename,Vorname,Nachname,Firma,Abteilung,Position,Fax gesch\xC3\xA4"
           "ftlich,Fax privat,Weiteres Fax,Telefon gesch\xC3\xA4"
           "ftlich,Mobiltelefon,E-Mail-Adresse,Stra\xC3\x9F"
           "e gesch\xC3\xA4"
           "ftlich,Ort gesch\xC3\xA4"
           "ftlich,Postleitzahl gesch\xC3\xA4"
           "ftlich,Land/Region gesch\xC3\xA4"
           "ftlich,Notizen",
           "Nom complet,Pr\xC3\xA9nom,Nom,Soci\xC3\xA9t\xC3\xA9,Service,Titre,T\xC3\xA9l\xC3\xA9"
           "copie (bureau),T\xC3\xA9l\xC3\xA9"
           "copie (domicile),Autre t\xC3\xA9l\xC3\xA9"
           "copie,T\xC3\xA9l\xC3\xA9phone (bureau),T\xC3\xA9l. mobile,Adresse de messagerie,Rue "
           "(bureau),Ville (bureau),Code postal (bureau),Pays/R\xC3\xA9gion (bureau),Notes",
           "\xE8\xA1\xA8\xE7\xA4\xBA\xE5\x90\x8D,\xE5\x90\x8D,\xE5\xA7\x93,"
           "\xE4\xBC\x9A\xE7\xA4\xBE\xE5\x90\x8D,\xE9\x83\xA8\xE7\xBD\xB2,\xE5\xBD\xB9\xE8\x81\xB7,"
           "\xE4\xBC\x9A\xE7\xA4\xBE FAX,\xE8\x87\xAA\xE5\xAE\x85 "
           "FAX,\xE3\x81\x9D\xE3\x81\xAE\xE4\xBB\x96\xE3\x81\xAE "
           "FAX,\xE4\xBC\x9A\xE7\xA4\xBE\xE9\x9B\xBB\xE8\xA9\xB1,"
           "\xE6\x90\xBA\xE5\xB8\xAF\xE9\x9B\xBB\xE8\xA9\xB1,"
           "\xE9\x9B\xBB\xE5\xAD\x90\xE3\x83\xA1\xE3\x83\xBC\xE3\x83\xAB "
           "\xE3\x82\xA2\xE3\x83\x89\xE3\x83\xAC\xE3\x82\xB9,\xE7\x95\xAA\xE5\x9C\xB0 "
           "(\xE4\xBC\x9A\xE7\xA4\xBE),\xE5\xB8\x82\xE5\x8C\xBA\xE7\x94\xBA\xE6\x9D\x91 "
           "(\xE4\xBC\x9A\xE7\xA4\xBE),\xE9\x83\xB5\xE4\xBE\xBF\xE7\x95\xAA\xE5\x8F\xB7 "
           "(\xE4\xBC\x9A\xE7\xA4\xBE),\xE5\x9B\xBD "
           "(\xE4\xBC\x9A\xE7\xA4\xBE)/\xE5\x9C\xB0\xE5\x9F\x9F,\xE3\x83\xA1\xE3\x83\xA2",
       }) {
    EXPECT_EQ(LinesOf(std::string(header) + "\nA B,A,B,F,D,P,1,2,3,4,5,a@x,S,O,Z,C,N\n"),
              "FN:A B\nN:B;A;;;\nORG:F;D\nTITLE:P\nNOTE:N\nTEL;TYPE=fax,work:1\nTEL;TYPE=fax,home:2\n"
              "TEL;TYPE=fax,other:3\nTEL;TYPE=work:4\nTEL;TYPE=cell:5\nEMAIL:a@x\n"
              "ADR;TYPE=work:;;S;O;;Z;C\n")
        << header;
  }
}

TEST(ContactIo, NumbersAreComparedByTheirDigits) {
  const std::pair<const char*, const char*> cases[] = {{"+49 (40) 555-01", "+494055501"},
                                                       {"\xEF\xBC\x8B\xEF\xBC\x94\xEF\xBC\x99", "+49"},
                                                       {"\xD9\xA0\xD9\xA1", "01"},
                                                       {"123 x45", "123"},
                                                       {"123;ext=4", "123"},
                                                       {"12 Ext. 3", "12"},
                                                       {"0 4+9", "049"},
                                                       {"fax", ""},
                                                       {"+", ""}};
  for (const auto& [text, canonical] : cases) EXPECT_EQ(CanonicalNumber(text), canonical) << text;
  EXPECT_EQ(NumberKey("+49 40"), NumberKey("+4940"));
  EXPECT_NE(NumberKey("a"), NumberKey("b"));
}

}  // namespace
}  // namespace formats
