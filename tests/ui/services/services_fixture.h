// What the tests of the configuration dialogs stand on: an installation with a catalogue and the fake provider's
// library, a registry of their own, and profile administration as a client gets it.
#pragma once

#include <string>
#include <vector>

#include "orv/orv.h"
#include "platform/com_ptr.h"
#include "tests/support/dialog_driver.h"
#include "tests/support/fake_provider/fake_library.h"
#include "tests/support/redirected_registry.h"
#include "tests/ui/resource_fixture.h"

namespace orv::test {

inline constexpr int kList = 1155;
inline constexpr int kAdd = 1156;
inline constexpr int kRemove = 1157;
inline constexpr int kUninstall = 1157;
inline constexpr int kConfigure = 1158;
inline constexpr int kInstallFromFile = 1160;
inline constexpr wchar_t kProfiles[] = L"Software\\Tovan\\Velmora\\VX100 series\\Orv Profiles";

using Lines = std::vector<std::wstring>;

// A service of a catalogue: offered as "<name> offered", then shown by its name.
struct CatalogueService {
  std::string name;
  std::string lines = "PR_SERVICE_SUPPORT_FILES=kernel32\r\n";
  std::string library = "fakesv.dll";
};
// `defaults` are lines of the section that a new profile's services come from.
std::string CatalogueText(const std::vector<CatalogueService>& services, const std::string& defaults = "");

// The fake provider's service: configured, it takes the new name and keeps its section when told so.
class ServiceScript : public FakeScript {
 public:
  void OnService(const FakeServiceCall& call, IProfSect* section, IOrvSupport* support) override;

  std::wstring newName;  // empty: it changes nothing
  bool saves = false;
  std::vector<IProfSect*> configured;
};

class ServicesFixture : public ResourceFixture {
 protected:
  using Steps = std::function<void(DialogScript& script, HWND dialog)>;

  ServicesFixture();

  // Profile "P" with a service of each name, which are all that the catalogue has.
  void MakeProfile(const std::vector<std::string>& services);
  // Configures it while the script acts on the profile dialog.
  HRESULT Configure(const Steps& steps);
  // Configures it, and Cancel or OK at the end of the script.
  void ConfigureAndCancel(const Steps& steps) { ConfigureAndPress(IDCANCEL, steps); }
  void ConfigureAndConfirm(const Steps& steps) { ConfigureAndPress(IDOK, steps); }
  void ConfigureAndPress(int button, const Steps& steps);
  // Everything that is stored of it.
  static std::vector<std::string> Stored() { return DumpKey(std::wstring(kProfiles) + L"\\P"); }
  ComPtr<IABServiceAdmin> Services() const;
  // Stores a property of the service that bears the display name.
  void SetProperty(const std::wstring& service, SPropValue value) const;

  // The next message box, answered, shows this text; 0: there is to be none.
  static void ExpectBox(DialogScript& script, UINT message, int answer = IDOK) {
    if (message == 0) return;
    EXPECT_EQ(script.AnswerBox(answer), Message(message));
  }
  WString CatalogueValue(const wchar_t* section, const wchar_t* key) const;
  static int LineOf(DialogScript& script, HWND dialog, const std::wstring& text);
  static void SelectText(DialogScript& script, HWND dialog, const std::wstring& text) {
    script.Select(dialog, kList, LineOf(script, dialog, text));
  }
  // Opens the add dialog and selects a line there, -1 for none.
  static HWND OpenAdd(DialogScript& script, HWND dialog, int line);
  // Waits until the list has that many lines and the dialog may be used.
  static void WaitLines(DialogScript& script, HWND dialog, std::size_t count);

  RedirectedRegistry user_;
  ServiceScript script_;
  FakeLibrary library_{installation_.Path(L"fakesv.dll"), &script_};
  ComPtr<IOrvProfAdmin> admin_;
};

}  // namespace orv::test
