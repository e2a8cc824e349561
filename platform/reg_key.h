// Owner of an open registry key and the calls that the store makes on it. Results are Win32 codes; whoever calls
// turns them into ours.
#pragma once

#include <cstddef>
#include <span>
#include <utility>
#include <vector>

#include "platform/win.h"

namespace orv {

// Names read by enumeration fit a buffer of so many characters, terminator included; a longer one fails there.
inline constexpr DWORD kKeyNameBuffer = 65;

// A value as it is stored, whatever its name's length.
struct RegValueData {
  WString name;
  DWORD type = REG_NONE;
  std::vector<std::byte> data;
};

class RegKey {
 public:
  RegKey() noexcept = default;
  explicit RegKey(HKEY key) noexcept : key_(key) {}
  RegKey(RegKey&& other) noexcept : key_(std::exchange(other.key_, nullptr)) {}
  RegKey& operator=(RegKey&& other) noexcept {
    std::swap(key_, other.key_);
    return *this;
  }
  ~RegKey();

  HKEY Get() const noexcept { return key_; }
  [[nodiscard]] HKEY Detach() noexcept { return std::exchange(key_, nullptr); }
  explicit operator bool() const noexcept { return key_ != nullptr; }

  // Each replaces what this object held.
  LSTATUS Open(HKEY parent, const WString& path, REGSAM access) noexcept;
  LSTATUS Create(HKEY parent, const WString& path, bool* existed = nullptr) noexcept;

  // Opens an existing key to read and write.
  LSTATUS OpenToWrite(HKEY parent, const WString& path) noexcept {
    return Open(parent, path, KEY_ALL_ACCESS);
  }

  LSTATUS SetBinary(const WCHAR* name, std::span<const std::byte> data) noexcept;
  LSTATUS Set(const RegValueData& value) noexcept;
  // With its terminator, as REG_SZ.
  LSTATUS SetString(const WCHAR* name, WStringView text);
  LSTATUS DeleteValue(const WCHAR* name) noexcept;
  LSTATUS DeleteSubkey(const WCHAR* name) noexcept;
  // A key without subkeys.
  static LSTATUS DeleteKey(HKEY parent, const WString& path) noexcept;

  // Name of the subkey, data of the value at an index; ERROR_MORE_DATA for a name that does not fit the name buffer.
  LSTATUS SubkeyName(DWORD index, WString& name) const;
  LSTATUS ValueAt(DWORD index, std::vector<std::byte>& data) const;
  // Every subkey's name and every value, in the registry's order. The bounds of names are the registry's own.
  LSTATUS Subkeys(std::vector<WString>& names) const;
  LSTATUS Values(std::vector<RegValueData>& values) const;
  // Reads at most `size` bytes and reports how many.
  LSTATUS Read(const WCHAR* name, void* data, DWORD& size) const noexcept;

 private:
  HKEY key_ = nullptr;
};

}  // namespace orv
