// Private profile calls, one each.
#include "platform/private_profile.h"

namespace orv {

SectionRead ReadProfileSection(const WString& path, const WString& section,
                               std::span<WCHAR> buffer) noexcept {
  SetLastError(ERROR_SUCCESS);
  const DWORD count = GetPrivateProfileSectionW(section.c_str(), buffer.data(),
                                                static_cast<DWORD>(buffer.size()), path.c_str());
  return {count, GetLastError()};
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
