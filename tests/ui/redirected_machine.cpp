#include "tests/ui/redirected_machine.h"

#include <gtest/gtest.h>

namespace orv::test {

RedirectedMachine::RedirectedMachine()
    : path_(L"Software\\OrvMachine" + std::to_wstring(GetCurrentProcessId())) {
  EXPECT_EQ(key_.Create(HKEY_CURRENT_USER, path_), ERROR_SUCCESS);
  EXPECT_EQ(RegOverridePredefKey(HKEY_LOCAL_MACHINE, key_.Get()), ERROR_SUCCESS);
}

RedirectedMachine::~RedirectedMachine() {
  RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
  RegDeleteTreeW(HKEY_CURRENT_USER, path_.c_str());
  RegDeleteKeyW(HKEY_CURRENT_USER, path_.c_str());
}

RegKey CreateInstallerKey() {
  RegKey key;
  EXPECT_EQ(
      key.Create(HKEY_LOCAL_MACHINE, L"Software\\Tovan\\Halvex\\FaxDriverInstaller\\Tovan VX100 series FAX"),
      ERROR_SUCCESS);
  return key;
}

void SetInstallerLanguage(const wchar_t* identifier) {
  EXPECT_EQ(CreateInstallerKey().SetString(L"InstallerLID", identifier), ERROR_SUCCESS);
}

}  // namespace orv::test
