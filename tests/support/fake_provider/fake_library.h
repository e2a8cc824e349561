// A copy of the fake provider's library under a name of its own, loaded by the test so that its script can be
// set.
#pragma once

#include <stdexcept>

#include "platform/identity.h"
#include "platform/module.h"
#include "tests/support/fake_provider/fake_script.h"

namespace orv::test {

// The script must outlive this, and every session that loaded the library must have ended before.
class FakeLibrary {
 public:
  // Copies the library that lies beside the test program to `path` and loads it; throws when that fails.
  FakeLibrary(const WString& path, FakeScript* script) : path_(path) {
    CopyFileW(PathBeside(nullptr, L"orv_fake_provider.dll").c_str(), path_.c_str(), FALSE);
    library_ = Module::Load(path_);
    if (!library_) throw std::runtime_error("the fake provider cannot be loaded");
    library_.Find<FakeProviderUse>(kFakeUseName)(script);
  }
  // Frees the library and deletes the copy.
  ~FakeLibrary() {
    UnloadsWithUs();
    DeleteFileW(path_.c_str());
  }
  FakeLibrary(const FakeLibrary&) = delete;
  FakeLibrary& operator=(const FakeLibrary&) = delete;

  // Gives up the test's own reference; true when nobody else holds the library.
  bool UnloadsWithUs() {
    Module(std::move(library_));
    return GetModuleHandleW(path_.c_str()) == nullptr;
  }

 private:
  WString path_;
  Module library_;
};

}  // namespace orv::test
