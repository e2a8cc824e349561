// The bytes of a file, read with the system's own calls: a standard stream would hold a slot of the thread's storage in
// every library that uses one. Windows only.
#pragma once

#include <cstddef>
#include <string>

namespace formats {

enum class FileResult { kOk, kNotFound, kUnreadable, kTooLarge };

// The whole file, of `most` bytes at most. `bytes` changes only when that succeeds. Memory exhaustion is thrown.
FileResult ReadFileBytes(const std::wstring& path, std::size_t most, std::string* bytes);

}  // namespace formats
