#include "tools/orvctl/book_copies.h"

#include <algorithm>
#include <cstdio>
#include <memory>

#include "orv/orvcodes.h"
#include "tools/orvctl/library.h"

namespace orvctl {
namespace {

constexpr size_t kMostNamed = 8;  // seven days and what lay there before an upgrade

struct CloseSearch {
  void operator()(void* search) const noexcept { FindClose(search); }
};

struct Found {
  FILETIME written = {};
  WideString name;
};

bool IsLater(const Found& one, const Found& other) {
  return CompareFileTime(&one.written, &other.written) > 0;
}

std::vector<Found> FindCopies(const WideString& path) {
  std::vector<Found> copies;
  WIN32_FIND_DATAW data = {};
  const HANDLE handle = FindFirstFileW((path + L".*.bak").c_str(), &data);
  if (handle == INVALID_HANDLE_VALUE) return copies;
  const std::unique_ptr<void, CloseSearch> search(handle);
  do {
    if ((data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
      copies.push_back({data.ftLastWriteTime, data.cFileName});
  } while (FindNextFileW(handle, &data));
  std::sort(copies.begin(), copies.end(), IsLater);
  return copies;
}

std::string DateOf(const FILETIME& time) {
  FILETIME local = {};
  SYSTEMTIME parts = {};
  if (!FileTimeToLocalFileTime(&time, &local) || !FileTimeToSystemTime(&local, &parts)) return {};
  char text[32];
  std::snprintf(text, sizeof(text), "%04u-%02u-%02u %02u:%02u", parts.wYear, parts.wMonth, parts.wDay,
                parts.wHour, parts.wMinute);
  return text;
}

WideString FileNameOf(const WideString& path) { return path.substr(path.find_last_of(L"\\/") + 1); }

// The engine would carry over into the copy what such a file holds of the book that it belongs to.
std::string LeftBeside(const WideString& path) {
  std::string names;
  for (const WCHAR* end : {L"-wal", L"-shm", L"-journal"}) {
    if (GetFileAttributesW((path + end).c_str()) == INVALID_FILE_ATTRIBUTES) continue;
    names += (names.empty() ? "'" : ", '") + ToUtf8(FileNameOf(path) + end) + "'";
  }
  return names.empty() ? "" : " and with " + names + " moved away";
}

}  // namespace

std::vector<BookCopy> CopiesOf(const std::string& file) {
  std::vector<BookCopy> copies;
  for (const Found& each : FindCopies(ExpandedPath(file)))
    copies.push_back({ToUtf8(each.name), DateOf(each.written)});
  return copies;
}

Json DescribeCopies(const std::vector<BookCopy>& copies) {
  Json described = Json::array();
  for (const BookCopy& each : copies) described.push_back({{"name", each.name}, {"date", each.date}});
  return described;
}

std::string WayBack(const std::string& file) {
  std::vector<BookCopy> copies = CopiesOf(file);
  if (copies.empty()) return {};
  copies.resize(std::min(copies.size(), kMostNamed));
  const WideString path = ExpandedPath(file);
  std::string names;
  for (const BookCopy& each : copies)
    names += (names.empty() ? "" : ", ") + each.name + " (" + each.date + ")";
  return " Copies of the book lie beside it: " + names + ". To go back to one, copy it over '" +
         ToUtf8(FileNameOf(path)) + "' while no program uses that" + LeftBeside(path) +
         "; or copy it to a new name and give that to 'orvctl service set PROFILE --config FILE'.";
}

std::string WithWayBack(std::string sentence, HRESULT status, const std::string& file) {
  const bool isLost =
      status == MAPI_E_CORRUPT_STORE || status == MAPI_E_INVALID_OBJECT || status == MAPI_E_NOT_FOUND;
  const std::string way = isLost && !file.empty() ? WayBack(file) : "";
  if (!way.empty() && sentence.back() != '.') sentence += '.';
  return sentence + way;
}

}  // namespace orvctl
