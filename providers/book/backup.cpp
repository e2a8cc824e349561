// A copy grows under a name of its own: whatever ends in ".bak" is whole.
#include "providers/book/backup.h"

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <vector>

#include "orv/orvcodes.h"
#include "providers/book/file.h"

namespace book {
namespace {

constexpr std::size_t kBackupsKept = 7;
constexpr wchar_t kDatePattern[] = L".????????.bak";

struct FinishBackup {
  void operator()(sqlite3_backup* backup) const noexcept { sqlite3_backup_finish(backup); }
};

void CopyPages(Database& from, Database& to) {
  const std::unique_ptr<sqlite3_backup, FinishBackup> backup(
      sqlite3_backup_init(to.get(), "main", from.get(), "main"));
  if (backup == nullptr) Fail(MAPI_E_DISK_ERROR);
  constexpr int kAllPages = -1;
  Require(to.get(), sqlite3_backup_step(backup.get(), kAllPages));
}

std::wstring Today() {
  SYSTEMTIME time{};
  GetSystemTime(&time);
  std::array<wchar_t, 32> text{};
  std::swprintf(text.data(), text.size(), L"%04u%02u%02u", time.wYear, time.wMonth, time.wDay);
  return text.data();
}

struct CloseSearch {
  void operator()(void* search) const noexcept { FindClose(search); }
};

// Names of dated copies, which sort by age.
std::vector<std::wstring> DatedCopies(const std::wstring& path) {
  std::vector<std::wstring> names;
  WIN32_FIND_DATAW found{};
  const HANDLE handle = FindFirstFileW((path + kDatePattern).c_str(), &found);
  if (handle == INVALID_HANDLE_VALUE) return names;
  const std::unique_ptr<void, CloseSearch> search(handle);
  const std::wstring folder = path.substr(0, path.rfind(L'\\') + 1);
  do {
    names.push_back(folder + found.cFileName);
  } while (FindNextFileW(handle, &found));
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace

void CopyBook(Database& database, const std::wstring& path) {
  const std::wstring draft = path + L"~";
  DeleteFileW(draft.c_str());
  try {
    Database copy(draft, Database::Access::kCreate);
    CopyPages(database, copy);
    // A copy lies alone, wherever it is taken to.
    copy.Run("PRAGMA journal_mode = DELETE");
  } catch (...) {
    DeleteFileW(draft.c_str());
    throw;
  }
  if (!MoveFileExW(draft.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
    Fail(MAPI_E_DISK_ERROR);
}

void KeepDailyBackup(Database& database, const std::wstring& path) {
  const std::wstring copy = path + L'.' + Today() + L".bak";
  // A copy of nothing would stand in the way of the day's real one, and look like a way back.
  if (FileExists(copy) || !Query(database, "SELECT 1 FROM entry LIMIT 1").Next()) return;
  CopyBook(database, copy);
  const std::vector<std::wstring> copies = DatedCopies(path);
  for (std::size_t i = 0; i + kBackupsKept < copies.size(); ++i) DeleteFileW(copies[i].c_str());
}

}  // namespace book
