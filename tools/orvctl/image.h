// What a library file says of itself, read as bytes: nothing of it is run, and a damaged or hostile file is refused or
// read in part, never believed. Portable, so that the native build tests it under sanitizers.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvctl {

// Machine types that an image may be made for; others are a number only.
constexpr uint16_t kMachineX64 = 0x8664;
constexpr uint16_t kMachineX86 = 0x014C;
constexpr uint16_t kMachineArm64 = 0xAA64;

struct ImageExport {
  std::string name;  // empty: by ordinal only
  uint32_t ordinal = 0;
  std::string forwardsTo;  // "library.function"; empty: it lies in this image
};

struct ImportedFunction {
  std::string name;  // empty: by ordinal
  uint32_t ordinal = 0;
};

struct ImageImport {
  std::string library;
  std::vector<ImportedFunction> functions;
};

struct Image {
  uint16_t machine = 0;
  bool isLibrary = false;
  std::vector<ImageExport> exports;
  std::vector<ImageImport> imports;
  bool hasTlsDirectory = false;
  size_t tlsCallbacks = 0;
  bool isShort = false;      // the file ends within its headers or before the sections they tell of
  bool isTruncated = false;  // some table points outside of the file or is longer than any real one

  bool Exports(std::string_view name) const;
  bool Exports(const ImportedFunction& function) const;
};

// Nothing when the bytes are no image at all.
std::optional<Image> ReadImage(std::string_view bytes);

// "x64", "x86", "ARM64" or the number.
std::string MachineName(uint16_t machine);
// The bare name that a decorated export stands for ("_Name@8", "?Name@@..."), empty for one that is not decorated.
std::string UndecoratedName(std::string_view name);
// "MyFunction", or "#12" of one imported by its number.
std::string FunctionName(const ImportedFunction& function);

}  // namespace orvctl
