#include "tests/ui/fake_installation.h"

#include <gtest/gtest.h>

#include <atomic>
#include <fstream>

#include "platform/identity.h"

namespace orv::test {
namespace {

std::wstring UniqueName(const wchar_t* prefix) {
  static std::atomic<unsigned> count{0};
  return prefix + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(++count);
}

std::filesystem::path BuiltFile(const std::wstring& name) { return PathBeside(nullptr, name); }

}  // namespace

FakeInstallation::FakeInstallation(const std::wstring& libraryName)
    : folder_(std::filesystem::temp_directory_path() / UniqueName(L"orv-\u00fc-")) {
  std::filesystem::create_directories(folder_);
  AddLibrary(libraryName);
  library_ = Module::Load(Path(libraryName).wstring());
  EXPECT_TRUE(library_);
}

FakeInstallation::~FakeInstallation() {
  library_ = Module();
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

void FakeInstallation::AddLibrary(const std::wstring& name) const { AddBuilt(L"ui_fake_library.dll", name); }

void FakeInstallation::AddBuilt(const std::wstring& builtName, const std::wstring& name) const {
  std::filesystem::copy_file(BuiltFile(builtName), Path(name),
                             std::filesystem::copy_options::overwrite_existing);
}

void FakeInstallation::AddText(const std::wstring& name, const std::string& text) const {
  std::ofstream(Path(name), std::ios::binary) << text;
}

RedirectedRoot::RedirectedRoot(HKEY root) : root_(root), path_(UniqueName(L"Software\\Tovan test ")) {
  EXPECT_EQ(key_.Create(HKEY_CURRENT_USER, path_), ERROR_SUCCESS);
  EXPECT_EQ(RegOverridePredefKey(root_, key_.Get()), ERROR_SUCCESS);
}

RedirectedRoot::~RedirectedRoot() {
  RegOverridePredefKey(root_, nullptr);
  RegDeleteTreeW(HKEY_CURRENT_USER, path_.c_str());
}

}  // namespace orv::test
