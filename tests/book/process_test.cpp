// Several processes at one book, and processes that are killed while they write.
#include <windows.h>

#include <cstdlib>
#include <random>
#include <set>

#include "tests/book/book_fixture.h"
#include "tests/book/writer_process.h"

namespace book::test {
namespace {

class Recorder final : public Listener {
 public:
  void BookChanged(const Changes& changes) override {
    for (const Change& change : changes.entries) keys.push_back(change.key);
    everything += changes.isEverything;
  }
  std::vector<EntryKey> keys;
  int everything = 0;
};

using ProcessTest = BookTest;

TEST_F(ProcessTest, ChangesOfThisAndOfOtherProcessesAreTold) {
  const auto store = OpenBook();
  const auto recorder = std::make_shared<Recorder>();
  store->Listen(recorder);
  const EntryKey own = Add(*store, Person("Own"));
  EXPECT_EQ(recorder->keys, std::vector<EntryKey>{own});
  EXPECT_EQ(store->Poll(), S_OK);
  EXPECT_EQ(recorder->keys.size(), 1u);  // own changes are told once
  EXPECT_EQ(WriterProcess(L"once", PathOf(L"a.orvab"), 7).Wait(), 0);
  EXPECT_EQ(recorder->keys.size(), 1u);
  EXPECT_EQ(store->Poll(), S_OK);
  EXPECT_EQ(recorder->keys, (std::vector<EntryKey>{own, KeyOfUid("person-7")}));
  EXPECT_EQ(store->Poll(), S_OK);
  EXPECT_EQ(recorder->keys.size(), 2u);
  // More than is worth telling one by one.
  WriterProcess importing(L"import", PathOf(L"a.orvab"), 100);
  while (!importing.HasSaid("499")) ASSERT_TRUE(importing.Listen());
  importing.Kill();
  EXPECT_EQ(store->Poll(), S_OK);
  EXPECT_GT(recorder->keys.size() + static_cast<std::size_t>(recorder->everything), 2u);
}

TEST_F(ProcessTest, AnImportLetsOthersHaveTheirTurn) {
  const auto store = OpenBook();
  WriterProcess importing(L"import", PathOf(L"a.orvab"), 1);
  while (!importing.HasSaid("open")) ASSERT_TRUE(importing.Listen());
  for (int i = 0; i < 20; ++i) Add(*store, Person("Own " + std::to_string(i)));
}

// Numbered people up to `last` are in the book, and the book is whole.
void ExpectWhole(const std::wstring& path, Store& store, int last) {
  std::set<std::string> names;
  for (const Row& row : AllRows(*Look(store))) names.insert(row.name);
  for (int i = 1; i <= last; ++i)
    ASSERT_TRUE(names.contains("Person " + std::to_string(i))) << i << " of " << last;
  Health health;
  ASSERT_EQ(Check(path, &health), S_OK) << (health.findings.empty() ? "" : health.findings[0].text);
}

// The numbers that writers of each kind had acknowledged.
struct Acknowledged {
  int added = 0;
  int edited = 0;
};

void KillOneWriter(const std::wstring& path, int mode, DWORD after, Acknowledged* done) {
  constexpr const wchar_t* kModes[] = {L"add", L"edit", L"import"};
  int& last = mode == 1 ? done->edited : done->added;
  WriterProcess writer(kModes[mode], path, last + 1);
  // Every other one has begun to write, however busy the machine is.
  while (after % 2 == 0 && !writer.HasSaid("open") && writer.Listen()) {
  }
  writer.ListenFor(after);
  writer.Kill();
  last = std::max(last, writer.LastNumber(last));
}

int Kills() {
  const char* text = std::getenv("ORV_KILLS");
  return text == nullptr ? 20 : std::atoi(text);
}

TEST_F(ProcessTest, AKilledProcessLosesNothingThatItWasToldIsDone) {
  std::mt19937 random(std::random_device{}());
  const std::wstring path = PathOf(L"a.orvab");
  Acknowledged done;
  int acknowledged = 0;
  for (int i = 0; i < Kills() && !HasFailure(); ++i) {
    if (i % 12 == 0) {  // a new book now and then, so that making one is killed as well
      for (const wchar_t* end : {L"", L"-wal", L"-shm"}) DeleteFileW((path + end).c_str());
      done = {};
    }
    KillOneWriter(path, i % 3, 20 + random() % 300, &done);
    acknowledged += done.added + done.edited;
    const auto store = OpenBook();
    ExpectWhole(path, *store, done.added);
    Entry entry;
    if (done.edited == 0) continue;
    ASSERT_EQ(store->Read(KeyOfUid("person-0"), &entry), S_OK);
    EXPECT_GE(std::atoi(entry.contact.title.c_str()), done.edited);
  }
  EXPECT_GT(acknowledged, 0);
}

void FillWithPeople(Store& store, int people) {
  std::unique_ptr<Import> import;
  ASSERT_EQ(store.BeginImport(false, &import), S_OK);
  for (int i = 1; i <= people; ++i) {
    PutResult result{};
    ASSERT_EQ(import->Put(Person("Person " + std::to_string(i), {Fax("+1 5 " + std::to_string(i))}), &result,
                          nullptr),
              S_OK);
  }
  ASSERT_EQ(import->Commit(), S_OK);
}

TEST_F(ProcessTest, AnUpgradeThatIsKilledIsDoneByTheNext) {
  constexpr int kPeople = 3000;
  std::mt19937 random(std::random_device{}());
  const std::wstring path = PathOf(L"a.orvab");
  FillWithPeople(*OpenBook(), kPeople);
  for (int i = 0; i < Kills() / 4 && !HasFailure(); ++i) {
    MakeOlder(L"a.orvab");
    WriterProcess writer(L"open", path, 0);
    writer.ListenFor(random() % 400);
    writer.Kill();
    ExpectWhole(path, *OpenBook(), kPeople);
  }
}

TEST_F(ProcessTest, ProgramsThatComeAtOnceUpgradeOnceAndKeepTheFormerBook) {
  constexpr int kPeople = 3000;
  const std::wstring path = PathOf(L"a.orvab");
  FillWithPeople(*OpenBook(), kPeople);
  for (int i = 0; i < 3; ++i) {
    MakeOlder(L"a.orvab", 2);
    WriterProcess first(L"open", path, 0), second(L"open", path, 0), third(L"open", path, 0);
    for (WriterProcess* each : {&first, &second, &third}) EXPECT_EQ(each->Wait(), 0);
    EXPECT_EQ(NumberIn(L"a.orvab.2.bak", "PRAGMA user_version"), 2);
    EXPECT_EQ(NumberIn(L"a.orvab.2.bak", "SELECT count(*) FROM card"), kPeople);
    ExpectWhole(path, *OpenBook(), kPeople);
  }
}

}  // namespace
}  // namespace book::test
