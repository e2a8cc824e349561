// The configuration dialog where clients meet it: profile administration with its window, over the registry.
#include <gtest/gtest.h>

#include "orv/orv.h"
#include "profiles/prof_admin.h"
#include "tests/support/fake_provider/fake_library.h"
#include "tests/ui/services/provider_fixture.h"
#include "ui/services/provider_dialogs.h"

namespace orv::test {
namespace {

constexpr wchar_t kProfiles[] = L"Software\\Tovan\\Velmora\\VX100 series\\Orv Profiles";
constexpr ULONG kCreateFlags = MAPI_UNICODE | MAPI_DEFAULT_SERVICES | MAPI_DIALOG;

class ProfileAdminTest : public ProviderFixture {
 protected:
  ProfileAdminTest() {
    const std::string lines = LibraryLines("fakebk.dll") + "PR_SERVICE_SUPPORT_FILES=kernel32\r\n";
    const std::string single = lines + "PR_RESOURCE_FLAGS=SERVICE_SINGLE_COPY\r\n";
    installation_.WriteCatalogue(CatalogueText({{"alpha", "Alpha", lines}, {"beta", "Beta", single}}) +
                                 "[Default Services]\r\nbeta=Beta\r\n");
    EXPECT_EQ(CreateProfAdmin(
                  [](HWND owner, IABServiceAdmin* services) {
                    return ui::ShowProfileDialog(owner, Resources(), services);
                  },
                  admin_.Put()),
              S_OK);
  }

  using Steps = std::function<void(DialogScript& script, HWND dialog)>;

  HRESULT Create(const Steps& steps) {
    DialogDriver driver([&](DialogScript& script) { steps(script, script.NextDialog()); });
    return admin_->CreateProfile(L"P", 0, kCreateFlags);
  }
  HRESULT Configure(const Steps& steps) {
    DialogDriver driver([&](DialogScript& script) { steps(script, script.NextDialog()); });
    return admin_->ConfigureProfile(L"P", 0, MAPI_UNICODE);
  }
  // Adds the catalogue's service of a line through the add dialog.
  static void Add(DialogScript& script, HWND dialog, int line) {
    script.PostPress(dialog, kAdd);
    const HWND add = script.NextDialog();
    script.Select(add, kList, line);
    script.Close(add, IDOK);
  }
  static std::size_t StoredServices() { return SubkeyNames(std::wstring(kProfiles) + L"\\P").size(); }

  FakeScript script_;
  FakeLibrary library_{installation_.Path(L"fakebk.dll"), &script_};
  ComPtr<IOrvProfAdmin> admin_;
};

TEST_F(ProfileAdminTest, CreatedProfileStaysOnlyWhenConfirmed) {
  EXPECT_EQ(Create([&](DialogScript& script, HWND dialog) {
              EXPECT_EQ(script.Items(dialog, kList), Lines{L"Shown"});
              script.Close(dialog, IDCANCEL);
            }),
            MAPI_E_USER_CANCEL);
  EXPECT_EQ(SubkeyNames(kProfiles), Lines{});
  EXPECT_EQ(Create([&](DialogScript& script, HWND dialog) {
              Add(script, dialog, 0);
              script.WaitUntil([&] { return script.Items(dialog, kList).size() == 2; }, "the new line");
              script.Close(dialog, IDOK);
            }),
            S_OK);
  EXPECT_EQ(StoredServices(), 2u);
  ASSERT_EQ(script_.serviceCalls.size(), 1u);
  EXPECT_EQ(script_.serviceCalls[0].context, MSG_SERVICE_CREATE);
}

TEST_F(ProfileAdminTest, CancelledConfigurationBringsTheServicesBack) {
  ASSERT_EQ(admin_->CreateProfile(L"P", 0, MAPI_UNICODE | MAPI_DEFAULT_SERVICES), S_OK);
  const auto before = DumpKey(std::wstring(kProfiles) + L"\\P");
  EXPECT_EQ(Configure([&](DialogScript& script, HWND dialog) {
              script.Press(dialog, kRemove);
              EXPECT_EQ(StoredServices(), 0u);
              Add(script, dialog, 0);
              script.WaitUntil([&] { return script.Items(dialog, kList) == Lines{L"Shown"}; },
                               "the new line");
              script.Close(dialog, IDCANCEL);
            }),
            MAPI_E_USER_CANCEL);
  EXPECT_EQ(DumpKey(std::wstring(kProfiles) + L"\\P").size(), before.size());
  EXPECT_EQ(StoredServices(), 1u);
  EXPECT_EQ(Configure([&](DialogScript& script, HWND dialog) {
              script.Press(dialog, kRemove);
              script.Close(dialog, IDOK);
            }),
            S_OK);
  EXPECT_EQ(StoredServices(), 0u);
}

TEST_F(ProfileAdminTest, ServiceThatFailsOrThrowsIsNotAdded) {
  const FakeAnswer answers[] = {{MAPI_E_CALL_FAILED},
                                {S_OK, FakeAnswer::Throws::kInteger},
                                {S_OK, FakeAnswer::Throws::kBadAlloc},
                                {MAPI_E_USER_CANCEL}};
  ASSERT_EQ(admin_->CreateProfile(L"P", 0, MAPI_UNICODE), S_OK);
  for (const FakeAnswer& answer : answers) {
    script_.answers["ServiceEntry"] = answer;
    Configure([&](DialogScript& script, HWND dialog) {
      Add(script, dialog, 0);
      if (answer.result != MAPI_E_USER_CANCEL) {
        EXPECT_EQ(script.AnswerBox(IDOK), Message(270));
      }
      script.WaitEnabled(dialog);
      EXPECT_EQ(script.Items(dialog, kList), Lines{});
      script.Close(dialog, IDOK);
    });
    EXPECT_EQ(StoredServices(), 0u);
  }
}

}  // namespace
}  // namespace orv::test
