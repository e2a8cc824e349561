// Registry calls behind one owner; the fault seam sits before each call that can fail.
#include "platform/reg_key.h"

#include <array>

#include "platform/faults.h"

namespace orv {
namespace {

bool Fails() noexcept { return faults::ShouldFail(faults::Site::kRegistry); }

}  // namespace

RegKey::~RegKey() {
  if (key_ != nullptr) RegCloseKey(key_);
}

LSTATUS RegKey::Open(HKEY parent, const WString& path, REGSAM access) noexcept {
  *this = RegKey();
  if (Fails()) return ERROR_ACCESS_DENIED;
  return RegOpenKeyExW(parent, path.c_str(), 0, access, &key_);
}

LSTATUS RegKey::Create(HKEY parent, const WString& path, bool* existed) noexcept {
  *this = RegKey();
  if (Fails()) return ERROR_ACCESS_DENIED;
  DWORD disposition = 0;
  const LSTATUS status = RegCreateKeyExW(parent, path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                         KEY_ALL_ACCESS, nullptr, &key_, &disposition);
  if (existed != nullptr) *existed = disposition == REG_OPENED_EXISTING_KEY;
  return status;
}

LSTATUS RegKey::SetBinary(const WCHAR* name, std::span<const std::byte> data) noexcept {
  if (Fails()) return ERROR_ACCESS_DENIED;
  return RegSetValueExW(key_, name, 0, REG_BINARY, reinterpret_cast<const BYTE*>(data.data()),
                        static_cast<DWORD>(data.size()));
}

LSTATUS RegKey::SetString(const WCHAR* name, WStringView text) {
  if (Fails()) return ERROR_ACCESS_DENIED;
  const WString terminated(text);
  return RegSetValueExW(key_, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(terminated.c_str()),
                        static_cast<DWORD>((terminated.size() + 1) * sizeof(WCHAR)));
}

LSTATUS RegKey::DeleteValue(const WCHAR* name) noexcept {
  if (Fails()) return ERROR_ACCESS_DENIED;
  return RegDeleteValueW(key_, name);
}

LSTATUS RegKey::DeleteSubkey(const WCHAR* name) noexcept {
  if (Fails()) return ERROR_ACCESS_DENIED;
  return RegDeleteKeyW(key_, name);
}

LSTATUS RegKey::SubkeyName(DWORD index, WString& name) const {
  if (Fails()) return ERROR_ACCESS_DENIED;
  std::array<WCHAR, kKeyNameBuffer> buffer{};
  DWORD length = kKeyNameBuffer;
  const LSTATUS status =
      RegEnumKeyExW(key_, index, buffer.data(), &length, nullptr, nullptr, nullptr, nullptr);
  if (status == ERROR_SUCCESS) name.assign(buffer.data(), length);
  return status;
}

LSTATUS RegKey::ValueName(DWORD index, WString& name) const {
  if (Fails()) return ERROR_ACCESS_DENIED;
  std::array<WCHAR, kKeyNameBuffer> buffer{};
  DWORD length = kKeyNameBuffer;
  const LSTATUS status =
      RegEnumValueW(key_, index, buffer.data(), &length, nullptr, nullptr, nullptr, nullptr);
  if (status == ERROR_SUCCESS) name.assign(buffer.data(), length);
  return status;
}

LSTATUS RegKey::DataSize(const WCHAR* name, DWORD& size) const noexcept {
  if (Fails()) return ERROR_ACCESS_DENIED;
  return RegQueryValueExW(key_, name, nullptr, nullptr, nullptr, &size);
}

LSTATUS RegKey::Read(const WCHAR* name, void* data, DWORD& size) const noexcept {
  if (Fails()) return ERROR_ACCESS_DENIED;
  return RegQueryValueExW(key_, name, nullptr, nullptr, static_cast<BYTE*>(data), &size);
}

}  // namespace orv
