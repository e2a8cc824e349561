// A copy of the fake provider's library under a name of its own, loaded by the test so that its script can be
// set.
#pragma once

#include "platform/module.h"
#include "platform/win.h"
#include "tests/support/fake_provider/fake_script.h"

namespace orv::test {

// The script must outlive this, and every session that loaded the library must have ended before.
class FakeLibrary {
 public:
  // Copies the library that lies beside the test program to `path` and loads it; throws when that fails.
  FakeLibrary(const WString& path, FakeScript* script);
  // Frees the library and deletes the copy.
  ~FakeLibrary();
  FakeLibrary(const FakeLibrary&) = delete;
  FakeLibrary& operator=(const FakeLibrary&) = delete;

  // Gives up the test's own reference; true when nobody else holds the library.
  bool UnloadsWithUs();

 private:
  WString path_;
  Module library_;
};

}  // namespace orv::test
