// The add-service and install dialogs, opened from the profile dialog over real catalogues and the fake provider's
// library.
#include <gtest/gtest.h>

#include <filesystem>

#include "platform/identity.h"
#include "tests/ui/services/services_fixture.h"
#include "ui/services/open_file.h"

namespace orv::test {
namespace {

class AddServiceTest : public ServicesFixture {
 protected:
  AddServiceTest() { MakeProfile({"used", "other"}); }

  // Opens the add dialog from the profile dialog; it and then the other one are left by Cancel.
  void WithAdd(const std::function<void(DialogScript& script, HWND add)>& act) {
    ConfigureAndCancel([&](DialogScript& script, HWND dialog) {
      const HWND add = OpenAdd(script, dialog, 0);
      act(script, add);
      script.WaitEnabled(add);
      script.Close(add, IDCANCEL);
    });
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

TEST_F(AddServiceTest, OffersTheCatalogueWithTheFirstSelected) {
  WithAdd([&](DialogScript& script, HWND add) {
    EXPECT_EQ(script.Items(add, kList), (Lines{L"used offered", L"other offered"}));
    EXPECT_EQ(script.Selected(add, kList), 0);
  });
  // Lines enough for Add, but no list that can be read.
  for (const char* text : {"[Services]\r\na=A\r\nb=B\r\n", "[Services]\r\na=A\r\nbroken\r\n"}) {
    installation_.WriteCatalogue(text);
    WithAdd([&](DialogScript& script, HWND add) { EXPECT_EQ(script.Items(add, kList), Lines{}) << text; });
  }
}

TEST_F(AddServiceTest, SupportFilesMustBeThere) {
  installation_.WriteTextFile(L"beside.dat", "x");
  installation_.WriteTextFile(L"library.dll", "x");
  const struct {
    const char* files;
    UINT message;  // 0: added
  } cases[] = {{"kernel32.dll,user32", 0},          {"beside.dat", 0},      {"library", 0},
               {"kernel32.dll,none-such.dll", 276}, {"kernel32.dll,", 276}, {nullptr, 278}};
  for (const auto& c : cases) {
    const std::string lines =
        c.files == nullptr ? "" : std::string("PR_SERVICE_SUPPORT_FILES=") + c.files + "\r\n";
    installation_.WriteCatalogue(CatalogueText({{"new", lines}, {"other"}}));
    ConfigureAndCancel([&](DialogScript& script, HWND dialog) {
      const HWND add = OpenAdd(script, dialog, 0);
      script.PostPress(add, IDOK);
      if (c.message == 0) return WaitLines(script, dialog, 3);
      ExpectBox(script, c.message);
      script.WaitEnabled(add);
      script.Close(add, IDCANCEL);
      WaitLines(script, dialog, 2);
    });
  }
}

class UninstallTest : public AddServiceTest {
 protected:
  // The second service's library can be called, the last one's cannot.
  void WriteServices(const std::string& deletedFiles) {
    installation_.WriteCatalogue(CatalogueText({{"used"},
                                                {"beta", "PR_SERVICE_DELETE_FILES=" + deletedFiles + "\r\n"},
                                                {"Used"},
                                                {"gone", "", "no-such.dll"}},
                                               "beta=beta\r\n"));
  }
  // Presses Uninstall for a line, answers the message.
  static void Uninstall(DialogScript& script, HWND add, int line, UINT message, int answer) {
    script.Select(add, kList, line);
    script.PostPress(add, kUninstall);
    ExpectBox(script, message, answer);
    script.Send(add, WM_NULL);
  }
};

TEST_F(UninstallTest, OnlyWhatTheProfileDoesNotUseAndTheServiceAgreesTo) {
  WriteServices("none");
  const struct {
    int line;
    UINT message;
    int answer;
    FakeAnswer service;
  } cases[] = {{0, 281, IDOK, {}},
               {2, 280, IDNO, {}},  // another spelling of case is another service
               {1, 280, IDYES, {MAPI_E_CALL_FAILED}},
               {1, 280, IDYES, {S_OK, Throws::kBadAlloc}},
               {3, 280, IDYES, {}}};
  WithAdd([&](DialogScript& script, HWND add) {
    for (const auto& c : cases) {
      script_.answers["ServiceEntry"] = c.service;
      Uninstall(script, add, c.line, c.message, c.answer);
      WaitLines(script, add, 4);
    }
    script.Select(add, kList, -1);
    script.Press(add, kUninstall);  // nothing to ask
  });
  EXPECT_EQ(script_.serviceCalls.size(), 2u);
  EXPECT_EQ(CatalogueValue(L"Services", L"beta"), L"beta offered");
  EXPECT_EQ(CatalogueValue(L"Services", L"gone"), L"gone offered");
}

TEST_F(UninstallTest, ServiceLeavesTheCatalogueWithItsFiles) {
  const WString old = installation_.Path(L"old.dat"), kept = installation_.Path(L"kept.dat");
  const WString elsewhere = PathBeside(nullptr, L"elsewhere.dat");
  const WString leading = kept + L",none\\..\\kept.dat,..,elsewhere.dat,old.dat";
  const struct {
    WString files;
    bool isHeld;
    size_t stay;  // with a message each
  } cases[] = {{L"kept.dat,none-such.dat,,old.dat", false, 0},
               {L"kept.dat,none-such.dat,,old.dat", true, 1},
               {leading, false, 4}};  // found in another folder, or named as if in one
  const auto former = std::filesystem::current_path();
  std::filesystem::current_path(installation_.Folder());
  for (const auto& [files, isHeld, stay] : cases) {
    for (const wchar_t* name : {L"old.dat", L"kept.dat"}) installation_.WriteTextFile(name, "x");
    CopyFileW(old.c_str(), elsewhere.c_str(), FALSE);
    WriteServices({files.begin(), files.end()});
    const HANDLE held = CreateFileW(kept.c_str(), GENERIC_READ, isHeld ? 0 : FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
    const size_t messages = stay;
    HWND shown = nullptr;
    WithAdd([&](DialogScript& script, HWND add) {
      shown = add;
      Uninstall(script, add, 1, 280, IDYES);
      for (size_t i = 0; i < messages; ++i) ExpectBox(script, 282);
      WaitLines(script, add, 3);
      EXPECT_EQ(script.Selected(add, kList), 1);
    });
    CloseHandle(held);
    EXPECT_EQ(std::filesystem::exists(kept), stay != 0);
    EXPECT_FALSE(std::filesystem::exists(old));
    EXPECT_TRUE(std::filesystem::remove(elsewhere));
    const FakeServiceCall& call = script_.serviceCalls.back();
    EXPECT_EQ(call.context, MSG_SERVICE_UNINSTALL);
    EXPECT_EQ(call.flags, MAPI_UNICODE | SERVICE_UI_ALLOWED);
    EXPECT_EQ(call.uiParam, reinterpret_cast<ULONG_PTR>(shown));
    EXPECT_EQ(call.resources, Resources());
    EXPECT_FALSE(call.hasSection);
    EXPECT_TRUE(call.hasSupport);
    for (const wchar_t* section : {L"Services", L"Default Services"})
      EXPECT_EQ(CatalogueValue(section, L"beta"), L"");
    EXPECT_EQ(CatalogueValue(L"beta", L"PR_DISPLAY_NAME"), L"");
    EXPECT_EQ(CatalogueValue(L"Services", L"used"), L"used offered");
  }
  EXPECT_EQ(script_.serviceCalls.size(), std::size(cases));
  std::filesystem::current_path(former);
}

class InstallTest : public AddServiceTest {
 protected:
  InstallTest() {
    installation_.WriteTextFile(
        L"chosen.ini", CatalogueText({{"gone", "", "no-such.dll"}, {"delta"}}, "delta=delta by default\r\n"));
  }

  // Opens the install dialog of a file in the installation's folder.
  void WithInstall(const wchar_t* file,
                   const std::function<void(DialogScript&, HWND add, HWND install)>& act) {
    WithAdd([&](DialogScript& script, HWND add) {
      script.PostPress(add, kInstallFromFile);
      ChooseFile(script, installation_.Path(file));
      act(script, add, script.NextDialog());
    });
  }
};

TEST_F(InstallTest, ChosenServiceComesIntoOurCatalogue) {
  WithInstall(L"chosen.ini", [&](DialogScript& script, HWND add, HWND install) {
    EXPECT_EQ(script.Items(install, kList), (Lines{L"gone offered", L"delta offered"}));
    script.PostPress(install, IDOK);  // nothing is selected yet
    ExpectBox(script, 279);
    script.WaitEnabled(install);
    script.Select(install, kList, 1);
    script.Close(install, IDOK);
    WaitLines(script, add, 3);
    EXPECT_EQ(script.Selected(add, kList), 2);
  });
  EXPECT_EQ(script_.serviceCalls.at(0).context, MSG_SERVICE_INSTALL);
  EXPECT_EQ(CatalogueValue(L"Services", L"delta"), L"delta offered");
  EXPECT_EQ(CatalogueValue(L"Default Services", L"delta"), L"delta by default");
  EXPECT_EQ(CatalogueValue(L"delta", L"PR_SERVICE_DLL_NAME"), L"fakesv.dll");
}

TEST_F(InstallTest, FailingServiceKeepsTheDialogOpen) {
  const std::pair<int, FakeAnswer> cases[] = {
      {1, {MAPI_E_NO_SUPPORT}}, {1, {S_OK, Throws::kRuntimeError}}, {0, {}}};
  for (const auto& c : cases) {
    script_.answers["ServiceEntry"] = c.second;
    WithInstall(L"chosen.ini", [&](DialogScript& script, HWND add, HWND install) {
      script.Select(install, kList, c.first);
      script.Press(install, IDOK);
      EXPECT_TRUE(IsWindowVisible(install));
      script.Close(install, IDCANCEL);
      WaitLines(script, add, 2);
    });
  }
  EXPECT_EQ(CatalogueValue(L"Services", L"delta"), L"");
}

TEST_F(InstallTest, CommandsAreDroppedWhileAServiceRuns) {
  // The service pumps messages, as one with a window of its own does, and OK and Cancel are pressed meanwhile.
  struct PumpingScript : FakeScript {
    void OnService(const FakeServiceCall& call, IProfSect*, IOrvSupport*) override {
      const auto dialog = reinterpret_cast<HWND>(call.uiParam);
      for (const WORD button : {WORD{IDOK}, WORD{IDCANCEL}}) PostMessageW(dialog, WM_COMMAND, button, 0);
      MSG message;
      while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
      staying += IsWindowVisible(dialog) != FALSE;
    }
    int staying = 0;
  } pumping;
  FakeLibrary library(installation_.Path(L"fakepump.dll"), &pumping);
  installation_.WriteTextFile(L"pump.ini", CatalogueText({{"pump", "", "fakepump.dll"}}));
  WithInstall(L"pump.ini", [&](DialogScript& script, HWND add, HWND install) {
    script.Select(install, kList, 0);
    script.Close(install, IDOK);
    WaitLines(script, add, 3);
  });
  EXPECT_EQ(pumping.staying, 1);
}

TEST(OpenFileFilter, LastCharacterSeparatesTheParts) {
  EXPECT_EQ(ui::OpenFileFilter(L"A (*.a)|*.a|B|*.*|"), WString(L"A (*.a)\0*.a\0B\0*.*\0", 18));
  EXPECT_EQ(ui::OpenFileFilter(L""), L"");
  EXPECT_EQ(ui::OpenFileFilter(L"a;b;"), WString(L"a\0b\0", 4));
}

}  // namespace
}  // namespace orv::test
