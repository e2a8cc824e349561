// The installer's choice of language, in a registry root of the test's own.
#pragma once

#include <gtest/gtest.h>

#include "platform/reg_key.h"
#include "tests/support/redirected_registry.h"

namespace orv::test {

// An empty HKEY_LOCAL_MACHINE of this process.
struct RedirectedMachine : RedirectedRegistry {
  RedirectedMachine() : RedirectedRegistry(HKEY_LOCAL_MACHINE, L"machine") {}
};

// The installer's key of model VX100, and its language value there: "9" is English, "1" Arabic.
inline RegKey CreateInstallerKey() {
  constexpr const WCHAR* kPath = L"Software\\Tovan\\Halvex\\FaxDriverInstaller\\Tovan VX100 series FAX";
  RegKey key;
  EXPECT_EQ(key.Create(HKEY_LOCAL_MACHINE, kPath), ERROR_SUCCESS);
  return key;
}
inline void SetInstallerLanguage(const wchar_t* identifier) {
  EXPECT_EQ(CreateInstallerKey().SetString(L"InstallerLID", identifier), ERROR_SUCCESS);
}

}  // namespace orv::test
