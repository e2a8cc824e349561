// Files that cannot be served, that are served in part, and the way on from each.
#include <sqlite3.h>
#include <windows.h>

#include <algorithm>
#include <stdexcept>
#include <thread>

#include "providers/book/text.h"
#include "tests/book/book_fixture.h"
#include "tests/book/failing_disk.h"

namespace book::test {
namespace {

class FileTest : public BookTest {
 protected:
  bool Exists(const std::wstring& name) const {
    return GetFileAttributesW(PathOf(name).c_str()) != INVALID_FILE_ATTRIBUTES;
  }
  // A book of `count` people, closed.
  void MakeBook(const std::wstring& name, int count) const {
    const auto store = OpenBook(name);
    std::unique_ptr<Import> import;
    ASSERT_EQ(store->BeginImport(false, &import), S_OK);
    for (int i = 0; i < count; ++i) {
      PutResult result{};
      Contact contact = Person("Person " + std::to_string(i), {Fax("+1 555 " + std::to_string(i))});
      contact.note = std::string(200, 'x');
      ASSERT_EQ(import->Put(contact, &result, nullptr), S_OK);
    }
    ASSERT_EQ(import->Commit(), S_OK);
  }
};

TEST_F(FileTest, EachFileThatIsNoBookHasItsCodeAndSentence) {
  MakeBook(L"newer.orvab", 1);
  Tamper(L"newer.orvab", "PRAGMA user_version = 99");
  MakeBook(L"torn.orvab", 50);
  const std::string whole = ReadFile(L"torn.orvab");
  WriteFile(L"torn.orvab", std::string(64, '\0') + whole.substr(64));
  WriteFile(L"short.orvab", whole.substr(0, 50));
  WriteFile(L"empty.orvab", "");
  WriteFile(L"text.orvab", "BEGIN:VCARD\r\nEND:VCARD\r\n");
  Tamper(L"foreign.orvab", "CREATE TABLE t(a)");
  CreateDirectoryW(PathOf(L"folder.orvab").c_str(), nullptr);
  const struct {
    std::wstring name;
    HRESULT code;
  } cases[] = {
      {L"none.orvab", MAPI_E_NOT_FOUND},
      {L"folder.orvab", MAPI_E_INVALID_OBJECT},
      {L"text.orvab", MAPI_E_INVALID_OBJECT},
      {L"foreign.orvab", MAPI_E_INVALID_OBJECT},
      {L"empty.orvab", MAPI_E_CORRUPT_STORE},
      {L"short.orvab", MAPI_E_CORRUPT_STORE},
      {L"torn.orvab", MAPI_E_CORRUPT_STORE},
      {L"newer.orvab", MAPI_E_VERSION},
      {std::wstring(300, L'x'), MAPI_E_STRING_TOO_LONG},
  };
  const std::string other = Sentence(MAPI_E_CALL_FAILED);
  for (const auto& each : cases) {
    Options options;
    options.create = each.code != MAPI_E_NOT_FOUND;
    EXPECT_EQ(TryOpen(each.name, options), each.code) << each.name.size();
    EXPECT_NE(Sentence(each.code), other);
    Health health;
    EXPECT_EQ(Check(PathOf(each.name), &health), each.code) << each.name.size();
  }
}

TEST_F(FileTest, ALockedFileIsBusyAndServedLater) {
  MakeBook(L"a.orvab", 1);
  const HANDLE file =
      CreateFileW(PathOf(L"a.orvab").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(file, INVALID_HANDLE_VALUE);
  EXPECT_EQ(TryOpen(L"a.orvab"), MAPI_E_BUSY);
  CloseHandle(file);
  EXPECT_EQ(TryOpen(L"a.orvab"), S_OK);
}

TEST_F(FileTest, AWriterThatHoldsTheFileForLongIsWaitedForAndThenBusy) {
  const auto store = OpenBook();
  sqlite3* handle = nullptr;
  ASSERT_EQ(sqlite3_open16(PathOf(L"a.orvab").c_str(), &handle), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(handle, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
  EXPECT_EQ(store->Add(Person("A"), nullptr, nullptr), MAPI_E_BUSY);
  EXPECT_EQ(TextsOf(*store), Lines{});  // readers need not wait
  sqlite3_close(handle);
  EXPECT_EQ(store->Add(Person("A"), nullptr, nullptr), S_OK);
}

TEST_F(FileTest, AReadOnlyFileIsServedAndNotWritten) {
  MakeBook(L"a.orvab", 3);
  SetFileAttributesW(PathOf(L"a.orvab").c_str(), FILE_ATTRIBUTE_READONLY);
  const auto store = OpenBook();
  EXPECT_TRUE(store->IsReadOnly());
  EXPECT_EQ(TextsOf(*store).size(), 3u);
  EXPECT_EQ(store->Add(Person("A"), nullptr, nullptr), MAPI_E_NO_ACCESS);
  std::unique_ptr<Import> import;
  EXPECT_EQ(store->BeginImport(false, &import), MAPI_E_NO_ACCESS);
  EXPECT_EQ(store->Tend(), S_OK);
}

TEST_F(FileTest, ADiskThatFailsRefusesTheChangeAndKeepsTheBook) {
  FailingDisk::Install();
  MakeBook(L"a.orvab", 20);
  const auto store = OpenBook();
  const struct {
    int result;
    HRESULT code;
  } cases[] = {{SQLITE_FULL, MAPI_E_NOT_ENOUGH_DISK}, {SQLITE_IOERR_WRITE, MAPI_E_DISK_ERROR}};
  for (const auto& each : cases) {
    {
      const FailingDisk failing(each.result);
      EXPECT_EQ(store->Add(Person("Refused"), nullptr, nullptr), each.code);
      std::unique_ptr<Import> import;
      ASSERT_EQ(store->BeginImport(false, &import), S_OK);
      PutResult result{};
      EXPECT_EQ(import->Put(Person("Refused"), &result, nullptr), S_OK);
      EXPECT_EQ(import->Commit(), each.code);
      EXPECT_EQ(Store::Open(PathOf(L"new.orvab"), {}, std::make_unique<std::shared_ptr<Store>>().get()),
                each.code);
    }
    EXPECT_EQ(TextsOf(*store).size(), 20u);
    EXPECT_EQ(store->Add(Person("Later"), nullptr, nullptr), S_OK);
    const RowKey row{AllRows(*Look(*store))[0].key.entry, 0};
    EXPECT_EQ(store->Remove({&row, 1}, nullptr), S_OK);
    Health health;
    EXPECT_EQ(Check(PathOf(L"a.orvab"), &health), S_OK);
  }
}

TEST_F(FileTest, AnOlderFormatIsUpgradedWithACopyKept) {
  for (const int format : {1, 2}) {
    const std::wstring name = L"a" + std::to_wstring(format) + L".orvab";
    const std::wstring copy = name + L"." + std::to_wstring(format) + L".bak";
    MakeBook(name, 30);
    const Lines before = TextsOf(*OpenBook(name));
    MakeOlder(name, format);
    Options readOnly;
    readOnly.isReadOnly = true;
    EXPECT_EQ(TryOpen(name, readOnly), MAPI_E_NO_ACCESS);
    // Before and behind it the book can be checked.
    Health health;
    EXPECT_EQ(Check(PathOf(name), &health), S_OK) << format;
    EXPECT_EQ(health.contacts, 30u);
    EXPECT_EQ(TextsOf(*OpenBook(name)), before);
    EXPECT_EQ(Check(PathOf(name), &health), S_OK) << format;
    EXPECT_EQ(health.contacts, 30u);
    EXPECT_EQ(NumberIn(copy, "PRAGMA user_version"), format);
    EXPECT_EQ(NumberIn(copy, "SELECT count(*) FROM card"), 30);
  }
}

TEST_F(FileTest, EachLanguageAndFormOfNamesHasAnOrderOfItsOwnSideBySide) {
  {
    const auto store = OpenBook();
    for (const char* name : {"Zorn", "\xC3\x96rn", "Olaf"}) {
      Contact contact = Person(name, {Fax("+1 1"), Fax("+1 2")});
      contact.given = name;
      contact.surname = name[0] == 'O' ? "Berg" : "Ek";
      Add(*store, contact);
    }
  }
  // As a Swedish user's system had left it: the last letter comes last.
  Tamper(
      L"a.orvab",
      "UPDATE arrangement SET locale = 'sv-SE'; UPDATE place SET sort = x'02FF' WHERE entry = 2; UPDATE row "
      "SET sort = x'02FF' WHERE entry = 2");
  Options options;
  options.isReadOnly = true;
  EXPECT_EQ(TextsOf(*OpenBook(L"a.orvab", options)).back(), "\xC3\x96rn|+1 2");
  EXPECT_EQ(TextsOf(*OpenBook()).back(), "Zorn|+1 2");
  const auto store = OpenBook();
  EXPECT_EQ(TextsOf(*store).back(), "Zorn|+1 2");
  EXPECT_EQ(NumberIn(L"a.orvab", "SELECT count(*) FROM place WHERE sort = x'02FF'"), 1) << "theirs stays";
  // Every order takes part in what is changed from now on.
  options = {};
  options.names = NameForm::kLastFirst;
  const auto other = OpenBook(L"a.orvab", options);
  Contact added = Person("Adam Aas");
  added.given = "Adam";
  added.surname = "Zzyzx";
  const RowKey gone{Add(*store, added), 0};
  EXPECT_EQ(TextsOf(*store).front(), "Adam Aas|");
  EXPECT_EQ(TextsOf(*other), (Lines{"Olaf|+1 1", "Olaf|+1 2", "\xC3\x96rn|+1 1", "\xC3\x96rn|+1 2",
                                    "Zorn|+1 1", "Zorn|+1 2", "Adam Aas|"}));
  EXPECT_EQ(AllRows(*Look(*other)).back().Listed(), "Zzyzx, Adam");
  EXPECT_EQ(AllRows(*Look(*store)).front().Listed(), "Adam Aas");
  ASSERT_EQ(other->Remove({&gone, 1}, nullptr), S_OK);
  EXPECT_EQ(TextsOf(*store).size(), 6u);
  EXPECT_EQ(TextsOf(*other).size(), 6u);
  Tamper(L"a.orvab", "UPDATE arrangement SET used = used - 31 WHERE locale = 'sv-SE'");
  ASSERT_EQ(store->Tend(), S_OK);
  Add(*store, Person("Last"));
  Health health;
  EXPECT_EQ(Check(PathOf(L"a.orvab"), &health), S_OK)
      << (health.findings.empty() ? "" : health.findings[0].text);
  EXPECT_EQ(health.rows, 7u);
}

TEST_F(FileTest, CheckFindsWhatDoesNotAgree) {
  const struct {
    const char* damage;
    const char* finding;
  } cases[] = {
      {"UPDATE card SET text = 'rubbish' WHERE entry = 2", "\"Person 1\" cannot be read"},
      {"UPDATE card SET text = replace(text, 'Person 1', 'Somebody') WHERE entry = 2",
       "not listed as its card says"},
      {"DELETE FROM number WHERE entry = 2", "numbers of"},
      {"UPDATE number SET digits = '1' WHERE entry = 2", "numbers of"},
      {"DELETE FROM row WHERE entry = 2", "Rows of 1 entries"},
      {"UPDATE bucket SET count = count + 1", "positions"},
      {"UPDATE bucket SET count = -count", "positions"},
      {"UPDATE entry SET key = zeroblob(16) WHERE id = 2", "identifier"},
  };
  for (const auto& each : cases) {
    MakeBook(L"a.orvab", 5);
    Tamper(L"a.orvab", each.damage);
    Health health;
    EXPECT_EQ(Check(PathOf(L"a.orvab"), &health), MAPI_E_CORRUPT_STORE) << each.damage;
    EXPECT_EQ(health.damaged, each.damage == cases[0].damage ? 1u : 0u);
    const bool isTold = std::ranges::any_of(health.findings, [&](const Finding& found) {
      return found.text.find(each.finding) != std::string::npos && !found.advice.empty();
    });
    EXPECT_TRUE(isTold) << each.damage;
    DeleteFileW(PathOf(L"a.orvab").c_str());
  }
}

// What the engine finds stands behind a sentence of ours, without its headings.
TEST_F(FileTest, CheckSaysInASentenceWhatTheDatabaseFinds) {
  MakeBook(L"a.orvab", 400);
  const std::string whole = ReadFile(L"a.orvab");
  constexpr std::size_t kPage = 4096, kEach = 5;
  std::size_t told = 0;
  for (std::size_t page = 2; page < whole.size() / kPage; page += kEach) {
    std::string bytes = whole;
    bytes.replace(page * kPage, kPage, std::string(kPage, '\1'));
    WriteFile(L"torn.orvab", bytes);
    Health health;
    EXPECT_TRUE(FAILED(Check(PathOf(L"torn.orvab"), &health))) << page;
    for (const Finding& found : health.findings) {
      EXPECT_EQ(found.text.find_first_of("*\n"), std::string::npos) << found.text;
      EXPECT_EQ(found.text.back(), '.') << found.text;
      told += found.text.find("The file is damaged. The database says: ") == 0 ? 1 : 0;
    }
  }
  EXPECT_GT(told, 0u);
}

TEST_F(FileTest, CheckReadsBooksOfAnOlderFormat) {
  MakeBook(L"a.orvab", 5);
  MakeOlder(L"a.orvab", 2);
  Tamper(L"a.orvab", "UPDATE card SET text = 'rubbish' WHERE entry = 2");
  Health health;
  EXPECT_EQ(Check(PathOf(L"a.orvab"), &health), MAPI_E_CORRUPT_STORE);
  EXPECT_EQ(health.damaged, 1u);
  EXPECT_EQ(health.contacts, 5u);
}

TEST_F(FileTest, RepairSavesWhatCanBeRead) {
  constexpr int kPeople = 400;
  MakeBook(L"a.orvab", kPeople);
  const std::string whole = ReadFile(L"a.orvab");
  const EntryKey uid = OpenBook()->Uid();
  constexpr std::size_t kPage = 4096;
  const std::size_t pages = whole.size() / kPage;
  const struct {
    std::size_t page;
    uint64_t fewest;
  } cases[] = {{pages / 4, 330}, {pages / 2, 330}, {pages - 2, 330}, {0, 330}, {4, 330}};
  for (const auto& each : cases) {
    std::string bytes = whole;
    bytes.replace(each.page * kPage, kPage, std::string(kPage, '\0'));
    WriteFile(L"torn.orvab", bytes);
    DeleteFileW(PathOf(L"new.orvab").c_str());
    Salvage salvage;
    ASSERT_EQ(Repair(PathOf(L"torn.orvab"), PathOf(L"new.orvab"), &salvage), S_OK) << each.page;
    EXPECT_GE(salvage.saved, each.fewest) << each.page;
    EXPECT_LE(salvage.saved + salvage.lost, static_cast<uint64_t>(kPeople)) << each.page;
    EXPECT_GE(salvage.findings.size(), salvage.lost) << each.page;
    for (const Finding& found : salvage.findings) EXPECT_FALSE(found.text.empty() || found.advice.empty());
    Health health;
    EXPECT_EQ(Check(PathOf(L"new.orvab"), &health), S_OK) << each.page;
    EXPECT_EQ(health.contacts, salvage.saved);
    if (each.page != 0) {
      EXPECT_EQ(OpenBook(L"new.orvab")->Uid(), uid);
    }
    EXPECT_EQ(Repair(PathOf(L"torn.orvab"), PathOf(L"new.orvab"), &salvage), MAPI_E_NO_ACCESS);
  }
}

// The tables that count the entries are gone, but not their leaves.
TEST_F(FileTest, RepairSaysWhereItCannotKnowWhatIsLost) {
  constexpr int kPeople = 400;
  MakeBook(L"a.orvab", kPeople);
  Salvage salvage;
  ASSERT_EQ(Repair(PathOf(L"a.orvab"), PathOf(L"whole.orvab"), &salvage), S_OK);
  EXPECT_FALSE(salvage.isMoreLost);
  const int64_t root = NumberIn(L"a.orvab", "SELECT rootpage FROM sqlite_master WHERE name = 'entry'");
  std::string bytes = ReadFile(L"a.orvab");
  constexpr std::size_t kPage = 4096;
  bytes.replace(static_cast<std::size_t>(root - 1) * kPage, kPage, std::string(kPage, '\0'));
  WriteFile(L"torn.orvab", bytes);
  ASSERT_EQ(Repair(PathOf(L"torn.orvab"), PathOf(L"new.orvab"), &salvage), S_OK);
  EXPECT_EQ(salvage.saved, static_cast<uint64_t>(kPeople));
  EXPECT_TRUE(salvage.isMoreLost);
  ASSERT_FALSE(salvage.findings.empty());
  EXPECT_EQ(salvage.findings.back().text.find("An unknown number of entries is lost"), 0u)
      << salvage.findings.back().text;
}

TEST_F(FileTest, RepairKeepsListsAndDeletedEntries) {
  {
    const auto store = OpenBook();
    const EntryKey anna = Add(*store, Person("Anna", {Fax("+1 1")}));
    Contact list = Person("Board");
    list.isList = true;
    list.members.resize(2);
    list.members[0].uid = UidOfKey(anna);
    list.members[0].name = "Anna";
    list.members[1].number = "+1 9";
    Add(*store, list);
    const RowKey gone{Add(*store, Person("Gone")), 0};
    ASSERT_EQ(store->Remove({&gone, 1}, nullptr), S_OK);
  }
  Salvage salvage;
  ASSERT_EQ(Repair(PathOf(L"a.orvab"), PathOf(L"b.orvab"), &salvage), S_OK);
  EXPECT_EQ(salvage.saved, 3u);
  EXPECT_EQ(salvage.lost, 0u);
  const auto store = OpenBook(L"b.orvab");
  EXPECT_EQ(TextsOf(*store), (Lines{"Anna|+1 1", "Board|"}));
  std::vector<DeletedEntry> deleted;
  ASSERT_EQ(store->Deleted(&deleted), S_OK);
  EXPECT_EQ(deleted.size(), 1u);
  uint64_t members = 0;
  const auto view = Look(*store);
  EXPECT_EQ(view->MemberCount(AllRows(*view)[1].key.entry, &members), S_OK);
  EXPECT_EQ(members, 2u);
}

TEST_F(FileTest, OneBackupADayIsKeptAndSevenInAll) {
  const auto store = OpenBook();
  Add(*store, Person("A"));
  for (int day = 1; day <= 9; ++day) WriteFile(L"a.orvab.2020010" + std::to_wstring(day) + L".bak", "old");
  ASSERT_EQ(store->Tend(), S_OK);
  EXPECT_FALSE(Exists(L"a.orvab.20200103.bak"));
  EXPECT_TRUE(Exists(L"a.orvab.20200104.bak"));
  SYSTEMTIME now{};
  GetSystemTime(&now);
  wchar_t name[64];
  swprintf(name, 64, L"a.orvab.%04u%02u%02u.bak", now.wYear, now.wMonth, now.wDay);
  EXPECT_EQ(TextsOf(*OpenBook(name)), Lines{"A|"});
  Options none;
  none.keepsBackups = false;
  const auto unkept = OpenBook(L"b.orvab", none);
  Add(*unkept, Person("A"));
  EXPECT_EQ(unkept->Tend(), S_OK);
  EXPECT_FALSE(Exists(L"b.orvab" + std::wstring(name + 7)));
  EXPECT_EQ(OpenBook(L"c.orvab")->Tend(), S_OK);
  EXPECT_FALSE(Exists(L"c.orvab" + std::wstring(name + 7))) << "of an empty book";
}

TEST_F(FileTest, WhatWasDeletedAMonthAgoIsGoneForGood) {
  {
    const auto store = OpenBook();
    for (const char* name : {"Old", "New"}) {
      const RowKey row{Add(*store, Person(name)), 0};
      ASSERT_EQ(store->Remove({&row, 1}, nullptr), S_OK);
    }
  }
  Tamper(L"a.orvab", "UPDATE entry SET deleted = deleted - 31 * 86400 WHERE name = 'Old'");
  const auto store = OpenBook();
  ASSERT_EQ(store->Tend(), S_OK);
  std::vector<DeletedEntry> deleted;
  ASSERT_EQ(store->Deleted(&deleted), S_OK);
  ASSERT_EQ(deleted.size(), 1u);
  EXPECT_EQ(deleted[0].name, "New");
}

// As when the threads of a program log on for the first time.
TEST_F(FileTest, ThreadsThatComeAtOnceMakeOneBook) {
  constexpr int kThreads = 8;
  for (int i = 0; i < 5; ++i) {
    const std::wstring name = std::to_wstring(i) + L".orvab";
    std::vector<HRESULT> results(kThreads, E_FAIL);
    std::vector<std::shared_ptr<Store>> stores(kThreads);
    std::vector<std::thread> threads;
    for (std::size_t each = 0; each < kThreads; ++each)
      threads.emplace_back([&, each] { results[each] = Store::Open(PathOf(name), {}, &stores[each]); });
    for (std::thread& each : threads) each.join();
    EXPECT_EQ(results, std::vector<HRESULT>(kThreads, S_OK));
    for (const auto& each : stores) {
      ASSERT_NE(each, nullptr);
      EXPECT_EQ(each->Uid(), stores[0]->Uid());
    }
  }
}

TEST_F(FileTest, NamesOfOneFileAreOneStoreAndPathsAreResolved) {
  const auto store = OpenBook(L"sub\\deeper\\a.orvab");
  const EntryKey key = Add(*store, Person("A"));
  SetEnvironmentVariableW(L"BOOK_TEST", PathOf(L"sub").c_str());
  std::shared_ptr<Store> other;
  ASSERT_EQ(Store::Open(L"%BOOK_TEST%\\deeper\\..\\deeper\\A.ORVAB", {}, &other), S_OK);
  EXPECT_EQ(other->Uid(), store->Uid());
  Entry entry;
  EXPECT_EQ(other->Read(key, &entry), S_OK);
}

}  // namespace
}  // namespace book::test
