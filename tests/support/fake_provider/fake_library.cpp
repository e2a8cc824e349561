// Copying and loading the fake provider's library.
#include "tests/support/fake_provider/fake_library.h"

#include <stdexcept>
#include <utility>

#include "platform/identity.h"

namespace orv::test {

FakeLibrary::FakeLibrary(const WString& path, FakeScript* script) : path_(path) {
  if (!CopyFileW(PathBeside(nullptr, L"orv_fake_provider.dll").c_str(), path_.c_str(), FALSE)) {
    throw std::runtime_error("the fake provider cannot be copied");
  }
  library_ = Module::Load(path_);
  if (!library_) throw std::runtime_error("the fake provider cannot be loaded");
  library_.Find<FakeProviderUse>(kFakeUseName)(script);
}

FakeLibrary::~FakeLibrary() {
  Module(std::move(library_));
  DeleteFileW(path_.c_str());
}

bool FakeLibrary::UnloadsWithUs() {
  Module(std::move(library_));
  return GetModuleHandleW(path_.c_str()) == nullptr;
}

}  // namespace orv::test
