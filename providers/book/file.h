// The file of a book before the engine sees it: where it lies, whether it is a book at all.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

namespace book {

// Absolute, with variables expanded. Fails with MAPI_E_STRING_TOO_LONG where no room is left for the names beside it.
std::wstring ResolvePath(const std::wstring& path);

// Tells files apart whatever name they go by.
struct FileIdentity {
  DWORD volume = 0, high = 0, low = 0;
  friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

struct FileFacts {
  FileIdentity identity;
  bool isWritable = false;
  bool isLocal = false;  // on a drive of this computer, where processes can share memory
  uint32_t format = 0;
};

// Fails with the code of what stands against opening the file as a book.
FileFacts ExamineFile(const std::wstring& path);

bool FileExists(const std::wstring& path);
void MakeFoldersFor(const std::wstring& path);

int64_t Now();  // seconds since 1970
inline constexpr int64_t kDay = 24 * 60 * 60;

}  // namespace book
