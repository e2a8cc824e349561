// What becomes of records that a book knows already.
#include <random>

#include "formats/contact_io.h"
#include "providers/book/text.h"
#include "tests/book/book_fixture.h"

namespace book::test {
namespace {

using ImportTest = BookTest;

// One letter a record: added, updated, equal, rejected.
std::string PutAll(Store& store, const std::vector<Contact>& records, bool isTrial = false) {
  std::unique_ptr<Import> import;
  EXPECT_EQ(store.BeginImport(isTrial, &import), S_OK);
  std::string results;
  for (const Contact& record : records) {
    PutResult result{};
    EXPECT_EQ(import->Put(record, &result, nullptr), S_OK);
    results += "auer"[static_cast<int>(result)];
  }
  EXPECT_EQ(import->Commit(), S_OK);
  return results;
}

Contact Titled(Contact contact, const std::string& title) {
  contact.title = title;
  return contact;
}

TEST_F(ImportTest, RecordsMeetTheirEntries) {
  const Contact anna = Person("Anna", {Fax("+1 1")}, "u1");
  const Contact plain = Person("Bert", {Fax("+1 2"), Phone("+1 3")});
  const Contact bare = Titled(Person("Cem"), "A");
  const struct {
    const char* what;
    std::vector<Contact> before, records;
    const char* results;
    Lines rows;
  } cases[] = {
      {"the same UID says something new", {anna}, {Titled(anna, "Boss")}, "u", {"Anna|+1 1"}},
      {"the same UID in other letters",
       {anna},
       {Person("Anna", {Fax("+1 1")}, "urn:uuid:U1")},
       "e",
       {"Anna|+1 1"}},
      {"another number replaces", {anna}, {Person("Anna", {Fax("+1 9")}, "u1")}, "u", {"Anna|+1 9"}},
      {"no UID: one same number is enough", {plain}, {Person("Bert", {Phone("+1 (3)")})}, "u", {"Bert|"}},
      {"no UID, another name", {plain}, {Person("Berta", {Fax("+1 2")})}, "a", {"Bert|+1 2", "Berta|+1 2"}},
      {"no UID, without the plus", {plain}, {Person("Bert", {Fax("1 2")})}, "a", {"Bert|+1 2", "Bert|1 2"}},
      {"two UIDs are two", {anna}, {Person("Anna", {Fax("+1 1")}, "u2")}, "a", {"Anna|+1 1", "Anna|+1 1"}},
      {"a UID finds what had none",
       {plain},
       {Person("Bert", {Fax("+1 2"), Phone("+1 3")}, "u3")},
       "e",
       {"Bert|+1 2"}},
      {"no number: the same again", {bare}, {bare, Titled(bare, "B")}, "ea", {"Cem|", "Cem|"}},
      {"no name", {}, {Person("", {Fax("+1 1")})}, "r", {}},
  };
  for (const auto& each : cases) {
    const auto store = OpenBook(L"book" + std::to_wstring(&each - cases) + L".orvab");
    PutAll(*store, each.before);
    EXPECT_EQ(PutAll(*store, each.records, /*isTrial=*/true), each.results) << each.what;
    EXPECT_EQ(PutAll(*store, each.records), each.results) << each.what;
    EXPECT_EQ(TextsOf(*store), each.rows) << each.what;
  }
}

TEST_F(ImportTest, AFileReadAgainIsEqualAlsoWhereItHoldsAContactTwice) {
  Contact list = Person("Board", {}, "list");
  list.isList = true;
  list.members.resize(4);
  list.members[0].uid = "u1";
  list.members[1].uid = list.members[1].name = "Bert";  // a name that might be a UID
  list.members[2].name = "Nobody";
  list.members[3].number = "+1 99";
  Contact more = Person("Anna", {Fax("+1 5")}, "u1");
  more.title = "Later";
  more.emails.resize(1);
  more.emails[0].text = "a@b.example";
  const std::vector<Contact> file = {
      list, Titled(Person("Anna", {Fax("+1 1")}, "u1"), "First"), Person("Bert", {Fax("+1 2")}),
      more, Person("Bert", {Phone("+1 2"), Fax("+1 7")}),         Person("Cem", {Fax("fax desk")})};
  const auto store = OpenBook();
  EXPECT_EQ(PutAll(*store, file), "aaauua");
  const Lines rows = {"Anna|+1 1", "Anna|+1 5", "Bert|+1 2", "Bert|+1 7", "Board|", "Cem|"};
  EXPECT_EQ(TextsOf(*store), rows);
  EXPECT_EQ(PutAll(*store, file), "eeeeee");
  EXPECT_EQ(TextsOf(*store), rows);
  Entry entry;
  ASSERT_EQ(store->Read(KeyOfUid("u1"), &entry), S_OK);
  EXPECT_EQ(entry.contact.title, "First");
  EXPECT_EQ(entry.contact.emails.size(), 1u);
  std::vector<Member> members;
  ASSERT_EQ(Look(*store)->Members(KeyOfUid("list"), 0, 9, &members), S_OK);
  ASSERT_EQ(members.size(), 4u);
  EXPECT_EQ(members[1].row.name, "Bert");
  EXPECT_EQ(members[0].row.number, "+1 1");
  EXPECT_FALSE(members[2].isOurs);
  // A file that says less than the merged entry changes nothing, one that says otherwise does.
  EXPECT_EQ(PutAll(*store, {Person("Anna", {Fax("+1 1")}, "u1")}), "e");
  EXPECT_EQ(PutAll(*store, {Person("Anna", {Fax("+1 8")}, "u1")}), "u");
}

// Reads a file of any format into the book, and says what became of its records.
std::string PutFile(Store& store, std::string_view bytes) {
  formats::MemorySource source(bytes);
  formats::OpenResult opened{};
  const auto reader = formats::ContactReader::Open(source, {}, &opened);
  std::unique_ptr<Import> import;
  if (!reader || FAILED(store.BeginImport(false, &import))) return "not opened";
  import->SetScope(reader->scope());
  std::string results;
  Contact contact;
  while (reader->Next(&contact) == formats::ReadResult::kRecord) {
    PutResult result{};
    EXPECT_EQ(import->Put(contact, &result, nullptr), S_OK);
    results += "auer"[static_cast<int>(result)];
  }
  EXPECT_EQ(import->Commit(), S_OK);
  return results;
}

TEST_F(ImportTest, AnEntryKeepsWhatAFileHasNoPlaceFor) {
  const std::string begin = "BEGIN:VCARD\nVERSION:4.0\n", end = "END:VCARD\n";
  const std::string uid = "UID:u1\n", names = "FN:Ida Ohm\nN:Ohm;Ida;;;\n",
                    org = "ORG:Kontor;Lager\nTITLE:Chefin\n", work = "TEL;TYPE=fax,work;PREF=1:+1 1\n",
                    home = "TEL;TYPE=fax,home:+1 2\n",
                    phones = "TEL;TYPE=voice,work:+1 3\nTEL;TYPE=cell;X-A=b:+1 4\n",
                    emails = "EMAIL;TYPE=work;PREF=1:a@x\nEMAIL:b@x\n",
                    address = "ADR;TYPE=work:;2nd floor;Kai 4;Hamburg;;20457;\n",
                    others =
                        "NOTE:n\nNICKNAME:I\nBDAY:1970-01-01\nURL:http://x\nCATEGORIES:A,B\nPHOTO:data:image/"
                        "png;base64,AAAA\n";
  const std::string rest = phones + emails + address + others;
  const std::string whole = uid + names + org + work + home + rest;
  const struct {
    const char *file, *result;
    std::string after;
  } cases[] = {
      {"Name,Fax\nIda Ohm,+1 1\n", "e", whole},
      {"UID,Name,Fax\nu1,Ida Ohm,+1 9\n", "u",
       uid + names + org + "TEL;TYPE=fax,work;PREF=1:+1 9\n" + home + rest},
      {"UID,Name,Home Fax\nu1,Ida Ohm,+1 9\n", "u",
       uid + names + org + work + "TEL;TYPE=fax,home:+1 9\n" + rest},
      {"UID,Home Fax\nu1,+1 2\n", "e", whole},
      {"UID,Name,Home Fax,Company\nu1,Ida Ohm,,Neu\n", "u",
       uid + names + "ORG:Neu;Lager\nTITLE:Chefin\n" + work + rest},
      {"UID,Name\nu1,Ida Volt\n", "u", uid + "FN:Ida Volt\n" + org + work + home + rest},
      {"UID,Name,E-mail,Nickname,Business City\nu1,Ida Ohm,b@x,J,Kiel\n", "u",
       uid + names + org + work + home + phones + emails + "ADR;TYPE=work:;2nd floor;Kai 4;Kiel;;20457;\n" +
           "NOTE:n\nNICKNAME:J\nBDAY:1970-01-01\nURL:http://x\nCATEGORIES:A,B\nPHOTO:data:image/"
           "png;base64,AAAA\n"},
      // An entry of a directory says what stands in it, of a kind of number all there are.
      {"dn: cn=Ida Ohm\nobjectClass: person\ncn: Ida Ohm\nsn: Ohm\nuid: u1\nmobile: +1 4\n", "e", whole},
      {"dn: cn=Ida Ohm\ncn: Ida Ohm\nuid: u1\ntitle: Frau\nfax: +1 2\nmail: c@x\nl: Kiel\n", "u",
       uid + names + "ORG:Kontor;Lager\nTITLE:Frau\nTEL;TYPE=fax,work;PREF=1:+1 2\n" + phones +
           "EMAIL;TYPE=work;PREF=1:c@x\nADR;TYPE=work:;2nd floor;;Kiel;;;\n" + others},
  };
  const auto same = [](const std::string& lines, const std::string& card) {
    Contact a, b;
    return formats::ReadCard(lines, &a) && formats::ReadCard(card, &b) && a == b;
  };
  for (const auto& each : cases) {
    const auto store = OpenBook(L"scope" + std::to_wstring(&each - cases) + L".orvab");
    ASSERT_EQ(PutFile(*store, begin + whole + end), "a");
    EXPECT_EQ(PutFile(*store, each.file), each.result) << each.file;
    Entry entry;
    ASSERT_EQ(store->Read(KeyOfUid("u1"), &entry), S_OK);
    for (auto& number : entry.contact.numbers) number.key = 0;
    std::string card;
    formats::WriteCard(entry.contact, &card);
    EXPECT_TRUE(same(begin + each.after + end, card)) << each.file << card;
    EXPECT_EQ(PutFile(*store, each.file), "e") << each.file;
    // What a book writes says nothing new to it.
    for (const auto format : {formats::WriteFormat::kCsv, formats::WriteFormat::kLdif}) {
      formats::StringSink sink;
      const auto writer = formats::ContactWriter::Create(sink, format);
      EXPECT_TRUE(writer->Write(entry.contact) && writer->Finish());
      EXPECT_EQ(PutFile(*store, sink.bytes), "e") << sink.bytes << card;
    }
  }
}

// The table that a book wrote, edited by hand: the order and the preferred number stay with the numbers that stay.
TEST_F(ImportTest, AnEditedTableKeepsTheOrderOfTheNumbersThatStay) {
  const std::string begin = "BEGIN:VCARD\nVERSION:4.0\nUID:u1\nFN:Ida\n", end = "END:VCARD\n",
                    work = "TEL;TYPE=fax,work:+49 55 1\n", home = "TEL;TYPE=fax,home;PREF=1:+49 55 2\n",
                    lines = "TEL;TYPE=home:3\nTEL;TYPE=home:4\nTEL;TYPE=home:5\n";
  const struct {
    std::string card, from, to;
    Lines after;  // the preferred one with a star
  } cases[] = {
      {work + home,
       "+49 55 1,+49 55 2,,,,,,,,",
       "+49 55 1,+49 55 2,,,,,,,7,",
       {"+49 55 1", "+49 55 2*", "7"}},
      {home + work,
       "+49 55 1,+49 55 2,,,,,,,,",
       "+49 55 1,+49 55 2,,,8,,,,7,",
       {"+49 55 2*", "+49 55 1", "8", "7"}},
      {work + home, "+49 55 1,", ",", {"+49 55 2*"}},
      {work + home, "+49 55 1,+49 55 2,,,,,,,,", ",+49 55 2,,,,,,,7,", {"+49 55 2*", "7"}},
      {work + home, "+49 55 2", "+49 55 9", {"+49 55 1", "+49 55 9*"}},
      {work + home, "1 2*", "2 1*", {"+49 55 2", "+49 55 1*"}},
      {work + home, "1 2*", "01. Feb", {"+49 55 1", "+49 55 2*"}},
      {home + lines + work, "home phone: 4\n", "", {"+49 55 2*", "3", "5", "+49 55 1"}},
  };
  for (const auto& each : cases) {
    const auto store = OpenBook(L"order" + std::to_wstring(&each - cases) + L".orvab");
    ASSERT_EQ(PutFile(*store, begin + each.card + end), "a");
    Entry entry;
    ASSERT_EQ(store->Read(KeyOfUid("u1"), &entry), S_OK);
    formats::StringSink sink;
    const auto writer = formats::ContactWriter::Create(sink, formats::WriteFormat::kCsv);
    EXPECT_TRUE(writer->Write(entry.contact) && writer->Finish());
    EXPECT_EQ(PutFile(*store, sink.bytes), "e") << sink.bytes;
    const size_t at = sink.bytes.find(each.from);
    ASSERT_NE(at, std::string::npos) << each.from << sink.bytes;
    const std::string file = sink.bytes.replace(at, each.from.size(), each.to);
    PutFile(*store, file);
    ASSERT_EQ(store->Read(KeyOfUid("u1"), &entry), S_OK);
    Lines after;
    for (const auto& number : entry.contact.numbers)
      after.push_back(number.text + (number.isPreferred ? "*" : ""));
    EXPECT_EQ(after, each.after) << file;
    EXPECT_EQ(PutFile(*store, file), "e") << file;
  }
}

// A table names an entry of another provider at most, a directory's entry need not name any member.
TEST_F(ImportTest, EntriesOfOtherProvidersStayInTheirList) {
  Contact list = Person("Team", {}, "l1");
  list.isList = true;
  list.members.resize(3);
  list.members[0].uid = "u1";
  list.members[1].entryId = std::string(24, '\5');
  list.members[1].name = "Firma";
  list.members[2].uid = "u2";
  const std::string csv = "UID,Name,Contact Type,Members\nl1,Team,list,",
                    ldif = "dn: cn=Team\ncn: Team\nuid: l1\n";
  const struct {
    std::string file;
    const char* result;
    Lines members;
  } cases[] = {{csv + "\"urn:uuid:u1\nFirma\nurn:uuid:u2\"\n", "e", {"u1", "Firma", "u2"}},
               {csv + "\"urn:uuid:u1\nurn:uuid:u2\"\n", "e", {"u1", "Firma", "u2"}},
               {csv + "\"urn:uuid:u2\nurn:uuid:u1\nurn:uuid:u3\"\n", "u", {"u2", "u1", "Firma", "u3"}},
               {csv + "\"urn:uuid:u3\nFirma\"\n", "u", {"u3", "Firma"}},
               {csv + "\n", "u", {"Firma"}},
               {ldif + "objectClass: groupOfNames\n", "e", {"u1", "Firma", "u2"}},
               {ldif + "member: uid=u3\n", "u", {"Firma", "u3"}}};
  for (const auto& each : cases) {
    const auto store = OpenBook(L"list" + std::to_wstring(&each - cases) + L".orvab");
    PutAll(*store, {Person("Anna", {}, "u1"), Person("Bert", {}, "u2"), Person("Cem", {}, "u3"), list});
    EXPECT_EQ(PutFile(*store, each.file), each.result) << each.file;
    Entry entry;
    ASSERT_EQ(store->Read(KeyOfUid("l1"), &entry), S_OK);
    Lines members;
    for (const formats::ContactMember& member : entry.contact.members)
      members.push_back(member.entryId == list.members[1].entryId ? "Firma" : member.uid);
    EXPECT_EQ(members, each.members) << each.file;
    EXPECT_EQ(PutFile(*store, each.file), "e") << each.file;
  }
}

TEST_F(ImportTest, ADeletedEntryComesBackWithItsKey) {
  const auto store = OpenBook();
  const Contact anna = Person("Anna", {Fax("+1 1")}, "u1");
  PutAll(*store, {anna});
  const RowKey row{KeyOfUid("u1"), 0};
  ASSERT_EQ(store->Remove({&row, 1}, nullptr), S_OK);
  EXPECT_EQ(PutAll(*store, {anna, anna}), "ae");
  EXPECT_EQ(TextsOf(*store), Lines{"Anna|+1 1"});
}

TEST_F(ImportTest, EditedNumbersKeepTheirKeysWhenTheFileComesAgain) {
  const auto store = OpenBook();
  const EntryKey key = Add(*store, Person("Anna", {Fax("+1 1")}, "u1"));
  Entry entry;
  ASSERT_EQ(store->Read(key, &entry), S_OK);
  entry.contact.numbers[0].text = "+1 2";
  ASSERT_EQ(store->Change(key, entry.contact, kAnyVersion, nullptr), S_OK);
  EXPECT_EQ(PutAll(*store, {Person("Anna", {Fax("+1 2")}, "u1")}), "e");
  // What one book gives, another takes without a difference.
  Entry given;
  ASSERT_EQ(store->Read(key, &given), S_OK);
  const auto other = OpenBook(L"b.orvab");
  EXPECT_EQ(PutAll(*other, {given.contact}), "a");
  Entry taken;
  ASSERT_EQ(other->Read(key, &taken), S_OK);
  EXPECT_EQ(taken.contact, given.contact);
  EXPECT_EQ(PutAll(*other, {given.contact}), "e");
}

TEST_F(ImportTest, WithoutCommitNothingIsInTheBook) {
  const auto store = OpenBook();
  {
    std::unique_ptr<Import> import;
    ASSERT_EQ(store->BeginImport(false, &import), S_OK);
    PutResult result{};
    EXPECT_EQ(import->Put(Person("A"), &result, nullptr), S_OK);
    EXPECT_EQ(TextsOf(*store), Lines{});
  }
  EXPECT_EQ(TextsOf(*store), Lines{});
  EXPECT_EQ(store->Add(Person("B"), nullptr, nullptr), S_OK);
}

}  // namespace
}  // namespace book::test
