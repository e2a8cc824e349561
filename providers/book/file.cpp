// A book's header is read by hand: to ask the engine would leave its own files beside those of other programs.
#include "providers/book/file.h"

#include <array>
#include <cstring>
#include <memory>
#include <string_view>

#include "orv/orvcodes.h"
#include "providers/book/database.h"
#include "providers/book/schema.h"

namespace book {
namespace {

// Left for the names that the engine and backups put behind that of the book.
constexpr std::size_t kLongestPath = MAX_PATH - 24;
constexpr DWORD kLongestText = 0x8000;  // of the system's own
constexpr std::size_t kHeaderSize = 100;
constexpr std::string_view kMagic("SQLite format 3\0", 16);
constexpr std::size_t kFormatOffset = 60;
constexpr std::size_t kApplicationOffset = 68;
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

struct CloseFile {
  void operator()(void* file) const noexcept { CloseHandle(file); }
};
using File = std::unique_ptr<void, CloseFile>;

File OpenFile(const std::wstring& path, DWORD access) {
  const HANDLE file = CreateFileW(path.c_str(), access, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr);
  return File(file == INVALID_HANDLE_VALUE ? nullptr : file);
}

HRESULT CodeOfOpening(DWORD error) {
  switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_BAD_NETPATH:
    case ERROR_BAD_NET_NAME:
    case ERROR_INVALID_NAME:
    case ERROR_BAD_PATHNAME:
    case ERROR_BAD_DEV_TYPE:
    case ERROR_REM_NOT_LIST:
    case ERROR_NETWORK_UNREACHABLE:
    case ERROR_HOST_UNREACHABLE:
    case ERROR_NOT_READY:
      return MAPI_E_NOT_FOUND;
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
      return MAPI_E_BUSY;
    case ERROR_ACCESS_DENIED:
      return MAPI_E_NO_ACCESS;
    default:
      return MAPI_E_DISK_ERROR;
  }
}

uint32_t BigEndian(const uint8_t* bytes) {
  return uint32_t{bytes[0]} << 24 | uint32_t{bytes[1]} << 16 | uint32_t{bytes[2]} << 8 | bytes[3];
}

// A file whose beginning is empty or wiped was a book that came to harm; any other content is another program's.
uint32_t FormatOf(HANDLE file) {
  std::array<uint8_t, kHeaderSize> header{};
  DWORD size = 0;
  if (!ReadFile(file, header.data(), kHeaderSize, &size, nullptr)) Fail(CodeOfOpening(GetLastError()));
  const std::string_view start(reinterpret_cast<const char*>(header.data()), kMagic.size());
  if (start == std::string_view("\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 16)) Fail(MAPI_E_CORRUPT_STORE);
  if (start != kMagic) Fail(MAPI_E_INVALID_OBJECT);
  if (size < kHeaderSize) Fail(MAPI_E_CORRUPT_STORE);
  if (BigEndian(&header[kApplicationOffset]) != kApplicationId) Fail(MAPI_E_INVALID_OBJECT);
  return BigEndian(&header[kFormatOffset]);
}

bool IsLocalDrive(const std::wstring& path) {
  std::array<wchar_t, MAX_PATH> volume{};
  if (!GetVolumePathNameW(path.c_str(), volume.data(), MAX_PATH)) return false;
  const UINT type = GetDriveTypeW(volume.data());
  return type == DRIVE_FIXED || type == DRIVE_REMOVABLE || type == DRIVE_RAMDISK;
}

FileIdentity IdentityOf(HANDLE file) {
  BY_HANDLE_FILE_INFORMATION info{};
  if (!GetFileInformationByHandle(file, &info)) Fail(MAPI_E_DISK_ERROR);
  return {info.dwVolumeSerialNumber, info.nFileIndexHigh, info.nFileIndexLow};
}

}  // namespace

std::wstring ResolvePath(const std::wstring& path) {
  std::wstring expanded(kLongestText, L'\0');
  const DWORD size = ExpandEnvironmentStringsW(path.c_str(), expanded.data(), kLongestText);
  if (size == 0 || size > kLongestText) Fail(MAPI_E_STRING_TOO_LONG);
  std::wstring full(kLongestText, L'\0');
  const DWORD length = GetFullPathNameW(expanded.c_str(), kLongestText, full.data(), nullptr);
  if (length == 0) Fail(MAPI_E_NOT_FOUND);
  if (length > kLongestPath) Fail(MAPI_E_STRING_TOO_LONG);
  return full.substr(0, length);
}

bool FileExists(const std::wstring& path) {
  return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

FileFacts ExamineFile(const std::wstring& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) Fail(CodeOfOpening(GetLastError()));
  if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) Fail(MAPI_E_INVALID_OBJECT);
  const File file = OpenFile(path, GENERIC_READ);
  if (file == nullptr) Fail(CodeOfOpening(GetLastError()));
  FileFacts facts;
  facts.format = FormatOf(file.get());
  facts.identity = IdentityOf(file.get());
  facts.isWritable =
      (attributes & FILE_ATTRIBUTE_READONLY) == 0 && OpenFile(path, GENERIC_READ | GENERIC_WRITE) != nullptr;
  facts.isLocal = IsLocalDrive(path);
  return facts;
}

void MakeFoldersFor(const std::wstring& path) {
  for (std::size_t end = path.find(L'\\', 3); end != std::wstring::npos; end = path.find(L'\\', end + 1))
    CreateDirectoryW(path.substr(0, end).c_str(), nullptr);  // most are there; the file tells what is wrong
}

int64_t Now() {
  constexpr int64_t kTicksPerSecond = 10'000'000;
  constexpr int64_t kSecondsTo1970 = 11'644'473'600;
  FILETIME time{};
  GetSystemTimeAsFileTime(&time);
  const int64_t ticks = static_cast<int64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
  return ticks / kTicksPerSecond - kSecondsTo1970;
}

}  // namespace book
