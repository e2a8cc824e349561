#include "formats/file_bytes.h"

#include <windows.h>

#include <algorithm>
#include <memory>

namespace formats {
namespace {

// Servers refuse to hand out very much at once.
constexpr std::size_t kMostAtOnce = std::size_t{16} << 20;

struct CloseFile {
  using pointer = HANDLE;
  void operator()(HANDLE file) const noexcept { CloseHandle(file); }
};
using File = std::unique_ptr<HANDLE, CloseFile>;

FileResult ResultOf(DWORD error) {
  switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_DRIVE:
    case ERROR_INVALID_NAME:
    case ERROR_BAD_NETPATH:
    case ERROR_BAD_NET_NAME:
    case ERROR_BAD_PATHNAME:
      return FileResult::kNotFound;
    default:
      return FileResult::kUnreadable;
  }
}

// False as well when the file has become shorter meanwhile.
bool Fill(HANDLE file, std::string& bytes) {
  for (std::size_t done = 0; done < bytes.size();) {
    DWORD read = 0;
    const std::size_t wanted = std::min(bytes.size() - done, kMostAtOnce);
    if (!ReadFile(file, bytes.data() + done, static_cast<DWORD>(wanted), &read, nullptr) || read == 0)
      return false;
    done += read;
  }
  return true;
}

}  // namespace

// Whoever replaces the file while it is read may do so.
FileResult ReadFileBytes(const std::wstring& path, std::size_t most, std::string* bytes) {
  constexpr DWORD kShared = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const HANDLE opened = CreateFileW(path.c_str(), GENERIC_READ, kShared, nullptr, OPEN_EXISTING,
                                    FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
  if (opened == INVALID_HANDLE_VALUE) return ResultOf(GetLastError());
  const File file(opened);
  LARGE_INTEGER size{};
  if (GetFileType(opened) != FILE_TYPE_DISK || !GetFileSizeEx(opened, &size)) return FileResult::kUnreadable;
  if (static_cast<ULONGLONG>(size.QuadPart) > most) return FileResult::kTooLarge;
  std::string read(static_cast<std::size_t>(size.QuadPart), '\0');
  if (!Fill(opened, read)) return FileResult::kUnreadable;
  *bytes = std::move(read);
  return FileResult::kOk;
}

}  // namespace formats
