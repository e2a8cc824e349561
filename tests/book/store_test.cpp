// Entries, rows, searches and lists of one book.
#include <algorithm>

#include "providers/book/text.h"
#include "tests/book/book_fixture.h"

namespace book::test {
namespace {

using StoreTest = BookTest;

TEST_F(StoreTest, RowsAreANumberEachInTheOrderOfNames) {
  const auto store = OpenBook();
  EXPECT_EQ(TextsOf(*store), Lines{});
  Add(*store, Person("Zo\xC3\xAB", {Fax("+1 2")}));
  Add(*store, Person("\xC3\x84nne", {Fax("+1 3", Place::kWork), Phone("+1 4"), Fax("+1 5", Place::kHome)}));
  Add(*store, Person("anna", {Phone("+1 6")}));
  Contact list = Person("Board");
  list.isList = true;
  Add(*store, list);
  EXPECT_EQ(TextsOf(*store),
            (Lines{"anna|", "\xC3\x84nne|+1 3", "\xC3\x84nne|+1 5", "Board|", "Zo\xC3\xAB|+1 2"}));
  const std::vector<Row> rows = AllRows(*Look(*store));
  EXPECT_EQ(rows[1].place, Place::kWork);
  EXPECT_TRUE(rows[1].isOneOfSeveral && rows[2].isOneOfSeveral && !rows[0].isOneOfSeveral);
  EXPECT_TRUE(rows[3].isList && !rows[0].isList);
  EXPECT_EQ(rows[0].key.number, 0u);
  EXPECT_NE(rows[1].key.number, rows[2].key.number);
}

TEST_F(StoreTest, ContactsComeBackAsTheyWent) {
  const auto store = OpenBook();
  Contact contact =
      Person("Anna Berg", {Fax("+46 31 555", Place::kWork), Fax("+46 31 555", Place::kHome)}, "my-uid");
  contact.given = "Anna";
  contact.company = "Nordhamn";
  contact.emails = {{"anna@nordhamn.example", Place::kWork, true, {}}};
  contact.others = {"X-SHOE-SIZE:38"};
  contact.note = "two\nlines";
  const EntryKey key = Add(*store, contact);
  EXPECT_EQ(key, KeyOfUid("MY-UID"));
  Entry entry;
  ASSERT_EQ(store->Read(key, &entry), S_OK);
  EXPECT_EQ(entry.version, 1u);
  // Two numbers of one text are still two.
  EXPECT_NE(entry.contact.numbers[0].key, entry.contact.numbers[1].key);
  Contact plain = entry.contact;
  for (auto& number : plain.numbers) number.key = 0;
  EXPECT_EQ(plain, contact);
  // An edited number keeps its key, and so the identifier of its row.
  const uint32_t numberKey = entry.contact.numbers[1].key;
  entry.contact.numbers[1].text = "+46 8 1";
  uint32_t version = 0;
  ASSERT_EQ(store->Change(key, entry.contact, entry.version, &version), S_OK);
  EXPECT_EQ(version, 2u);
  Row row;
  ASSERT_EQ(Look(*store)->RowOf({key, numberKey}, &row), S_OK);
  EXPECT_EQ(row.number, "+46 8 1");
  EXPECT_EQ(row.company, "Nordhamn");
  EXPECT_EQ(row.email, "anna@nordhamn.example");
}

TEST_F(StoreTest, ChangesMeetWhatOthersDid) {
  const auto store = OpenBook();
  const EntryKey key = Add(*store, Person("A", {}, "u"));
  EXPECT_EQ(store->Add(Person("B", {}, "U"), nullptr, nullptr), MAPI_E_COLLISION);
  EXPECT_EQ(store->Change(key, Person("B"), 1, nullptr), S_OK);
  EXPECT_EQ(store->Change(key, Person("C"), 1, nullptr), MAPI_E_OBJECT_CHANGED);
  EXPECT_EQ(store->Change(key, Person("C"), kAnyVersion, nullptr), S_OK);
  const RowKey row{key, 0};
  std::vector<std::size_t> missing;
  EXPECT_EQ(store->Remove({&row, 1}, &missing), S_OK);
  EXPECT_EQ(missing.size(), 0u);
  EXPECT_EQ(store->Remove({&row, 1}, &missing), S_OK);
  EXPECT_EQ(missing.size(), 1u);
  EXPECT_EQ(store->Change(key, Person("D"), kAnyVersion, nullptr), MAPI_E_OBJECT_DELETED);
  EXPECT_EQ(store->Change(KeyOfUid("nobody"), Person("D"), kAnyVersion, nullptr), MAPI_E_NOT_FOUND);
  Entry entry;
  EXPECT_EQ(store->Read(key, &entry), MAPI_E_NOT_FOUND);
}

TEST_F(StoreTest, DeletedEntriesComeBackWithTheirKeyAndSearches) {
  const auto store = OpenBook();
  const EntryKey key = Add(*store, Person("Gone Girl", {Fax("+1 22"), Fax("+1 33")}));
  Entry entry;
  ASSERT_EQ(store->Read(key, &entry), S_OK);
  const RowKey second{key, entry.contact.numbers[1].key};
  const RowKey first{key, entry.contact.numbers[0].key};
  // One of several numbers goes alone; the last one takes the contact along.
  ASSERT_EQ(store->Remove({&second, 1}, nullptr), S_OK);
  EXPECT_EQ(TextsOf(*store), Lines{"Gone Girl|+1 22"});
  ASSERT_EQ(store->Remove({&first, 1}, nullptr), S_OK);
  EXPECT_EQ(TextsOf(*store), Lines{});
  std::vector<RowRef> refs;
  EXPECT_EQ(Look(*store)->FindWords("girl", 10, &refs), S_OK);
  EXPECT_TRUE(refs.empty());
  std::vector<DeletedEntry> deleted;
  ASSERT_EQ(store->Deleted(&deleted), S_OK);
  ASSERT_EQ(deleted.size(), 1u);
  EXPECT_EQ(deleted[0].name, "Gone Girl");
  ASSERT_EQ(store->Restore(deleted[0].key), S_OK);
  EXPECT_EQ(TextsOf(*store), Lines{"Gone Girl|+1 22"});
  const auto view = Look(*store);
  EXPECT_EQ(view->FindWords("girl", 10, &refs), S_OK);
  EXPECT_EQ(refs.size(), 1u);
}

TEST_F(StoreTest, SearchesFindWithoutAccentsByAnyWordAndByDigitsFromEitherEnd) {
  const auto store = OpenBook();
  Contact jurgen = Person("J\xC3\xBCrgen M\xC3\xBCller", {Fax("+49 (30) 123-456"), Fax("+49 40 7")});
  jurgen.company = "Hafen & S\xC3\xB6hne";
  jurgen.department = "Einkauf/Lager";
  Add(*store, jurgen);
  Add(*store, Person("Anna-Lena", {Phone("030 9456")}));
  Contact list = Person("Board", {Fax("+358 9 1")});
  list.isList = true;
  Add(*store, list);
  const Lines both = {"J\xC3\xBCrgen M\xC3\xBCller|+49 (30) 123-456", "J\xC3\xBCrgen M\xC3\xBCller|+49 40 7"};
  const auto view = Look(*store);
  const struct {
    const char* text;
    bool isNumber;
    Lines found;
  } cases[] = {
      {"jurg", false, both},
      {"M\xC3\xBCLL jur", false, both},
      {"sohne lag", false, both},
      {"mueller", false, {}},
      {"jurg anna", false, {}},
      {"lena", false, {"Anna-Lena|"}},
      {"anna-l", false, {"Anna-Lena|"}},
      {"\" OR *", false, {}},
      {"", false, {}},
      {"+49 30", true, {both[0]}},
      {"3-456", true, {both[0]}},
      {"9 4-56", true, {"Anna-Lena|"}},
      {"456", true, {"Anna-Lena|", both[0]}},
      {"0049 30", true, {both[0]}},
      {"030 123456", true, {both[0]}},
      {"030 1234", true, {}},
      {"047", true, {}},
      {"30123", true, {}},
      {"+358", true, {"Board|"}},
      {"+", true, {}},
  };
  for (const auto& each : cases) {
    std::vector<RowRef> refs;
    EXPECT_EQ(each.isNumber ? view->FindDigits(each.text, 10, &refs) : view->FindWords(each.text, 10, &refs),
              S_OK);
    EXPECT_EQ(TextsOf(*view, refs), each.found) << each.text;
  }
}

TEST_F(StoreTest, ColumnsAreFoundAndSortedWithoutCaseAndAccents) {
  const auto store = OpenBook();
  const struct {
    const char* name;
    const char* company;
  } people[] = {{"Berg", "zeta"}, {"Ahl", "\xC3\x89tude"}, {"Cem", ""}, {"Dyk", "etude 2"}, {"Ek", "Zeta"}};
  for (const auto& each : people) {
    Contact contact = Person(each.name);
    contact.company = each.company;
    Add(*store, contact);
  }
  const auto view = Look(*store);
  const struct {
    Match match;
    const char* text;
    Lines found;
  } cases[] = {
      {Match::kEquals, "ETUDE", {"Ahl|"}},
      {Match::kPrefix, "\xC3\xA9tud", {"Ahl|", "Dyk|"}},
      {Match::kContains, "ET", {"Ahl|", "Berg|", "Dyk|", "Ek|"}},
      {Match::kExists, "", {"Ahl|", "Berg|", "Dyk|", "Ek|"}},
      {Match::kEquals, "none", {}},
  };
  std::vector<RowRef> refs;
  for (const auto& each : cases) {
    EXPECT_EQ(view->FindText(Column::kCompany, each.match, each.text, &refs), S_OK);
    EXPECT_EQ(TextsOf(*view, refs), each.found) << each.text;
  }
  const SortColumn up[] = {{Column::kCompany, false}};
  const SortColumn down[] = {{Column::kCompany, true}, {Column::kName, true}};
  EXPECT_EQ(view->Order(up, &refs), S_OK);
  EXPECT_EQ(TextsOf(*view, refs), (Lines{"Cem|", "Ahl|", "Dyk|", "Berg|", "Ek|"}));
  EXPECT_EQ(view->Order(down, &refs), S_OK);
  EXPECT_EQ(TextsOf(*view, refs), (Lines{"Ek|", "Berg|", "Dyk|", "Ahl|", "Cem|"}));
}

TEST_F(StoreTest, NamesAndMailAreFoundByTheirBeginningInTheDefaultOrder) {
  const auto store = OpenBook();
  const EntryKey changed = Add(*store, Person("Other"));
  for (const char* name : {"Zo\xC3\xAB", "zoe b", "Anna"}) {
    Contact contact = Person(name, {Fax("+1 1"), Fax("+1 2")});
    contact.emails.resize(1);
    contact.emails[0].text = name[0];
    contact.emails[0].text.append("o@Nordhamn.example");
    Add(*store, contact);
  }
  Contact contact = Person("Other");
  contact.emails.resize(1);
  contact.emails[0].text = "zoo@b.example";
  ASSERT_EQ(store->Change(changed, contact, kAnyVersion, nullptr), S_OK);
  contact.emails[0].text = "new@b.example";
  ASSERT_EQ(store->Change(changed, contact, kAnyVersion, nullptr), S_OK);
  const auto view = Look(*store);
  const Lines both = {"Zo\xC3\xAB|+1 1", "Zo\xC3\xAB|+1 2", "zoe b|+1 1", "zoe b|+1 2"};
  const struct {
    Column column;
    Match match;
    const char* text;
    Lines found;
  } cases[] = {
      {Column::kName, Match::kPrefix, "ZOE", both},
      {Column::kName, Match::kEquals, "zoe", {both[0], both[1]}},
      {Column::kName, Match::kContains, "E B", {both[2], both[3]}},
      {Column::kEmail, Match::kPrefix, "ZO", both},
      {Column::kEmail, Match::kEquals, "zo@nordhamn.EXAMPLE", both},
      {Column::kEmail, Match::kEquals, "zo@nordhamn", {}},
      {Column::kEmail, Match::kPrefix, "new", {"Other|"}},
  };
  for (const auto& each : cases) {
    std::vector<RowRef> refs;
    EXPECT_EQ(view->FindText(each.column, each.match, each.text, &refs), S_OK);
    EXPECT_EQ(TextsOf(*view, refs), each.found) << each.text;
  }
}

TEST_F(StoreTest, NamesAreSoughtByTheirBeginning) {
  const auto store = OpenBook();
  for (const char* name : {"Anna", "\xC3\x84nne", "Anton", "O'Brien", "\xF0\x9F\x98\x80", "Zed", "Anna"})
    Add(*store, Person(name));
  const auto view = Look(*store);
  const struct {
    const char* prefix;
    uint64_t first, end;
  } cases[] = {{"ann", 0, 3}, {"an", 0, 4}, {"ANTON", 3, 4},
               {"o'b", 4, 5}, {"ob", 5, 5}, {"zz", 6, 6},
               {"", 0, 7},    {"-", 0, 0},  {"\xF0\x9F\x98\x80", 6, 7}};
  for (const auto& each : cases) {
    uint64_t first = 0, end = 0;
    EXPECT_EQ(view->SeekName(each.prefix, &first, &end), S_OK);
    EXPECT_EQ(first, each.first) << each.prefix;
    EXPECT_EQ(end, each.end) << each.prefix;
  }
  std::vector<RowRef> refs;
  EXPECT_EQ(view->FindName("ANNA", 10, &refs), S_OK);
  EXPECT_EQ(refs.size(), 2u);
  const std::vector<Row> rows = AllRows(*view);
  EXPECT_TRUE(rows[0].hasNamesake && rows[1].hasNamesake && !rows[2].hasNamesake);
  for (uint64_t i = 0; i < rows.size(); ++i) {
    uint64_t position = 0;
    EXPECT_EQ(view->PositionOf(rows[i].ref, &position), S_OK);
    EXPECT_EQ(position, i);
  }
}

// Whichever form tables list: the other one finds the person too, where nobody is listed so.
TEST_F(StoreTest, NamesAreFoundInEitherFormAndInPlainLetters) {
  const struct {
    const char *name, *given, *surname;
  } people[] = {{"Jane Doe", "Jane", "Doe"},
                {"Dr. J. Strau\xC3\x9F", "Johann", "Strau\xC3\x9F"},
                {"\xC5\x81ukasz \xC3\x98ster\xC4\x91", "\xC5\x81ukasz", "\xC3\x98ster\xC4\x91"},
                {"Nordhamn", "", ""}};
  for (const auto& each : people) {
    Contact contact = Person(each.name);
    contact.given = each.given;
    contact.surname = each.surname;
    Add(*OpenBook(), contact);
  }
  const struct {
    const char *text, *found;
  } cases[] = {{"jane d", "Jane Doe|"},
               {"DOE, j", "Jane Doe|"},
               {"strauss, jo", "Dr. J. Strau\xC3\x9F|"},
               {"dr. j. strauss", "Dr. J. Strau\xC3\x9F|"},
               {"lukasz osterd", "\xC5\x81ukasz \xC3\x98ster\xC4\x91|"},
               {"osterd, luk", "\xC5\x81ukasz \xC3\x98ster\xC4\x91|"},
               {"nord", "Nordhamn|"}};
  for (const NameForm form : {NameForm::kAsWritten, NameForm::kLastFirst}) {
    Options options;
    options.names = form;
    const auto store = OpenBook(L"a.orvab", options);
    const auto view = Look(*store);
    std::vector<RowRef> refs;
    for (const auto& each : cases) {
      EXPECT_EQ(view->FindText(Column::kName, Match::kPrefix, each.text, &refs), S_OK);
      EXPECT_EQ(TextsOf(*view, refs), Lines{each.found}) << each.text;
    }
    for (const char* words : {"johann strauss", "STRAU\xC3\x9F", "j strau"}) {
      EXPECT_EQ(view->FindWords(words, 10, &refs), S_OK);
      EXPECT_EQ(TextsOf(*view, refs), Lines{cases[2].found}) << words;
    }
    for (const char* name : {"Jane Doe", "doe, jane"}) {
      EXPECT_EQ(view->FindName(name, 10, &refs), S_OK);
      EXPECT_EQ(TextsOf(*view, refs), Lines{"Jane Doe|"}) << name;
    }
  }
  // What was indexed for the parts of a name is taken out with it.
  const auto store = OpenBook();
  std::vector<RowRef> refs;
  EXPECT_EQ(Look(*store)->FindWords("johann", 10, &refs), S_OK);
  const RowKey row{AllRows(*Look(*store))[0].key.entry, 0};
  ASSERT_EQ(refs.size(), 1u);
  ASSERT_EQ(store->Remove({&row, 1}, nullptr), S_OK);
  EXPECT_EQ(Look(*store)->FindWords("johann", 10, &refs), S_OK);
  EXPECT_TRUE(refs.empty());
}

// Few of what very many have are come by in another way than all of them.
TEST_F(StoreTest, TheFirstOfVeryManyAreThoseOfAll) {
  const auto store = OpenBook();
  std::unique_ptr<Import> import;
  ASSERT_EQ(store->BeginImport(false, &import), S_OK);
  constexpr unsigned kPeople = 9000;
  for (unsigned i = 0; i < kPeople; ++i) {
    const std::string digits = std::to_string(1'000'000'000 + i * 7919 % kPeople);
    Contact contact = Person("N" + digits, {Phone("+47 " + digits), Fax("+46 " + digits + "00")});
    contact.company = i % 3 == 0 ? "Other" : "Gr\xC3\xB8nn Havn";
    contact.department = i * 7919 % kPeople < 8500 ? "" : "Havn";
    PutResult result{};
    ASSERT_EQ(import->Put(contact, &result, nullptr), S_OK);
  }
  ASSERT_EQ(import->Commit(), S_OK);
  const auto view = Look(*store);
  const struct {
    const char* text;
    HRESULT (View::*find)(std::string_view, std::size_t, std::vector<RowRef>*);
  } cases[] = {{"gronn hav", &View::FindWords}, {"n1", &View::FindWords},     {"+46", &View::FindDigits},
               {"47 1", &View::FindDigits},     {"00471", &View::FindDigits}, {"00", &View::FindDigits}};
  for (const auto& each : cases) {
    std::vector<RowRef> first, all;
    EXPECT_EQ((*view.*each.find)(each.text, 50, &first), S_OK);
    EXPECT_EQ((*view.*each.find)(each.text, kPeople, &all), S_OK);
    EXPECT_GT(all.size(), 4000u) << each.text;
    all.resize(50);
    EXPECT_EQ(first, all) << each.text;
  }
}

TEST_F(StoreTest, ALookStaysAsItIsUntilItIsTakenAnew) {
  const auto store = OpenBook();
  Add(*store, Person("A"));
  const auto view = Look(*store);
  Add(*store, Person("B"));
  EXPECT_EQ(Texts(AllRows(*view)), Lines{"A|"});
  bool changed = false;
  EXPECT_EQ(view->Refresh(&changed), S_OK);
  EXPECT_TRUE(changed);
  EXPECT_EQ(Texts(AllRows(*view)), (Lines{"A|", "B|"}));
  EXPECT_EQ(view->Refresh(&changed), S_OK);
  EXPECT_FALSE(changed);
}

TEST_F(StoreTest, ALookAtARemoteBookHoldsNoLockAndTellsWhatIsGone) {
  Options options;
  options.isRemote = true;
  const auto store = OpenBook(L"a.orvab", options);
  const RowKey row{Add(*store, Person("A", {Fax("+1 1")})), 0};
  Add(*store, Person("B"));
  const auto view = Look(*store);
  ASSERT_EQ(store->Remove({&row, 1}, nullptr), S_OK);
  Add(*store, Person("Aa"));
  EXPECT_EQ(Texts(AllRows(*view)), (Lines{"gone", "B|"}));
  EXPECT_EQ(view->Refresh(nullptr), S_OK);
  EXPECT_EQ(Texts(AllRows(*view)), (Lines{"Aa|", "B|"}));
}

Member MemberOfEntry(const EntryKey& key, const std::string& name) {
  Member member;
  member.isOurs = true;
  member.key = {key, 0};
  member.name = name;
  return member;
}

std::vector<std::string> MemberTexts(Store& store, const EntryKey& list) {
  std::vector<Member> members;
  EXPECT_EQ(Look(store)->Members(list, 0, 100, &members), S_OK);
  std::vector<std::string> texts;
  for (const Member& member : members)
    texts.push_back(member.isGone ? "gone " + member.name
                                  : member.name + "|" + member.row.number + member.number + member.email);
  return texts;
}

TEST_F(StoreTest, AListIsNoMemberOfItselfThroughOthersEither) {
  const auto store = OpenBook();
  std::vector<EntryKey> lists;
  for (const char* name : {"A", "B", "C"}) {
    Contact list = Person(name);
    list.isList = true;
    lists.push_back(Add(*store, list));
  }
  const auto put = [&](std::size_t into, std::size_t member) {
    const Member added = MemberOfEntry(lists[member], "List");
    return store->AddMembers(lists[into], {&added, 1});
  };
  EXPECT_EQ(put(0, 0), MAPI_E_FOLDER_CYCLE);
  ASSERT_EQ(put(0, 1), S_OK);
  ASSERT_EQ(put(1, 2), S_OK);
  EXPECT_EQ(put(2, 0), MAPI_E_FOLDER_CYCLE);
  // A list that is deleted comes back with its members.
  const RowKey between{lists[1], 0};
  ASSERT_EQ(store->Remove({&between, 1}, nullptr), S_OK);
  EXPECT_EQ(put(2, 0), MAPI_E_FOLDER_CYCLE);
  ASSERT_EQ(store->Restore(lists[1]), S_OK);
  const uint32_t first = 1;
  ASSERT_EQ(store->RemoveMembers(lists[1], {&first, 1}), S_OK);
  EXPECT_EQ(put(2, 0), S_OK);
  EXPECT_EQ(put(1, 2), MAPI_E_FOLDER_CYCLE);
  // A new list that is already a member somewhere, by its UID.
  Contact list = Person("D", {}, "d");
  list.isList = true;
  Member waiting = MemberOfEntry(KeyOfUid("d"), "D");
  waiting.uid = "d";
  ASSERT_EQ(store->AddMembers(lists[0], {&waiting, 1}), S_OK);
  list.members.resize(1);
  list.members[0].uid = UidOfKey(lists[0]);
  EXPECT_EQ(store->Add(list, nullptr, nullptr), MAPI_E_FOLDER_CYCLE);
  EXPECT_EQ(MemberTexts(*store, lists[0]), (Lines{"List|", "gone D"}));
}

TEST_F(StoreTest, ListsKeepTheirMembersInOrderAndKnowWhichAreGone) {
  const auto store = OpenBook();
  const EntryKey anna = Add(*store, Person("Anna", {Fax("+1 1", Place::kHome), Fax("+1 2", Place::kWork)}));
  const EntryKey bert = Add(*store, Person("Bert", {Fax("+1 3")}));
  Contact board = Person("Board");
  board.isList = true;
  const EntryKey list = Add(*store, board);
  Member loose;
  loose.number = "+1 99";
  loose.name = "Loose";
  Member foreign;
  foreign.foreign = std::string("\0\1\2", 3);
  foreign.name = "Foreign";
  const Member members[] = {MemberOfEntry(anna, "Anna"), MemberOfEntry(bert, "Bert"), loose, foreign,
                            MemberOfEntry(bert, "Bert again")};
  ASSERT_EQ(store->AddMembers(list, members), S_OK);
  // Without a number named the one at work is meant.
  EXPECT_EQ(MemberTexts(*store, list), (Lines{"Anna|+1 2", "Bert|+1 3", "Loose|+1 99", "Foreign|"}));
  std::vector<Member> read;
  ASSERT_EQ(Look(*store)->Members(list, 3, 1, &read), S_OK);
  EXPECT_EQ(read.at(0).foreign, foreign.foreign);
  ASSERT_EQ(store->MoveMember(list, read[0].id, 0), S_OK);
  const RowKey row{bert, 0};
  ASSERT_EQ(store->Remove({&row, 1}, nullptr), S_OK);
  EXPECT_EQ(MemberTexts(*store, list), (Lines{"Foreign|", "Anna|+1 2", "gone Bert", "Loose|+1 99"}));
  const uint32_t ids[] = {read[0].id, 12345};
  ASSERT_EQ(store->RemoveMembers(list, ids), S_OK);
  ASSERT_EQ(store->Restore(bert), S_OK);
  EXPECT_EQ(MemberTexts(*store, list), (Lines{"Anna|+1 2", "Bert|+1 3", "Loose|+1 99"}));
  Entry entry;
  ASSERT_EQ(store->Read(list, &entry), S_OK);
  ASSERT_EQ(entry.contact.members.size(), 3u);
  EXPECT_EQ(KeyOfUid(entry.contact.members[0].uid), anna);
  EXPECT_EQ(store->AddMembers(anna, members), MAPI_E_INVALID_OBJECT);
}

}  // namespace
}  // namespace book::test
