// Redirection by the platform's override of a predefined key.
#include "tests/support/redirected_registry.h"

#include <sddl.h>

#include <stdexcept>

#include "platform/reg_key.h"

namespace orv::test {
namespace {

constexpr const WCHAR* kTestsKey = L"Software\\OrvTests";

// Empty when there is no such key.
RegKey OpenKey(const WString& path, REGSAM access) {
  RegKey key;
  key.Open(HKEY_CURRENT_USER, path, access);
  return key;
}

RegKey MakeKey(const WString& path) {
  RegKey key;
  if (key.Create(HKEY_CURRENT_USER, path) == ERROR_SUCCESS) return key;
  throw std::runtime_error("test registry: a key cannot be created");
}

void Require(LSTATUS status) {
  if (status != ERROR_SUCCESS) throw std::runtime_error("test registry: a name cannot be read");
}

void Dump(const WString& path, const std::string& prefix, std::vector<std::string>& lines) {
  for (const WString& name : ValueNames(path)) {
    const RegValue value = ReadRegValue(path, name);
    std::string& line = lines.emplace_back(prefix + std::string(name.begin(), name.end()) + " = ");
    line += std::to_string(value.type) + ":";
    for (const std::byte byte : value.data) line += " " + std::to_string(std::to_integer<int>(byte));
  }
  for (const WString& name : SubkeyNames(path)) {
    lines.push_back(prefix + std::string(name.begin(), name.end()) + "\\");
    Dump(path + L"\\" + name, std::string(lines.back()), lines);
  }
}

// Access for everybody, in the system's notation; the owner may change it back at any time.
void Permit(const WString& path, const WCHAR* access) {
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  if (!ConvertStringSecurityDescriptorToSecurityDescriptorW(access, SDDL_REVISION_1, &descriptor, nullptr)) {
    throw std::runtime_error("test registry: no access of that kind");
  }
  const RegKey key = OpenKey(path, WRITE_DAC);
  const LSTATUS status = RegSetKeySecurity(key.Get(), DACL_SECURITY_INFORMATION, descriptor);
  LocalFree(descriptor);
  if (status != ERROR_SUCCESS) throw std::runtime_error("test registry: access cannot be changed");
}

}  // namespace

RedirectedRegistry::RedirectedRegistry(HKEY root, const WString& name)
    : root_(root), path_(WString(kTestsKey) + L"\\" + name + std::to_wstring(GetCurrentProcessId())) {
  RegDeleteTreeW(HKEY_CURRENT_USER, path_.c_str());
  if (RegOverridePredefKey(root_, MakeKey(path_).Get()) != ERROR_SUCCESS)
    throw std::runtime_error("test registry: a root cannot be redirected");
}

RedirectedRegistry::~RedirectedRegistry() {
  RegOverridePredefKey(root_, nullptr);
  DeleteKey(path_);
  RegDeleteKeyW(HKEY_CURRENT_USER, kTestsKey);
}

bool KeyExists(const WString& path) { return static_cast<bool>(OpenKey(path, KEY_READ)); }

void CreateKey(const WString& path) { MakeKey(path); }

void DeleteKey(const WString& path) {
  RegDeleteTreeW(HKEY_CURRENT_USER, path.c_str());
  RegDeleteKeyW(HKEY_CURRENT_USER, path.c_str());
}

std::vector<WString> SubkeyNames(const WString& path) {
  std::vector<WString> names;
  if (const RegKey key = OpenKey(path, KEY_READ)) Require(key.Subkeys(names));
  return names;
}

std::vector<WString> ValueNames(const WString& path) {
  std::vector<RegValueData> values;
  if (const RegKey key = OpenKey(path, KEY_READ)) Require(key.Values(values));
  std::vector<WString> names;
  for (const RegValueData& value : values) names.push_back(value.name);
  return names;
}

RegValue ReadRegValue(const WString& path, const WString& name) {
  RegValue value;
  const RegKey key = OpenKey(path, KEY_READ);
  DWORD size = 0;
  if (!key || RegQueryValueExW(key.Get(), name.c_str(), nullptr, nullptr, nullptr, &size) != ERROR_SUCCESS) {
    return value;
  }
  value.data.resize(size);
  RegQueryValueExW(key.Get(), name.c_str(), nullptr, &value.type, reinterpret_cast<BYTE*>(value.data.data()),
                   &size);
  return value;
}

void WriteRegValue(const WString& path, const WString& name, DWORD type, std::span<const std::byte> data) {
  RegSetKeyValueW(HKEY_CURRENT_USER, path.c_str(), name.c_str(), type, data.data(),
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
