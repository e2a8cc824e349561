// The windows while others change, damage or restore what they show, in every language and by every key.
#include <filesystem>
#include <fstream>

#include "platform/process.h"
#include "tests/providers/windows_fixture.h"

namespace orv::test {
namespace {

constexpr int kEntries = 1166;

using formats::NumberKind;

class WindowStatesTest : public WindowsTest {
 protected:
  WindowStatesTest() {
    formats::Contact ida = Named("Ida Wells"), all = Named("Zirkel", true);
    ida.numbers.resize(1);
    ida.numbers[0].text = "+49 30 1";
    ida.numbers[0].kind = NumberKind::kFax;
    const auto store = Elsewhere();
    ida_ = AddTo(*store, ida);
    all.members.push_back({ContactIn(*store, ida_).uid, "", "", "Ida Wells", "", ""});
    AddTo(*store, all);
  }

  // Every window in its turn: their names and what shows them, with steps in the window, which cancel it.
  using Shown = std::pair<const char*, std::function<void(const Steps&)>>;
  std::vector<Shown> Windows(Client& client) {
    const std::vector<Bytes> ids = Ids(client.Open());
    const auto saving = [&client, this](auto come) {
      return [=, this, &client, id = Ids(client.Open()).at(0)](const Steps& steps) {
        Details(client, id, [&](DialogScript& script, Pilot window) {
          window.Type(IDC_TITLE, L"mine");
          (this->*come)(script, window, steps);
          script.WaitEnabled(window.Window());
          window.PostPress(IDCANCEL);
          script.AnswerBox(IDYES);
        });
      };
    };
    return {{"contact", [this, &client, id = ids.at(0)](const Steps& steps) { Details(client, id, steps); }},
            {"list", [this, &client, id = ids.at(1)](const Steps& steps) { Details(client, id, steps); }},
            {"contact or list", [this, &client](const Steps& steps) { New(client, 0, steps); }},
            {"settings", [this](const Steps& steps) { Configure(steps); }},
            {"conflict", saving(&WindowStatesTest::MeetConflict)},
            {"wait", saving(&WindowStatesTest::MeetWriter)}};
  }

  void MeetConflict(DialogScript& script, Pilot window, const Steps& steps) {
    const auto store = Elsewhere();
    formats::Contact theirs = ContactIn(*store, ida_);
    theirs.title = "theirs " + std::to_string(++changes_);
    EXPECT_EQ(store->Change(ida_, theirs, book::kAnyVersion, nullptr), S_OK);
    window.PostPress(IDOK);
    steps(script, {script, script.NextDialog()});
  }
  void MeetWriter(DialogScript& script, Pilot window, const Steps& steps) {
    const auto writing = BeginWriting(*Elsewhere());
    window.PostPress(IDOK);
    steps(script, {script, script.NextDialog()});
  }
  // Somebody has begun to write, and has not come to an end.
  static std::unique_ptr<book::Import> BeginWriting(book::Store& store) {
    std::unique_ptr<book::Import> import;
    book::PutResult result{};
    EXPECT_EQ(store.BeginImport(false, &import), S_OK);
    EXPECT_EQ(import->Put(Named("Other"), &result, nullptr), S_OK);
    return import;
  }

  void Damage() const { WriteInto(Path(L"own.orvab"), 100, std::string(200000, '\xFF')); }

  book::EntryKey ida_{};
  int changes_ = 0;
};

// The library in one of its languages, while it lives.
class Speaking {
 public:
  explicit Speaking(const wchar_t* companion) : texts_(LoadLibraryW(companion)) {
    process::SetResourceLibrary(texts_);
  }
  ~Speaking() {
    process::SetResourceLibrary(nullptr);
    FreeLibrary(texts_);
  }
  Speaking(const Speaking&) = delete;
  Speaking& operator=(const Speaking&) = delete;

 private:
  const HMODULE texts_;
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
  const Speaking english(L"XHTFCAUS.dll");
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
}

// A book that is damaged when a window saves: told with a way on, and what was typed stays.
TEST_F(WindowStatesTest, ADamagedBookIsToldInEveryWindow) {
  const std::wstring told = L"The address book is damaged. Press Repair in its settings";
  Client client;
  const std::vector<Bytes> ids = Ids(client.Open());
  const auto save = [&](int control) -> Steps {
    return [=, this](DialogScript& script, Pilot window) {
      Damage();
      window.Type(control, L"typed");
      window.PostPress(IDOK);
      EXPECT_EQ(script.AnswerBox(IDOK).find(told), 0u);
      script.WaitEnabled(window.Window());
      EXPECT_EQ(window.Text(control), L"typed");
      window.PostPress(IDCANCEL);
      script.AnswerBox(IDYES);
    };
  };
  // Nothing is searched in it any more, and nobody who is in the list is said to be missing.
  const auto search = [&](DialogScript& script, Pilot window) {
    Damage();
    window.Type(IDC_FIND, L"Zi");
    EXPECT_EQ(window.Rows(IDC_FOUND, 1), Names{});
    EXPECT_EQ(window.Text(IDC_FOUND_STATE).find(L"own: " + told), 0u) << window.Text(IDC_FOUND_STATE);
    window.Select(IDC_MEMBERS, 0);
    window.Key(IDC_MEMBERS, VK_RETURN);
    EXPECT_EQ(script.AnswerBox(IDOK).find(told), 0u);
    script.WaitEnabled(window.Window());
    EXPECT_EQ(window.Rows(IDC_MEMBERS, 3), Names{L"Ida Wells||cannot be read"});
    save(IDC_LIST_NAME)(script, window);
  };
  EXPECT_EQ(Details(client, ids.at(1), search), MAPI_E_USER_CANCEL);
  EXPECT_EQ(Details(client, ids.at(0), {}), MAPI_E_CORRUPT_STORE) << "not opened any more";
}

// What each command answers while the book is in a state in which it cannot do what it does.
TEST_F(WindowStatesTest, EveryStateOfABookHasItsAnswer) {
  const std::wstring path = Path(L"own.orvab"), away = Path(L"away.orvab");
  std::vector<Bytes> ids;
  {
    Client client;
    ids = Ids(client.Open());
  }
  const auto readOnly = [&](bool is) {
    SetFileAttributesW(path.c_str(), is ? FILE_ATTRIBUTE_READONLY : FILE_ATTRIBUTE_NORMAL);
  };
  std::unique_ptr<OtherProcess> holder;
  const struct {
    const wchar_t* called;
    std::function<void()> begin, end;
    HRESULT details, made;
    const wchar_t *status, *state;
  } cases[] = {
      {L"own", [&] { readOnly(true); }, [&] { readOnly(false); }, MAPI_E_USER_CANCEL, MAPI_E_NO_ACCESS,
       L"The file exists.",
       L"The address book can be opened, but only read. To change it, remove the write protection from "
       L"its file."},
      {L"own (file is missing)", [&] { MoveFileW(path.c_str(), away.c_str()); },
       [&] { MoveFileW(away.c_str(), path.c_str()); }, MAPI_E_NOT_FOUND, MAPI_E_NOT_FOUND,
       L"The file is missing. Choose a backup with Browse, or let OK make a new address book.",
       L"The file is missing. Choose a backup with Browse, or let OK make a new address book."},
      {L"own (in use)",
       [&] { holder = std::make_unique<OtherProcess>(L"book_maker.exe hold \"" + path + L"\"", L"held"); },
       [&] { holder.reset(); }, MAPI_E_BUSY, MAPI_E_BUSY, L"The file exists.",
       L"Another program is using the address book. Close that program, or try again later."},
      {L"own (damaged)", [&] { Damage(); }, [] {}, MAPI_E_CORRUPT_STORE, MAPI_E_CORRUPT_STORE,
       L"The file exists.",
       L"The address book is damaged. Press Repair, or choose one of its backups with Browse."},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(std::wstring(each.called));
    each.begin();
    {
      Client client;
      const auto cancel = [](DialogScript&, Pilot window) { window.Close(IDCANCEL); };
      const Steps steps = each.details == MAPI_E_USER_CANCEL ? Steps(cancel) : Steps();
      for (const Bytes& id : ids) EXPECT_EQ(Details(client, id, steps), each.details);
      for (const ULONG type : {MAPI_MAILUSER, MAPI_DISTLIST})
        EXPECT_EQ(New(client, type, {}, nullptr, each.called), each.made) << type;
      EXPECT_EQ(Configure([&](DialogScript&, Pilot window) {
                  EXPECT_EQ(window.Text(IDC_STATUS), each.status);
                  EXPECT_EQ(window.Text(IDC_BOOK_STATE), each.state);
                  window.Close(IDCANCEL);
                }),
                MAPI_E_USER_CANCEL);
    }
    each.end();
  }
}

// A book without entries, and one in which another program is writing, are as good as any.
TEST_F(WindowStatesTest, AnEmptyBookAndABusyOneAreShownAndChanged) {
  const std::wstring empty = Path(L"empty.orvab");
  AddService(2, empty);
  Client client;
  const auto fill = [](DialogScript&, Pilot window) {
    EXPECT_EQ(window.Rows(IDC_MEMBERS, 1), Names{});
    window.Choose(IDC_CONTAINER, 2);
    EXPECT_EQ(window.Text(IDC_FOUND_STATE), L"No entry was found.");
    EXPECT_FALSE(window.IsEnabled(IDC_MEMBER_ADD));
    window.Type(IDC_LIST_NAME, L"Nobody");
    window.Close(IDOK);
  };
  EXPECT_EQ(New(client, MAPI_DISTLIST, fill), S_OK);
  const auto writing = BeginWriting(*Elsewhere());
  const std::vector<Bytes> ids = Ids(client.Open());
  const auto look = [](DialogScript&, Pilot window) { window.Close(IDCANCEL); };
  for (const Bytes& each : ids) EXPECT_EQ(Details(client, each, look), MAPI_E_USER_CANCEL);
  EXPECT_EQ(Configure([](DialogScript&, Pilot window) {
              EXPECT_EQ(window.Text(IDC_BOOK_FACTS).find(L"Entries: 3 (lists: 2)\n"), 0u);
              window.Type(IDC_BOOK_NAME, L"Mine");
              window.Close(IDOK);
            }),
            S_OK);
}

// By the button, by Esc and by the cross of the caption: nothing is stored, after nothing was typed or much.
TEST_F(WindowStatesTest, EveryWindowIsLeftWithoutATrace) {
  const auto store = Elsewhere();
  Client client;
  const std::vector<Bytes> ids = Ids(client.Open());
  int64_t before = 0, after = 0;
  ASSERT_EQ(store->LastChange(&before), S_OK);
  const std::function<void(Pilot)> ways[] = {
      [](Pilot window) { window.PostPress(IDCANCEL); }, [](Pilot window) { window.Key(IDCANCEL, VK_ESCAPE); },
      [](Pilot window) { PostMessageW(window.Window(), WM_SYSCOMMAND, SC_CLOSE, 0); }};
  for (const auto& leave : ways) {
    const auto typing = [&](int control) -> Steps {
      return [&leave, control](DialogScript& script, Pilot window) {
        window.Type(control, L"typed");
        leave(window);
        EXPECT_EQ(script.AnswerBox(IDNO), L"Leave without saving the changes?");
        script.WaitEnabled(window.Window());
        EXPECT_EQ(window.Text(control), L"typed");
        leave(window);
        script.AnswerBox(IDYES);
      };
    };
    const auto atOnce = [&](DialogScript& script, Pilot window) {
      leave(window);
      script.WaitClosed(window.Window());
    };
    for (const auto& [id, control] : {std::pair{ids.at(0), IDC_NOTE}, {ids.at(1), IDC_LIST_NAME}}) {
      EXPECT_EQ(Details(client, id, typing(control)), MAPI_E_USER_CANCEL);
      EXPECT_EQ(Details(client, id, atOnce), MAPI_E_USER_CANCEL);
    }
    for (const auto& [type, control] :
         {std::pair<ULONG, int>{MAPI_MAILUSER, IDC_NAME}, {MAPI_DISTLIST, IDC_LIST_NAME}}) {
      EXPECT_EQ(New(client, type, typing(control)), MAPI_E_USER_CANCEL);
      EXPECT_EQ(New(client, type, atOnce), MAPI_E_USER_CANCEL);
    }
    EXPECT_EQ(New(client, 0, atOnce), MAPI_E_USER_CANCEL);
    EXPECT_EQ(Configure(atOnce), MAPI_E_USER_CANCEL);
  }
  ASSERT_EQ(store->LastChange(&after), S_OK);
  EXPECT_EQ(after, before);
}

TEST_F(WindowStatesTest, KeysLeadThroughEveryWindow) {
  Client client;
  const std::map<std::string, std::vector<int>> orders{
      {"list", {IDC_LIST_NAME, IDC_CONTAINER, IDC_FIND, IDC_FOUND, IDC_MEMBERS, IDOK, IDCANCEL}},
      {"contact or list", {IDC_WHAT_CONTACT, IDOK, IDCANCEL}},
      {"settings",
       {IDC_BOOK_FILE, IDC_BOOK_BROWSE, IDC_BOOK_NAME, IDC_BOOK_BACKUPS, IDC_NAMES_AS_WRITTEN, IDC_BOOK_STATE,
        IDC_BOOK_CHECK, IDC_BOOK_REPAIR, IDOK, IDCANCEL}},
      {"conflict", {IDC_DIFFERENCES, IDC_KEEP_MINE, IDC_MINE, IDC_THEIRS, IDOK, IDCANCEL}},
      {"wait", {IDCANCEL}}};
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
}

// Labels and buttons of the window and its pages, but for the lines that are empty as long as nothing is wrong.
Names TextsIn(HWND window) {
  Names texts;
  const auto add = [](HWND child, LPARAM all) -> BOOL {
    const int control = GetDlgCtrlID(child);
    wchar_t kind[32] = L"";
    GetClassNameW(child, kind, 32);
    const bool isText = std::wstring_view(kind) == L"Static" || std::wstring_view(kind) == L"Button";
    const bool isState = control == IDC_STATUS || control == IDC_BOOK_FACTS || control == IDC_FOUND_STATE;
    if (isText && !isState) reinterpret_cast<Names*>(all)->push_back(WindowText(child));
    return TRUE;
  };
  EnumChildWindows(window, add, reinterpret_cast<LPARAM>(&texts));
  return texts;
}

constexpr const wchar_t* kLanguages[] = {L"XHTFCAUS.dll", L"XHTFCADE.dll", L"XHTFCAFR.dll", L"XHTFCAJP.dll",
                                         L"XHTFCAAR.dll"};

TEST_F(WindowStatesTest, EveryTextIsThereInEveryLanguage) {
  std::map<std::string, Names> english;
  for (const wchar_t* companion : kLanguages) {
    const Speaking language(companion);
    Client client;
    for (const auto& [name, show] : Windows(client)) {
      show([&, called = std::string(name)](DialogScript&, Pilot window) {
        const Names found = TextsIn(window.Window());
        const Names& own = english.emplace(called, found).first->second;
        ASSERT_EQ(found.size(), own.size());
        EXPECT_GE(found.size(), called == "wait" ? 2u : 5u) << called;
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
}

bool IsMirrored(HWND window) { return (GetWindowLongPtrW(window, GWL_EXSTYLE) & WS_EX_LAYOUTRTL) != 0; }

// In a mirrored window what is typed reads as it is, and so do numbers in lists.
TEST_F(WindowStatesTest, NumbersReadAsNumbersInArabic) {
  constexpr LONG_PTR kFromTheRight = WS_EX_LAYOUTRTL | WS_EX_RTLREADING;
  const Speaking arabic(L"XHTFCAAR.dll");
  const struct {
    const wchar_t* typed;
    bool isFromTheRight;
  } cases[] = {{L"+4", false},      {L"\u0627", true}, {L"0301 2", false},  {L"", true},
               {L"3 \u0628", true}, {L"Ida", false},   {L"(030) 4", false}, {L"\u0628 3", true}};
  Client client;
  const std::vector<Bytes> ids = Ids(client.Open());
  const auto type = [&](Pilot window, int control) {
    EXPECT_TRUE(IsMirrored(window.Window()));
    for (const auto& each : cases) {
      window.Type(control, each.typed);
      const LONG_PTR style = GetWindowLongPtrW(window.At(control), GWL_EXSTYLE);
      EXPECT_EQ((style & kFromTheRight) != 0, each.isFromTheRight) << each.typed;
    }
  };
  const auto leave = [](DialogScript& script, Pilot window) {
    window.PostPress(IDCANCEL);
    script.AnswerBox(IDYES);
  };
  Details(client, ids.at(0), [&](DialogScript& script, Pilot window) {
    for (const int each : {IDC_COMPANY, IDC_POSTAL_CODE}) type(window, each);
    EXPECT_EQ(window.Rows(IDC_NUMBERS, 1), Names{L"\u200E+49 30 1\u200E"});
    leave(script, window);
  });
  Details(client, ids.at(1), [&](DialogScript& script, Pilot window) {
    for (const int each : {IDC_LIST_NAME, IDC_FIND}) type(window, each);
    EXPECT_EQ(window.Rows(IDC_MEMBERS, 1), Names{L"\u200EIda Wells\u200E"});
    leave(script, window);
  });
}

// What comes up over a window while it saves.
TEST_F(WindowStatesTest, WhatComesUpWhileSavingSpeaksEveryLanguage) {
  const struct {
    const wchar_t *companion, *conflict, *save, *back, *wait, *cancel, *duplicate;
  } cases[] = {
      {L"XHTFCAUS.dll", L"The Entry Was Changed", L"Save", L"Back", L"Saving", L"Cancel",
       L"There is already a contact “Ida Wells”."},
      {L"XHTFCADE.dll", L"Der Eintrag wurde geändert", L"Speichern", L"Zurück", L"Speichern", L"Abbrechen",
       L"Es gibt schon einen Kontakt „Ida Wells“."},
      {L"XHTFCAFR.dll", L"L’entrée a été modifiée", L"Enregistrer", L"Retour", L"Enregistrement", L"Annuler",
       L"Un contact «\u00A0Ida Wells\u00A0» existe déjà."},
      {L"XHTFCAJP.dll", L"エントリが変更されています", L"保存", L"戻る", L"保存中", L"キャンセル",
       L"連絡先「Ida Wells」は既にあります。"},
      {L"XHTFCAAR.dll", L"تم تغيير الإدخال", L"حفظ", L"رجوع", L"الحفظ", L"إلغاء",
       L"\x202B"
       L"توجد بالفعل جهة اتصال باسم «Ida Wells»."},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(std::wstring(each.companion));
    const bool isArabic = each.companion == std::wstring_view(L"XHTFCAAR.dll");
    const Speaking language(each.companion);
    Client client;
    const auto expect = [&](Pilot window, const wchar_t* title, std::map<int, const wchar_t*> buttons) {
      EXPECT_EQ(WindowText(window.Window()), title);
      for (const auto& [button, text] : buttons) EXPECT_EQ(window.Text(button), text);
      EXPECT_EQ(IsMirrored(window.Window()), isArabic);
      window.Close(IDCANCEL);
    };
    for (const auto& [name, show] : Windows(client)) {
      if (name == std::string_view("conflict"))
        show([&](DialogScript&, Pilot w) {
          expect(w, each.conflict, {{IDOK, each.save}, {IDCANCEL, each.back}});
        });
      if (name == std::string_view("wait"))
        show([&](DialogScript&, Pilot w) { expect(w, each.wait, {{IDCANCEL, each.cancel}}); });
    }
    New(client, MAPI_MAILUSER, [&](DialogScript& script, Pilot window) {
      window.Type(IDC_NAME, L"Ida Wells");
      window.Type(IDC_NUMBER, L"+49 30 1");
      window.PostPress(IDOK);
      const std::wstring asked = script.AnswerBox(IDCANCEL);
      EXPECT_EQ(asked.find(each.duplicate), 0u) << asked;
      script.WaitEnabled(window.Window());
      window.PostPress(IDCANCEL);
      script.AnswerBox(IDYES);
    });
  }
}

}  // namespace
}  // namespace orv::test
