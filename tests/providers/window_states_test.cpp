// The windows while others change, damage or restore what they show, in every language and by every key.
#include <filesystem>
#include <fstream>

#include "platform/process.h"
#include "tests/providers/windows_fixture.h"

namespace orv::test {
namespace {

constexpr int kEntries = 1166;

class WindowStatesTest : public WindowsTest {
 protected:
  WindowStatesTest() {
    formats::Contact ida, all;
    ida.name = "Ida Wells";
    ida.numbers.resize(1);
    ida.numbers[0].text = "+49 30 1";
    ida.numbers[0].kind = formats::NumberKind::kFax;
    all.name = "Zirkel";
    all.isList = true;
    const auto store = Elsewhere();
    ida_ = AddTo(*store, ida);
    all.members.push_back({ContactIn(*store, ida_).uid, "", "", "Ida Wells", "", ""});
    AddTo(*store, all);
  }

  // Every window in its turn: their names and what shows them, with steps in the first that comes.
  using Shown = std::pair<const char*, std::function<void(const Steps&)>>;
  std::vector<Shown> Windows(Client& client) {
    const std::vector<Bytes> ids = Ids(client.Open());
    return {{"contact", [this, &client, id = ids.at(0)](const Steps& steps) { Details(client, id, steps); }},
            {"list", [this, &client, id = ids.at(1)](const Steps& steps) { Details(client, id, steps); }},
            {"contact or list", [this, &client](const Steps& steps) { New(client, 0, steps); }},
            {"settings", [this](const Steps& steps) { Configure(steps); }}};
  }

  book::EntryKey ida_{};
};

HWND ConflictOver(DialogScript& script, Pilot window, const std::wstring& path) {
  window.Type(IDC_TITLE, L"mine");
  const OtherProcess other(L"book_maker.exe title \"" + path + L"\"", L"titled");
  window.PostPress(IDOK);
  return script.NextDialog();
}

TEST_F(WindowStatesTest, WhatAnotherProcessChangesIsShownSideBySide) {
  Client client;
  const auto steps = [&](DialogScript& script, Pilot window) {
    const Pilot conflict(script, ConflictOver(script, window, Path(L"own.orvab")));
    EXPECT_EQ(conflict.Rows(IDC_DIFFERENCES, 4), Names{L"Job title|mine|theirs|mine"});
    conflict.Check(IDC_KEEP_MINE, false);
    conflict.Check(IDC_KEEP_THEIRS, true);
    conflict.Close(IDOK);
  };
  EXPECT_EQ(Details(client, Ids(client.Open()).at(0), steps), S_OK);
  EXPECT_EQ(ContactIn(*Elsewhere(), ida_).title, "theirs");
}

TEST_F(WindowStatesTest, ADeletionAndItsUndoAreSeenInAnOpenDialog) {
  const HMODULE texts = LoadLibraryW(L"XHTFCAUS.dll");
  process::SetResourceLibrary(texts);
  const auto store = Elsewhere();
  {
    Client client;
    DialogDriver driver([&](DialogScript& script) {
      const HWND address = script.NextDialog();
      // Counted first: lines are not read while the list is filled.
      const auto waitFor = [&](const Names& names) {
        script.WaitUntil(
            [&] {
              return script.Send(GetDlgItem(address, kEntries), LB_GETCOUNT) ==
                     static_cast<LRESULT>(names.size());
            },
            "the entries");
        EXPECT_EQ(script.Items(address, kEntries), names);
      };
      waitFor({L"Ida Wells", L"Zirkel"});
      const book::RowKey row{ida_, 0};
      EXPECT_EQ(store->Remove({&row, 1}, nullptr), S_OK);
      waitFor({L"Zirkel"});
      EXPECT_EQ(store->Restore(ida_), S_OK);
      waitFor({L"Ida Wells", L"Zirkel"});
      script.Close(address, IDCANCEL);
    });
    ADRPARM parameters{};
    parameters.ulFlags = DIALOG_MODAL;
    LPADRLIST list = nullptr;
    EXPECT_EQ(OrvAddress(0, client.Book(), &parameters, &list), MAPI_E_USER_CANCEL);
  }
  process::SetResourceLibrary(nullptr);
  FreeLibrary(texts);
}

// A book that is damaged when a window saves: told, and what was typed stays.
TEST_F(WindowStatesTest, ADamagedBookIsToldInEveryWindow) {
  const std::wstring path = Path(L"own.orvab");
  Client client;
  const std::vector<Bytes> ids = Ids(client.Open());
  const auto damage = [&] {
    std::fstream file(std::filesystem::path(path), std::ios::binary | std::ios::in | std::ios::out);
    file.seekp(100);
    file << std::string(200000, '\xFF');
    EXPECT_TRUE(file.good());
  };
  const auto save = [&](int control) -> Steps {
    return [=](DialogScript& script, Pilot window) {
      damage();
      window.Type(control, L"typed");
      window.PostPress(IDOK);
      EXPECT_NE(script.AnswerBox(IDOK).find(L"damaged"), std::wstring::npos);
      script.WaitEnabled(window.Window());
      EXPECT_EQ(window.Text(control), L"typed");
      window.PostPress(IDCANCEL);
      script.AnswerBox(IDYES);
    };
  };
  EXPECT_EQ(Details(client, ids.at(0), save(IDC_TITLE)), MAPI_E_USER_CANCEL);
  EXPECT_EQ(New(client, MAPI_MAILUSER, save(IDC_NAME)), MAPI_E_USER_CANCEL);
}

TEST_F(WindowStatesTest, KeysLeadThroughEveryWindow) {
  Client client;
  const std::map<std::string, std::vector<int>> orders{
      {"list", {IDC_LIST_NAME, IDC_CONTAINER, IDC_FIND, IDC_FOUND, IDC_MEMBERS, IDOK, IDCANCEL}},
      {"contact or list", {IDC_WHAT_CONTACT, IDOK, IDCANCEL}},
      {"settings",
       {IDC_BOOK_FILE, IDC_BOOK_BROWSE, IDC_BOOK_NAME, IDC_BOOK_BACKUPS, IDC_NAMES_AS_WRITTEN, IDC_BOOK_STATE,
        IDC_BOOK_CHECK, IDC_BOOK_REPAIR, IDOK, IDCANCEL}},
      {"conflict", {IDC_DIFFERENCES, IDC_KEEP_MINE, IDC_MINE, IDC_THEIRS, IDOK, IDCANCEL}}};
  const auto expect = [&](const std::string& name, Pilot window) {
    std::vector<int> order;
    const HWND first = GetNextDlgTabItem(window.Window(), nullptr, FALSE);
    for (HWND at = first; order.empty() || (at != first && order.size() < 30);
         at = GetNextDlgTabItem(window.Window(), at, FALSE))
      order.push_back(GetDlgCtrlID(at));
    EXPECT_EQ(order, orders.at(name)) << name;
  };
  for (const auto& [name, show] : Windows(client)) {
    if (!orders.contains(name)) continue;
    show([&, called = std::string(name)](DialogScript&, Pilot window) {
      expect(called, window);
      window.Close(IDCANCEL);
    });
  }
  Details(client, Ids(client.Open()).at(0), [&](DialogScript& script, Pilot window) {
    const Pilot conflict(script, ConflictOver(script, window, Path(L"own.orvab")));
    expect("conflict", conflict);
    conflict.Close(IDOK);
  });
}

// Labels and buttons of the window and its pages, but for the lines that are empty as long as nothing is wrong.
Names TextsIn(HWND window) {
  Names texts;
  const auto add = [](HWND child, LPARAM all) -> BOOL {
    const int control = GetDlgCtrlID(child);
    wchar_t kind[32] = L"";
    GetClassNameW(child, kind, 32);
    const bool isText = std::wstring_view(kind) == L"Static" || std::wstring_view(kind) == L"Button";
    const bool isState = control == IDC_STATUS || control == IDC_BOOK_FACTS;
    if (isText && !isState) reinterpret_cast<Names*>(all)->push_back(WindowText(child));
    return TRUE;
  };
  EnumChildWindows(window, add, reinterpret_cast<LPARAM>(&texts));
  return texts;
}

TEST_F(WindowStatesTest, EveryTextIsThereInEveryLanguage) {
  std::map<std::string, Names> english;
  for (const wchar_t* companion :
       {L"XHTFCAUS.dll", L"XHTFCADE.dll", L"XHTFCAFR.dll", L"XHTFCAJP.dll", L"XHTFCAAR.dll"}) {
    const HMODULE texts = LoadLibraryW(companion);
    process::SetResourceLibrary(texts);
    {
      Client client;
      for (const auto& [name, show] : Windows(client)) {
        show([&, called = std::string(name)](DialogScript&, Pilot window) {
          const Names found = TextsIn(window.Window());
          const Names& own = english.emplace(called, found).first->second;
          ASSERT_EQ(found.size(), own.size());
          EXPECT_GE(found.size(), 5u) << called;
          size_t alike = 0;
          for (size_t i = 0; i < found.size(); ++i) {
            EXPECT_NE(found[i], L"") << called << " " << i;
            alike += found[i] == own[i];
          }
          const bool isEnglish = companion == std::wstring_view(L"XHTFCAUS.dll");
          EXPECT_LE(alike, isEnglish ? found.size() : found.size() / 4) << called;
          window.Close(IDCANCEL);
        });
      }
    }
    process::SetResourceLibrary(nullptr);
    FreeLibrary(texts);
  }
}

}  // namespace
}  // namespace orv::test
