#include "tools/orvctl/text_file.h"

#include <windows.h>

#include <array>

#include "formats/file_bytes.h"
#include "formats/text_codec.h"
#include "tools/orvctl/errors.h"
#include "tools/orvctl/values.h"

namespace orvctl {
namespace {

constexpr size_t kMostBytes = size_t{16} << 20;

std::string ReadStandardInput() {
  const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
  std::array<char, 4096> part;
  std::string bytes;
  DWORD read = 0;
  while (ReadFile(input, part.data(), static_cast<DWORD>(part.size()), &read, nullptr) && read != 0) {
    bytes.append(part.data(), read);
    if (bytes.size() > kMostBytes) throw CommandError(kFailed, "standard input is too long");
  }
  return bytes;
}

}  // namespace

std::string ReadTextFile(const std::string& file) {
  if (file == "-") return formats::NormaliseFile(ReadStandardInput());
  std::string bytes;
  switch (formats::ReadFileBytes(ToWide(file), kMostBytes, &bytes)) {
    case formats::FileResult::kOk:
      return formats::NormaliseFile(std::move(bytes));
    case formats::FileResult::kNotFound:
      throw CommandError(kNotFound, "there is no file '" + file + "'");
    case formats::FileResult::kTooLarge:
      throw CommandError(kFailed, "cannot read '" + file + "': it is too large");
    case formats::FileResult::kUnreadable:
      break;
  }
  throw CommandError(kFailed, "cannot read '" + file + "': it is a folder, or may not be read");
}

}  // namespace orvctl
