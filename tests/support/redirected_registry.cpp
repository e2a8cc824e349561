// Redirection by the platform's override of a predefined key.
#include "tests/support/redirected_registry.h"

#include <sddl.h>

#include <array>
#include <memory>
#include <stdexcept>
#include <type_traits>

namespace orv::test {
namespace {

constexpr const WCHAR* kTestsKey = L"Software\\OrvTests";
constexpr DWORD kNameRoom = 512;

struct CloseKey {
  void operator()(HKEY key) const { RegCloseKey(key); }
};
using Key = std::unique_ptr<std::remove_pointer_t<HKEY>, CloseKey>;

// Null when there is no such key.
Key OpenKey(const WString& path, REGSAM access) {
  HKEY key = nullptr;
  RegOpenKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, access, &key);
  return Key(key);
}

Key MakeKey(const WString& path) {
  HKEY key = nullptr;
  if (RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key,
                      nullptr) != ERROR_SUCCESS) {
    throw std::runtime_error("test registry: a key cannot be created");
  }
  return Key(key);
}

template <class Enumerate>
std::vector<WString> Names(const WString& path, Enumerate enumerate) {
  std::vector<WString> names;
  const Key key = OpenKey(path, KEY_READ);
  std::array<WCHAR, kNameRoom> buffer{};
  for (DWORD index = 0; key; ++index) {
    DWORD length = kNameRoom;
    if (enumerate(key.get(), index, buffer.data(), &length) != ERROR_SUCCESS) break;
    names.emplace_back(buffer.data(), length);
  }
  return names;
}

std::string Narrow(const WString& text) {
  std::string narrow;
  for (const WCHAR c : text) narrow.push_back(c < 0x7F ? static_cast<char>(c) : '?');
  return narrow;
}

void Dump(const WString& path, const std::string& prefix, std::vector<std::string>& lines) {
  constexpr const char* kDigits = "0123456789abcdef";
  for (const WString& name : ValueNames(path)) {
    const RegValue value = ReadRegValue(path, name);
    std::string& line = lines.emplace_back(prefix + Narrow(name) + " = " + std::to_string(value.type) + ":");
    for (const std::byte byte : value.data) {
      line += {kDigits[std::to_integer<int>(byte >> 4)], kDigits[std::to_integer<int>(byte & std::byte{15})]};
    }
  }
  for (const WString& name : SubkeyNames(path)) {
    lines.push_back("[" + prefix + Narrow(name) + "]");
    Dump(path + L"\\" + name, prefix + Narrow(name) + "\\", lines);
  }
}

// Access for everybody, in the system's notation; the owner may change it back at any time.
void Permit(const WString& path, const WCHAR* access) {
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  if (!ConvertStringSecurityDescriptorToSecurityDescriptorW(access, SDDL_REVISION_1, &descriptor, nullptr)) {
    throw std::runtime_error("test registry: no access of that kind");
  }
  const Key key = OpenKey(path, WRITE_DAC);
  const LSTATUS status = RegSetKeySecurity(key.get(), DACL_SECURITY_INFORMATION, descriptor);
  LocalFree(descriptor);
  if (status != ERROR_SUCCESS) throw std::runtime_error("test registry: access cannot be changed");
}

}  // namespace

RedirectedRegistry::RedirectedRegistry() {
  path_ = WString(kTestsKey) + L"\\" + std::to_wstring(GetCurrentProcessId());
  RegDeleteTreeW(HKEY_CURRENT_USER, path_.c_str());
  const Key root = MakeKey(path_);
  if (RegOverridePredefKey(HKEY_CURRENT_USER, root.get()) != ERROR_SUCCESS) {
    throw std::runtime_error("test registry: the current user's key cannot be redirected");
  }
}

RedirectedRegistry::~RedirectedRegistry() {
  RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
  RegDeleteTreeW(HKEY_CURRENT_USER, path_.c_str());
  RegDeleteKeyW(HKEY_CURRENT_USER, path_.c_str());
  RegDeleteKeyW(HKEY_CURRENT_USER, kTestsKey);
}

bool KeyExists(const WString& path) { return OpenKey(path, KEY_READ) != nullptr; }

void CreateKey(const WString& path) { MakeKey(path); }

void DeleteKey(const WString& path) {
  RegDeleteTreeW(HKEY_CURRENT_USER, path.c_str());
  RegDeleteKeyW(HKEY_CURRENT_USER, path.c_str());
}

std::vector<WString> SubkeyNames(const WString& path) {
  return Names(path, [](HKEY key, DWORD index, WCHAR* name, DWORD* length) {
    return RegEnumKeyExW(key, index, name, length, nullptr, nullptr, nullptr, nullptr);
  });
}

std::vector<WString> ValueNames(const WString& path) {
  return Names(path, [](HKEY key, DWORD index, WCHAR* name, DWORD* length) {
    return RegEnumValueW(key, index, name, length, nullptr, nullptr, nullptr, nullptr);
  });
}

RegValue ReadRegValue(const WString& path, const WString& name) {
  RegValue value;
  const Key key = OpenKey(path, KEY_READ);
  DWORD size = 0;
  if (!key || RegQueryValueExW(key.get(), name.c_str(), nullptr, nullptr, nullptr, &size) != ERROR_SUCCESS) {
    return value;
  }
  value.data.resize(size);
  RegQueryValueExW(key.get(), name.c_str(), nullptr, &value.type, reinterpret_cast<BYTE*>(value.data.data()),
                   &size);
  return value;
}

void WriteRegValue(const WString& path, const WString& name, DWORD type, std::span<const std::byte> data) {
  const Key key = MakeKey(path);
  RegSetValueExW(key.get(), name.c_str(), 0, type, reinterpret_cast<const BYTE*>(data.data()),
                 static_cast<DWORD>(data.size()));
}

void WriteRegString(const WString& path, const WString& name, const WString& text) {
  WriteRegValue(path, name, REG_SZ, std::as_bytes(std::span(text.c_str(), text.size() + 1)));
}

std::vector<std::string> DumpKey(const WString& path) {
  std::vector<std::string> lines;
  Dump(path, "", lines);
  return lines;
}

ReadOnlyKey::ReadOnlyKey(const WString& path) : path_(path) { Permit(path_, L"D:(A;;KR;;;WD)"); }
ReadOnlyKey::~ReadOnlyKey() { Permit(path_, L"D:(A;;KA;;;WD)"); }

}  // namespace orv::test
