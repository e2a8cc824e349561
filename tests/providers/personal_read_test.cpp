// What a client reads in a personal book: rows, names, searches, orders, names that are resolved.
#include "orv/kit/values.hpp"
#include "tests/providers/personal_fixture.h"

namespace orv::test {
namespace {

class PersonalRead : public PersonalTest {
 protected:
  PersonalRead() {
    const Container own = client_.Open();
    Add(own, {{PR_DISPLAY_NAME, L"Jürgen Weiß"},
              {PR_COMPANY_NAME, L"Nordhamn"},
              {PR_EMAIL_ADDRESS, L"+49 40 1234"}});
    Add(own,
        {{PR_DISPLAY_NAME, L"Jurga Petrauskas"}, {PR_EMAIL_ADDRESS, L"0370 55 77"}, {PR_TITLE, L"Pilot"}});
    Add(own, {{PR_DISPLAY_NAME, L"Ana Duarte"},
              {PR_BUSINESS_FAX_NUMBER, L"+351 21 1"},
              {PR_HOME_FAX_NUMBER, L"+351 21 2"},
              {PR_DEPARTMENT_NAME, L"Freight"},
              {PR_SMTP_ADDRESS, L"ana@duarte.example"}});
    Add(own, {{PR_DISPLAY_NAME, L"Bo Olsen"}, {PR_COMPANY_NAME, L"Havn"}, {PR_EMAIL_ADDRESS, L"+45 33 4"}});
    Add(own, {{PR_DISPLAY_NAME, L"Bo Olsen"}, {PR_EMAIL_ADDRESS, L"+45 33 5"}});
    Add(own, {{PR_DISPLAY_NAME, L"Zoé Kahl"}, {PR_BUSINESS_TELEPHONE_NUMBER, L"+33 1 99"}});
  }

  Client client_;
};

SPropValue TextOf(ULONG tag, const wchar_t* text) { return Unicode(tag, text); }

// One restriction on a text.
struct TextTest {
  ULONG tag;
  ULONG fuzzy;  // of RES_CONTENT; kEqual: RES_PROPERTY
  const wchar_t* text;

  static constexpr ULONG kEqual = 0xFFFFFFFF;
  SRestriction Make(SPropValue& value) const {
    value = TextOf(tag, text);
    SRestriction one{};
    one.rt = fuzzy == kEqual ? RES_PROPERTY : RES_CONTENT;
    if (fuzzy == kEqual) one.res.resProperty = {RELOP_EQ, tag, &value};
    if (fuzzy != kEqual) one.res.resContent = {fuzzy, tag, &value};
    return one;
  }
};

const Names kAll = {L"Ana Duarte (business fax)", L"Ana Duarte (home fax)", L"Bo Olsen (Havn)",
                    L"Bo Olsen (+45 33 5)",       L"Jurga Petrauskas",      L"Jürgen Weiß",
                    L"Zoé Kahl (no fax number)"};

TEST_F(PersonalRead, ShowsARowANumberAndTellsNamesakesApart) {
  const Container own = client_.Open();
  EXPECT_EQ(Shown(own), kAll);
  EXPECT_EQ(Shown(own, PR_TRANSMITABLE_DISPLAY_NAME)[1], L"Ana Duarte");
  EXPECT_EQ(Shown(own, PR_EMAIL_ADDRESS)[1], L"+351 21 2");
  EXPECT_EQ(Shown(own, PR_GIVEN_NAME).size(), kAll.size()) << "a column that only whole entries have";
  const std::vector<Bytes> ids = Ids(own);
  for (size_t i = 0; i < ids.size(); ++i) {
    const PropList values = Props(*client_.OpenEntry<IMailUser>(ids[i]).Get());
    EXPECT_LE(ids[i].size(), 64u);
    EXPECT_EQ(IdOf(values), ids[i]);
    EXPECT_EQ(values.Text(PR_DISPLAY_NAME), kAll[i]);
  }
}

TEST_F(PersonalRead, FindsByEveryKindOfRestriction) {
  const struct {
    TextTest test;
    Names expected;
  } cases[] = {
      {{PR_ANR, FL_PREFIX, L"jurg"}, {L"Jurga Petrauskas", L"Jürgen Weiß"}},
      {{PR_ANR, FL_PREFIX, L"nordh jürg"}, {L"Jürgen Weiß"}},
      {{PR_ANR, FL_PREFIX, L"freight"}, {L"Ana Duarte (business fax)", L"Ana Duarte (home fax)"}},
      {{PR_ANR, FL_PREFIX, L"+49 40"}, {L"Jürgen Weiß"}},
      {{PR_ANR, TextTest::kEqual, L"1234"}, {L"Jürgen Weiß"}},
      {{PR_ANR, FL_PREFIX, L"ana@du"}, {L"Ana Duarte (business fax)", L"Ana Duarte (home fax)"}},
      {{PR_ANR, FL_PREFIX, L"nobody"}, {}},
      {{PR_DISPLAY_NAME, FL_PREFIX | FL_IGNORECASE, L"jurg"}, {L"Jurga Petrauskas"}},
      {{PR_DISPLAY_NAME, FL_PREFIX | FL_LOOSE, L"JURG"}, {L"Jurga Petrauskas", L"Jürgen Weiß"}},
      {{PR_DISPLAY_NAME, FL_SUBSTRING | FL_IGNORECASE, L"OLS"}, {L"Bo Olsen (Havn)", L"Bo Olsen (+45 33 5)"}},
      {{PR_DISPLAY_NAME, TextTest::kEqual, L"Bo Olsen (Havn)"}, {L"Bo Olsen (Havn)"}},
      {{PR_TITLE, FL_FULLSTRING | FL_IGNORECASE, L"pilot"}, {L"Jurga Petrauskas"}},
      {{PR_EMAIL_ADDRESS, FL_SUBSTRING, L"33 4"}, {L"Bo Olsen (Havn)"}},
      {{PR_BUSINESS_TELEPHONE_NUMBER, FL_PREFIX, L"+33"}, {L"Zoé Kahl (no fax number)"}},
  };
  const Container own = client_.Open();
  const Table table = Contents(own);
  for (const auto& each : cases) {
    SPropValue value;
    SRestriction one = each.test.Make(value), other{};
    ASSERT_EQ(table->Restrict(&one, 0), S_OK) << each.test.text;
    EXPECT_EQ(AllTexts(*table.Get()), each.expected) << each.test.text;
    other.rt = RES_NOT;
    other.res.resNot.lpRes = &one;
    ASSERT_EQ(table->Restrict(&other, 0), S_OK);
    EXPECT_EQ(AllTexts(*table.Get()).size(), kAll.size() - each.expected.size()) << "not " << each.test.text;
  }
}

TEST_F(PersonalRead, CombinesRestrictionsAndOrders) {
  SPropValue values[2];
  SRestriction parts[] = {TextTest{PR_ANR, FL_PREFIX, L"bo"}.Make(values[0]),
                          TextTest{PR_ANR, FL_PREFIX, L"ana"}.Make(values[1]),
                          {}};
  parts[2].rt = RES_EXIST;
  parts[2].res.resExist.ulPropTag = PR_COMPANY_NAME;
  SRestriction any{}, all{};
  any.rt = RES_OR;
  any.res.resOr = {2, parts};
  SRestriction both[] = {any, parts[2]};
  all.rt = RES_AND;
  all.res.resAnd = {2, both};
  const Container own = client_.Open();
  const Table table = Contents(own);
  ASSERT_EQ(table->Restrict(&any, 0), S_OK);
  EXPECT_EQ(AllTexts(*table.Get()), Names(kAll.begin(), kAll.begin() + 4));
  struct {
    ULONG cSorts = 1, cCategories = 0, cExpanded = 0;
    SSortOrder sort{PR_EMAIL_ADDRESS, TABLE_SORT_DESCEND};
  } order;
  ASSERT_EQ(table->SortTable(reinterpret_cast<LPSSortOrderSet>(&order), 0), S_OK);
  EXPECT_EQ(AllTexts(*table.Get(), PR_EMAIL_ADDRESS),
            (Names{L"+45 33 5", L"+45 33 4", L"+351 21 2", L"+351 21 1"}));
  ASSERT_EQ(table->Restrict(&all, 0), S_OK);
  EXPECT_EQ(AllTexts(*table.Get()), Names{L"Bo Olsen (Havn)"});
  ASSERT_EQ(table->Restrict(nullptr, 0), S_OK);
  EXPECT_EQ(AllTexts(*table.Get()).size(), kAll.size());
  order.cSorts = 0;
  ASSERT_EQ(table->SortTable(reinterpret_cast<LPSSortOrderSet>(&order), 0), S_OK);
  EXPECT_EQ(AllTexts(*table.Get()), kAll);
}

TEST_F(PersonalRead, FindRowGoesFromOneMatchToTheNext) {
  const Container own = client_.Open();
  const Table table = Contents(own);
  SPropValue value;
  SRestriction prefix = TextTest{PR_DISPLAY_NAME, FL_PREFIX | FL_IGNORECASE, L"bo"}.Make(value);
  EXPECT_EQ(table->FindRow(&prefix, BOOKMARK_BEGINNING, 0), S_OK);
  EXPECT_EQ(Rows(*table.Get(), {PR_DISPLAY_NAME}, 1).front().Text(PR_DISPLAY_NAME), kAll[2]);
  EXPECT_EQ(table->SeekRow(BOOKMARK_BEGINNING, 3, nullptr), S_OK);
  EXPECT_EQ(table->FindRow(&prefix, BOOKMARK_CURRENT, 0), S_OK);
  EXPECT_EQ(Texts(*table.Get()).front(), kAll[3]);
  // By the whole name, which is not all that is shown.
  SRestriction whole = TextTest{PR_DISPLAY_NAME, TextTest::kEqual, L"Bo Olsen"}.Make(value);
  EXPECT_EQ(table->FindRow(&whole, BOOKMARK_BEGINNING, 0), S_OK);
  EXPECT_EQ(Rows(*table.Get(), {PR_DISPLAY_NAME}, 1).front().Text(PR_DISPLAY_NAME), kAll[2]);
  EXPECT_EQ(table->FindRow(&whole, BOOKMARK_END, DIR_BACKWARD), S_OK);
  EXPECT_EQ(Texts(*table.Get()).front(), kAll[3]);
  // Past one that differs by its accent, in a run of names that begin alike but for it.
  SRestriction accent = TextTest{PR_DISPLAY_NAME, FL_PREFIX | FL_IGNORECASE, L"jürg"}.Make(value);
  EXPECT_EQ(table->FindRow(&accent, BOOKMARK_BEGINNING, 0), S_OK);
  EXPECT_EQ(Texts(*table.Get()).front(), L"Jürgen Weiß");
  SRestriction none = TextTest{PR_DISPLAY_NAME, FL_PREFIX | FL_IGNORECASE, L"k"}.Make(value);
  EXPECT_EQ(table->FindRow(&none, BOOKMARK_BEGINNING, 0), MAPI_E_NOT_FOUND);
}

TEST_F(PersonalRead, ResolvesWhatPeopleType) {
  const struct {
    const wchar_t* typed;
    ULONG flag;
    const wchar_t *name, *number;
  } cases[] = {
      {L"Jürgen Weiß", MAPI_RESOLVED, L"Jürgen Weiß", L"+49 40 1234"},
      {L"bo olsen", MAPI_AMBIGUOUS, L"bo olsen", L""},
      {L"Bo Olsen (Havn)", MAPI_RESOLVED, L"Bo Olsen (Havn)", L"+45 33 4"},
      {L"Ana Duarte", MAPI_RESOLVED, L"Ana Duarte (business fax)", L"+351 21 1"},
      {L"Ana Duarte (home fax)", MAPI_RESOLVED, L"Ana Duarte (home fax)", L"+351 21 2"},
      {L"Petr", MAPI_RESOLVED, L"Jurga Petrauskas", L"0370 55 77"},
      {L"ana@duarte.example", MAPI_RESOLVED, L"Ana Duarte (business fax)", L"+351 21 1"},
      {L"+45 33 5", MAPI_RESOLVED, L"Bo Olsen (+45 33 5)", L"+45 33 5"},
      {L"jurg", MAPI_AMBIGUOUS, L"jurg", L""},
      {L"Nobody", MAPI_UNRESOLVED, L"Nobody", L""},
  };
  const Container own = client_.Open();
  for (const auto& each : cases) {
    sdk::Buffer<SPropValue> typed(&OrvFreeBuffer);
    ASSERT_EQ(OrvAllocateBuffer(sizeof(SPropValue), reinterpret_cast<void**>(typed.Put())), S_OK);
    *typed.Get() = TextOf(PR_DISPLAY_NAME, each.typed);
    struct {
      ULONG count = 1;
      ADRENTRY entry;
    } list{1, {0, 1, typed.Detach()}};
    FlagList flags{1, {MAPI_UNRESOLVED}};
    EXPECT_EQ(own->ResolveNames(nullptr, MAPI_UNICODE, reinterpret_cast<LPADRLIST>(&list), &flags), S_OK);
    EXPECT_EQ(flags.ulFlag[0], each.flag) << each.typed;
    const PropList found{sdk::ValueView(list.entry)};
    EXPECT_EQ(found.Text(PR_DISPLAY_NAME), each.name);
    EXPECT_EQ(found.Text(PR_EMAIL_ADDRESS), each.number) << each.typed;
    OrvFreeBuffer(list.entry.rgPropVals);
  }
}

class PersonalNames : public PersonalTest {
 protected:
  HRESULT ListNamesAs(LONG form) {
    sdk::ComPtr<IOrvProfAdmin> profiles;
    sdk::ComPtr<IABServiceAdmin> services;
    EXPECT_EQ(OrvAdminProfiles(MAPI_UNICODE, profiles.Put(), 0), S_OK);
    EXPECT_EQ(profiles->AdminServices(L"P", MAPI_UNICODE, services.Put()), S_OK);
    MAPIUID uid;
    std::memset(&uid, 1, sizeof uid);
    SPropValue value{};
    value.ulPropTag = PR_ORV_BOOK_NAMES;
    value.Value.l = form;
    sdk::ComPtr<IProfSect> section;
    return services->ConfigureMsgService(&uid, 0, MAPI_UNICODE | SERVICE_UI_ALLOWED, 1, &value,
                                         section.Put());
  }
};

TEST_F(PersonalNames, LastNamesStandFirstWhereTheServiceSaysSo) {
  AddService(2, Path(L"second.orvab"));
  {
    Client client;
    const Container own = client.Open();
    Add(own, {{PR_DISPLAY_NAME, L"Jane Doe"},
              {PR_GIVEN_NAME, L"Jane"},
              {PR_SURNAME, L"Doe"},
              {PR_BUSINESS_FAX_NUMBER, L"1"},
              {PR_HOME_FAX_NUMBER, L"2"}});
    Add(own, {{PR_DISPLAY_NAME, L"Abe Zorn"},
              {PR_GIVEN_NAME, L"Abe"},
              {PR_SURNAME, L"Zorn"},
              {PR_EMAIL_ADDRESS, L"3"}});
    Add(own, {{PR_DISPLAY_NAME, L"Nordhamn"}, {PR_EMAIL_ADDRESS, L"4"}});
  }
  EXPECT_EQ(ListNamesAs(2), MAPI_E_BAD_VALUE);
  ASSERT_EQ(ListNamesAs(ORV_NAMES_LAST_FIRST), S_OK);
  Client client;
  const Container own = client.Open(), second = client.Open(L"second");
  const Names listed = {L"Doe, Jane (business fax)", L"Doe, Jane (home fax)", L"Nordhamn", L"Zorn, Abe"};
  EXPECT_EQ(Shown(own), listed);
  EXPECT_EQ(Shown(own, PR_TRANSMITABLE_DISPLAY_NAME)[3], L"Abe Zorn");
  const Table table = Contents(own);
  const struct {
    const wchar_t* typed;
    size_t row;
  } cases[] = {{L"doe", 0}, {L"doe, ja", 0}, {L"jane d", 0}, {L"abe", 3}, {L"zor", 3}, {L"n", 2}};
  for (const auto& each : cases) {
    SPropValue value;
    SRestriction prefix = TextTest{PR_DISPLAY_NAME, FL_PREFIX | FL_IGNORECASE, each.typed}.Make(value);
    EXPECT_EQ(table->FindRow(&prefix, BOOKMARK_BEGINNING, 0), S_OK) << each.typed;
    EXPECT_EQ(Rows(*table.Get(), {PR_DISPLAY_NAME}, 1).front().Text(PR_DISPLAY_NAME), listed[each.row]);
    EXPECT_EQ(table->FindRow(&prefix, BOOKMARK_END, DIR_BACKWARD), S_OK) << each.typed;
  }
  // What is shown is not what they are called: neither set back nor copied.
  const std::vector<Bytes> ids = Ids(own);
  EXPECT_EQ(Set(*client.OpenEntry<IMailUser>(ids[3], S_OK, MAPI_MODIFY).Get(),
                {{PR_DISPLAY_NAME, L"Zorn, Abe"}, {PR_TITLE, L"Pilot"}}),
            S_OK);
  EXPECT_EQ(second->CopyEntries(Entries({ids[0], ids[3]}).Get(), 0, nullptr, 0), S_OK);
  EXPECT_EQ(Shown(second), (Names{L"Abe Zorn", L"Jane Doe (business fax)", L"Jane Doe (home fax)"}));
  EXPECT_EQ(Shown(own), listed);
}

}  // namespace
}  // namespace orv::test
