// Registry calls behind one owner; the fault seam sits before each call that can fail.
#include "platform/reg_key.h"

#include <algorithm>
#include <array>

#include "platform/faults.h"

namespace orv {
namespace {

// The longest name of a key and of a value, terminators included.
constexpr std::size_t kAnyKeyName = 256;
constexpr std::size_t kAnyValueName = 16384;
// Room for the data of a value of ours, in bytes, before its size is known.
constexpr std::size_t kUsualData = 512;

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

LSTATUS RegKey::Set(const RegValueData& value) noexcept {
  if (Fails()) return ERROR_ACCESS_DENIED;
  return RegSetValueExW(key_, value.name.c_str(), 0, value.type,
                        reinterpret_cast<const BYTE*>(value.data.data()),
                        static_cast<DWORD>(value.data.size()));
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

LSTATUS RegKey::DeleteKey(HKEY parent, const WString& path) noexcept {
  if (Fails()) return ERROR_ACCESS_DENIED;
  return RegDeleteKeyW(parent, path.c_str());
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

// One call serves the most; only data that does not fit is asked for anew.
LSTATUS RegKey::ValueAt(DWORD index, std::vector<std::byte>& data) const {
  data.resize(std::max(data.capacity(), kUsualData));
  for (;;) {
    if (Fails()) return ERROR_ACCESS_DENIED;
    std::array<WCHAR, kKeyNameBuffer> name{};
    DWORD length = kKeyNameBuffer;
    auto size = static_cast<DWORD>(data.size());
    const LSTATUS status = RegEnumValueW(key_, index, name.data(), &length, nullptr, nullptr,
                                         reinterpret_cast<BYTE*>(data.data()), &size);
    // The same answer for a name that is too long, where more room for the data is of no use.
    const bool isLarger = status == ERROR_MORE_DATA && size > data.size();
    data.resize(status == ERROR_SUCCESS || isLarger ? size : 0);
    if (!isLarger) return status;
  }
}

LSTATUS RegKey::Subkeys(std::vector<WString>& names) const {
  names.clear();
  std::array<WCHAR, kAnyKeyName> buffer{};
  for (DWORD index = 0;; ++index) {
    if (Fails()) return ERROR_ACCESS_DENIED;
    auto length = static_cast<DWORD>(buffer.size());
    const LSTATUS status =
        RegEnumKeyExW(key_, index, buffer.data(), &length, nullptr, nullptr, nullptr, nullptr);
    if (status == ERROR_NO_MORE_ITEMS) return ERROR_SUCCESS;
    if (status != ERROR_SUCCESS) return status;
    names.emplace_back(buffer.data(), length);
  }
}

LSTATUS RegKey::Values(std::vector<RegValueData>& values) const {
  values.clear();
  std::vector<WCHAR> name(kAnyValueName);
  DWORD longest = 0;
  if (Fails()) return ERROR_ACCESS_DENIED;
  LSTATUS status = RegQueryInfoKeyW(key_, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                    nullptr, &longest, nullptr, nullptr);
  for (DWORD index = 0; status == ERROR_SUCCESS; ++index) {
    RegValueData value;
    value.data.resize(longest);
    auto length = static_cast<DWORD>(name.size());
    DWORD size = longest;
    status = RegEnumValueW(key_, index, name.data(), &length, nullptr, &value.type,
                           reinterpret_cast<BYTE*>(value.data.data()), &size);
    if (status != ERROR_SUCCESS) break;
    value.data.resize(size);
    value.name.assign(name.data(), length);
    values.push_back(std::move(value));
  }
  return status == ERROR_NO_MORE_ITEMS ? ERROR_SUCCESS : status;
}

LSTATUS RegKey::Read(const WCHAR* name, void* data, DWORD& size) const noexcept {
  if (Fails()) return ERROR_ACCESS_DENIED;
  return RegQueryValueExW(key_, name, nullptr, nullptr, static_cast<BYTE*>(data), &size);
}

}  // namespace orv
