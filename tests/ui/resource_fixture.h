// An installation with the real English and Arabic resource libraries in it, which is what process-wide values
// say while the fixture lives; English is chosen.
#pragma once

#include <gtest/gtest.h>

#include "platform/process.h"
#include "tests/support/dialog_driver.h"
#include "tests/support/installation.h"
#include "tests/ui/installer_language.h"
#include "ui/localisation.h"
#include "ui/text.h"

namespace orv::test {

inline std::string RectangleText(const RECT& r) {
  return std::to_string(r.left) + "," + std::to_string(r.top) + "," + std::to_string(r.right) + "," +
         std::to_string(r.bottom);
}

class ResourceFixture : public testing::Test {
 protected:
  ResourceFixture() {
    installation_.CopyIn(L"XHTFCAUS.dll", L"XHTFCAUS.dll");
    installation_.CopyIn(L"XHTFCAAR.dll", L"XHTFCAAR.dll");
    UseLanguage(L"9");
  }
  ~ResourceFixture() override { Load(nullptr); }

  void UseLanguage(const wchar_t* identifier) {
    SetInstallerLanguage(identifier);
    Load(ui::LoadResourceLibrary(process::Instance()));
    ASSERT_NE(Resources(), nullptr);
  }

  static HMODULE Resources() { return process::ResourceLibrary(); }

  // Text of a message of the resource library.
  static std::wstring Message(UINT identifier) { return ui::LoadText(Resources(), identifier, 160); }

  // What the help key asks for a control, or, with none, for the place.
  static void AskHelp(DialogScript& script, HWND dialog, int control, POINT point = {}) {
    HELPINFO help{sizeof help, HELPINFO_WINDOW, control, nullptr, 0, point};
    script.Send(dialog, WM_HELP, 0, reinterpret_cast<LPARAM>(&help));
  }

  RedirectedMachine machine_;
  Installation installation_;

 private:
  static void Load(HMODULE library) {
    if (Resources() != nullptr) FreeLibrary(Resources());
    process::SetResourceLibrary(library);
  }
};

}  // namespace orv::test
