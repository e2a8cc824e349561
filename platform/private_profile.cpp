// Private profile calls, one each, and the reading of such a file as text.
#include "platform/private_profile.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

namespace orv {
namespace {

constexpr std::string_view kUtf16Mark = "\xFF\xFE";
constexpr std::string_view kForeignMarks[] = {"\xFE\xFF", "\xEF\xBB\xBF"};
// What a reader of so much text would take for a mistake.
constexpr LONGLONG kMostBytes = 1 << 26;

class ReadableFile {
 public:
  explicit ReadableFile(const WString& path) noexcept
      : handle_(CreateFileW(path.c_str(), GENERIC_READ,
                            FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                            FILE_ATTRIBUTE_NORMAL, nullptr)) {}
  ~ReadableFile() {
    if (handle_ != INVALID_HANDLE_VALUE) CloseHandle(handle_);
  }
  ReadableFile(const ReadableFile&) = delete;
  ReadableFile& operator=(const ReadableFile&) = delete;

  // Empty after a failure.
  std::string ReadAll() const {
    LARGE_INTEGER size = {};
    if (handle_ == INVALID_HANDLE_VALUE || !GetFileSizeEx(handle_, &size) || size.QuadPart > kMostBytes)
      return {};
    std::string bytes(static_cast<std::size_t>(size.QuadPart), '\0');
    DWORD read = 0;
    if (!ReadFile(handle_, bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr)) return {};
    bytes.resize(read);
    return bytes;
  }

 private:
  HANDLE handle_;
};

WString FromUtf16(std::string_view bytes) {
  WString text(bytes.size() / sizeof(WCHAR), WCHAR{0});
  std::memcpy(text.data(), bytes.data(), text.size() * sizeof(WCHAR));
  return text;
}

WString FromAnsi(std::string_view bytes) {
  const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
  // ASCII is the same in every such code page and widens many times faster here than through the platform.
  if (std::all_of(bytes.begin(), bytes.end(), isAscii)) return WString(bytes.begin(), bytes.end());
  const int size = static_cast<int>(bytes.size());
  WString text(static_cast<std::size_t>(MultiByteToWideChar(CP_ACP, 0, bytes.data(), size, nullptr, 0)),
               WCHAR{0});
  MultiByteToWideChar(CP_ACP, 0, bytes.data(), size, text.data(), static_cast<int>(text.size()));
  return text;
}

}  // namespace

SectionRead ReadProfileSection(const WString& path, const WString& section,
                               std::span<WCHAR> buffer) noexcept {
  SetLastError(ERROR_SUCCESS);
  const DWORD count = GetPrivateProfileSectionW(section.c_str(), buffer.data(),
                                                static_cast<DWORD>(buffer.size()), path.c_str());
  return {count, GetLastError()};
}

WString ReadProfileText(const WString& path) {
  const std::string bytes = ReadableFile(path).ReadAll();
  const auto beginsWith = [&](std::string_view mark) { return bytes.compare(0, mark.size(), mark) == 0; };
  if (beginsWith(kUtf16Mark)) return FromUtf16(std::string_view(bytes).substr(kUtf16Mark.size()));
  return std::any_of(std::begin(kForeignMarks), std::end(kForeignMarks), beginsWith) ? WString()
                                                                                     : FromAnsi(bytes);
}

WString ReadProfileValue(const WString& path, const WString& section, const WString& key, std::size_t room) {
  WString value(room, WCHAR{0});
  const DWORD length = GetPrivateProfileStringW(section.c_str(), key.c_str(), L"", value.data(),
                                                static_cast<DWORD>(room), path.c_str());
  value.resize(length);
  return value;
}

bool WriteProfileValue(const WString& path, const WString& section, const WString& key,
                       const WString& value) noexcept {
  return WritePrivateProfileStringW(section.c_str(), key.c_str(), value.c_str(), path.c_str()) != 0;
}

bool WriteProfileSection(const WString& path, const WString& section, const WCHAR* lines) noexcept {
  return WritePrivateProfileSectionW(section.c_str(), lines, path.c_str()) != 0;
}

void DeleteProfileKey(const WString& path, const WString& section, const WString& key) noexcept {
  WritePrivateProfileStringW(section.c_str(), key.c_str(), nullptr, path.c_str());
}

void DeleteProfileSection(const WString& path, const WString& section) noexcept {
  WritePrivateProfileStringW(section.c_str(), nullptr, nullptr, path.c_str());
}

}  // namespace orv
