// The windows of contacts.
#include "platform/process.h"
#include "tests/providers/windows_fixture.h"

namespace orv::test {
namespace {

using formats::NumberKind;
using formats::Place;

formats::ContactNumber NumberOf(const char* text, Place place) {
  formats::ContactNumber number;
  number.text = text;
  number.kind = NumberKind::kFax;
  number.place = place;
  return number;
}

formats::Contact Ida() {
  formats::Contact contact;
  contact.name = "Ida Wells";
  contact.given = "Ida";
  contact.surname = "Wells";
  contact.numbers = {NumberOf("+49 30 1", Place::kWork), NumberOf("30 2", Place::kHome)};
  return contact;
}

Bytes FirstIn(Client& client) { return Ids(client.Open()).at(0); }

TEST_F(WindowsTest, ANewContactIsTypedAndStored) {
  Client client;
  Bytes id;
  EXPECT_EQ(New(
                client, MAPI_MAILUSER,
                [](DialogScript&, Pilot window) {
                  EXPECT_EQ(window.Text(IDC_STATUS), L"Type a display name: it is missing.");
                  EXPECT_FALSE(window.IsEnabled(IDOK));
                  window.Type(IDC_GIVEN, L"Ida");
                  window.Type(IDC_SURNAME, L"Wells");
                  EXPECT_EQ(window.Text(IDC_NAME), L"Ida Wells");
                  window.Turn(1);
                  EXPECT_TRUE(window.IsShown(IDC_NUMBER));
                  window.Type(IDC_NUMBER, L"+49 30 1");
                  window.Key(IDC_NUMBER, VK_RETURN);
                  window.Settle();
                  EXPECT_EQ(window.Rows(IDC_NUMBERS, 3), (Names{L"+49 30 1|Business fax|yes"}));
                  // What is typed and not yet in the list is taken along.
                  window.Type(IDC_NUMBER, L"30 2");
                  window.Choose(IDC_NUMBER_KIND, 1);
                  window.Close(IDOK);
                },
                &id),
            S_OK);
  EXPECT_EQ(client.Text(id, PR_TRANSMITABLE_DISPLAY_NAME), L"Ida Wells");
  EXPECT_EQ(Shown(client.Open()), (Names{L"Ida Wells (business fax)", L"Ida Wells (home fax)"}));
}

template <class Owner>
struct TextCase {
  int control;
  std::string Owner::*field;
  const wchar_t* typed;
  const char* stored;
};
using formats::Contact;
using formats::ContactAddress;
constexpr TextCase<Contact> kContactTexts[] = {
    {IDC_NAME, &Contact::name, L" Jürgen ", "J\xC3\xBCrgen"},
    {IDC_PREFIX, &Contact::prefix, L"Dr.", "Dr."},
    {IDC_GIVEN, &Contact::given, L"Ida", "Ida"},
    {IDC_MIDDLE, &Contact::middle, L"B.", "B."},
    {IDC_SURNAME, &Contact::surname, L"Wells", "Wells"},
    {IDC_SUFFIX, &Contact::suffix, L"III", "III"},
    {IDC_COMPANY, &Contact::company, L"A\tB", "A B"},
    {IDC_DEPARTMENT, &Contact::department, L"D", "D"},
    {IDC_TITLE, &Contact::title, L"", ""},
    {IDC_NOTE, &Contact::note, L"one\r\ntwo", "one\ntwo"},
};
constexpr TextCase<ContactAddress> kAddressTexts[] = {
    {IDC_STREET, &ContactAddress::street, L"1\r\n2", "1\n2"},
    {IDC_EXTENDED, &ContactAddress::extended, L"x", "x"},
    {IDC_POST_OFFICE_BOX, &ContactAddress::postOfficeBox, L"p", "p"},
    {IDC_POSTAL_CODE, &ContactAddress::postalCode, L"24", "24"},
    {IDC_LOCALITY, &ContactAddress::locality, L"Kiel", "Kiel"},
    {IDC_REGION, &ContactAddress::region, L"SH", "SH"},
    {IDC_COUNTRY, &ContactAddress::country, L"DE", "DE"},
};

// With each case and the text that it is about.
template <class Action>
void ForEachText(Contact& contact, const Action& action) {
  for (const auto& each : kContactTexts) action(each, contact.*each.field);
  for (const auto& each : kAddressTexts) action(each, contact.addresses.at(0).*each.field);
}

// Every text as it is shown, and as it is stored when something else is typed.
TEST_F(WindowsTest, EveryTextGoesInAndOut) {
  Contact before;
  before.addresses.resize(1);
  before.others = {"BDAY:1862-07-16", "item1.URL:https://a.example", "X-A;TYPE=home:b:c"};
  ForEachText(before,
              [](const auto& each, std::string& text) { text = "before " + std::to_string(each.control); });
  const auto store = Elsewhere();
  const book::EntryKey key = AddTo(*store, before);
  Client client;
  const auto steps = [&](DialogScript&, Pilot window) {
    ForEachText(before, [&](const auto& each, const std::string&) {
      EXPECT_EQ(window.Text(each.control), L"before " + std::to_wstring(each.control));
      window.Type(each.control, each.typed);
    });
    EXPECT_EQ(window.Rows(IDC_OTHERS, 2),
              (Names{L"Birthday|1862-07-16", L"Web page|https://a.example", L"X-A|b:c"}));
    window.Close(IDOK);
  };
  EXPECT_EQ(Details(client, FirstIn(client), steps), S_OK);
  Contact stored = ContactIn(*store, key);
  ForEachText(stored, [](const auto& each, const std::string& text) {
    EXPECT_EQ(text, each.stored) << each.control;
  });
  EXPECT_EQ(stored.others, before.others);
}

TEST_F(WindowsTest, NumbersAreAddedChangedMovedAndRemoved) {
  const auto store = Elsewhere();
  const book::EntryKey key = AddTo(*store, Ida());
  Client client;
  const std::vector<Bytes> ids = Ids(client.Open());
  EXPECT_EQ(
      Details(
          client, ids.at(1),
          [&](DialogScript&, Pilot window) {
            EXPECT_EQ(window.Text(IDC_NUMBER), L"30 2") << "the number that was asked for";
            EXPECT_TRUE(window.IsShown(IDC_NUMBER));
            const Names both{L"+49 30 1|Business fax|yes", L"30 2|Home fax|"};
            EXPECT_EQ(window.Rows(IDC_NUMBERS, 3), both);
            window.Type(IDC_NUMBER, L"30 22");
            window.Check(IDC_NUMBER_PREFERRED, true);
            window.Press(IDC_NUMBER_CHANGE);
            const Names changed{L"+49 30 1|Business fax|", L"30 22|Home fax|yes"};
            EXPECT_EQ(window.Rows(IDC_NUMBERS, 3), changed);
            window.Press(IDC_NUMBER_UP);
            EXPECT_FALSE(window.IsEnabled(IDC_NUMBER_UP));
            window.Choose(IDC_NUMBER_KIND, 8);
            EXPECT_FALSE(window.IsEnabled(IDC_NUMBER_PREFERRED)) << "only faxes are";
            window.Type(IDC_NUMBER, L"0171 3");
            window.Press(IDC_NUMBER_ADD);
            const Names three{L"30 22|Home fax|yes", L"+49 30 1|Business fax|", L"0171 3|Mobile telephone|"};
            EXPECT_EQ(window.Rows(IDC_NUMBERS, 3), three);
            window.Select(IDC_NUMBERS, 1);
            window.Key(IDC_NUMBERS, VK_DELETE);
            window.Settle();
            EXPECT_EQ(window.Rows(IDC_NUMBERS, 3).size(), 2u);
            window.Close(IDOK);
          }),
      S_OK);
  const formats::Contact stored = ContactIn(*store, key);
  ASSERT_EQ(stored.numbers.size(), 2u);
  EXPECT_TRUE(stored.numbers[0].isPreferred);
  EXPECT_EQ(stored.numbers[1].kind, NumberKind::kMobile);
  EXPECT_EQ(client.Text(ids[1], PR_EMAIL_ADDRESS), L"30 22") << "its identifier stays";
}

TEST_F(WindowsTest, EmailsAndAddressesAreKeptInOrder) {
  Client client;
  Bytes id;
  EXPECT_EQ(New(
                client, MAPI_MAILUSER,
                [](DialogScript& script, Pilot window) {
                  window.Type(IDC_COMPANY, L"Nordhamn");
                  EXPECT_EQ(window.Text(IDC_NAME), L"Nordhamn");
                  window.Type(IDC_NAME, L"Office");
                  window.Type(IDC_SURNAME, L"Wells");
                  EXPECT_EQ(window.Text(IDC_NAME), L"Office") << "what was typed stays";
                  window.Type(IDC_EMAIL, L"a@b");
                  window.Press(IDC_EMAIL_ADD);
                  window.Type(IDC_EMAIL, L"c@d");
                  window.Choose(IDC_EMAIL_KIND, 1);
                  window.Check(IDC_EMAIL_PREFERRED, true);
                  window.Press(IDC_EMAIL_ADD);
                  EXPECT_EQ(window.Rows(IDC_EMAILS, 3), (Names{L"a@b|Business|", L"c@d|Home|yes"}));
                  window.Type(IDC_STREET, L"Quay 1\r\n");
                  window.Type(IDC_LOCALITY, L"Kiel");
                  EXPECT_EQ(script.Items(GetParent(window.At(IDC_ADDRESSES)), IDC_ADDRESSES),
                            Names{L"Quay 1, Kiel (Business)"});
                  window.Press(IDC_ADDRESS_NEW);
                  window.Type(IDC_LOCALITY, L"Oslo");
                  window.Choose(IDC_ADDRESS_KIND, 1);
                  window.Press(IDC_ADDRESS_NEW);
                  window.Close(IDOK);
                },
                &id),
            S_OK);
  std::unique_ptr<book::View> view;
  std::vector<book::Row> rows;
  const auto store = Elsewhere();
  ASSERT_EQ(store->OpenView(&view), S_OK);
  ASSERT_EQ(view->Window(0, 1, &rows), S_OK);
  const formats::Contact stored = ContactIn(*store, rows.at(0).key.entry);
  ASSERT_EQ(stored.emails.size(), 2u);
  EXPECT_TRUE(stored.emails[1].isPreferred && stored.emails[1].place == Place::kHome);
  ASSERT_EQ(stored.addresses.size(), 2u) << "one in which nothing stands is none";
  EXPECT_EQ(stored.addresses[0].locality + stored.addresses[1].locality, "KielOslo");
  EXPECT_EQ(stored.addresses[1].place, Place::kHome);
}

TEST_F(WindowsTest, LongAddressesAreShownWhole) {
  constexpr const wchar_t* kMail = L"ingrid.sommarlund@nordhamn.example";
  Client client;
  const auto steps = [](DialogScript&, Pilot window) {
    window.Type(IDC_NAME, L"Ingrid");
    window.Type(IDC_EMAIL, kMail);
    window.Press(IDC_EMAIL_ADD);
    EXPECT_TRUE(window.Fits(IDC_EMAILS, 0, kMail));
    EXPECT_TRUE(window.Fits(IDC_EMAILS, 2, L"Preferred"));
    window.Close(IDOK);
  };
  EXPECT_EQ(New(client, MAPI_MAILUSER, steps), S_OK);
  formats::Contact list = Named("A list", true);
  list.members.push_back({"", "", book::ToUtf8(kMail), "", "", ""});
  AddTo(*Elsewhere(), list);
  const auto look = [](DialogScript&, Pilot window) {
    EXPECT_EQ(window.Rows(IDC_MEMBERS, 2), Names{std::wstring(kMail) + L"|"});
    EXPECT_TRUE(window.Fits(IDC_MEMBERS, 0, kMail));
    window.Close(IDCANCEL);
  };
  EXPECT_EQ(Details(client, FirstIn(client), look), MAPI_E_USER_CANCEL);
}

TEST_F(WindowsTest, WhatIsWrongIsToldAsOneTypes) {
  AddTo(*Elsewhere(), Ida());
  const struct {
    int control;
    const wchar_t* typed;
    const wchar_t* told;
  } cases[] = {
      {IDC_NAME, L"  ", L"Type a display name: it is missing."},
      {IDC_NAME, L"I", L""},
      {IDC_NUMBER, L"abc",
       L"A number needs at least one digit. Correct the one typed on the page \u201CNumbers\u201D."},
      {IDC_NUMBER, L"+49 (30) 1", L"The contact has this number already, and of this kind."},
      {IDC_NUMBER, L"7", L""},
      {IDC_EMAIL, L"ab",
       L"An e-mail address has an @ inside. Correct the one typed on the page \u201CE-mail\u201D."},
      {IDC_EMAIL, L"a@b", L""},
  };
  Client client;
  EXPECT_EQ(Details(client, FirstIn(client),
                    [&](DialogScript& script, Pilot window) {
                      window.Select(IDC_NUMBERS, -1);
                      for (const auto& each : cases) {
                        window.Type(each.control, each.typed);
                        EXPECT_EQ(window.Text(IDC_STATUS), each.told);
                        EXPECT_EQ(window.IsEnabled(IDOK), *each.told == 0) << each.control;
                      }
                      window.PostPress(IDCANCEL);
                      script.AnswerBox(IDYES);
                    }),
            MAPI_E_USER_CANCEL);
}

TEST_F(WindowsTest, LeavingWithChangesAsksAndStoresNothing) {
  const auto store = Elsewhere();
  const book::EntryKey key = AddTo(*store, Ida());
  const formats::Contact before = ContactIn(*store, key);
  Client client;
  const Bytes id = FirstIn(client);
  EXPECT_EQ(Details(client, id, [](DialogScript&, Pilot window) { window.Close(IDCANCEL); }),
            MAPI_E_USER_CANCEL);
  const auto leave = [](DialogScript& script, Pilot window) {
    window.Type(IDC_NAME, L"Other");
    window.PostPress(IDCANCEL);
    EXPECT_EQ(script.AnswerBox(IDNO), L"Leave without saving the changes?");
    script.WaitEnabled(window.Window());
    window.PostPress(IDCANCEL);
    script.AnswerBox(IDYES);
  };
  EXPECT_EQ(Details(client, id, leave), MAPI_E_USER_CANCEL);
  EXPECT_EQ(New(client, MAPI_MAILUSER, leave), MAPI_E_USER_CANCEL);
  EXPECT_EQ(ContactIn(*store, key), before);
  EXPECT_EQ(Shown(client.Open()).size(), 2u);
}

TEST_F(WindowsTest, ADuplicateIsOfferedInstead) {
  const auto store = Elsewhere();
  const book::EntryKey key = AddTo(*store, Ida());
  AddTo(*store, Named("Bare"));
  Client client;
  const struct {
    const wchar_t *name, *number;
    bool isAsked;
  } cases[] = {{L"ida wells", L"0049-30 2", false},
               {L"IDA WELLS", L"30/2", true},
               {L"Ida Wells", L"", false},
               {L"Bare", L"", true},
               {L"Bare", L"1", false}};
  for (const auto& each : cases) {
    const auto steps = [&](DialogScript& script, Pilot window) {
      window.Type(IDC_NAME, each.name);
      window.Type(IDC_NUMBER, each.number);
      window.PostPress(IDOK);
      if (!each.isAsked) return;
      EXPECT_NE(script.AnswerBox(IDYES).find(L"There is already a contact"), std::wstring::npos);
      script.WaitClosed(window.Window());
      const Pilot other(script, script.NextDialog());
      EXPECT_EQ(other.Text(IDC_TITLE), L"");
      other.Type(IDC_TITLE, L"opened");
      other.Close(IDOK);
    };
    EXPECT_EQ(New(client, MAPI_MAILUSER, steps), each.isAsked ? MAPI_E_USER_CANCEL : S_OK);
  }
  EXPECT_EQ(ContactIn(*store, key).title, "opened");
  EXPECT_EQ(Shown(client.Open()).size(), 6u);
  const auto saveAsWell = [](DialogScript& script, Pilot window) {
    window.Type(IDC_NAME, L"Bare");
    window.PostPress(IDOK);
    script.AnswerBox(IDCANCEL);
    script.WaitEnabled(window.Window());
    window.PostPress(IDOK);
    script.AnswerBox(IDNO);
  };
  EXPECT_EQ(New(client, MAPI_MAILUSER, saveAsWell), S_OK);
  EXPECT_EQ(Shown(client.Open()).size(), 7u);
}

TEST_F(WindowsTest, AChangeOfSomebodyElseIsShownSideBySide) {
  const auto store = Elsewhere();
  const book::EntryKey key = AddTo(*store, Ida());
  Client client;
  const auto steps = [&](DialogScript& script, Pilot window) {
    window.Type(IDC_TITLE, L"my title");
    window.Type(IDC_DEPARTMENT, L"my department");
    formats::Contact theirs = ContactIn(*store, key);
    theirs.title = "their title";
    theirs.department = "their department";
    theirs.company = "their company";
    theirs.numbers.pop_back();
    EXPECT_EQ(store->Change(key, theirs, book::kAnyVersion, nullptr), S_OK);
    window.PostPress(IDOK);
    const Pilot first(script, script.NextDialog());
    const Names differences{
        L"Company||their company|theirs", L"Department|my department|their department|mine",
        L"Job title|my title|their title|mine",
        L"Numbers|+49 30 1 (Business fax); 30 2 (Home fax)|+49 30 1 (Business fax)|theirs"};
    EXPECT_EQ(first.Rows(IDC_DIFFERENCES, 4), differences);
    first.Close(IDCANCEL);
    script.WaitEnabled(window.Window());
    EXPECT_EQ(window.Text(IDC_TITLE), L"my title") << "going back loses nothing";
    window.PostPress(IDOK);
    const Pilot conflict(script, script.NextDialog());
    conflict.Select(IDC_DIFFERENCES, 1);
    EXPECT_EQ(conflict.Text(IDC_THEIRS), L"their department");
    conflict.Select(IDC_DIFFERENCES, -1);
    EXPECT_EQ(conflict.Text(IDC_THEIRS), L"");
    EXPECT_FALSE(conflict.IsEnabled(IDC_KEEP_MINE));
    conflict.Select(IDC_DIFFERENCES, 1);
    conflict.Check(IDC_KEEP_MINE, false);
    conflict.Check(IDC_KEEP_THEIRS, true);
    // Somebody is quicker again.
    theirs.note = "once more";
    EXPECT_EQ(store->Change(key, theirs, book::kAnyVersion, nullptr), S_OK);
    conflict.Close(IDOK);
    const Pilot again(script, script.NextDialog());
    EXPECT_EQ(again.Rows(IDC_DIFFERENCES, 4),
              (Names{L"Job title|my title|their title|mine", L"Note||once more|theirs"}));
    again.Close(IDOK);
  };
  EXPECT_EQ(Details(client, FirstIn(client), steps), S_OK);
  const formats::Contact stored = ContactIn(*store, key);
  EXPECT_EQ(stored.title + ", " + stored.department + ", " + stored.company + ", " + stored.note,
            "my title, their department, their company, once more");
  EXPECT_EQ(stored.numbers.size(), 1u);
}

TEST_F(WindowsTest, WhatWasDeletedMeanwhileIsSavedAsNewIfWanted) {
  const auto store = Elsewhere();
  const book::RowKey key{AddTo(*store, Ida()), 0};
  Client client;
  const Bytes id = FirstIn(client);
  const auto steps = [&](DialogScript& script, Pilot window) {
    EXPECT_EQ(store->Remove({&key, 1}, nullptr), S_OK);
    window.Type(IDC_TITLE, L"kept");
    window.PostPress(IDOK);
    EXPECT_NE(script.AnswerBox(IDNO).find(L"Save it as a new one?"), std::wstring::npos);
    script.WaitEnabled(window.Window());
    window.PostPress(IDOK);
    script.AnswerBox(IDYES);
  };
  EXPECT_EQ(Details(client, id, steps), S_OK);
  EXPECT_EQ(ContactIn(*store, key.entry).title, "kept");
  EXPECT_EQ(client.Text(id, PR_TITLE), L"kept");
}

TEST_F(WindowsTest, AnotherProgramIsWaitedForAsLongAsTheUserLikes) {
  const auto store = Elsewhere();
  const book::EntryKey key = AddTo(*store, Ida());
  Client client;
  const auto steps = [&](DialogScript& script, Pilot window) {
    window.Type(IDC_TITLE, L"kept");
    {
      std::unique_ptr<book::Import> import;
      ASSERT_EQ(store->BeginImport(false, &import), S_OK);
      formats::Contact other = Ida();
      other.name = "Other";
      book::PutResult result{};
      ASSERT_EQ(import->Put(other, &result, nullptr), S_OK);
      window.PostPress(IDOK);
      const Pilot wait(script, script.NextDialog());
      EXPECT_EQ(wait.Text(IDC_WAIT_TEXT).find(L"Another program is using the address book."), 0u);
      wait.Close(IDCANCEL);
      script.WaitEnabled(window.Window());
      EXPECT_EQ(window.Text(IDC_TITLE), L"kept");
      EXPECT_EQ(ContactIn(*store, key).title, "") << "given up";
      window.PostPress(IDOK);
      script.NextDialog();
    }
    script.WaitClosed(window.Window());
  };
  EXPECT_EQ(Details(client, FirstIn(client), steps), S_OK);
  EXPECT_EQ(ContactIn(*store, key).title, "kept");
}

TEST_F(WindowsTest, ABookThatCanOnlyBeReadIsOnlyShown) {
  AddTo(*Elsewhere(), Ida());
  formats::Contact all = Named("Zirkel", true);
  all.members.push_back({"", "7", "", "", "", ""});
  AddTo(*Elsewhere(), all);
  ASSERT_TRUE(SetFileAttributesW(Path(L"own.orvab").c_str(), FILE_ATTRIBUTE_READONLY));
  {
    Client client;
    const auto steps = [](DialogScript&, Pilot window) {
      EXPECT_EQ(window.Text(IDC_STATUS), L"This address book can only be read.");
      EXPECT_FALSE(window.IsShown(IDOK));
      EXPECT_EQ(window.Text(IDCANCEL), L"Close");
      for (const int each : {IDC_NAME, IDC_NUMBER, IDC_EMAIL, IDC_STREET, IDC_NOTE})
        EXPECT_NE(GetWindowLongPtrW(window.At(each), GWL_STYLE) & ES_READONLY, 0) << each;
      const HDC surface = GetDC(nullptr);
      EXPECT_EQ(window.ColourOf(IDC_NAME, surface), window.ColourOf(IDC_NOTE, surface));
      EXPECT_EQ(window.ColourOf(IDC_NAME, surface), GetSysColorBrush(COLOR_BTNFACE)) << "not like paper";
      ReleaseDC(nullptr, surface);
      window.Select(IDC_NUMBERS, 0);
      for (const int each : {IDC_NUMBER_ADD, IDC_NUMBER_REMOVE, IDC_NUMBER_DOWN, IDC_ADDRESS_NEW})
        EXPECT_FALSE(window.IsEnabled(each)) << each;
      window.Close(IDCANCEL);
    };
    EXPECT_EQ(Details(client, FirstIn(client), steps), MAPI_E_USER_CANCEL);
    const auto lookAtList = [](DialogScript&, Pilot window) {
      EXPECT_EQ(window.Text(IDC_STATUS), L"This address book can only be read.");
      EXPECT_NE(GetWindowLongPtrW(window.At(IDC_LIST_NAME), GWL_STYLE) & ES_READONLY, 0);
      EXPECT_EQ(window.Rows(IDC_MEMBERS, 1), Names{L"7"});
      window.Select(IDC_MEMBERS, 0);
      for (const int each : {IDOK, IDC_FIND, IDC_FOUND, IDC_MEMBER_ADD, IDC_MEMBER_REMOVE})
        EXPECT_EQ(window.At(each), nullptr) << each;
      window.Close(IDCANCEL);
    };
    EXPECT_EQ(Details(client, Ids(client.Open()).back(), lookAtList), MAPI_E_USER_CANCEL);
    EXPECT_EQ(New(client, MAPI_MAILUSER, {}), MAPI_E_NO_ACCESS);
  }
  SetFileAttributesW(Path(L"own.orvab").c_str(), FILE_ATTRIBUTE_NORMAL);
}

// While it lives, Ctrl is down for the thread that shows the window.
class ControlDown {
 public:
  explicit ControlDown(Pilot window) : thread_(GetWindowThreadProcessId(window.Window(), nullptr)) {
    EXPECT_TRUE(AttachThreadInput(GetCurrentThreadId(), thread_, TRUE));
    Put(0x80);
  }
  ~ControlDown() {
    Put(0);
    AttachThreadInput(GetCurrentThreadId(), thread_, FALSE);
  }
  ControlDown(const ControlDown&) = delete;
  ControlDown& operator=(const ControlDown&) = delete;

 private:
  static void Put(BYTE state) {
    BYTE keys[256]{};
    keys[VK_CONTROL] = state;
    SetKeyboardState(keys);
  }

  const DWORD thread_;
};

void ControlKey(Pilot window, int control, UINT key) {
  const ControlDown down(window);
  window.Key(control, key);
  window.Settle();
}

// From a control of a page to the first one of another page; from the tabs along the tabs.
TEST_F(WindowsTest, CtrlAndTabTurnThePages) {
  AddTo(*Elsewhere(), Ida());
  Client client;
  const auto steps = [](DialogScript& script, Pilot window) {
    const ControlDown down(window);
    const int others[] = {IDC_NUMBER, IDC_EMAIL, IDC_ADDRESSES, IDC_NOTE};
    int at = IDC_NAME;
    const auto hasTurned = [&] {
      const auto isIt = [&](int each) { return window.Focus() == window.At(each); };
      const auto found = std::find_if(std::begin(others), std::end(others), isIt);
      return found != std::end(others) && (at = *found, true);
    };
    window.Key(IDC_NAME, VK_TAB);
    script.WaitUntil(hasTurned, "the first control of another page");
    EXPECT_TRUE(window.IsShown(at));
    window.Key(IDC_TABS, VK_TAB);
    script.WaitUntil([&] { return !window.IsShown(at); }, "a further page");
    EXPECT_EQ(window.Focus(), window.At(IDC_TABS));
    window.Close(IDCANCEL);
  };
  Details(client, FirstIn(client), steps);
}

// Every control that can have the focus gets it by Tab, in reading order, on its page and nowhere else.
TEST_F(WindowsTest, KeysLeadThroughEveryPage) {
  AddTo(*Elsewhere(), Ida());
  Client client;
  const std::vector<std::vector<int>> pages{
      {IDC_TABS, IDC_NAME, IDC_PREFIX, IDC_GIVEN, IDC_MIDDLE, IDC_SURNAME, IDC_SUFFIX, IDC_COMPANY,
       IDC_DEPARTMENT, IDC_TITLE, IDOK, IDCANCEL},
      {IDC_TABS, IDC_NUMBER, IDC_NUMBER_KIND, IDC_NUMBER_PREFERRED, IDC_NUMBERS, IDC_NUMBER_REMOVE,
       IDC_NUMBER_DOWN, IDOK, IDCANCEL},
      {IDC_TABS, IDC_EMAIL, IDC_EMAIL_KIND, IDC_EMAIL_PREFERRED, IDC_EMAILS, IDOK, IDCANCEL},
      {IDC_TABS, IDC_ADDRESSES, IDC_ADDRESS_NEW, IDC_ADDRESS_KIND, IDC_STREET, IDC_EXTENDED,
       IDC_POST_OFFICE_BOX, IDC_POSTAL_CODE, IDC_LOCALITY, IDC_REGION, IDC_COUNTRY, IDOK, IDCANCEL},
      {IDC_TABS, IDC_NOTE, IDC_OTHERS, IDOK, IDCANCEL}};
  const auto steps = [&](DialogScript&, Pilot window) {
    for (size_t page = 0; page < pages.size(); ++page) {
      window.Turn(static_cast<int>(page));
      std::vector<int> order;
      const HWND first = window.At(IDC_TABS);
      HWND at = first;
      do {
        order.push_back(GetDlgCtrlID(at));
        at = GetNextDlgTabItem(window.Window(), at, FALSE);
      } while (at != first && order.size() < 30);
      EXPECT_EQ(order, pages[page]) << page;
    }
    window.Close(IDCANCEL);
  };
  Details(client, FirstIn(client), steps);
}

TEST_F(WindowsTest, TextsAreThoseOfTheInstalledLanguage) {
  const struct {
    const wchar_t *companion, *page, *shown, *fault;
  } cases[] = {
      {L"XHTFCAUS.dll", L"Numbers", L"Ida Wells (business fax)", L"Type a display name: it is missing."},
      {L"XHTFCADE.dll", L"Nummern", L"Ida Wells (Fax geschäftlich)",
       L"Geben Sie einen Anzeigenamen ein: Er fehlt noch."},
      {L"XHTFCAFR.dll", L"Numéros", L"Ida Wells (télécopie bureau)",
       L"Tapez le nom à afficher\u00A0: il manque encore."},
      {L"XHTFCAJP.dll", L"番号", L"Ida Wells (勤務先ファックス)", L"表示名がありません。入力してください。"},
      {L"XHTFCAAR.dll", L"الأرقام", L"Ida Wells (فاكس العمل)", L"اكتب اسم العرض: إنه غير موجود.\x200F"}};
  AddTo(*Elsewhere(), Ida());
  for (const auto& each : cases) {
    const HMODULE companion = LoadLibraryW(each.companion);
    ASSERT_NE(companion, nullptr);
    process::SetResourceLibrary(companion);
    {
      Client client;
      EXPECT_EQ(Shown(client.Open()).at(0), each.shown);
      const auto steps = [&](DialogScript& script, Pilot window) {
        window.Type(IDC_NAME, L"");
        EXPECT_EQ(window.Text(IDC_STATUS), each.fault);
        EXPECT_EQ(window.Tab(1), each.page);
        const bool isMirrored = (GetWindowLongPtrW(window.Window(), GWL_EXSTYLE) & WS_EX_LAYOUTRTL) != 0;
        EXPECT_EQ(isMirrored, each.companion == std::wstring_view(L"XHTFCAAR.dll"));
        window.PostPress(IDCANCEL);
        script.AnswerBox(IDYES);
      };
      Details(client, FirstIn(client), steps);
    }
    process::SetResourceLibrary(nullptr);
    FreeLibrary(companion);
  }
}

// ---- Lists

TEST_F(WindowsTest, ANewListIsFilledFromEveryContainer) {
  AddService(2, Path(L"other.orvab"));
  AddTo(*Elsewhere(), Ida());
  Client client;
  Add(client.Open(L"other"), {{PR_DISPLAY_NAME, L"Idun"}, {PR_EMAIL_ADDRESS, L"9"}});
  Bytes id;
  const auto steps = [](DialogScript& script, Pilot ask) {
    ask.Check(IDC_WHAT_CONTACT, false);
    ask.Check(IDC_WHAT_LIST, true);
    ask.PostPress(IDOK);
    script.WaitClosed(ask.Window());
    const Pilot window(script, script.NextDialog());
    EXPECT_EQ(window.Text(IDC_STATUS), L"Type a name for the list: it is missing.");
    window.Type(IDC_LIST_NAME, L"Everybody");
    window.Type(IDC_FIND, L"Id");
    const Names all{L"Ida Wells (business fax)|+49 30 1", L"Ida Wells (home fax)|30 2", L"Idun|9"};
    EXPECT_EQ(window.Rows(IDC_FOUND, 2), all) << "as they sort, whatever book they are in";
    window.Type(IDC_FIND, L"nobody");
    EXPECT_EQ(window.Text(IDC_FOUND_STATE), L"No entry was found.");
    window.Type(IDC_FIND, L"Id");
    EXPECT_EQ(window.Text(IDC_FOUND_STATE), L"");
    window.Select(IDC_FOUND, 1);
    window.Press(IDC_MEMBER_ADD);
    EXPECT_EQ(window.Text(IDC_STATUS), L"");
    window.Press(IDC_MEMBER_ADD);
    EXPECT_EQ(window.Text(IDC_STATUS), L"This is a member of the list already.");
    window.Choose(IDC_CONTAINER, 2);
    EXPECT_EQ(window.Rows(IDC_FOUND, 2), Names{L"Idun|9"});
    window.Key(IDC_FIND, VK_RETURN);
    window.Settle();
    EXPECT_EQ(script.Send(window.At(IDC_FIND), EM_GETSEL), MAKELRESULT(0, 2))
        << "typed over by the next name";
    window.Type(IDC_FIND, L"+47 12");
    window.Press(IDC_MEMBER_ADD_NUMBER);
    const Names members{L"Ida Wells|30 2|Contact", L"Idun|9|Other book", L"+47 12|+47 12|Number"};
    EXPECT_EQ(window.Rows(IDC_MEMBERS, 3), members);
    window.Press(IDC_MEMBER_UP);
    window.Close(IDOK);
  };
  ASSERT_EQ(New(client, 0, steps, &id), S_OK);
  const auto list = client.OpenEntry<IDistList>(id);
  EXPECT_EQ(Shown(list), (Names{L"Ida Wells (home fax)", L"+47 12", L"Idun"}));
}

// Of namesakes in several books that of the list's own book comes first, whatever tells it from others.
TEST_F(WindowsTest, TheOwnBookComesFirst) {
  AddService(2, Path(L"other.orvab"));
  AddTo(*Elsewhere(), Ida());
  Client client;
  Add(client.Open(L"other"), {{PR_DISPLAY_NAME, L"Ida Wells"}, {PR_EMAIL_ADDRESS, L"9"}});
  const auto steps = [](DialogScript&, Pilot window) {
    window.Type(IDC_FIND, L"wells");
    const Names all{L"Ida Wells (business fax)|+49 30 1", L"Ida Wells (home fax)|30 2", L"Ida Wells|9"};
    EXPECT_EQ(window.Rows(IDC_FOUND, 2), all);
    window.Choose(IDC_CONTAINER, 1);
    EXPECT_EQ(window.Rows(IDC_FOUND, 2), (Names{all[0], all[1]}));
    window.Close(IDCANCEL);
  };
  EXPECT_EQ(New(client, MAPI_DISTLIST, steps), MAPI_E_USER_CANCEL);
}

TEST_F(WindowsTest, AListOfTheSameNameIsOfferedInstead) {
  const auto store = Elsewhere();
  const book::EntryKey key = AddTo(*store, Named("All", true));
  Client client;
  const auto name = [](DialogScript& script, Pilot window, int answer) {
    window.Type(IDC_LIST_NAME, L"all");
    window.PostPress(IDOK);
    EXPECT_EQ(script.AnswerBox(answer).find(L"There is already a list \u201Call\u201D."), 0u);
    script.WaitClosed(window.Window());
  };
  const auto open = [&](DialogScript& script, Pilot window) {
    name(script, window, IDYES);
    const Pilot other(script, script.NextDialog());
    EXPECT_EQ(other.Text(IDC_LIST_NAME), L"All");
    other.Type(IDC_LIST_NAME, L"Everybody");
    other.Close(IDOK);
  };
  EXPECT_EQ(New(client, MAPI_DISTLIST, open), MAPI_E_USER_CANCEL);
  EXPECT_EQ(ContactIn(*store, key).name, "Everybody");
  AddTo(*store, Named("All", true));
  EXPECT_EQ(New(client, MAPI_DISTLIST, [&](auto& script, Pilot window) { name(script, window, IDNO); }),
            S_OK);
  EXPECT_EQ(Shown(client.Open()), (Names{L"All", L"all", L"Everybody"}));
}

// Found by the book: the window knows of no list below its members.
TEST_F(WindowsTest, AListIsInNoListThatItHolds) {
  const auto store = Elsewhere();
  const book::EntryKey inner = AddTo(*store, Named("Inner", true));
  formats::Contact outer = Named("Outer", true);
  outer.members.push_back({ContactIn(*store, inner).uid, "", "", "Inner", "", ""});
  AddTo(*store, outer);
  const struct {
    const wchar_t* member;
    int pressed;
    const wchar_t* told;
  } cases[] = {
      {L"Inner", IDC_MEMBER_ADD, L"A list cannot be a member of itself."},
      {L"Outer", IDOK, L"A member is a list that holds this list itself. Remove that member."},
  };
  Client client;
  const auto steps = [&](DialogScript& script, Pilot window) {
    for (const auto& each : cases) {
      window.Type(IDC_FIND, each.member);
      window.Select(IDC_FOUND, 0);
      if (each.pressed == IDOK) window.Press(IDC_MEMBER_ADD);
      window.PostPress(each.pressed);
      EXPECT_EQ(script.AnswerBox(IDOK), each.told);
      script.WaitEnabled(window.Window());
    }
    window.Select(IDC_MEMBERS, 0);
    window.Press(IDC_MEMBER_REMOVE);
    window.Close(IDOK);
  };
  EXPECT_EQ(Details(client, FirstIn(client), steps), S_OK);
  EXPECT_TRUE(ContactIn(*store, inner).members.empty());
}

TEST_F(WindowsTest, MembersOfAListAreShownAsWhatTheyAre) {
  const auto store = Elsewhere();
  const book::RowKey gone{AddTo(*store, Ida()), 0};
  formats::Contact list = Named("List", true);
  const book::EntryKey inner = AddTo(*store, Named("Inner", true)), bare = AddTo(*store, Named("Bare"));
  for (const book::EntryKey& each : {gone.entry, inner, bare})
    list.members.push_back({ContactIn(*store, each).uid, "", "", "member", "", ""});
  list.members.push_back({"", "", "a@b", "", "", ""});
  const book::EntryKey key = AddTo(*store, list);
  EXPECT_EQ(store->Remove({&gone, 1}, nullptr), S_OK);
  Client client;
  const auto steps = [&](DialogScript& script, Pilot window) {
    const Names members{L"member||Missing", L"Inner||List", L"Bare||Contact", L"a@b||E-mail"};
    EXPECT_EQ(window.Rows(IDC_MEMBERS, 3), members);
    window.Select(IDC_MEMBERS, 2);
    window.Key(IDC_MEMBERS, VK_DELETE);
    window.Settle();
    // The list itself is no member of it.
    window.Type(IDC_FIND, L"List");
    window.PostPress(IDC_MEMBER_ADD);
    EXPECT_EQ(script.AnswerBox(IDOK), L"A list cannot be a member of itself.");
    script.WaitEnabled(window.Window());
    formats::Contact theirs = ContactIn(*store, key);
    theirs.name = "Renamed";
    EXPECT_EQ(store->Change(key, theirs, book::kAnyVersion, nullptr), S_OK);
    window.PostPress(IDOK);
    const Pilot conflict(script, script.NextDialog());
    const Names differences{L"Display name|List|Renamed|theirs",
                            L"Members|member; member; a@b|member; member; member; a@b|mine"};
    EXPECT_EQ(conflict.Rows(IDC_DIFFERENCES, 4), differences);
    conflict.Close(IDOK);
  };
  Bytes id;
  for (const Bytes& each : Ids(client.Open())) {
    if (client.Text(each) == L"List") id = each;
  }
  EXPECT_EQ(Details(client, id, steps), S_OK);
  EXPECT_EQ(ContactIn(*store, key).name, "Renamed");
  EXPECT_EQ(ContactIn(*store, key).members.size(), 3u);
}

TEST_F(WindowsTest, WhatWasDoneInAListIsTakenBack) {
  Client client;
  const auto steps = [](DialogScript&, Pilot window) {
    window.Type(IDC_NAME, L"Ida");
    window.Turn(1);
    for (const wchar_t* each : {L"1", L"2"}) {
      window.Type(IDC_NUMBER, each);
      window.Press(IDC_NUMBER_ADD);
    }
    const Names both = window.Rows(IDC_NUMBERS, 3);
    EXPECT_EQ(both, (Names{L"1|Business fax|yes", L"2|Business fax|"}));
    window.Select(IDC_NUMBERS, 0);
    window.Press(IDC_NUMBER_DOWN);
    window.Press(IDC_NUMBER_REMOVE);
    EXPECT_EQ(window.Rows(IDC_NUMBERS, 3), Names{L"2|Business fax|yes"});
    ControlKey(window, IDC_NUMBERS, 'Z');
    ControlKey(window, IDC_NUMBERS, 'Z');
    EXPECT_EQ(window.Rows(IDC_NUMBERS, 3), both);
    window.Close(IDOK);
  };
  EXPECT_EQ(New(client, MAPI_MAILUSER, steps), S_OK);
  EXPECT_EQ(Shown(client.Open(), PR_EMAIL_ADDRESS), (Names{L"1", L"2"}));
}

TEST_F(WindowsTest, SeveralNumbersArePastedAtOnce) {
  const std::wstring copied = L"+49 30 1\r\nnone\r\n\r\n30 2; +49 (30) 1\r\n";
  const auto copy = [&] {
    const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, (copied.size() + 1) * sizeof(wchar_t));
    std::copy_n(copied.c_str(), copied.size() + 1, static_cast<wchar_t*>(GlobalLock(memory)));
    GlobalUnlock(memory);
    EXPECT_TRUE(OpenClipboard(nullptr));
    EmptyClipboard();
    EXPECT_NE(SetClipboardData(CF_UNICODETEXT, memory), nullptr);
    CloseClipboard();
  };
  Client client;
  EXPECT_EQ(New(client, MAPI_MAILUSER,
                [&](DialogScript&, Pilot window) {
                  copy();
                  window.Type(IDC_NAME, L"Ida");
                  window.Turn(1);
                  ControlKey(window, IDC_NUMBER, 'V');
                  EXPECT_EQ(window.Rows(IDC_NUMBERS, 1), (Names{L"+49 30 1", L"30 2"}));
                  window.Close(IDOK);
                }),
            S_OK);
  EXPECT_EQ(New(client, MAPI_DISTLIST,
                [&](DialogScript&, Pilot window) {
                  window.Type(IDC_LIST_NAME, L"All");
                  ControlKey(window, IDC_FIND, 'V');
                  EXPECT_EQ(window.Rows(IDC_MEMBERS, 1), (Names{L"+49 30 1", L"30 2", L"+49 (30) 1"}));
                  ControlKey(window, IDC_MEMBERS, 'Z');
                  EXPECT_EQ(window.Rows(IDC_MEMBERS, 1), Names{}) << "pasted in one step";
                  window.Close(IDOK);
                }),
            S_OK);
}

// In the window of the first member, which is saved.
void ChangeFirstMember(DialogScript& script, Pilot list, const std::function<void(Pilot)>& change) {
  list.Select(IDC_MEMBERS, 0);
  list.Key(IDC_MEMBERS, VK_RETURN);
  const Pilot member(script, script.NextDialog());
  change(member);
  member.Close(IDOK);
  script.WaitEnabled(list.Window());
  list.Settle();
}

TEST_F(WindowsTest, AMemberIsOpenedFromItsList) {
  const auto store = Elsewhere();
  const book::EntryKey ida = AddTo(*store, Ida());
  formats::Contact list = Named("A list", true);
  list.members.push_back({ContactIn(*store, ida).uid, "30 2", "", "Ida", "", ""});
  AddTo(*store, list);
  Client client;
  const auto steps = [](DialogScript& script, Pilot window) {
    ChangeFirstMember(script, window, [](Pilot member) {
      EXPECT_EQ(member.Text(IDC_NUMBER), L"30 2");
      member.Type(IDC_NAME, L"Ida B. Wells");
    });
    EXPECT_EQ(window.Rows(IDC_MEMBERS, 3), Names{L"Ida B. Wells|30 2|Contact"});
    window.Close(IDCANCEL);
  };
  EXPECT_EQ(Details(client, FirstIn(client), steps), MAPI_E_USER_CANCEL);
  EXPECT_EQ(ContactIn(*store, ida).name, "Ida B. Wells");
}

// Whatever is a member stands where it was left when the list is opened again.
TEST_F(WindowsTest, MembersKeepTheirOrder) {
  const auto store = Elsewhere();
  AddTo(*store, Ida());
  AddTo(*store, Named("Inner", true));
  Client client;
  Bytes id;
  const auto fill = [](DialogScript&, Pilot window) {
    window.Type(IDC_LIST_NAME, L"Outer");
    for (const wchar_t* each : {L"Inner", L"Ida"}) {
      window.Type(IDC_FIND, each);
      window.Press(IDC_MEMBER_ADD);
    }
    for (const wchar_t* each : {L"+47 1", L"+47 2"}) {
      window.Type(IDC_FIND, each);
      window.Press(IDC_MEMBER_ADD_NUMBER);
    }
    for (int i = 0; i < 3; ++i) window.Press(IDC_MEMBER_UP);
    EXPECT_FALSE(window.IsEnabled(IDC_MEMBER_UP));
    window.Select(IDC_MEMBERS, 1);
    window.Press(IDC_MEMBER_DOWN);
    window.Close(IDOK);
  };
  ASSERT_EQ(New(client, MAPI_DISTLIST, fill, &id), S_OK);
  const Names members{L"+47 2|+47 2|Number", L"Ida Wells|+49 30 1|Contact", L"Inner||List",
                      L"+47 1|+47 1|Number"};
  const auto look = [&](DialogScript&, Pilot window) {
    EXPECT_EQ(window.Rows(IDC_MEMBERS, 3), members);
    window.Select(IDC_MEMBERS, 1);
    window.Press(IDC_MEMBER_REMOVE);
    window.Close(IDOK);
  };
  EXPECT_EQ(Details(client, id, look), S_OK);
  EXPECT_EQ(Shown(client.OpenEntry<IDistList>(id)), (Names{L"+47 2", L"Inner", L"+47 1"}));
}

// In one step, which is taken back as one; whoever cannot be a member is told of and the others are taken.
TEST_F(WindowsTest, SeveralFindsBecomeMembersAtOnce) {
  const auto store = Elsewhere();
  for (const char* each : {"Person A", "Person B", "Person C", "Person D"}) AddTo(*store, Named(each));
  const book::EntryKey key = AddTo(*store, Named("A Person's list", true));
  Client client;
  const auto steps = [](DialogScript& script, Pilot window) {
    window.Type(IDC_FIND, L"Pers");
    EXPECT_EQ(window.Rows(IDC_FOUND, 1).size(), 5u);
    ControlKey(window, IDC_FOUND, 'A');
    window.PostPress(IDC_MEMBER_ADD);
    EXPECT_EQ(script.AnswerBox(IDOK), L"A list cannot be a member of itself.");
    script.WaitEnabled(window.Window());
    EXPECT_EQ(window.Rows(IDC_MEMBERS, 1), (Names{L"Person A", L"Person B", L"Person C", L"Person D"}));
    ControlKey(window, IDC_MEMBERS, 'Z');
    EXPECT_EQ(window.Rows(IDC_MEMBERS, 1), Names{});
    window.Select(IDC_FOUND, 2);
    window.SelectToo(IDC_FOUND, 3);
    window.Press(IDC_MEMBER_ADD);
    EXPECT_EQ(window.Rows(IDC_MEMBERS, 1).size(), 2u);
    window.Close(IDOK);
  };
  Bytes id;
  for (const Bytes& each : Ids(client.Open())) {
    if (client.Text(each) == L"A Person's list") id = each;
  }
  EXPECT_EQ(Details(client, id, steps), S_OK);
  EXPECT_EQ(ContactIn(*store, key).members.size(), 2u);
}

// The window is that of its own book, which stores what is changed.
TEST_F(WindowsTest, AMemberOfAnotherBookIsOpenedFromItsList) {
  AddService(2, Path(L"other.orvab"));
  formats::Contact list = Named("A list", true);
  Client client;
  const Bytes idun = Add(client.Open(L"other"), {{PR_DISPLAY_NAME, L"Idun"}, {PR_EMAIL_ADDRESS, L"9"}});
  list.members.push_back({"", "", "", "Idun", {idun.begin(), idun.end()}, ""});
  AddTo(*Elsewhere(), list);
  const auto steps = [](DialogScript& script, Pilot window) {
    EXPECT_EQ(window.Rows(IDC_MEMBERS, 3), Names{L"Idun|9|Other book"});
    ChangeFirstMember(script, window, [&](Pilot member) {
      EXPECT_EQ(GetWindow(member.Window(), GW_OWNER), window.Window());
      member.Type(IDC_NUMBER, L"99");
    });
    EXPECT_EQ(window.Rows(IDC_MEMBERS, 3), Names{L"Idun (business fax)|99|Other book"});
    window.Close(IDCANCEL);
  };
  EXPECT_EQ(Details(client, FirstIn(client), steps), MAPI_E_USER_CANCEL);
  EXPECT_EQ(Shown(client.Open(L"other"), PR_EMAIL_ADDRESS), (Names{L"9", L"99"}));
}

TEST_F(WindowsTest, AMemberStaysTheNumberThatWasChanged) {
  const auto store = Elsewhere();
  const book::EntryKey ida = AddTo(*store, Ida());
  formats::Contact list = Named("A list", true);
  list.members.push_back({ContactIn(*store, ida).uid, "30 2", "", "Ida", "", ""});
  AddTo(*store, list);
  formats::Contact changed = ContactIn(*store, ida);
  changed.numbers[1].text = "30 22";
  EXPECT_EQ(store->Change(ida, changed, book::kAnyVersion, nullptr), S_OK);
  Client client;
  const Bytes id = FirstIn(client);
  const auto steps = [](DialogScript&, Pilot window) {
    EXPECT_EQ(window.Rows(IDC_MEMBERS, 3), Names{L"Ida Wells|30 22|Contact"});
    window.Type(IDC_LIST_NAME, L"A renamed list");
    window.Close(IDOK);
  };
  EXPECT_EQ(Details(client, id, steps), S_OK);
  const auto renamed = client.OpenEntry<IDistList>(id);
  EXPECT_EQ(Shown(renamed), Names{L"Ida Wells (home fax)"});
}

}  // namespace
}  // namespace orv::test
