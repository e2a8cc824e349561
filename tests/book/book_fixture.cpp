#include "tests/book/book_fixture.h"

#include <sqlite3.h>
#include <windows.h>

#include <array>

namespace book::test {
namespace {

void DeleteFolder(const std::wstring& folder) {
  WIN32_FIND_DATAW found{};
  const HANDLE search = FindFirstFileW((folder + L"\\*").c_str(), &found);
  while (search != INVALID_HANDLE_VALUE) {
    const std::wstring name = found.cFileName;
    const std::wstring path = folder + L"\\" + name;
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    if (name != L"." && name != L"..") {
      if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) DeleteFolder(path);
      DeleteFileW(path.c_str());
    }
    if (!FindNextFileW(search, &found)) break;
  }
  FindClose(search);
  RemoveDirectoryW(folder.c_str());
}

}  // namespace

formats::ContactNumber Fax(const std::string& text, Place place) {
  formats::ContactNumber number;
  number.text = text;
  number.kind = NumberKind::kFax;
  number.place = place;
  return number;
}

formats::ContactNumber Phone(const std::string& text) {
  formats::ContactNumber number;
  number.text = text;
  return number;
}

Contact Person(const std::string& name, std::vector<formats::ContactNumber> numbers, const std::string& uid) {
  Contact contact;
  contact.name = name;
  contact.numbers = std::move(numbers);
  contact.uid = uid;
  return contact;
}

BookTest::BookTest() {
  std::array<wchar_t, MAX_PATH> temporary{};
  GetTempPathW(MAX_PATH, temporary.data());
  static int count = 0;
  folder_ = std::wstring(temporary.data()) + L"book_test \u00FC " + std::to_wstring(GetCurrentProcessId()) +
            L"." + std::to_wstring(++count);
  CreateDirectoryW(folder_.c_str(), nullptr);
}

BookTest::~BookTest() { DeleteFolder(folder_); }

HRESULT BookTest::TryOpen(const std::wstring& name, Options options) const {
  std::shared_ptr<Store> store;
  return Store::Open(PathOf(name), options, &store);
}

std::shared_ptr<Store> BookTest::OpenBook(const std::wstring& name, Options options) const {
  std::shared_ptr<Store> store;
  const HRESULT hr = Store::Open(PathOf(name), options, &store);
  if (hr != S_OK) throw std::runtime_error("no book: " + std::to_string(hr));
  return store;
}

void BookTest::WriteFile(const std::wstring& name, const std::string& bytes) const {
  const HANDLE file = CreateFileW(PathOf(name).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
  DWORD written = 0;
  ::WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
  CloseHandle(file);
}

std::string BookTest::ReadFile(const std::wstring& name) const {
  const HANDLE file = CreateFileW(PathOf(name).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                  nullptr, OPEN_EXISTING, 0, nullptr);
  std::string bytes(GetFileSize(file, nullptr), '\0');
  DWORD size = 0;
  ::ReadFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &size, nullptr);
  CloseHandle(file);
  return bytes;
}

void BookTest::Tamper(const std::wstring& name, const std::string& sql) const {
  sqlite3* handle = nullptr;
  ASSERT_EQ(sqlite3_open16(PathOf(name).c_str(), &handle), SQLITE_OK);
  char* message = nullptr;
  EXPECT_EQ(sqlite3_exec(handle, sql.c_str(), nullptr, nullptr, &message), SQLITE_OK) << message;
  sqlite3_close(handle);
}

int64_t BookTest::NumberIn(const std::wstring& name, const std::string& sql) const {
  sqlite3* handle = nullptr;
  sqlite3_stmt* statement = nullptr;
  EXPECT_EQ(sqlite3_open16(PathOf(name).c_str(), &handle), SQLITE_OK);
  EXPECT_EQ(sqlite3_prepare_v2(handle, sql.c_str(), -1, &statement, nullptr), SQLITE_OK);
  EXPECT_EQ(sqlite3_step(statement), SQLITE_ROW);
  const int64_t number = sqlite3_column_int64(statement, 0);
  sqlite3_finalize(statement);
  sqlite3_close(handle);
  return number;
}

void BookTest::MakeOlder(const std::wstring& name, int format) const {
  Tamper(
      name,
      "BEGIN; DROP TABLE row; DROP TABLE bucket; DROP TABLE word; DROP TABLE place; DROP TABLE arrangement; "
      "DROP INDEX number_digits; ALTER TABLE entry ADD COLUMN sort BLOB; INSERT INTO meta VALUES('locale', "
      "'en-US'); PRAGMA user_version = " +
          std::to_string(format) + "; COMMIT");
}

EntryKey Add(Store& store, const Contact& contact) {
  EntryKey key{};
  EXPECT_EQ(store.Add(contact, &key, nullptr), S_OK) << contact.name;
  return key;
}

std::unique_ptr<View> Look(Store& store) {
  std::unique_ptr<View> view;
  EXPECT_EQ(store.OpenView(&view), S_OK);
  return view;
}

std::vector<Row> AllRows(View& view) {
  std::vector<Row> rows;
  constexpr std::size_t kMany = 1'000'000;
  EXPECT_EQ(view.Window(0, kMany, &rows), S_OK);
  return rows;
}

std::vector<std::string> Texts(const std::vector<Row>& rows) {
  std::vector<std::string> texts;
  for (const Row& row : rows) texts.push_back(row.isGone ? "gone" : row.name + "|" + row.number);
  return texts;
}

std::vector<std::string> TextsOf(Store& store) { return Texts(AllRows(*Look(store))); }

std::vector<std::string> TextsOf(View& view, const std::vector<RowRef>& refs) {
  std::vector<Row> rows;
  EXPECT_EQ(view.Rows(refs, &rows), S_OK);
  return Texts(rows);
}

}  // namespace book::test
