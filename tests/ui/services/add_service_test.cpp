// The add-service and install dialogs, over real catalogues and the fake provider's library.
#include <gtest/gtest.h>

#include <optional>

#include "orv/orv.h"
#include "props/prop_value.h"
#include "tests/support/fake_provider/fake_library.h"
#include "tests/ui/services/provider_fixture.h"
#include "ui/services/add_service_dialog.h"
#include "ui/services/open_file.h"
#include "ui/services/service_files.h"

namespace orv::test {
namespace {

constexpr ULONG kCallFlags = 0x80000010;

class AddServiceTest : public ProviderFixture {
 protected:
  // Shows the dialog; the name chosen when it ended with OK.
  std::optional<WString> Show(const std::function<void(DialogScript& script, HWND dialog)>& act) {
    DialogDriver driver([&](DialogScript& script) { act(script, script.NextDialog()); });
    ui::AddServiceDialog dialog(Resources(), ComPtr<IABServiceAdmin>::Share(services_.Get()));
    const INT_PTR result = dialog.Show(nullptr);
    EXPECT_TRUE(result == IDOK || result == IDCANCEL) << result;
    if (result != IDOK) return std::nullopt;
    return dialog.ServiceName();
  }

  WString CatalogueValue(const wchar_t* section, const wchar_t* key) const {
    wchar_t value[300] = {};
    GetPrivateProfileStringW(section, key, L"", value, 300, installation_.Path(L"XHTASVA.ini").c_str());
    return value;
  }

  // Types the path into the open-file dialog and confirms it.
  static void ChooseFile(DialogScript& script, const WString& path) {
    const HWND chooser = script.NextDialog();
    EXPECT_EQ(WindowText(chooser), ui::LoadText(Resources(), 285, 80));
    HWND name = GetDlgItem(chooser, 0x47c);
    if (name == nullptr) name = GetDlgItem(chooser, 0x480);
    script.Send(name, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(path.c_str()));
    script.Close(chooser, IDOK);
  }
};

TEST_F(AddServiceTest, OffersTheCatalogueAndGivesTheNameChosen) {
  const std::string files = "PR_SERVICE_SUPPORT_FILES=kernel32\r\n";
  installation_.WriteCatalogue(
      CatalogueText({{"alpha", "Alpha shown", files}, {"beta", "Beta shown", files}}));
  EXPECT_EQ(Show([&](DialogScript& script, HWND dialog) {
              EXPECT_EQ(script.Items(dialog, kList), (Lines{L"Alpha shown", L"Beta shown"}));
              EXPECT_EQ(script.Selected(dialog, kList), 0);
              script.Select(dialog, kList, 1);
              script.Close(dialog, IDOK);
            }),
            L"beta");
  EXPECT_EQ(Show([&](DialogScript& script, HWND dialog) { script.Close(dialog, IDCANCEL); }), std::nullopt);
  EXPECT_EQ(Show([&](DialogScript& script, HWND dialog) {
              script.Select(dialog, kList, -1);
              script.Press(dialog, kUninstall);
              script.Close(dialog, IDOK);
            }),
            L"");
}

TEST_F(AddServiceTest, CatalogueThatCannotBeReadLeavesAnEmptyList) {
  for (const char* text : {"nothing", "[Services]\r\nalpha=A\r\n", "[Services]\r\nbroken\r\n"}) {
    installation_.WriteCatalogue(text);
    EXPECT_EQ(Show([&](DialogScript& script, HWND dialog) {
                EXPECT_EQ(script.Items(dialog, kList), Lines{}) << text;
                script.Close(dialog, IDOK);
              }),
              L"");
  }
}

TEST_F(AddServiceTest, SupportFilesMustBeThere) {
  installation_.WriteTextFile(L"beside.dat", "x");
  installation_.WriteTextFile(L"library.dll", "x");
  const struct {
    const char* files;
    UINT message;  // 0: chosen
  } cases[] = {{"kernel32.dll,user32", 0},          {"beside.dat", 0},      {"library", 0},
               {"kernel32.dll,none-such.dll", 276}, {"kernel32.dll,", 276}, {nullptr, 278}};
  for (const auto& c : cases) {
    const std::string lines = c.files == nullptr
                                  ? "PR_DISPLAY_NAME=x\r\n"
                                  : std::string("PR_SERVICE_SUPPORT_FILES=") + c.files + "\r\n";
    installation_.WriteCatalogue(CatalogueText({{"alpha", "Alpha", lines}}));
    const auto chosen = Show([&](DialogScript& script, HWND dialog) {
      script.PostPress(dialog, IDOK);
      if (c.message == 0) return;
      EXPECT_EQ(script.AnswerBox(IDOK), Message(c.message)) << c.files;
      script.WaitEnabled(dialog);
      script.Close(dialog, IDCANCEL);
    });
    EXPECT_EQ(chosen.has_value(), c.message == 0);
  }
}

class UninstallTest : public AddServiceTest {
 protected:
  // Four services: the second one's library can be called, the last one's cannot.
  void WriteServices(const std::string& deletedFiles) {
    installation_.WriteCatalogue(
        CatalogueText({{"alpha", "Alpha", LibraryLines("fakeun.dll")},
                       {"beta", "Beta",
                        LibraryLines("fakeun.dll") + "PR_SERVICE_DELETE_FILES=" + deletedFiles + "\r\n"},
                       {"gamma", "Gamma", LibraryLines("no-such.dll")}}) +
        "[Default Services]\r\nbeta=Beta\r\n");
  }
  // Presses Uninstall for a line, answers the question.
  static void Uninstall(DialogScript& script, HWND dialog, int line, int answer) {
    script.Select(dialog, kList, line);
    script.PostPress(dialog, kUninstall);
    EXPECT_EQ(script.AnswerBox(answer), Message(280));
  }

  std::string Narrow(const WString& text) const { return {text.begin(), text.end()}; }

  FakeScript script_;
  // Loaded by the test, so that the bare name finds this copy wherever the call comes from.
  FakeLibrary library_{installation_.Path(L"fakeun.dll"), &script_};
};

TEST_F(UninstallTest, ServiceOfTheProfileStays) {
  WriteServices("none");
  services_->services = {{'a', L"ALPHA", L"x"}, {'b', L"beta", L"y"}};
  Show([&](DialogScript& script, HWND dialog) {
    script.Select(dialog, kList, 1);
    script.PostPress(dialog, kUninstall);
    EXPECT_EQ(script.AnswerBox(IDOK), Message(281));
    script.WaitEnabled(dialog);
    // Another spelling of case is another service.
    Uninstall(script, dialog, 0, IDNO);
    script.WaitEnabled(dialog);
    services_->tableResult = MAPI_E_CALL_FAILED;  // not known to be unused
    script.Select(dialog, kList, 0);
    script.Press(dialog, kUninstall);
    EXPECT_EQ(script.Items(dialog, kList).size(), 3u);
    script.Close(dialog, IDCANCEL);
  });
  EXPECT_TRUE(script_.serviceCalls.empty());
}

TEST_F(UninstallTest, ServiceLeavesTheCatalogueWithItsFiles) {
  const WString old = installation_.Path(L"old.dat");
  for (const bool isHeld : {false, true}) {  // a file that is in use stays, the rest goes
    installation_.WriteTextFile(L"old.dat", "x");
    installation_.WriteTextFile(L"kept.dat", "x");
    const WString kept = installation_.Path(L"kept.dat");
    WriteServices(Narrow(kept) + ",none-such.dat," + Narrow(old));
    const HANDLE held = CreateFileW(kept.c_str(), GENERIC_READ, isHeld ? 0 : FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
    HWND shown = nullptr;
    Show([&](DialogScript& script, HWND dialog) {
      shown = dialog;
      Uninstall(script, dialog, 1, IDYES);
      if (isHeld) {
        EXPECT_EQ(script.AnswerBox(IDOK), Message(282));
      }
      const Lines left = {L"Alpha", L"Gamma"};
      script.WaitUntil([&] { return script.Items(dialog, kList) == left; }, "the line to go");
      EXPECT_EQ(script.Selected(dialog, kList), 1);
      script.Close(dialog, IDCANCEL);
    });
    CloseHandle(held);
    EXPECT_EQ(GetFileAttributesW(kept.c_str()) != INVALID_FILE_ATTRIBUTES, isHeld);
    EXPECT_EQ(GetFileAttributesW(old.c_str()), INVALID_FILE_ATTRIBUTES);
    const FakeServiceCall& call = script_.serviceCalls.at(isHeld);
    EXPECT_EQ(call.context, MSG_SERVICE_UNINSTALL);
    EXPECT_EQ(call.flags, kCallFlags);
    EXPECT_EQ(call.uiParam, reinterpret_cast<ULONG_PTR>(shown));
    EXPECT_EQ(call.resources, Resources());
    EXPECT_FALSE(call.hasSection);
    EXPECT_TRUE(call.hasSupport);
    for (const wchar_t* section : {L"Services", L"Default Services"})
      EXPECT_EQ(CatalogueValue(section, L"beta"), L"");
    EXPECT_EQ(CatalogueValue(L"beta", L"PR_DISPLAY_NAME"), L"");
    EXPECT_EQ(CatalogueValue(L"Services", L"alpha"), L"Alpha");
  }
}

TEST_F(UninstallTest, FailingServiceStays) {
  WriteServices("none");
  const struct {
    int line;
    FakeAnswer answer;
  } cases[] = {{1, {MAPI_E_CALL_FAILED}}, {1, {S_OK, FakeAnswer::Throws::kInteger}}, {2, {}}};
  for (const auto& c : cases) {
    script_.answers["ServiceEntry"] = c.answer;
    Show([&](DialogScript& script, HWND dialog) {
      Uninstall(script, dialog, c.line, IDYES);
      script.WaitEnabled(dialog);
      script.Close(dialog, IDCANCEL);
    });
    EXPECT_EQ(CatalogueValue(L"Services", L"beta"), L"Beta");
    EXPECT_EQ(CatalogueValue(L"Services", L"gamma"), L"Gamma");
  }
  EXPECT_EQ(script_.serviceCalls.size(), 2u);
}

class InstallTest : public AddServiceTest {
 protected:
  InstallTest() {
    installation_.WriteCatalogue(CatalogueText({{"alpha", "Alpha", "PR_DISPLAY_NAME=a\r\n"}}));
    installation_.WriteTextFile(L"chosen.ini",
                                CatalogueText({{"gone", "Gone", LibraryLines("no-such.dll")},
                                               {"delta", "Delta", LibraryLines("fakein.dll")},
                                               {"alpha", "Other alpha", LibraryLines("fakein.dll")}}) +
                                    "[Default Services]\r\ndelta=Delta by default\r\n");
  }

  // Shows the add dialog and opens the install dialog of a file in the installation's folder.
  void ShowInstall(const wchar_t* file,
                   const std::function<void(DialogScript&, HWND add, HWND install)>& act) {
    Show([&](DialogScript& script, HWND add) {
      script.PostPress(add, kInstallFromFile);
      ChooseFile(script, installation_.Path(file));
      act(script, add, script.NextDialog());
      script.WaitEnabled(add);
      script.Close(add, IDCANCEL);
    });
  }

  FakeScript script_;
  // Loaded by the test, so that the bare name finds this copy wherever the call comes from.
  FakeLibrary library_{installation_.Path(L"fakein.dll"), &script_};
};

TEST_F(InstallTest, ChosenServiceComesIntoOurCatalogue) {
  HWND shown = nullptr;
  ShowInstall(L"chosen.ini", [&](DialogScript& script, HWND add, HWND install) {
    shown = install;
    EXPECT_EQ(script.Items(install, kList), (Lines{L"Gone", L"Delta", L"Other alpha"}));
    // Nothing is selected yet.
    script.PostPress(install, IDOK);
    EXPECT_EQ(script.AnswerBox(IDOK), Message(279));
    script.WaitEnabled(install);
    script.Select(install, kList, 1);
    script.Close(install, IDOK);
    script.WaitUntil([&] { return script.Items(add, kList) == Lines{L"Alpha", L"Delta"}; }, "the service");
    EXPECT_EQ(script.Selected(add, kList), 1);
  });
  const FakeServiceCall& call = script_.serviceCalls.at(0);
  EXPECT_EQ(call.context, MSG_SERVICE_INSTALL);
  EXPECT_EQ(call.flags, kCallFlags);
  EXPECT_EQ(call.uiParam, reinterpret_cast<ULONG_PTR>(shown));
  EXPECT_EQ(CatalogueValue(L"Services", L"delta"), L"Delta");
  EXPECT_EQ(CatalogueValue(L"Default Services", L"delta"), L"Delta by default");
  EXPECT_EQ(CatalogueValue(L"delta", L"PR_SERVICE_DLL_NAME"), L"fakein.dll");
}

TEST_F(InstallTest, FailingServiceKeepsTheDialogOpen) {
  const struct {
    int line;
    FakeAnswer answer;
  } cases[] = {{1, {MAPI_E_NO_SUPPORT}}, {1, {S_OK, FakeAnswer::Throws::kRuntimeError}}, {0, {}}};
  for (const auto& c : cases) {
    script_.answers["ServiceEntry"] = c.answer;
    ShowInstall(L"chosen.ini", [&](DialogScript& script, HWND add, HWND install) {
      script.Select(install, kList, c.line);
      script.Press(install, IDOK);
      EXPECT_TRUE(IsWindowVisible(install));
      script.Close(install, IDCANCEL);
      EXPECT_EQ(script.Items(add, kList), Lines{L"Alpha"});
    });
  }
  EXPECT_EQ(CatalogueValue(L"Services", L"delta"), L"");
}

TEST_F(InstallTest, FileThatIsNoCatalogueListsNothing) {
  installation_.WriteTextFile(L"picture.ini", std::string("\x89PNG\0\x01\xff[Services", 16));
  ShowInstall(L"picture.ini", [&](DialogScript& script, HWND, HWND install) {
    EXPECT_EQ(script.Items(install, kList), Lines{});
    script.Close(install, IDCANCEL);
  });
}

TEST_F(InstallTest, CommandsAreDroppedWhileAServiceRuns) {
  // The service pumps messages, as one with a window of its own does, and OK and Cancel are pressed meanwhile.
  struct PumpingScript : FakeScript {
    void OnService(const FakeServiceCall& call, IProfSect*, IOrvSupport*) override {
      ++calls;
      const auto dialog = reinterpret_cast<HWND>(call.uiParam);
      for (const WORD button : {WORD{IDOK}, WORD{IDCANCEL}}) PostMessageW(dialog, WM_COMMAND, button, 0);
      MSG message;
      while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
      stayed = IsWindowVisible(dialog) != FALSE;
    }
    int calls = 0;
    bool stayed = false;
  } pumping;
  FakeLibrary library(installation_.Path(L"fakepump.dll"), &pumping);
  installation_.WriteTextFile(L"pump.ini", CatalogueText({{"pump", "Pump", LibraryLines("fakepump.dll")}}));
  ShowInstall(L"pump.ini", [&](DialogScript& script, HWND add, HWND install) {
    script.Select(install, kList, 0);
    script.Close(install, IDOK);
    script.WaitUntil([&] { return script.Items(add, kList).size() == 2; }, "the service");
  });
  EXPECT_EQ(pumping.calls, 1);
  EXPECT_TRUE(pumping.stayed);
}

TEST(OpenFileFilter, LastCharacterSeparatesTheParts) {
  EXPECT_EQ(ui::OpenFileFilter(L"A (*.a)|*.a|B|*.*|"), WString(L"A (*.a)\0*.a\0B\0*.*\0", 18));
  EXPECT_EQ(ui::OpenFileFilter(L""), L"");
  EXPECT_EQ(ui::OpenFileFilter(L"a;b;"), WString(L"a\0b\0", 4));
}

TEST_F(AddServiceTest, MissingColumnOfSupportFilesIsAMessageOfItsOwn) {
  SPropValue name{};
  name.ulPropTag = PR_SERVICE_NAME_W;
  EXPECT_EQ(ui::FindSupportFilesProblem(SRow{0, 1, &name}), 277u);
}

}  // namespace
}  // namespace orv::test
