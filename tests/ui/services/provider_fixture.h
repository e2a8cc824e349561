// What the tests of the provider configuration dialogs stand on: resources, a registry of their own, a
// catalogue, fake services of a profile.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/dialog_driver.h"
#include "tests/support/redirected_registry.h"
#include "tests/ui/resource_fixture.h"
#include "tests/ui/services/fake_services.h"

namespace orv::test {

inline constexpr int kList = 1155;
inline constexpr int kAdd = 1156;
inline constexpr int kRemove = 1157;
inline constexpr int kUninstall = 1157;
inline constexpr int kConfigure = 1158;
inline constexpr int kInstallFromFile = 1160;

using Lines = std::vector<std::wstring>;

// The text of a catalogue that lists these services; each has a section naming `library` and the lines.
struct CatalogueService {
  std::string name;
  std::string display;
  std::string lines;
};
std::string CatalogueText(const std::vector<CatalogueService>& services);
// The lines that name a copy of the fake provider as the service's library.
std::string LibraryLines(const std::string& library);

class ProviderFixture : public ResourceFixture {
 protected:
  // Shows the profile dialog over the fake services while the script acts on it.
  INT_PTR Run(const std::function<void(DialogScript& script, HWND dialog)>& act);
  // The same, and Cancel at the end of the script.
  void RunAndCancel(const std::function<void(DialogScript& script, HWND dialog)>& act);
  // Text of a message of the resource library.
  static std::wstring Message(UINT identifier) { return ui::LoadText(Resources(), identifier, 160); }

  RedirectedRegistry user_;
  ComPtr<FakeServices> services_ = FakeServices::Create();
};

}  // namespace orv::test
