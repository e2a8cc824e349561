// The settings of a personal book, in their window.
#include "providers/book/backup.h"
#include "providers/book/database.h"
#include "tests/providers/windows_fixture.h"

namespace orv::test {
namespace {

constexpr ULONG kBookName = PROP_TAG(PT_UNICODE, 0x6700);

class ConfigureTest : public WindowsTest {
 protected:
  // The container's name and the book's entries, as the next session has them.
  std::wstring Served(const wchar_t* name) {
    Client client;
    std::wstring text = name;
    for (const std::wstring& each : Shown(client.Open(name))) text += L"|" + each;
    return text;
  }

  // Whether a file box lists the file.
  static bool IsOffered(DialogScript& script, HWND chooser, const wchar_t* file) {
    const HWND files = FindWindowExW(FindWindowExW(chooser, nullptr, L"SHELLDLL_DefView", nullptr), nullptr,
                                     L"SysListView32", nullptr);
    LVFINDINFOW sought{};
    sought.flags = LVFI_STRING;
    sought.psz = file;
    constexpr auto kFromTheTop = static_cast<WPARAM>(-1);
    return script.Send(files, LVM_FINDITEMW, kFromTheTop, reinterpret_cast<LPARAM>(&sought)) >= 0;
  }
};

TEST_F(ConfigureTest, ShowsWhatTheBookHoldsAndTakesANameAndAnotherFile) {
  AddTo(*Elsewhere(), Named("Ida"));
  AddTo(*Elsewhere(), Named("All", true));
  const std::wstring before = Path(L"own.orvab"), other = Path(L"other.orvab");
  EXPECT_EQ(Configure([&](DialogScript&, Pilot window) {
              EXPECT_EQ(window.Text(IDC_BOOK_FILE), before);
              EXPECT_EQ(window.Text(IDC_BOOK_NAME), L"own");
              EXPECT_TRUE(window.IsChecked(IDC_BOOK_BACKUPS));
              EXPECT_EQ(window.Text(IDC_STATUS), L"The file exists.");
              EXPECT_EQ(window.Text(IDC_BOOK_FACTS).find(L"Entries: 2 (lists: 1)\n"), 0u)
                  << window.Text(IDC_BOOK_FACTS).c_str();
              EXPECT_EQ(window.Text(IDC_BOOK_STATE), L"The address book can be opened.");
              window.Press(IDC_BOOK_CHECK);
              EXPECT_NE(window.Text(IDC_BOOK_STATE).find(L"Nothing is wrong"), std::wstring::npos);
              window.Type(IDC_BOOK_NAME, L"Mine");
              window.Close(IDOK);
            }),
            S_OK);
  EXPECT_EQ(Served(L"Mine"), L"Mine|All|Ida (no fax number)");
  EXPECT_EQ(Configure([&](DialogScript&, Pilot window) {
              EXPECT_EQ(window.Text(IDC_BOOK_NAME), L"Mine");
              window.Type(IDC_BOOK_NAME, L"");
              window.Type(IDC_BOOK_FILE, other.c_str());
              window.Notify(IDC_BOOK_FILE, EN_KILLFOCUS);
              EXPECT_EQ(window.Text(IDC_STATUS), L"There is no address book yet; a new one will be created.");
              EXPECT_EQ(window.Text(IDC_BOOK_FACTS), L"Nothing to show.");
              EXPECT_EQ(window.Text(IDC_BOOK_STATE), window.Text(IDC_STATUS));
              EXPECT_FALSE(window.IsEnabled(IDC_BOOK_CHECK));
              window.Close(IDOK);
            }),
            S_OK);
  EXPECT_EQ(Served(L"other"), L"other");
}

TEST_F(ConfigureTest, ListsLastNamesFirstAndTellsEachFindingOfACheck) {
  formats::Contact jane = Named("Jane Doe");
  jane.given = "Jane";
  jane.surname = "Doe";
  AddTo(*Elsewhere(), jane);
  EXPECT_EQ(Configure([&](DialogScript&, Pilot window) {
              EXPECT_TRUE(window.IsChecked(IDC_NAMES_AS_WRITTEN));
              window.Check(IDC_NAMES_AS_WRITTEN, false);
              window.Check(IDC_NAMES_LAST_FIRST, true);
              window.Close(IDOK);
            }),
            S_OK);
  EXPECT_EQ(Served(L"own"), L"own|Doe, Jane (no fax number)");
  book::Database(Path(L"own.orvab"), book::Database::Access::kWrite)
      .Run("UPDATE card SET text = replace(text, 'FN:Jane', 'FN:June')");
  EXPECT_EQ(Configure([&](DialogScript&, Pilot window) {
              EXPECT_TRUE(window.IsChecked(IDC_NAMES_LAST_FIRST));
              window.Press(IDC_BOOK_CHECK);
              const std::wstring state = window.Text(IDC_BOOK_STATE);
              EXPECT_NE(state.find(L"\r\n\u201CJane Doe\u201D is not listed as its card says. Press Repair;"),
                        state.npos)
                  << state;
              window.Close(IDCANCEL);
            }),
            MAPI_E_USER_CANCEL);
}

// Every choice as it was left, whatever the others are.
TEST_F(ConfigureTest, EachChoiceIsKept) {
  const struct {
    bool keepsBackups, isLastFirst;
    const wchar_t* name;
  } cases[] = {
      {false, false, L"Mine"}, {true, true, L"Mine"}, {false, true, L"Yours"}, {true, false, L"Yours"}};
  bool keepsBackups = true, isLastFirst = false;
  std::wstring name = L"own";
  const auto expect = [&](Pilot window) {
    EXPECT_EQ(window.IsChecked(IDC_BOOK_BACKUPS), keepsBackups);
    EXPECT_EQ(window.IsChecked(IDC_NAMES_LAST_FIRST), isLastFirst);
    EXPECT_EQ(window.IsChecked(IDC_NAMES_AS_WRITTEN), !isLastFirst);
    EXPECT_EQ(window.Text(IDC_BOOK_NAME), name);
  };
  for (const auto& each : cases) {
    const auto choose = [&](DialogScript&, Pilot window) {
      expect(window);
      window.Check(IDC_BOOK_BACKUPS, each.keepsBackups);
      window.Check(IDC_NAMES_LAST_FIRST, each.isLastFirst);
      window.Check(IDC_NAMES_AS_WRITTEN, !each.isLastFirst);
      window.Type(IDC_BOOK_NAME, each.name);
      window.Close(IDOK);
    };
    EXPECT_EQ(Configure(choose), S_OK);
    keepsBackups = each.keepsBackups;
    isLastFirst = each.isLastFirst;
    name = each.name;
  }
  const auto look = [&](DialogScript&, Pilot window) {
    expect(window);
    window.Close(IDCANCEL);
  };
  EXPECT_EQ(Configure(look), MAPI_E_USER_CANCEL);
}

TEST_F(ConfigureTest, CancelLeavesEverythingAsItWas) {
  const std::wstring other = Path(L"other.orvab");
  EXPECT_EQ(Configure([&](DialogScript&, Pilot window) {
              window.Type(IDC_BOOK_FILE, other.c_str());
              window.Type(IDC_BOOK_NAME, L"Mine");
              window.Check(IDC_BOOK_BACKUPS, false);
              window.Close(IDCANCEL);
            }),
            MAPI_E_USER_CANCEL);
  EXPECT_EQ(GetFileAttributesW(other.c_str()), INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(Served(L"own"), L"own");
}

// What OK refuses is told, and the window stays.
TEST_F(ConfigureTest, PlacesThatCannotBeUsedAreRefused) {
  installation_.WriteTextFile(L"letter.txt",
                              "Dear all, this is no book of addresses, but a letter of more than a hundred "
                              "characters; see you soon.");
  const struct {
    std::wstring path;
    const wchar_t* status;
    const wchar_t* told;
  } cases[] = {
      {Path(L"letter.txt"), L"The file exists.", L"not an address book. Choose another one with Browse."},
      {Path(L"nowhere\\a.orvab"), L"The folder does not exist. Choose another place.",
       L"folder does not exist"},
      {Path(L""), L"This is a folder. Add the name of a file.", L""},
  };
  EXPECT_EQ(Configure([&](DialogScript& script, Pilot window) {
              for (const auto& c : cases) {
                window.Type(IDC_BOOK_FILE, c.path.c_str());
                window.Notify(IDC_BOOK_FILE, EN_KILLFOCUS);
                EXPECT_EQ(window.Text(IDC_STATUS), c.status) << c.path.c_str();
                window.PostPress(IDOK);
                EXPECT_NE(script.AnswerBox(IDOK).find(c.told), std::wstring::npos) << c.told;
                script.WaitEnabled(window.Window());
              }
              window.Close(IDCANCEL);
            }),
            MAPI_E_USER_CANCEL);
  EXPECT_EQ(Served(L"own"), L"own");
}

// Also where it is damaged while the window stands open: nothing that is chosen is lost.
TEST_F(ConfigureTest, DamagedBookIsToldAndRepairedIntoANewOne) {
  AddTo(*Elsewhere(), Named("Ida"));
  const std::wstring own = Path(L"own.orvab"), repaired = Path(L"own-2.orvab");
  const wchar_t* const told =
      L"The address book is damaged. Press Repair, or choose one of its backups with Browse.";
  EXPECT_EQ(Configure([&](DialogScript&, Pilot window) {
              window.Type(IDC_BOOK_NAME, L"Mine");
              WriteInto(own, 0, std::string(64, '\0'));
              window.Press(IDC_BOOK_CHECK);
              EXPECT_EQ(window.Text(IDC_BOOK_STATE).find(told), 0u) << window.Text(IDC_BOOK_STATE);
              EXPECT_EQ(window.Text(IDC_BOOK_NAME), L"Mine");
              window.Close(IDOK);
            }),
            S_OK);
  EXPECT_EQ(Configure([&](DialogScript& script, Pilot window) {
              EXPECT_EQ(window.Text(IDC_BOOK_NAME), L"Mine");
              EXPECT_EQ(window.Text(IDC_BOOK_STATE).find(told), 0u) << window.Text(IDC_BOOK_STATE);
              window.Type(IDC_BOOK_NAME, L"");
              window.PostPress(IDC_BOOK_REPAIR);
              const HWND chooser = script.NextDialog();
              script.PostPress(chooser, IDOK);
              EXPECT_NE(script.AnswerBox(IDYES).find(L"Use the new address book"), std::wstring::npos);
              script.WaitEnabled(window.Window());
              EXPECT_EQ(window.Text(IDC_BOOK_FILE), repaired);
              window.Close(IDOK);
            }),
            S_OK);
  EXPECT_EQ(Served(L"own-2"), L"own-2|Ida (no fax number)");
}

TEST_F(ConfigureTest, WhereNothingCanBeSavedTheBackupsAreOffered) {
  AddTo(*Elsewhere(), Named("Ida"));
  const std::wstring own = Path(L"own.orvab");
  installation_.WriteTextFile(L"own.orvab.20260102.bak", "");
  constexpr int kKindsOfFiles = 1136;  // in the system's file box
  constexpr size_t kHeader = 100;
  const DWORD size = GetCompressedFileSizeW(own.c_str(), nullptr);
  EXPECT_EQ(Configure([&](DialogScript& script, Pilot window) {
              WriteInto(own, kHeader, std::string(size - kHeader, 'Z'));
              window.PostPress(IDC_BOOK_REPAIR);
              script.PostPress(script.NextDialog(), IDOK);
              EXPECT_EQ(script.AnswerBox(IDOK),
                        L"Nothing in this file could be saved. Choose a backup with Browse, or name a new "
                        L"address book.");
              script.WaitEnabled(window.Window());
              window.PostPress(IDC_BOOK_BROWSE);
              const HWND chooser = script.NextDialog();
              const wchar_t* const backup = L"own.orvab.20260102.bak";
              EXPECT_FALSE(IsOffered(script, chooser, backup));
              const Pilot box(script, chooser);
              box.Choose(kKindsOfFiles, 1);
              box.Notify(kKindsOfFiles, CBN_SELENDOK);
              EXPECT_TRUE(IsOffered(script, chooser, backup));
              EXPECT_FALSE(IsOffered(script, chooser, L"own.orvab"));
              script.Close(chooser, IDCANCEL);
              script.WaitEnabled(window.Window());
              window.Close(IDCANCEL);
            }),
            MAPI_E_USER_CANCEL);
  EXPECT_EQ(GetFileAttributesW(Path(L"own-2.orvab").c_str()), INVALID_FILE_ATTRIBUTES);
}

// In the place of a book that has gone, else beside it; the backup itself is never the book.
TEST_F(ConfigureTest, ABackupBecomesABookOfItsOwn) {
  AddTo(*Elsewhere(), Named("Ida"));
  const std::wstring own = Path(L"own.orvab"), backup = Path(L"own.orvab.20260102.bak");
  {
    book::Database database(own, book::Database::Access::kWrite);
    book::CopyBook(database, backup);
  }
  const auto choose = [&](DialogScript&, Pilot window) {
    window.Type(IDC_BOOK_FILE, backup.c_str());
    window.Type(IDC_BOOK_NAME, L"");
    window.Notify(IDC_BOOK_FILE, EN_KILLFOCUS);
    EXPECT_EQ(window.Text(IDC_STATUS),
              L"This is a backup. OK makes an address book of it, and the backup stays.");
    window.Close(IDOK);
  };
  EXPECT_EQ(Configure(choose), S_OK);
  EXPECT_EQ(Served(L"own-2"), L"own-2|Ida (no fax number)");
  ASSERT_TRUE(DeleteFileW(own.c_str()));
  installation_.WriteTextFile(L"own.orvab-wal", "changes that are in no book");
  EXPECT_EQ(Configure(choose), S_OK);
  EXPECT_EQ(Served(L"own-3"), L"own-3|Ida (no fax number)");
  ASSERT_TRUE(DeleteFileW(Path(L"own.orvab-wal").c_str()));
  EXPECT_EQ(Configure(choose), S_OK);
  EXPECT_EQ(Served(L"own"), L"own|Ida (no fax number)");
  EXPECT_NE(GetFileAttributesW(backup.c_str()), INVALID_FILE_ATTRIBUTES);
}

// What the window says of a book that has gone is what OK does.
TEST_F(ConfigureTest, ABookThatHasGoneIsMadeAnewOnlyByOk) {
  AddTo(*Elsewhere(), Named("Ida"));
  EXPECT_EQ(Served(L"own"), L"own|Ida (no fax number)");
  const std::wstring own = Path(L"own.orvab"), kept = Path(L"kept.orvab");
  ASSERT_TRUE(MoveFileW(own.c_str(), kept.c_str()));
  const auto leaveBy = [](int button) -> Steps {
    return [button](DialogScript&, Pilot window) {
      EXPECT_EQ(window.Text(IDC_STATUS),
                L"The file is missing. Choose a backup with Browse, or let OK make a new address book.");
      EXPECT_FALSE(window.IsEnabled(IDC_BOOK_REPAIR));
      window.Close(button);
    };
  };
  EXPECT_EQ(Configure(leaveBy(IDCANCEL)), MAPI_E_USER_CANCEL);
  EXPECT_EQ(Served(L"own (file is missing)"), L"own (file is missing)");
  EXPECT_EQ(Configure(leaveBy(IDOK)), S_OK);
  EXPECT_EQ(Served(L"own"), L"own");
}

}  // namespace
}  // namespace orv::test
