#include "formats/file_stream.h"

#include <windows.h>

#include <algorithm>
#include <utility>

namespace formats {
namespace {

// Servers refuse to hand out very much at once.
constexpr std::size_t kMostAtOnce = std::size_t{16} << 20;
constexpr std::size_t kHeldBack = std::size_t{256} << 10;

struct CloseFile {
  using pointer = HANDLE;
  void operator()(HANDLE file) const noexcept { CloseHandle(file); }
};
using File = std::unique_ptr<HANDLE, CloseFile>;

File OpenFile(const std::wstring& path, DWORD access, DWORD sharing, DWORD disposition) {
  const HANDLE opened =
      CreateFileW(path.c_str(), access, sharing, nullptr, disposition, FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
  return File(opened == INVALID_HANDLE_VALUE ? nullptr : opened);
}

class FileSource final : public ByteSource {
 public:
  explicit FileSource(File file) : file_(std::move(file)) {}

  std::optional<std::size_t> Read(char* bytes, std::size_t size) override {
    DWORD read = 0;
    if (ReadFile(file_.get(), bytes, static_cast<DWORD>(std::min(size, kMostAtOnce)), &read, nullptr))
      return read;
    // A pipe whose other end is closed has come to its end.
    if (GetLastError() == ERROR_BROKEN_PIPE) return 0;
    return std::nullopt;
  }

 private:
  const File file_;
};

class NewFile final : public FileSink {
 public:
  NewFile(File file, std::wstring temporary, std::wstring path)
      : file_(std::move(file)), temporary_(std::move(temporary)), path_(std::move(path)) {}

  ~NewFile() override {
    if (isCommitted_) return;
    file_.reset();
    DeleteFileW(temporary_.c_str());
  }

  bool Write(std::string_view bytes) override {
    held_ += bytes;
    return held_.size() < kHeldBack || Flush();
  }

  bool Commit() override {
    if (!Flush() || !Check(FlushFileBuffers(file_.get()))) return false;
    file_.reset();
    isCommitted_ = Check(
        MoveFileExW(temporary_.c_str(), path_.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH));
    return isCommitted_;
  }

  unsigned long error() const override { return error_; }

 private:
  bool Check(BOOL worked) {
    if (!worked && error_ == ERROR_SUCCESS) error_ = GetLastError();
    return worked != FALSE;
  }

  // Once a write has failed nothing more is written.
  bool Flush() {
    for (std::string_view left = held_; error_ == ERROR_SUCCESS && !left.empty();) {
      DWORD written = 0;
      const auto size = static_cast<DWORD>(std::min(left.size(), kMostAtOnce));
      if (Check(WriteFile(file_.get(), left.data(), size, &written, nullptr)) && written == 0)
        error_ = ERROR_DISK_FULL;
      left.remove_prefix(written);
    }
    held_.clear();
    return error_ == ERROR_SUCCESS;
  }

  File file_;
  const std::wstring temporary_, path_;
  std::string held_;
  DWORD error_ = ERROR_SUCCESS;
  bool isCommitted_ = false;
};

// A folder's name and a file that may not be replaced are told before anything is written.
DWORD RefusalOf(const std::wstring& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return ERROR_SUCCESS;
  constexpr DWORD kRefused = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY;
  return (attributes & kRefused) != 0 ? ERROR_ACCESS_DENIED : ERROR_SUCCESS;
}

}  // namespace

std::unique_ptr<ByteSource> OpenFileSource(const std::wstring& path, unsigned long* error) {
  constexpr DWORD kShared = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  File file = OpenFile(path, GENERIC_READ, kShared, OPEN_EXISTING);
  *error = file ? ERROR_SUCCESS : GetLastError();
  return file ? std::make_unique<FileSource>(std::move(file)) : nullptr;
}

std::unique_ptr<FileSink> CreateFileSink(const std::wstring& path, unsigned long* error) {
  *error = RefusalOf(path);
  if (*error != ERROR_SUCCESS) return nullptr;
  std::wstring temporary = path + L"." + std::to_wstring(GetCurrentProcessId()) + L".tmp";
  File file = OpenFile(temporary, GENERIC_WRITE, 0, CREATE_ALWAYS);
  *error = file ? ERROR_SUCCESS : GetLastError();
  if (!file) return nullptr;
  return std::make_unique<NewFile>(std::move(file), std::move(temporary), path);
}

}  // namespace formats
