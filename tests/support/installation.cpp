// The stub library stands for ours wherever only our file name and folder count.
#include "tests/support/installation.h"

#include <array>
#include <filesystem>
#include <stdexcept>

#include "platform/identity.h"
#include "platform/process.h"

namespace orv::test {
namespace {

// A folder that is not there yet: an earlier process of the same number may have died in its own.
WString MakeFolder() {
  static unsigned count = 0;
  std::array<WCHAR, MAX_PATH> temporary{};
  GetTempPathW(static_cast<DWORD>(temporary.size()), temporary.data());
  const WString prefix = WString(temporary.data()) + L"orv" + std::to_wstring(GetCurrentProcessId()) + L"_";
  for (;;) {
    const WString folder = prefix + std::to_wstring(++count) + L"\\";
    if (CreateDirectoryW(folder.c_str(), nullptr)) return folder;
    if (GetLastError() != ERROR_ALREADY_EXISTS) throw std::runtime_error("installation: no folder");
  }
}

}  // namespace

Installation::Installation(const WString& libraryName, const WString& builtName)
    : folder_(MakeFolder()), former_(process::Instance()) {
  CopyIn(builtName, libraryName);
  library_ = Module::Load(Path(libraryName));
  if (!library_) throw std::runtime_error("installation: the library cannot be loaded");
  process::SetInstance(library_.Get());
}

Installation::~Installation() {
  process::SetInstance(former_);
  library_ = Module();
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

void Installation::WriteTextFile(const WString& name, std::string_view text) const {
  const HANDLE file = CreateFileW(Path(name).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
  if (file == INVALID_HANDLE_VALUE) throw std::runtime_error("installation: a file cannot be written");
  DWORD written = 0;
  ::WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
  CloseHandle(file);
}

void Installation::WriteCatalogue(std::string_view text) const { WriteTextFile(L"XHTASVA.ini", text); }

void Installation::CopyIn(const WString& builtName, const WString& name) const {
  const WString from = PathBeside(nullptr, builtName);
  if (!CopyFileW(from.c_str(), Path(name).c_str(), FALSE)) {
    throw std::runtime_error("installation: a library was not built");
  }
}

}  // namespace orv::test
