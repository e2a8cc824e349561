// Each dialog many times: what it took is given back.
#include <gtest/gtest.h>

#include "tests/support/handle_probe.h"
#include "tests/ui/leak_check.h"
#include "tests/ui/services/services_fixture.h"
#include "ui/services/install_dialog.h"

namespace orv::test {
namespace {

using LeakTest = ServicesFixture;

TEST_F(LeakTest, ProbeSeesOneObjectOfEachKind) {
  // The first window brings further ones with it, and a shared icon stays.
  const auto make = [] {
    return CreateWindowW(L"STATIC", L"", 0, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
  };
  const HWND first = make();
  const HICON shared = LoadIconW(nullptr, IDI_WARNING);
  const HandleCounts before = CountHandles();
  const HWND window = make();
  const HMENU menu = CreatePopupMenu();
  const HICON icon = CopyIcon(shared);
  const HBRUSH brush = CreateSolidBrush(RGB(1, 2, 3));
  const HandleCounts with = CountHandles();
  EXPECT_EQ(with.windows, before.windows + 1);
  EXPECT_EQ(with.menus, before.menus + 1);
  EXPECT_EQ(with.icons, before.icons + 1);
  EXPECT_EQ(with.drawing, before.drawing + 1);
  DeleteObject(brush);
  DestroyIcon(icon);
  DestroyMenu(menu);
  DestroyWindow(window);
  DestroyWindow(first);
}

TEST_F(LeakTest, ProfileAndAddDialogWithAMessage) {
  MakeProfile({"a", "b"});
  ExpectNothingStays([&] {
    ConfigureAndCancel([&](DialogScript& script, HWND dialog) {
      script.Press(dialog, kConfigure);
      const HWND add = OpenAdd(script, dialog, 0);
      script.PostPress(add, kUninstall);
      ExpectBox(script, 281);
      script.WaitEnabled(add);
      script.Close(add, IDCANCEL);
    });
    script_.serviceCalls.clear();
    script_.configured.clear();
  });
}

TEST_F(LeakTest, InstallDialogAndOneThatCannotBeShown) {
  MakeProfile({"a"});
  installation_.WriteTextFile(L"chosen.ini", CatalogueText({{"b"}}));
  ExpectNothingStays([&] {
    {
      DialogDriver driver([&](DialogScript& steps) {
        const HWND install = steps.NextDialog();
        steps.Select(install, kList, 0);
        steps.Close(install, IDOK);
      });
      ui::InstallDialog install(Resources(), installation_.Path(L"chosen.ini"));
      EXPECT_EQ(install.Show(nullptr), IDOK);
    }
    ui::InstallDialog install(process::Instance(), L"");
    EXPECT_EQ(install.Show(nullptr), -1);
    script_.serviceCalls.clear();
  });
}

}  // namespace
}  // namespace orv::test
