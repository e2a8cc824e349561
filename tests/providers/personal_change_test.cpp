// What a client changes in a personal book, and who hears of it.
#include "tests/kit/recording_sink.h"
#include "tests/providers/personal_fixture.h"
#include "tests/support/timed.h"

namespace orv::test {
namespace {

class PersonalChange : public PersonalTest {
 protected:
  Client client_;
};

// Waits for what comes on a thread of the provider's, however busy the machine is.
template <class Condition>
bool WaitFor(const Condition& condition) {
  for (int i = 0; i < 6000; ++i) {
    if (condition()) return true;
    Sleep(10);
  }
  return false;
}

std::wstring Event(const wchar_t* kind, const Bytes& id) {
  return kind + std::wstring(reinterpret_cast<const WCHAR*>(id.data()), id.size() / sizeof(WCHAR));
}

HRESULT DeleteFrom(const Container& container, const std::vector<Bytes>& ids) {
  return container->DeleteEntries(Entries(ids).Get(), 0);
}

TEST_F(PersonalChange, SetPropertiesComeBackAsTheyWereSet) {
  const struct {
    const wchar_t* what;
    Fields first, then;
    std::vector<std::pair<ULONG, std::wstring>> expected;
  } cases[] = {
      {L"every name",
       {{PR_DISPLAY_NAME, L"Dr. Ida B. Wells III"},
        {PR_GIVEN_NAME, L"Ida"},
        {PR_MIDDLE_NAME, L"B."},
        {PR_SURNAME, L"Wells"},
        {PR_DISPLAY_NAME_PREFIX, L"Dr."},
        {PR_GENERATION, L"III"},
        {PR_COMMENT, L"one\r\ntwo; \\three"}},
       {},
       {{PR_GIVEN_NAME, L"Ida"},
        {PR_MIDDLE_NAME, L"B."},
        {PR_SURNAME, L"Wells"},
        {PR_GENERATION, L"III"},
        {PR_COMMENT, L"one\ntwo; \\three"},
        {PR_DISPLAY_NAME, L"Dr. Ida B. Wells III (no fax number)"}}},
      {L"an address is the fax number",
       {{PR_DISPLAY_NAME, L"A"}, {PR_ADDRTYPE, L"FAX"}, {PR_EMAIL_ADDRESS, L"+1 2"}},
       {{PR_EMAIL_ADDRESS, L"+1 3"}},
       {{PR_EMAIL_ADDRESS, L"+1 3"}, {PR_PRIMARY_FAX_NUMBER, L"+1 3"}, {PR_DISPLAY_NAME, L"A"}}},
      {L"an address of another kind",
       {{PR_DISPLAY_NAME, L"A"}, {PR_ADDRTYPE, L"SMTP"}, {PR_EMAIL_ADDRESS, L"a@example.org"}},
       {},
       {{PR_SMTP_ADDRESS, L"a@example.org"}, {PR_EMAIL_ADDRESS, L""}, {PR_ADDRTYPE, L"FAX"}}},
      {L"a copy brings the shown name and the plain one",
       {{PR_DISPLAY_NAME, L"A (home fax)"},
        {PR_TRANSMITABLE_DISPLAY_NAME, L"A"},
        {PR_EMAIL_ADDRESS, L"2"},
        {PR_BUSINESS_FAX_NUMBER, L"1"},
        {PR_HOME_FAX_NUMBER, L"2"}},
       {},
       {{PR_DISPLAY_NAME, L"A (home fax)"}, {PR_TRANSMITABLE_DISPLAY_NAME, L"A"}, {PR_EMAIL_ADDRESS, L"2"}}},
      {L"the shown name set back is no new name",
       {{PR_DISPLAY_NAME, L"A"}, {PR_BUSINESS_FAX_NUMBER, L"1"}, {PR_HOME_FAX_NUMBER, L"2"}},
       {{PR_DISPLAY_NAME, L"A (business fax)"}, {PR_TITLE, L"T"}},
       {{PR_TRANSMITABLE_DISPLAY_NAME, L"A"}, {PR_TITLE, L"T"}}},
      {L"a text without anything takes the number away",
       {{PR_DISPLAY_NAME, L"A"}, {PR_BUSINESS_FAX_NUMBER, L"1"}, {PR_HOME_FAX_NUMBER, L"2"}},
       {{PR_HOME_FAX_NUMBER, L""}},
       {{PR_DISPLAY_NAME, L"A"}, {PR_HOME_FAX_NUMBER, L""}, {PR_BUSINESS_FAX_NUMBER, L"1"}}},
      {L"two addresses",
       {{PR_DISPLAY_NAME, L"A"},
        {PR_STREET_ADDRESS, L"Kai 1; links"},
        {PR_COUNTRY, L"DE"},
        {PR_HOME_ADDRESS_CITY, L"Kiel"}},
       {{PR_COUNTRY, L""}},
       {{PR_STREET_ADDRESS, L"Kai 1; links"}, {PR_COUNTRY, L""}, {PR_HOME_ADDRESS_CITY, L"Kiel"}}},
      {L"nothing but a company",
       {{PR_COMPANY_NAME, L"Nordhamn"}},
       {},
       {{PR_TRANSMITABLE_DISPLAY_NAME, L"Nordhamn"}}},
  };
  const Container own = client_.Open();
  for (const auto& each : cases) {
    const Bytes id = Add(own, each.first);
    const auto entry = client_.OpenEntry<IMailUser>(id);
    const HRESULT changed = each.then.size() != 0 ? Set(*entry.Get(), each.then) : S_OK;
    EXPECT_EQ(changed, S_OK) << each.what;
    const PropList saved = Props(*entry.Get()), stored = Props(*client_.OpenEntry<IMailUser>(id).Get());
    for (const auto& [tag, text] : each.expected) {
      EXPECT_EQ(stored.Text(tag), text) << each.what << std::hex << L" " << tag;
      EXPECT_EQ(saved.Text(tag), text) << each.what << L", in the object that was saved";
    }
    EXPECT_EQ(DeleteFrom(own, {id}), S_OK);
  }
}

TEST_F(PersonalChange, RefusesWhatItCannotKeep) {
  const Container own = client_.Open();
  const Bytes id = Add(own, {{PR_DISPLAY_NAME, L"A"}});
  const auto entry = client_.OpenEntry<IMailUser>(id);
  EXPECT_EQ(Set(*entry.Get(), {{PR_DISPLAY_NAME, L""}}), MAPI_E_BAD_VALUE);
  EXPECT_EQ(Set(*entry.Get(), {{PR_ORV_CONTACT_UID_W, L"u"}}), MAPI_E_NO_SUPPORT);
  EXPECT_EQ(Set(*entry.Get(), {{PR_HOBBIES, L"h"}}), MAPI_E_NO_SUPPORT);
  Add(own, {{PR_TITLE, L"nobody"}}, MAPI_E_MISSING_REQUIRED_COLUMN);
  Add(own, {{PR_DISPLAY_NAME, L"A"}}, MAPI_E_COLLISION, false, CREATE_CHECK_DUP_STRICT);
  Add(own, {{PR_DISPLAY_NAME, L"A"}, {PR_EMAIL_ADDRESS, L"1"}}, S_OK, false, CREATE_CHECK_DUP_STRICT);
  EXPECT_EQ(Shown(own), (Names{L"A (no fax number)", L"A (1)"}));
}

TEST_F(PersonalChange, ANumberHasAnIdentifierOfItsOwn) {
  const Container own = client_.Open();
  Add(own, {{PR_DISPLAY_NAME, L"A"}, {PR_BUSINESS_FAX_NUMBER, L"1"}, {PR_HOME_FAX_NUMBER, L"2"}});
  const std::vector<Bytes> ids = Ids(own);
  ASSERT_EQ(ids.size(), 2u);
  // What is typed for it changes the number, and it stays the same one.
  EXPECT_EQ(Set(*client_.OpenEntry<IMailUser>(ids[1]).Get(), {{PR_EMAIL_ADDRESS, L"22"}, {PR_TITLE, L"T"}}),
            S_OK);
  EXPECT_EQ(Ids(own), ids);
  EXPECT_EQ(client_.Text(ids[1], PR_EMAIL_ADDRESS), L"22");
  EXPECT_EQ(client_.Text(ids[0], PR_EMAIL_ADDRESS), L"1");
  EXPECT_EQ(client_.Text(ids[0], PR_TITLE), L"T");
  // The first row takes its number along, the last one the contact.
  EXPECT_EQ(DeleteFrom(own, {ids[0]}), S_OK);
  EXPECT_EQ(Shown(own), Names{L"A"});
  client_.OpenEntry<IMailUser>(ids[0], MAPI_E_NOT_FOUND);
  EXPECT_EQ(client_.Text(ids[1], PR_EMAIL_ADDRESS), L"22");
  EXPECT_EQ(DeleteFrom(own, Ids(own)), S_OK);
  EXPECT_EQ(Shown(own), Names{});
  for (const Bytes& id : ids) client_.OpenEntry<IMailUser>(id, MAPI_E_NOT_FOUND);
}

TEST_F(PersonalChange, OfTwoWhoChangeOneEntryTheSecondIsTold) {
  const Bytes id = Add(client_.Open(), {{PR_DISPLAY_NAME, L"A"}, {PR_TITLE, L"0"}});
  Client other;
  const auto first = client_.OpenEntry<IMailUser>(id), second = other.OpenEntry<IMailUser>(id);
  EXPECT_EQ(Set(*first.Get(), {{PR_TITLE, L"1"}}), S_OK);
  EXPECT_EQ(Set(*second.Get(), {{PR_COMPANY_NAME, L"C"}}), MAPI_E_OBJECT_CHANGED);
  EXPECT_EQ(second->SaveChanges(KEEP_OPEN_READWRITE | FORCE_SAVE), S_OK);
  EXPECT_EQ(client_.Text(id, PR_TITLE), L"1") << "what was forced takes nothing else away";
  EXPECT_EQ(client_.Text(id, PR_COMPANY_NAME), L"C");
  EXPECT_EQ(Set(*second.Get(), {{PR_TITLE, L"2"}}), S_OK);
  EXPECT_EQ(DeleteFrom(client_.Open(), {id}), S_OK);
  EXPECT_EQ(Set(*second.Get(), {{PR_TITLE, L"3"}}), MAPI_E_OBJECT_DELETED);
  EXPECT_EQ(DeleteFrom(client_.Open(), {id}), MAPI_E_NOT_FOUND);
}

TEST_F(PersonalChange, EveryoneInTheProcessHearsAtOnce) {
  Client other;
  const Container own = client_.Open();
  const Table table = Contents(own);
  const auto objects = RecordingSink::Make(), rows = RecordingSink::Make();
  ULONG connection = 0, tableConnection = 0;
  Bytes container = IdOf(Props(*own.Get()));
  ASSERT_EQ(client_.Book()->Advise(
                static_cast<ULONG>(container.size()), reinterpret_cast<LPENTRYID>(container.data()),
                fnevObjectCreated | fnevObjectModified | fnevObjectDeleted, objects.Get(), &connection),
            S_OK);
  ASSERT_EQ(table->Advise(fnevTableModified, rows.Get(), &tableConnection), S_OK);
  const Bytes id = Add(other.Open(), {{PR_DISPLAY_NAME, L"A"}});
  EXPECT_EQ(objects->Take(), Names{Event(L"created ", id)});
  EXPECT_EQ(rows->Take(), Names{Event(L"added ", id)});
  EXPECT_EQ(AllTexts(*table.Get()), Names{L"A (no fax number)"});
  EXPECT_EQ(Set(*other.OpenEntry<IMailUser>(id).Get(), {{PR_DISPLAY_NAME, L"B"}, {PR_EMAIL_ADDRESS, L"1"}}),
            S_OK);
  EXPECT_EQ(objects->Take(), Names{Event(L"modified ", id)});
  EXPECT_EQ(AllTexts(*table.Get()), Names{L"B"});
  EXPECT_EQ(DeleteFrom(other.Open(), {id}), S_OK);
  EXPECT_EQ(objects->Take(), Names{Event(L"deleted ", id)});
  // Several at once are gone by one change, and are told as what they were.
  const std::vector<Bytes> both{Add(own, {{PR_DISPLAY_NAME, L"C"}}),
                                Add(own, {{PR_DISPLAY_NAME, L"D"}}, S_OK, true)};
  objects->Take();
  rows->Take();
  EXPECT_EQ(DeleteFrom(own, {both[0], both[1], id}), MAPI_W_PARTIAL_COMPLETION);
  EXPECT_EQ(objects->Take(), (Names{Event(L"deleted ", both[0]), Event(L"deleted ", both[1])}));
  EXPECT_EQ(objects->LastType(), ULONG{MAPI_DISTLIST});
  EXPECT_EQ(rows->Take(), (Names{Event(L"deleted ", both[0]), Event(L"deleted ", both[1])}));
  EXPECT_EQ(table->Unadvise(tableConnection), S_OK);
  EXPECT_EQ(client_.Book()->Unadvise(connection), S_OK);
}

// What a table tells of each change, and where its position and a bookmark stand afterwards.
class PersonalFollow : public PersonalChange {
 protected:
  PersonalFollow() {
    for (const wchar_t* name : {L"Ada", L"Bo", L"Cleo", L"Dan"})
      ids_.push_back(Add(own_, {{PR_DISPLAY_NAME, name}, {PR_EMAIL_ADDRESS, L"1"}}));
  }
  void Advise(IMAPITable& table) {
    ULONG connection = 0;
    ASSERT_EQ(table.Advise(fnevTableModified, rows_.Get(), &connection), S_OK);
  }
  HRESULT Change(size_t who, Fields fields) {
    return Set(*client_.OpenEntry<IMailUser>(ids_[who]).Get(), fields);
  }
  // Their kinds, without identifiers.
  Names Told() {
    Names told = rows_->Take();
    for (std::wstring& each : told) each.resize(std::min(each.find(L' '), each.size()));
    return told;
  }
  static std::wstring RowAt(IMAPITable& table) {
    const std::vector<PropList> rows = Rows(table, {PR_DISPLAY_NAME}, 1);
    return rows.empty() ? L"the end" : std::wstring(rows[0].Text(PR_DISPLAY_NAME));
  }

  const Container own_ = client_.Open();
  std::vector<Bytes> ids_;
  const sdk::ComPtr<RecordingSink> rows_ = RecordingSink::Make();
};

TEST_F(PersonalFollow, TablesTellOfRowsAndKeepTheirPlace) {
  const struct {
    const wchar_t* what;
    std::function<HRESULT()> change;
    Names told;
    const wchar_t *position, *bookmark;
  } cases[] = {
      {L"a row in front",
       [&] {
         return Add(own_, {{PR_DISPLAY_NAME, L"Ann"}}).empty() ? E_FAIL : S_OK;
       },
       {L"added"},
       L"Cleo",
       L"Bo"},
      {L"a value",
       [&] {
         return Change(0, {{PR_COMMENT, L"c"}});
       },
       {L"modified"},
       L"Cleo",
       L"Bo"},
      {L"a row moves",
       [&] {
         return Change(2, {{PR_DISPLAY_NAME, L"Zed"}});
       },
       {L"modified"},
       L"Zed",
       L"Bo"},
      {L"a namesake",
       [&] {
         return Change(3, {{PR_DISPLAY_NAME, L"Bo"}, {PR_COMPANY_NAME, L"C"}});
       },
       {L"modified", L"modified"},
       L"Zed",
       L"Bo (1)"},
      {L"a namesake no more",
       [&] { return DeleteFrom(own_, {ids_[3]}); },
       {L"deleted", L"modified"},
       L"Zed",
       L"Bo"},
      {L"a second number",
       [&] {
         return Change(0, {{PR_HOME_FAX_NUMBER, L"2"}});
       },
       {L"deleted", L"added", L"added"},
       L"Zed",
       L"Bo"},
      {L"both numbers",
       [&] {
         return DeleteFrom(own_, {Ids(own_)[0], Ids(own_)[1]});
       },
       {L"deleted", L"deleted"},
       L"Zed",
       L"Bo"},
      {L"the row itself", [&] { return DeleteFrom(own_, {ids_[1]}); }, {L"deleted"}, L"Zed", L"Zed"},
  };
  const Table table = Contents(own_);
  BOOKMARK bookmark = 0;
  ASSERT_EQ(table->SeekRow(BOOKMARK_BEGINNING, 1, nullptr), S_OK);
  ASSERT_EQ(table->CreateBookmark(&bookmark), S_OK);
  ASSERT_EQ(table->SeekRow(BOOKMARK_BEGINNING, 2, nullptr), S_OK);
  Advise(*table.Get());
  for (const auto& each : cases) {
    ULONG row = 0, numerator = 0, denominator = 0;
    ASSERT_EQ(each.change(), S_OK) << each.what;
    EXPECT_EQ(Told(), each.told) << each.what;
    ASSERT_EQ(table->QueryPosition(&row, &numerator, &denominator), S_OK);
    EXPECT_EQ(RowAt(*table.Get()), each.position) << each.what;
    EXPECT_TRUE(SUCCEEDED(table->SeekRow(bookmark, 0, nullptr)));
    EXPECT_EQ(RowAt(*table.Get()), each.bookmark) << each.what;
    ASSERT_EQ(table->SeekRow(BOOKMARK_BEGINNING, static_cast<LONG>(row), nullptr), S_OK);
  }
}

TEST_F(PersonalFollow, TablesThatShowSomeRowsTellOfThese) {
  const Table table = Contents(own_);
  SPropValue exists{};
  SRestriction have{};
  have.rt = RES_EXIST;
  have.res.resExist.ulPropTag = exists.ulPropTag = PR_COMPANY_NAME;
  struct {
    ULONG cSorts = 1, cCategories = 0, cExpanded = 0;
    SSortOrder sort{PR_COMPANY_NAME, TABLE_SORT_ASCEND};
  } order;
  ASSERT_EQ(table->Restrict(&have, 0), S_OK);
  ASSERT_EQ(table->SortTable(reinterpret_cast<LPSSortOrderSet>(&order), 0), S_OK);
  Advise(*table.Get());
  EXPECT_EQ(Change(0, {{PR_TITLE, L"T"}}), S_OK);
  EXPECT_EQ(Told(), Names{}) << "a row that it does not show";
  EXPECT_EQ(Change(0, {{PR_COMPANY_NAME, L"M"}}), S_OK);
  EXPECT_EQ(Change(3, {{PR_COMPANY_NAME, L"A"}}), S_OK);
  EXPECT_EQ(Told(), (Names{L"added", L"added"}));
  EXPECT_EQ(AllTexts(*table.Get()), (Names{L"Dan", L"Ada"}));
  EXPECT_EQ(Change(3, {{PR_COMPANY_NAME, L"Z"}}), S_OK);
  EXPECT_EQ(Told(), Names{L"modified"});
  EXPECT_EQ(AllTexts(*table.Get()), (Names{L"Ada", L"Dan"}));
  EXPECT_EQ(Change(0, {{PR_COMPANY_NAME, L""}}), S_OK);
  EXPECT_EQ(Told(), Names{L"deleted"});
}

TEST_F(PersonalFollow, MembersAreToldWithTheirList) {
  const Bytes id = Add(own_, {{PR_DISPLAY_NAME, L"List"}}, S_OK, true);
  const auto list = client_.OpenEntry<IDistList>(id);
  const Table table = Contents(list);
  Advise(*table.Get());
  EXPECT_EQ(list->CopyEntries(Entries({ids_[0], ids_[1]}).Get(), 0, nullptr, 0), S_OK);
  Told();
  EXPECT_EQ(Change(2, {{PR_TITLE, L"T"}}), S_OK);
  EXPECT_EQ(Told(), Names{}) << "somebody else";
  EXPECT_EQ(Change(1, {{PR_DISPLAY_NAME, L"Boris"}}), S_OK);
  EXPECT_EQ(Told(), Names{L"modified"});
  EXPECT_EQ(DeleteFrom(own_, {ids_[0]}), S_OK);
  EXPECT_EQ(Told(), Names{L"modified"});
  EXPECT_EQ(AllTexts(*table.Get()), (Names{L"Ada", L"Boris"}));
  EXPECT_EQ(list->DeleteEntries(Entries({ids_[1]}).Get(), 0), S_OK);
  EXPECT_EQ(Told(), Names{L"deleted"});
}

TEST_F(PersonalChange, OtherProcessesAreHeardWithinASecond) {
  const Container own = client_.Open();
  const Table table = Contents(own);
  const auto objects = RecordingSink::Make(), rows = RecordingSink::Make();
  ULONG connection = 0, tableConnection = 0;
  Bytes container = IdOf(Props(*own.Get()));
  ASSERT_EQ(client_.Book()->Advise(static_cast<ULONG>(container.size()),
                                   reinterpret_cast<LPENTRYID>(container.data()), fnevObjectCreated,
                                   objects.Get(), &connection),
            S_OK);
  ASSERT_EQ(table->Advise(fnevTableModified, rows.Get(), &tableConnection), S_OK);
  const OtherProcess other(L"book_maker.exe add \"" + Path(L"own.orvab") + L"\"", L"added");
  const ULONGLONG before = GetTickCount64();
  EXPECT_TRUE(WaitFor([&] { return objects->Calls() != 0 && rows->Calls() != 0; }));
  if (IsTimed()) {
    EXPECT_LT(GetTickCount64() - before, 1000u);
  }
  EXPECT_EQ(objects->Take().size(), 1u);
  const Names told = rows->Take();
  ASSERT_EQ(told.size(), 1u);
  EXPECT_TRUE(told[0].starts_with(L"added "));
  EXPECT_EQ(AllTexts(*table.Get()), Names{L"Person 1"});
  EXPECT_EQ(table->Unadvise(tableConnection), S_OK);
  EXPECT_EQ(client_.Book()->Unadvise(connection), S_OK);
}

TEST_F(PersonalChange, CopiesEntriesOfEveryProvider) {
  installation_.WriteTextFile(L"people.vcf",
                              "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:s\r\nFN:Sato\r\nORG:Kowan\r\n"
                              "TEL;TYPE=FAX:+81 3\r\nEND:VCARD\r\n");
  installation_.CopyIn(L"sample_provider.dll", L"sample.dll");
  AddService(2, Path(L"second.orvab"));
  AddService(3, Path(L"people.vcf"), L"P", "SampleServiceEntry", L"sample.dll");
  Client client;
  const Container own = client.Open(L"own"), second = client.Open(L"second"), sample = client.Open(L"people");
  Add(own, {{PR_DISPLAY_NAME, L"A"}, {PR_BUSINESS_FAX_NUMBER, L"1"}, {PR_HOME_FAX_NUMBER, L"2"}});
  std::vector<Bytes> all{Ids(own)[1], Ids(sample)[0]};
  EXPECT_EQ(second->CopyEntries(Entries(all).Get(), 0, nullptr, 0), S_OK);
  EXPECT_EQ(Shown(second), (Names{L"A (business fax)", L"A (home fax)", L"Sato"}));
  EXPECT_EQ(Shown(second, PR_COMPANY_NAME)[2], L"Kowan");
  EXPECT_EQ(Shown(second, PR_EMAIL_ADDRESS), (Names{L"1", L"2", L"+81 3"}));
  // Between books of ours the card is copied, with what no property shows.
  const auto entry = client.OpenEntry<IMailUser>(Ids(own)[0]);
  const std::wstring card =
      L"BEGIN:VCARD\nVERSION:4.0\nUID:full\nFN:Full\nTEL;TYPE=fax,work:3\nTEL;TYPE=fax,work:4\n"
      L"TEL;TYPE=fax,home:5\nADR;TYPE=home:;;One;;;;\nADR;TYPE=home:;;Two;;;;\nX-KEPT:as it "
      L"came\nEND:VCARD\n";
  EXPECT_EQ(Set(*entry.Get(), {{PR_ORV_CONTACT_CARD_W, L"no card"}}), MAPI_E_BAD_VALUE);
  const Bytes full = Add(own, {{PR_ORV_CONTACT_CARD_W, card.c_str()}, {PR_TITLE, L"besides"}});
  const std::wstring kept = client.Text(full, PR_ORV_CONTACT_CARD_W);
  for (const wchar_t* each : {L"UID:full", L"One", L"Two", L"X-KEPT:as it came", L"TITLE:besides"})
    EXPECT_NE(kept.find(each), kept.npos) << each << L" in " << kept;
  // By the row of its last number; a second time it is another entry.
  for (const size_t rows : {3u, 6u}) {
    EXPECT_EQ(second->CopyEntries(Entries({Ids(own).back()}).Get(), 0, nullptr, 0), S_OK);
    EXPECT_EQ(Ids(second).size(), 3 + rows);
  }
  EXPECT_EQ(client.Text(Ids(second)[2 + 0], PR_ORV_CONTACT_CARD_W), kept);
  // A list that knows its members by UID only takes their names along.
  const Bytes team = Add(own,
                         {{PR_ORV_CONTACT_CARD_W,
                           L"BEGIN:VCARD\nVERSION:4.0\nKIND:group\nUID:team\nFN:Team\n"
                           L"MEMBER:full\nMEMBER:nobody\nEND:VCARD\n"}},
                         S_OK, true);
  const std::wstring members = client.Text(team, PR_ORV_CONTACT_CARD_W);
  EXPECT_NE(members.find(L"Full"), members.npos) << members;
  EXPECT_NE(members.find(L"nobody"), members.npos) << members;
  // Whoever the other book does not have is shown with the number that is known, which nothing is sent to.
  Add(own, {{PR_ORV_CONTACT_CARD_W,
             L"BEGIN:VCARD\nVERSION:4.0\nUID:away\nFN:Away\nTEL;TYPE=fax:+49 40 7\nEND:VCARD\n"}});
  const Bytes few =
      Add(own,
          {{PR_ORV_CONTACT_CARD_W,
            L"BEGIN:VCARD\nVERSION:4.0\nKIND:group\nUID:few\nFN:Few\nMEMBER:away\nEND:VCARD\n"}},
          S_OK, true);
  EXPECT_EQ(second->CopyEntries(Entries({few}).Get(), 0, nullptr, 0), S_OK);
  const std::vector<Bytes> copies = Ids(second);
  const auto isFew = [&](const Bytes& id) { return client.Text(id) == L"Few"; };
  const auto copy = std::find_if(copies.begin(), copies.end(), isFew);
  ASSERT_NE(copy, copies.end());
  const Table missing = Contents(client.OpenEntry<IDistList>(*copy));
  const PropList away =
      Rows(*missing.Get(), {PR_DISPLAY_NAME, PR_EMAIL_ADDRESS, PR_PRIMARY_FAX_NUMBER}).at(0);
  EXPECT_EQ(away.Text(PR_DISPLAY_NAME), L"Away");
  EXPECT_EQ(away.Text(PR_EMAIL_ADDRESS), L"");
  EXPECT_EQ(away.Text(PR_PRIMARY_FAX_NUMBER), L"+49407");
}

class TwoBooks : public PersonalTest {
 protected:
  TwoBooks() { AddService(2, Path(L"second.orvab")); }
};

class PersonalLists : public TwoBooks {
 protected:
  // "Everybody" with a contact, one number of another, a list and an entry of another book.
  PersonalLists() {
    own_ = client_.Open(L"own"), second_ = client_.Open(L"second");
    ada_ = Add(own_, {{PR_DISPLAY_NAME, L"Ada"}, {PR_EMAIL_ADDRESS, L"1"}});
    Add(own_, {{PR_DISPLAY_NAME, L"Bo"}, {PR_BUSINESS_FAX_NUMBER, L"2"}, {PR_HOME_FAX_NUMBER, L"3"}});
    inner_ = Add(own_, {{PR_DISPLAY_NAME, L"Inner"}}, S_OK, true);
    list_ = Add(own_, {{PR_DISPLAY_NAME, L"Everybody"}}, S_OK, true);
    foreign_ = Add(second_, {{PR_DISPLAY_NAME, L"Zoé"}, {PR_EMAIL_ADDRESS, L"9"}});
    home_ = Ids(own_).at(2);
    EXPECT_EQ(Change(inner_, {ada_}, true), S_OK);
    EXPECT_EQ(Change(list_, {ada_, home_, inner_, foreign_}, true), S_OK);
  }

  HRESULT Change(const Bytes& list, const std::vector<Bytes>& members, bool adds) {
    const auto open = client_.OpenEntry<IDistList>(list);
    Entries entries(members);
    return adds ? open->CopyEntries(entries.Get(), 0, nullptr, 0) : open->DeleteEntries(entries.Get(), 0);
  }
  Names Members(const Bytes& list, ULONG column = PR_DISPLAY_NAME) {
    const auto open = client_.OpenEntry<IDistList>(list);
    return Shown(open, column);
  }

  Client client_;
  Container own_, second_;
  Bytes ada_, home_, inner_, list_, foreign_;
};

TEST_F(PersonalLists, HoldEveryKindOfMember) {
  const Names names{L"Ada", L"Bo (home fax)", L"Inner", L"Zoé"};
  EXPECT_EQ(Members(list_), names);
  EXPECT_EQ(Members(list_, PR_EMAIL_ADDRESS), (Names{L"1", L"3", L"", L"9"}));
  const auto open = client_.OpenEntry<IDistList>(list_);
  EXPECT_EQ(Ids(open), (std::vector<Bytes>{ada_, home_, inner_, foreign_}));
  EXPECT_EQ(Change(list_, {ada_}, true), S_OK);
  EXPECT_EQ(Members(list_), names) << "a member is one once";
  EXPECT_EQ(Change(list_, {foreign_, home_}, false), S_OK);
  EXPECT_EQ(Members(list_), (Names{L"Ada", L"Inner"}));
  EXPECT_EQ(Change(list_, {foreign_}, false), MAPI_E_NOT_FOUND);
  EXPECT_EQ(Shown(second_), Names{L"Zoé"}) << "taken out of the list it stays";
}

TEST_F(PersonalLists, AreNeverTheirOwnMembers) {
  const Bytes outer = Add(own_, {{PR_DISPLAY_NAME, L"Outer"}}, S_OK, true);
  ASSERT_EQ(Change(outer, {list_}, true), S_OK);
  for (const Bytes& each : {inner_, list_, outer})
    EXPECT_EQ(Change(inner_, {each}, true), MAPI_E_FOLDER_CYCLE) << client_.Text(each);
  EXPECT_EQ(Members(inner_), Names{L"Ada"});
  EXPECT_EQ(Change(inner_, {outer, home_}, true), MAPI_W_PARTIAL_COMPLETION) << "the others are taken";
  EXPECT_EQ(Members(inner_), (Names{L"Ada", L"Bo (home fax)"}));
  // Whole, as a copy or a window of the list writes it.
  const std::wstring card = client_.Text(inner_, PR_ORV_CONTACT_CARD_W);
  const std::wstring uid = client_.Text(outer, PR_ORV_CONTACT_UID_W);
  const std::wstring round =
      card.substr(0, card.find(L"END:")) + L"MEMBER:urn:uuid:" + uid + L"\nEND:VCARD\n";
  EXPECT_EQ(Set(*client_.OpenEntry<IDistList>(inner_).Get(), {{PR_ORV_CONTACT_CARD_W, round.c_str()}}),
            MAPI_E_FOLDER_CYCLE);
  EXPECT_EQ(Members(inner_).size(), 2u);
  EXPECT_EQ(Set(*client_.OpenEntry<IDistList>(inner_).Get(), {{PR_DISPLAY_NAME, L"Core"}}), S_OK);
}

TEST_F(PersonalLists, ShowWhoHasGone) {
  const auto open = client_.OpenEntry<IDistList>(list_);
  const Table table = Contents(open);
  EXPECT_EQ(DeleteFrom(own_, {ada_}), S_OK);
  EXPECT_EQ(DeleteFrom(second_, {foreign_}), S_OK);
  EXPECT_EQ(AllTexts(*table.Get()), (Names{L"Ada", L"Bo (home fax)", L"Inner", L"Zoé"}))
      << "the open table follows";
  const std::vector<PropList> rows =
      Rows(*Contents(open).Get(), {PR_ENTRYID, PR_OBJECT_TYPE, PR_EMAIL_ADDRESS});
  for (const size_t i : {0u, 3u}) {
    EXPECT_EQ(rows[i].Number(PR_OBJECT_TYPE), MAPI_MAILUSER);
    EXPECT_EQ(rows[i].Text(PR_EMAIL_ADDRESS), L"");
    client_.OpenEntry<IMailUser>(IdOf(rows[i]), MAPI_E_NOT_FOUND);
  }
  EXPECT_EQ(Change(list_, {ada_}, false), S_OK) << "one that has gone can be taken out";
  EXPECT_EQ(Members(list_).size(), 3u);
}

TEST_F(PersonalLists, ExpandIntoWhoCanBeReached) {
  EXPECT_EQ(DeleteFrom(own_, {ada_}), S_OK);
  ADRLIST* const recipients = Expand(client_, list_);
  EXPECT_EQ(NamesIn(*recipients), (Names{L"Ada", L"Bo (home fax)", L"Zoé"}));
  // Who has no number keeps nobody else from being prepared.
  auto tags = sdk::TagArray(PR_EMAIL_ADDRESS, PR_ADDRTYPE);
  EXPECT_EQ(client_.Book()->PrepareRecips(0, tags.Get(), recipients), S_OK);
  OrvFreePadrlist(recipients);
}

TEST_F(PersonalLists, RecipientsWithoutANumberSayThatTheyHaveNone) {
  const Bytes none = Add(own_, {{PR_DISPLAY_NAME, L"None"}});
  ADRLIST* recipients = nullptr;
  ASSERT_EQ(OrvAllocateBuffer(CbNewADRLIST(2), reinterpret_cast<void**>(&recipients)), S_OK);
  recipients->cEntries = 2;
  for (const Bytes* each : {&none, static_cast<const Bytes*>(&home_)}) {
    void* row = nullptr;
    ASSERT_EQ(OrvAllocateBuffer(sizeof(SPropValue), &row), S_OK);
    *static_cast<SPropValue*>(row) = Binary(PR_ENTRYID, each->data(), each->size());
    recipients->aEntries[each == &home_] = {0, 1, static_cast<SPropValue*>(row)};
  }
  auto tags = sdk::TagArray(PR_EMAIL_ADDRESS, PR_ADDRTYPE);
  EXPECT_EQ(client_.Book()->PrepareRecips(0, tags.Get(), recipients), S_OK);
  const SPropValue& missing = recipients->aEntries[0].rgPropVals[0];
  EXPECT_EQ(missing.ulPropTag, CHANGE_PROP_TYPE(PR_EMAIL_ADDRESS, PT_ERROR));
  EXPECT_EQ(missing.Value.err, MAPI_E_NOT_FOUND);
  EXPECT_STREQ(sdk::ValueView(recipients->aEntries[1]).Text(PR_EMAIL_ADDRESS), L"3");
  OrvFreePadrlist(recipients);
}

}  // namespace
}  // namespace orv::test
