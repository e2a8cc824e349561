#include "tests/ui/services/provider_fixture.h"

#include "ui/services/provider_dialogs.h"

namespace orv::test {

std::string CatalogueText(const std::vector<CatalogueService>& services) {
  std::string text = "[Services]\r\n";
  for (const auto& service : services) text += service.name + "=" + service.display + "\r\n";
  for (const auto& service : services) text += "[" + service.name + "]\r\n" + service.lines;
  return text;
}

std::string LibraryLines(const std::string& library) {
  return "PR_DISPLAY_NAME=Shown\r\nPR_SERVICE_DLL_NAME=" + library +
         "\r\nPR_SERVICE_ENTRY_NAME=FakeServiceEntry\r\n";
}

INT_PTR ProviderFixture::Run(const std::function<void(DialogScript&, HWND)>& act) {
  DialogDriver driver([&](DialogScript& script) { act(script, script.NextDialog()); });
  return ui::ShowProfileDialog(nullptr, Resources(), services_.Get());
}

void ProviderFixture::RunAndCancel(const std::function<void(DialogScript&, HWND)>& act) {
  EXPECT_EQ(Run([&](DialogScript& script, HWND dialog) {
              act(script, dialog);
              script.WaitEnabled(dialog);
              script.Close(dialog, IDCANCEL);
            }),
            IDCANCEL);
}

}  // namespace orv::test
