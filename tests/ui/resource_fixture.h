// An installation with the real English and Arabic resource libraries in it, which is what process-wide
// values say while the fixture lives; the language is the test's choice.
#pragma once

#include <gtest/gtest.h>

#include "platform/process.h"
#include "tests/ui/fake_installation.h"
#include "ui/localisation.h"

namespace orv::test {

class ResourceFixture : public testing::Test {
 protected:
  ResourceFixture() {
    SetLanguage(L"9");
    installation_.AddBuilt(L"XHTFCAUS.dll", L"XHTFCAUS.dll");
    installation_.AddBuilt(L"XHTFCAAR.dll", L"XHTFCAAR.dll");
    process::SetInstance(installation_.Library());
    process::SetResourceLibrary(ui::LoadResourceLibrary(installation_.Library()));
  }

  ~ResourceFixture() override {
    FreeLibrary(process::ResourceLibrary());
    process::SetResourceLibrary(nullptr);
    process::SetInstance(nullptr);
  }

  // As the installer's value has it: 9 English, 1 Arabic.
  void SetLanguage(const wchar_t* identifier) {
    RegKey key;
    ASSERT_EQ(key.Create(HKEY_LOCAL_MACHINE,
                         L"Software\\Tovan\\Halvex\\FaxDriverInstaller\\Tovan VX100 series FAX"),
              ERROR_SUCCESS);
    ASSERT_EQ(key.SetString(L"InstallerLID", identifier), ERROR_SUCCESS);
  }

  void UseLanguage(const wchar_t* identifier) {
    SetLanguage(identifier);
    FreeLibrary(process::ResourceLibrary());
    process::SetResourceLibrary(ui::LoadResourceLibrary(installation_.Library()));
  }

  HMODULE Resources() const { return process::ResourceLibrary(); }

  RedirectedRoot machine_{HKEY_LOCAL_MACHINE};
  FakeInstallation installation_;
};

}  // namespace orv::test
