// The local book: import against the engine inserting the same rows, and what grows with the book.
#include <sqlite3.h>
#include <windows.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "bench/harness.h"
#include "providers/book/derived.h"
#include "providers/book/store.h"

namespace orv::bench {
namespace {

constexpr const char* kGiven[] = {"Anna",  "J\xC3\xBCrgen", "Maria", "Olaf", "Chlo\xC3\xA9", "Bj\xC3\xB6rn",
                                  "Ines",  "Karl",          "Lena",  "Mats", "Nora",         "Otto",
                                  "Petra", "Rolf",          "Sara",  "Tim"};
constexpr const char* kSyllables[] = {"ber", "lin", "ma",  "ros", "tal", "wen", "kor", "dis",
                                      "fal", "gun", "hol", "jan", "nor", "pet", "san", "vik"};

// Spreads over all numbers below 2^32.
uint32_t Scatter(std::size_t i) { return static_cast<uint32_t>(i) * 2654435761u; }

std::string Word(uint32_t bits) {
  std::string word;
  for (int i = 0; i < 4; ++i) word += kSyllables[bits >> (8 + 4 * i) & 15];
  word[0] = static_cast<char>(word[0] - 'a' + 'A');
  return word;
}

formats::Contact MakeContact(std::size_t i) {
  const uint32_t bits = Scatter(i);
  const std::string number = std::to_string(bits);
  formats::Contact contact;
  contact.given = kGiven[bits & 15];
  contact.surname = Word(bits);
  contact.name = contact.given + ' ' + contact.surname;
  contact.company = Word(Scatter(i % 997)) + " AB";
  contact.department = i % 3 == 0 ? "Freight" : "";
  contact.title = "Dispatcher";
  contact.uid = "6d1b8a7e-3b7f-4f5a-9c38-" + std::string(12 - number.size(), '0') + number;
  contact.numbers.resize(2);
  contact.numbers[0].text = "+46 31 " + number;
  contact.numbers[0].kind = formats::NumberKind::kFax;
  contact.numbers[0].place = formats::Place::kWork;
  contact.numbers[1].text = "+46 70 " + std::to_string(Scatter(i + 7));
  contact.emails.resize(1);
  contact.emails[0].text = contact.surname + number + "@nordhamn.example";
  contact.addresses.resize(1);
  contact.addresses[0].street = "Kajgatan 4";
  contact.addresses[0].locality = "G\xC3\xB6teborg";
  contact.addresses[0].place = formats::Place::kWork;
  if (i % 4 == 0) contact.note = "Prefers faxes before noon, Tokyo time.\nSecond line.";
  return contact;
}

class Scratch {
 public:
  Scratch() {
    wchar_t folder[MAX_PATH];
    GetTempPathW(MAX_PATH, folder);
    path_ = std::wstring(folder) + L"bench" + std::to_wstring(GetCurrentProcessId()) + L"." +
            std::to_wstring(++count_) + L".orvab";
  }
  ~Scratch() {
    for (const wchar_t* end : {L"", L"-wal", L"-shm"}) DeleteFileW((path_ + end).c_str());
  }
  std::shared_ptr<book::Store> Open() const {
    std::shared_ptr<book::Store> store;
    Require(book::Store::Open(path_, {}, &store) == S_OK, "the book was not opened");
    return store;
  }
  std::string Utf8() const { return std::string(path_.begin(), path_.end()); }

 private:
  static inline int count_ = 0;
  std::wstring path_;
};

double Seconds() {
  LARGE_INTEGER now, frequency;
  QueryPerformanceCounter(&now);
  QueryPerformanceFrequency(&frequency);
  return static_cast<double>(now.QuadPart) / static_cast<double>(frequency.QuadPart);
}

void Fill(book::Store& store, std::size_t count) {
  std::unique_ptr<book::Import> import;
  Require(store.BeginImport(false, &import) == S_OK, "no import");
  for (std::size_t i = 0; i < count; ++i) {
    book::PutResult result{};
    Require(import->Put(MakeContact(i), &result, nullptr) == S_OK && result == book::PutResult::kAdded,
            "a contact was not added");
  }
  Require(import->Commit() == S_OK, "the import was not committed");
}

// The same rows by the engine alone, in as large transactions.
class BareInsert {
 public:
  explicit BareInsert(const std::string& path) {
    sqlite3_open(path.c_str(), &handle_);
    Run("PRAGMA synchronous = NORMAL; PRAGMA cache_size = -24576");
    for (int i = 0; i < kStatements; ++i)
      Require(sqlite3_prepare_v2(handle_, kSql[i], -1, &statements_[i], nullptr) == SQLITE_OK,
              "not prepared");
  }
  ~BareInsert() {
    for (sqlite3_stmt* statement : statements_) sqlite3_finalize(statement);
    sqlite3_close(handle_);
  }
  void Run(const char* sql) {
    Require(sqlite3_exec(handle_, sql, nullptr, nullptr, nullptr) == SQLITE_OK, sql);
  }
  void Insert(int64_t id, const book::EntryKey& key, const book::Derived& row) {
    sqlite3_stmt* entry = statements_[0];
    sqlite3_bind_int64(entry, 1, id);
    BindBytes(entry, 2, key);
    BindText(entry, 3, row.name);
    Step(entry);
    sqlite3_bind_int64(statements_[6], 1, id);
    BindBytes(statements_[6], 2, row.sorts[0]);
    Step(statements_[6]);
    sqlite3_bind_int64(statements_[1], 1, id);
    BindText(statements_[1], 2, row.card);
    Step(statements_[1]);
    for (std::size_t i = 0; i < row.numbers.size(); ++i)
      InsertNumber(id, static_cast<int>(i), row.numbers[i]);
    InsertShown(id, key, row);
  }

 private:
  void InsertShown(int64_t id, const book::EntryKey& key, const book::Derived& row) {
    const std::string* texts[] = {&row.name, &row.company, &row.department, &row.title, &row.email};
    sqlite3_stmt* shown = statements_[3];
    BindBytes(shown, 1, row.sorts[0]);
    sqlite3_bind_int64(shown, 2, id);
    BindBytes(shown, 3, key);
    for (int i = 0; i < 5; ++i) BindText(shown, 4 + i, *texts[i]);
    sqlite3_bind_int64(shown, 9, row.numbers[0].key);
    BindText(shown, 10, row.numbers[0].text);
    BindText(shown, 11, row.lastFirst);
    Step(shown);
    sqlite3_bind_int64(statements_[4], 1, id);
    for (int i = 0; i < 3; ++i) BindText(statements_[4], 2 + i, *texts[i]);
    Step(statements_[4]);
    BindText(statements_[5], 1, row.email);
    sqlite3_bind_int64(statements_[5], 2, id);
    Step(statements_[5]);
  }

 private:
  static constexpr int kStatements = 7;
  static constexpr const char* kSql[kStatements] = {
      "INSERT INTO entry(id, key, flags, version, created, changed, name) VALUES(?, ?, 0, 1, 1700000000, "
      "1700000000, ?)",
      "INSERT INTO card VALUES(?, ?)",
      "INSERT INTO number VALUES(?, ?, ?, ?, ?, ?, ?)",
      "INSERT INTO row VALUES(?1, ?2, 0, ?3, 0, 1, ?4, ?11, ?5, ?6, ?7, ?8, ?9, ?10, 1, 0)",
      "INSERT INTO word(rowid, name, company, department) VALUES(?, ?, ?, ?)",
      "INSERT INTO mail VALUES(lower(?), ?)",
      "INSERT INTO place VALUES(?, 2, ?)"};

  void InsertNumber(int64_t id, int ordinal, const book::Derived::Number& number) {
    sqlite3_stmt* statement = statements_[2];
    sqlite3_bind_int64(statement, 1, id);
    sqlite3_bind_int(statement, 2, ordinal);
    sqlite3_bind_int64(statement, 3, number.key);
    sqlite3_bind_int(statement, 4, static_cast<int>(number.kind));
    BindText(statement, 5, number.text);
    BindText(statement, 6, number.digits);
    BindText(statement, 7, number.reversed);
    Step(statement);
  }
  template <class Bytes>
  static void BindBytes(sqlite3_stmt* statement, int index, const Bytes& bytes) {
    sqlite3_bind_blob(statement, index, bytes.data(), static_cast<int>(bytes.size()), SQLITE_STATIC);
  }
  static void BindText(sqlite3_stmt* statement, int index, const std::string& text) {
    sqlite3_bind_text(statement, index, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
  }
  static void Step(sqlite3_stmt* statement) {
    Require(sqlite3_step(statement) == SQLITE_DONE, "a row was not inserted");
    sqlite3_reset(statement);
  }

  sqlite3* handle_ = nullptr;
  sqlite3_stmt* statements_[kStatements] = {};
};

// Seconds of the insertions alone; the rows are prepared a transaction at a time, as all of them would fill the memory.
double InsertBare(std::size_t count) {
  const Scratch scratch;
  (void)scratch.Open();
  const book::Arrangement arrangement(2, book::SortKeys::OfUser().locale());
  BareInsert bare(scratch.Utf8());
  constexpr std::size_t kRows = 10'000;
  double seconds = 0;
  for (std::size_t begin = 0; begin < count; begin += kRows) {
    std::vector<std::pair<book::EntryKey, book::Derived>> rows;
    for (std::size_t i = begin; i < begin + kRows && i < count; ++i) {
      const formats::Contact contact = MakeContact(i);
      rows.emplace_back(book::KeyOfUid(contact.uid), book::Derive(contact, {&arrangement, 1}));
    }
    const double start = Seconds();
    bare.Run("BEGIN IMMEDIATE");
    for (std::size_t i = 0; i < rows.size(); ++i)
      bare.Insert(static_cast<int64_t>(begin + i + 1), rows[i].first, rows[i].second);
    bare.Run("COMMIT");
    seconds += Seconds() - start;
  }
  return seconds;
}

double Import(std::size_t count) {
  const Scratch scratch;
  const auto store = scratch.Open();
  const double start = Seconds();
  Fill(*store, count);
  return Seconds() - start;
}

void CompareImport(std::size_t count) {
  const double ours = Import(count), floor = InsertBare(count);
  Report("import of " + std::to_string(count) + " contacts to the engine alone", ours * 1e9, floor * 1e9,
         "ns", 1 / 0.6);
}

void ReportMilliseconds(const std::string& name, double nanoseconds, double atMost) {
  Report(name, nanoseconds / 1e6, 1, "ms", atMost);
}

void MeasureBook(std::size_t count) {
  const Scratch scratch;
  const auto store = scratch.Open();
  Fill(*store, count);
  const std::string of = " of " + std::to_string(count);
  const auto open = [&] {
    std::unique_ptr<book::View> view;
    Require(store->OpenView(&view) == S_OK, "no view");
    return view;
  };
  const auto view = open();
  std::vector<book::Row> rows;
  std::vector<book::RowRef> refs;
  std::size_t turn = 0;
  ReportMilliseconds("open" + of, Measure([&] { (void)open(); }), 2);
  ReportMilliseconds("open, first 50 rows" + of, Measure([&] {
                       const auto fresh = open();
                       Require(fresh->Window(0, 50, &rows) == S_OK && rows.size() == 50, "no window");
                     }),
                     5);
  ReportMilliseconds("50 rows anywhere" + of, Measure([&] {
                       const uint64_t first = Scatter(++turn) % (count - 50);
                       Require(view->Window(first, 50, &rows) == S_OK && rows.size() == 50, "no window");
                     }),
                     10);
  ReportMilliseconds("seek by a beginning" + of, Measure([&] {
                       uint64_t first = 0, end = 0;
                       const std::string name = MakeContact(Scatter(++turn) % count).name.substr(0, 9);
                       Require(view->SeekName(name, &first, &end) == S_OK && first < end, "not found");
                       Require(view->Window(first, 1, &rows) == S_OK && rows.size() == 1, "no row");
                     }),
                     2);
  ReportMilliseconds("search by a word" + of, Measure([&] {
                       const std::string word = MakeContact(Scatter(++turn) % count).surname.substr(0, 9);
                       Require(view->FindWords(word, 50, &refs) == S_OK && !refs.empty(), "not found");
                       Require(view->Rows(refs, &rows) == S_OK, "no rows");
                     }),
                     2);
  ReportMilliseconds("search by last digits" + of, Measure([&] {
                       const std::string text = MakeContact(Scatter(++turn) % count).numbers[0].text;
                       Require(
                           view->FindDigits(text.substr(text.size() - 5), 50, &refs) == S_OK && !refs.empty(),
                           "not found");
                     }),
                     2);
  ReportMilliseconds("50 of a hundredth of all rows by two last digits" + of, Measure([&] {
                       const std::string text = MakeContact(Scatter(++turn) % count).numbers[0].text;
                       Require(
                           view->FindDigits(text.substr(text.size() - 2), 50, &refs) == S_OK && !refs.empty(),
                           "not found");
                     }),
                     30);
  ReportMilliseconds("50 of a third of all rows by a word" + of, Measure([&] {
                       Require(view->FindWords("freight", 50, &refs) == S_OK && refs.size() == 50,
                               "not found");
                     }),
                     10);
  ReportMilliseconds("50 of all rows by first digits" + of, Measure([&] {
                       Require(view->FindDigits("+46", 50, &refs) == S_OK && refs.size() == 50, "not found");
                     }),
                     30);
  ReportMilliseconds("100 exact names" + of, Measure([&] {
                       for (int i = 0; i < 100; ++i) {
                         const std::string name = MakeContact(Scatter(++turn) % count).name;
                         Require(view->FindName(name, 10, &refs) == S_OK && !refs.empty(), "not found");
                         Require(view->Rows(refs, &rows) == S_OK, "no rows");
                       }
                     }),
                     40);
  const std::size_t before = CommittedBytes();
  const double start = Seconds();
  for (uint64_t first = 0; first < count; first += 500)
    Require(view->Window(first, 500, &rows) == S_OK, "no window");
  ReportMilliseconds("every row, 500 a time" + of, (Seconds() - start) * 1e9, 4000);
  Report("memory that this takes more" + of, static_cast<double>(CommittedBytes() - before) / (1 << 20), 1,
         "MB", 20);
  ReportMilliseconds(
      "one contact changed" + of, Measure([&] {
        formats::Contact contact = MakeContact(Scatter(++turn) % count);
        contact.title = std::to_string(turn);
        Require(store->Change(book::KeyOfUid(contact.uid), contact, book::kAnyVersion, nullptr) == S_OK,
                "not changed");
      }),
      20);
}

const Benchmark kBook("book", [] {
  for (const std::size_t count : {std::size_t{1'000}, std::size_t{20'000}, std::size_t{200'000}})
    MeasureBook(count);
});
const Benchmark kImport("book-import", [] { CompareImport(100'000); });

}  // namespace
}  // namespace orv::bench
