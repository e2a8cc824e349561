// The installer's choice of language, in a registry root of the test's own.
#pragma once

#include <string>

#include "platform/reg_key.h"

namespace orv::test {

// While it lives HKEY_LOCAL_MACHINE is an empty key of this process. To be made before the current user's root
// is redirected too.
class RedirectedMachine {
 public:
  RedirectedMachine();
  ~RedirectedMachine();
  RedirectedMachine(const RedirectedMachine&) = delete;
  RedirectedMachine& operator=(const RedirectedMachine&) = delete;

 private:
  std::wstring path_;
  RegKey key_;
};

// The installer's key of model VX100, and its language value there: "9" is English, "1" Arabic.
RegKey CreateInstallerKey();
void SetInstallerLanguage(const wchar_t* identifier);

}  // namespace orv::test
