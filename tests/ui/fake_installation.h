// A folder that looks like an installation, with the library in it loaded under a chosen name; and a registry
// root that leads into a key of the test's own. Both undo themselves.
#pragma once

#include <filesystem>
#include <string>

#include "platform/module.h"
#include "platform/reg_key.h"

namespace orv::test {

class FakeInstallation {
 public:
  // `libraryName` decides the model; the folder's own name holds a character beyond ASCII.
  explicit FakeInstallation(const std::wstring& libraryName = L"xhtaba.dll");
  ~FakeInstallation();
  FakeInstallation(const FakeInstallation&) = delete;
  FakeInstallation& operator=(const FakeInstallation&) = delete;

  HMODULE Library() const { return library_.Get(); }
  std::filesystem::path Path(const std::wstring& name) const { return folder_ / name; }
  // Puts a codeless library, a file of the build's folder, or a text there.
  void AddLibrary(const std::wstring& name) const;
  void AddBuilt(const std::wstring& builtName, const std::wstring& name) const;
  void AddText(const std::wstring& name, const std::string& text) const;

 private:
  std::filesystem::path folder_;
  Module library_;
};

// While it lives, `root` (HKEY_CURRENT_USER or HKEY_LOCAL_MACHINE) is an empty key of this process's own.
class RedirectedRoot {
 public:
  explicit RedirectedRoot(HKEY root);
  ~RedirectedRoot();
  RedirectedRoot(const RedirectedRoot&) = delete;
  RedirectedRoot& operator=(const RedirectedRoot&) = delete;

 private:
  HKEY root_;
  std::wstring path_;
  RegKey key_;
};

}  // namespace orv::test
