// Each dialog 200 times: what it took is given back.
#include <gtest/gtest.h>

#include "orv/orv.h"
#include "tests/support/fake_provider/fake_library.h"
#include "tests/support/handle_probe.h"
#include "tests/ui/leak_check.h"
#include "tests/ui/services/provider_fixture.h"
#include "ui/services/add_service_dialog.h"
#include "ui/services/install_dialog.h"

namespace orv::test {
namespace {

class LeakTest : public ProviderFixture {
 protected:
  LeakTest() {
    services_->services = {{'a', L"alpha", L"A"}, {'b', L"beta", L"B"}};
    const std::string lines = LibraryLines("fakelk.dll") + "PR_SERVICE_SUPPORT_FILES=kernel32\r\n";
    catalogue_ = CatalogueText({{"alpha", "Alpha", lines}, {"beta", "Beta", lines}});
    installation_.WriteCatalogue(catalogue_);
  }

  std::string catalogue_;
};

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

TEST_F(LeakTest, ProfileDialog) {
  services_->sectionTexts['a'][PR_ORV_BOOK_FILE_W] = L"file";
  ExpectNothingStays([&] {
    Run([&](DialogScript& script, HWND dialog) {
      script.Press(dialog, kConfigure);
      script.Close(dialog, IDOK);
    });
    services_->log.clear();
  });
}

TEST_F(LeakTest, AddServiceDialogWithAMessage) {
  ExpectNothingStays([&] {
    DialogDriver driver([&](DialogScript& script) {
      const HWND add = script.NextDialog();
      script.PostPress(add, kUninstall);
      script.AnswerBox(IDOK);
      script.WaitEnabled(add);
      script.Close(add, IDOK);
    });
    ui::AddServiceDialog add(Resources(), ComPtr<IABServiceAdmin>::Share(services_.Get()));
    EXPECT_EQ(add.Show(nullptr), IDOK);
  });
}

TEST_F(LeakTest, InstallDialog) {
  FakeScript script;
  const FakeLibrary library(installation_.Path(L"fakelk.dll"), &script);
  installation_.WriteTextFile(L"chosen.ini", catalogue_);
  ExpectNothingStays([&] {
    DialogDriver driver([&](DialogScript& steps) {
      const HWND install = steps.NextDialog();
      steps.Select(install, kList, 0);
      steps.Close(install, IDOK);
    });
    ui::InstallDialog install(Resources(), installation_.Path(L"chosen.ini"));
    EXPECT_EQ(install.Show(nullptr), IDOK);
  });
}

TEST_F(LeakTest, DialogThatCannotBeShown) {
  ExpectNothingStays([&] {
    ui::AddServiceDialog add(process::Instance(), ComPtr<IABServiceAdmin>::Share(services_.Get()));
    EXPECT_EQ(add.Show(nullptr), -1);
  });
}

}  // namespace
}  // namespace orv::test
