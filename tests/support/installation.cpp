// The stub library stands for ours wherever only our file name and folder count.
#include "tests/support/installation.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "platform/identity.h"
#include "platform/process.h"

namespace orv::test {
namespace {

// A folder that is not there yet: an earlier process of the same number may have died in its own.
WString MakeFolder() {
  static unsigned count = 0;
  std::filesystem::path folder;
  do {
    folder = std::filesystem::temp_directory_path() /
             (L"orv" + std::to_wstring(GetCurrentProcessId()) + L"_" + std::to_wstring(++count));
  } while (!std::filesystem::create_directory(folder));
  return folder.wstring() + L"\\";
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
  std::ofstream file(std::filesystem::path(Path(name)), std::ios::binary);
  if (!(file << text << std::flush)) throw std::runtime_error("installation: a file cannot be written");
}

void Installation::WriteCatalogue(std::string_view text) const { WriteTextFile(L"XHTASVA.ini", text); }

void Installation::CopyIn(const WString& builtName, const WString& name) const {
  const WString from = PathBeside(nullptr, builtName);
  if (!CopyFileW(from.c_str(), Path(name).c_str(), FALSE)) {
    throw std::runtime_error("installation: a library was not built");
  }
}

}  // namespace orv::test
