// What the window of a list asks of its directory while somebody types.
#include <algorithm>

#include "platform/module.h"
#include "providers/book/windows/list_window.h"
#include "tests/providers/windows_fixture.h"

namespace orv::test {
namespace {

// Two containers that have every other one of two hundred thousand people, and count whom they hand out.
class CountingDirectory final : public book::Directory {
 public:
  const std::vector<Container>& Containers() override { return containers_; }
  HRESULT Find(size_t container, const std::wstring& text, size_t most,
               std::vector<book::FoundEntry>* found) override {
    if (FAILED(codes[container])) return codes[container];
    const auto named = [](int number) { return L"Person " + std::to_wstring(number); };
    int number = kFirst + static_cast<int>(container);
    while (number < 2 * kFirst && named(number) < text) number += 2;
    for (; number < 2 * kFirst && found->size() < most && named(number).starts_with(text); number += 2)
      found->push_back({named(number), L"", {static_cast<BYTE>(number % 256)}});
    handedOut += found->size();
    return S_OK;
  }
  HRESULT Look(book::FoundEntry*) override { return MAPI_E_NO_SUPPORT; }
  HRESULT MemberOf(const book::EntryId& id, formats::ContactMember* member) override {
    member->name = "Person";
    member->entryId.assign(id.begin(), id.end());
    return memberCode;
  }
  HRESULT Show(HWND, const book::EntryId& id) override {
    shown = id;
    return MAPI_E_NO_SUPPORT;
  }

  book::EntryId shown;
  size_t handedOut = 0;
  HRESULT codes[2] = {S_OK, S_OK};
  HRESULT memberCode = S_OK;

 private:
  static constexpr int kFirst = 200'000;
  const std::vector<Container> containers_{{L"Even", {0}}, {L"Odd", {1}}};
};

class ListSearchTest : public WindowsTest {
 protected:
  HRESULT ShowNew(CountingDirectory& directory, const Steps& steps) {
    const Module library = Module::Load(Path(L"xhtpaba.dll"));
    const kit::Language english(library.Get(), nullptr);
    book::EntryKey made{};
    DialogDriver driver(Over(steps));
    return book::ShowNewList(nullptr, english, Elsewhere(), directory, &made);
  }
};

TEST_F(ListSearchTest, EachLetterReadsWhatIsShownAndNoMore) {
  constexpr size_t kShown = 50, kOfEach = kShown + 1;
  CountingDirectory directory;
  const auto steps = [&](DialogScript&, Pilot window) {
    for (const wchar_t* text : {L"P", L"Person 2", L"Person 25", L""}) {
      directory.handedOut = 0;
      window.Type(IDC_FIND, text);
      EXPECT_LE(directory.handedOut, 2 * kOfEach) << text;
      const Names found = window.Rows(IDC_FOUND, 1);
      EXPECT_EQ(found.size(), kShown);
      EXPECT_TRUE(std::is_sorted(found.begin(), found.end())) << "both containers in one order";
      EXPECT_EQ(window.Text(IDC_FOUND_STATE), L"The first 50 are shown. Type more to find others.");
    }
    window.Type(IDC_FIND, L"Person 25000");
    EXPECT_EQ(window.Rows(IDC_FOUND, 1).size(), 10u);
    EXPECT_EQ(window.Text(IDC_FOUND_STATE), L"");
    window.Type(IDC_FIND, L"Person 250000");
    EXPECT_EQ(window.Rows(IDC_FOUND, 1), Names{L"Person 250000"});
    window.Choose(IDC_CONTAINER, 2);
    EXPECT_EQ(window.Text(IDC_FOUND_STATE), L"No entry was found.");
    window.Close(IDCANCEL);
  };
  EXPECT_EQ(ShowNew(directory, steps), MAPI_E_USER_CANCEL);
}

// Namesakes are told apart by the address book that they are in, as long as several are looked in.
TEST_F(ListSearchTest, TheAddressBookOfEachFindIsNamed) {
  CountingDirectory directory;
  const auto steps = [](DialogScript&, Pilot window) {
    const Names all{L"Name", L"Number", L"Address book"}, one{L"Name", L"Number"};
    EXPECT_EQ(window.Headings(IDC_FOUND), all);
    window.Type(IDC_FIND, L"Person 25000");
    EXPECT_EQ(window.Rows(IDC_FOUND, 3).at(0), L"Person 250000||Even");
    EXPECT_EQ(window.Rows(IDC_FOUND, 3).at(1), L"Person 250001||Odd");
    window.Choose(IDC_CONTAINER, 2);
    EXPECT_EQ(window.Headings(IDC_FOUND), one);
    EXPECT_EQ(window.Rows(IDC_FOUND, 2).at(0), L"Person 250001|");
    window.Choose(IDC_CONTAINER, 0);
    EXPECT_EQ(window.Headings(IDC_FOUND), all);
    window.Close(IDCANCEL);
  };
  EXPECT_EQ(ShowNew(directory, steps), MAPI_E_USER_CANCEL);
}

TEST_F(ListSearchTest, AMemberWithoutAWindowSaysSo) {
  CountingDirectory directory;
  const auto steps = [&](DialogScript& script, Pilot window) {
    window.Type(IDC_LIST_NAME, L"All");
    window.Type(IDC_FIND, L"Person 250003");
    window.Press(IDC_MEMBER_ADD);
    window.Type(IDC_FIND, L"+47 12");
    window.Press(IDC_MEMBER_ADD_NUMBER);
    EXPECT_EQ(window.Text(IDC_STATUS), L"");
    window.Key(IDC_MEMBERS, VK_RETURN);
    window.Settle();
    EXPECT_EQ(window.Text(IDC_STATUS).find(L"This member is only a number or an e-mail address."), 0u);
    EXPECT_TRUE(window.IsEnabled(IDOK)) << "it may be saved all the same";
    window.Select(IDC_MEMBERS, 0);
    EXPECT_EQ(window.Text(IDC_STATUS), L"");
    window.Key(IDC_MEMBERS, VK_RETURN);
    EXPECT_EQ(script.AnswerBox(IDOK), L"The address book that this entry is in has no window for it.");
    script.WaitEnabled(window.Window());
    EXPECT_EQ(directory.shown, book::EntryId{250003 % 256});
    window.PostPress(IDCANCEL);
    script.AnswerBox(IDYES);
  };
  EXPECT_EQ(ShowNew(directory, steps), MAPI_E_USER_CANCEL);
}

// The others are searched all the same, and a container that comes back is.
TEST_F(ListSearchTest, AContainerThatCannotBeSearchedIsToldOf) {
  const struct {
    HRESULT code;
    const wchar_t* told;
  } cases[] = {
      {MAPI_E_NETWORK_ERROR, L"Odd: The disk or the network failed. Check the connection, then try again."},
      {MAPI_E_BUSY,
       L"Odd: Another program is using the address book. Close that program, or try again later."},
      {MAPI_E_UNABLE_TO_ABORT,
       L"Odd: This did not work (80040114). Try again; if it happens again, check the "
       L"address book in its settings."},
  };
  CountingDirectory directory;
  const auto steps = [&](DialogScript& script, Pilot window) {
    for (const auto& each : cases) {
      directory.codes[1] = each.code;
      window.Type(IDC_FIND, L"Person 250");
      EXPECT_EQ(window.Text(IDC_FOUND_STATE), each.told);
      EXPECT_EQ(window.Rows(IDC_FOUND, 1).front(), L"Person 250000");
    }
    directory.codes[1] = S_OK;
    window.Type(IDC_FIND, L"Person 25000");
    EXPECT_EQ(window.Text(IDC_FOUND_STATE), L"");
    // Somebody has deleted the entry since it was found.
    directory.memberCode = MAPI_E_NOT_FOUND;
    window.PostPress(IDC_MEMBER_ADD);
    EXPECT_EQ(script.AnswerBox(IDOK), L"The entry is not there any more. Somebody has deleted it.");
    script.WaitEnabled(window.Window());
    EXPECT_EQ(window.Rows(IDC_MEMBERS, 1), Names{});
    window.Close(IDCANCEL);
  };
  EXPECT_EQ(ShowNew(directory, steps), MAPI_E_USER_CANCEL);
}

}  // namespace
}  // namespace orv::test
