// Whether a library could be loaded as the address book library loads a provider, found out without loading it, and
// what the system's errors about it mean.
#pragma once

#include <string>
#include <vector>

#include "tools/orvctl/image.h"
#include "tools/orvctl/values.h"

namespace orvctl {

// A library that something imports, as it was looked for: beside the importing library and in the system's folder.
struct MissingImport {
  std::string neededBy;  // file name
  std::string library;
  std::string function = {};  // empty: the library itself is missing or cannot be used
  std::string why = {};       // "not found", "made for x86"

  // "B.dll needs C.dll: not found", "B.dll needs Foo of C.dll: not exported".
  std::string Describe() const;
};

// Reads the file; nothing when it cannot be read or is no image, with the reason in `why`.
std::optional<Image> ReadImageFile(const WideString& path, std::string* why);

// Everything that the library at the path and what it brings along from its own folder would miss; empty: it resolves.
// Only files are read, nothing is loaded but the system's own API sets.
std::vector<MissingImport> FindMissingImports(const WideString& path);

// What a failure of LoadLibrary means for that file, in words and with its number: "ERROR_MOD_NOT_FOUND (126): ...".
// Looks for the missing dependency by itself.
std::string DescribeLoadError(unsigned long error, const WideString& path);
// The same of the number alone.
std::string DescribeLoadError(unsigned long error);

// Loads it as the address book library does: its dependencies come from its own folder and the system's only. Null on
// failure, as GetLastError() tells then.
HMODULE LoadAsProvider(const WideString& path);

}  // namespace orvctl
