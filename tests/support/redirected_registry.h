// The current user's registry of a test: a fresh key that takes the place of HKEY_CURRENT_USER in this
// process and is deleted at the end. With it the few ways in which tests look at keys and change them behind
// the library's back.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "platform/win.h"

namespace orv::test {

class RedirectedRegistry {
 public:
  // Another root than the user's is redirected before that and named in the key.
  explicit RedirectedRegistry(HKEY root = HKEY_CURRENT_USER, const WString& name = L"user");
  ~RedirectedRegistry();
  RedirectedRegistry(const RedirectedRegistry&) = delete;
  RedirectedRegistry& operator=(const RedirectedRegistry&) = delete;

 private:
  HKEY root_;
  WString path_;
};

// Paths are below HKEY_CURRENT_USER.
bool KeyExists(const WString& path);
void CreateKey(const WString& path);
void DeleteKey(const WString& path);
std::vector<WString> SubkeyNames(const WString& path);
std::vector<WString> ValueNames(const WString& path);

struct RegValue {
  DWORD type = REG_NONE;
  std::vector<std::byte> data;
  friend bool operator==(const RegValue&, const RegValue&) = default;
};
// Type REG_NONE without data when there is no such value.
RegValue ReadRegValue(const WString& path, const WString& name);
void WriteRegValue(const WString& path, const WString& name, DWORD type, std::span<const std::byte> data);
void WriteRegString(const WString& path, const WString& name, const WString& text);

// Every key and value below a path, one text line each: what two states are compared by.
std::vector<std::string> DumpKey(const WString& path);

// Opening the key for writing is denied as long as this lives.
class ReadOnlyKey {
 public:
  explicit ReadOnlyKey(const WString& path);
  ~ReadOnlyKey();
  ReadOnlyKey(const ReadOnlyKey&) = delete;
  ReadOnlyKey& operator=(const ReadOnlyKey&) = delete;

 private:
  WString path_;
};

}  // namespace orv::test
