// The profile dialog, driven over fake services.
#include <gtest/gtest.h>

#include <span>

#include "orv/orv.h"
#include "platform/faults.h"
#include "tests/ui/services/provider_fixture.h"
#include "ui/html_help.h"
#include "ui/services/provider_dialogs.h"

namespace orv::test {
namespace {

constexpr wchar_t kWabKey[] = L"Software\\Tovan\\Velmora\\VX100 series\\Orv Profiles\\WAB";

class ProfileDialogTest : public ProviderFixture {
 protected:
  ProfileDialogTest() {
    services_->services = {{'a', L"alpha", L"A"},
                           {'b', L"beta", L"B", ORV_SERVICE_NOT_REMOVABLE},
                           {'c', L"gamma", L"C", ORV_SERVICE_NOT_CONFIGURABLE},
                           {'d', L"delta", L"D", ORV_SERVICE_NOT_REMOVABLE | ORV_SERVICE_NOT_CONFIGURABLE}};
    installation_.WriteCatalogue(
        CatalogueText({{"alpha", "Alpha", "PR_SERVICE_SUPPORT_FILES=kernel32.dll\r\n"},
                       {"beta", "Beta", "PR_DISPLAY_NAME=x\r\n"}}));
  }

  // Presses Add and confirms the service selected in the add dialog, or none.
  static void AddService(DialogScript& script, HWND dialog, int line) {
    script.PostPress(dialog, kAdd);
    const HWND add = script.NextDialog();
    script.Select(add, kList, line);
    script.PostPress(add, IDOK);
    script.WaitClosed(add);
  }
  // Nothing stands over the dialog, and it deals with messages.
  static void ExpectQuiet(DialogScript& script, HWND dialog) {
    script.WaitEnabled(dialog);
    script.Send(dialog, WM_NULL);
    EXPECT_TRUE(IsWindowEnabled(dialog));
  }
};

TEST_F(ProfileDialogTest, OpensWithTheServicesAndTheFirstSelected) {
  RunAndCancel([&](DialogScript& script, HWND dialog) {
    EXPECT_EQ(script.Items(dialog, kList), (Lines{L"A", L"B", L"C", L"D"}));
    EXPECT_EQ(script.Selected(dialog, kList), 0);
  });
  EXPECT_TRUE(services_->log.empty());
}

TEST_F(ProfileDialogTest, ButtonsFollowTheSelection) {
  RunAndCancel([&](DialogScript& script, HWND dialog) {
    const struct {
      int line;
      bool remove;
      bool configure;
    } cases[] = {{1, false, true}, {2, true, false}, {3, false, false}, {0, true, true}, {-1, true, true}};
    for (const auto& c : cases) {
      script.Select(dialog, kList, c.line);
      EXPECT_EQ(script.IsEnabled(dialog, kRemove), c.remove) << c.line;
      EXPECT_EQ(script.IsEnabled(dialog, kConfigure), c.configure) << c.line;
    }
    // Without a selection the buttons do nothing.
    script.Select(dialog, kList, -1);
    script.Press(dialog, kRemove);
    script.Press(dialog, kConfigure);
  });
  EXPECT_TRUE(services_->log.empty());
}

TEST_F(ProfileDialogTest, FocusMovesOffAButtonThatIsDisabled) {
  RunAndCancel([&](DialogScript& script, HWND dialog) {
    const struct {
      int line;
      int focused;
      int heir;
    } cases[] = {{1, kRemove, kConfigure}, {2, kConfigure, IDOK}, {3, kRemove, IDOK}, {3, kConfigure, IDOK}};
    for (const auto& c : cases) {
      script.Select(dialog, kList, 0);
      script.Focus(dialog, c.focused);
      EXPECT_TRUE(script.HasFocus(dialog, c.focused));
      script.Select(dialog, kList, c.line);
      EXPECT_TRUE(script.HasFocus(dialog, c.heir)) << c.line;
      const LRESULT style = GetWindowLongPtrW(GetDlgItem(dialog, c.heir), GWL_STYLE) & BS_TYPEMASK;
      EXPECT_EQ(style, BS_DEFPUSHBUTTON);
    }
  });
}

TEST_F(ProfileDialogTest, AddNeedsMoreThanOneServiceInTheCatalogue) {
  const struct {
    std::string catalogue;
    bool enabled;
  } cases[] = {{CatalogueText({{"alpha", "Alpha", "PR_DISPLAY_NAME=x\r\n"}}), false},
               {"[Services]\r\na=A\r\nb=B\r\n", true},
               {"no catalogue", false}};
  for (const auto& c : cases) {
    installation_.WriteCatalogue(c.catalogue);
    RunAndCancel([&](DialogScript& script, HWND dialog) {
      EXPECT_EQ(script.IsEnabled(dialog, kAdd), c.enabled) << c.catalogue;
    });
  }
}

TEST_F(ProfileDialogTest, AddedServiceIsTheFirstRowOfTheNextTable) {
  HWND shown = nullptr;
  const INT_PTR result = Run([&](DialogScript& script, HWND dialog) {
    shown = dialog;
    AddService(script, dialog, 0);
    script.WaitUntil([&] { return script.Items(dialog, kList).size() == 5; }, "the new line");
    ExpectQuiet(script, dialog);
    EXPECT_EQ(script.Items(dialog, kList).back(), L"new alpha");
    EXPECT_EQ(script.Selected(dialog, kList), 4);
    script.Close(dialog, IDOK);
  });
  EXPECT_EQ(result, IDOK);
  EXPECT_EQ(services_->log, CallLog{"create 'alpha' '' '' 0"});
  EXPECT_EQ(services_->lastFlags, 0x80000002u);
  EXPECT_EQ(services_->lastUiParam, reinterpret_cast<ULONG_PTR>(shown));
}

TEST_F(ProfileDialogTest, FailedAdditionTellsWhy) {
  const struct {
    HRESULT result;
    int line;
    UINT message;  // 0: none
  } cases[] = {{MAPI_E_COLLISION, 0, 269},
               {MAPI_E_CALL_FAILED, 0, 270},
               {MAPI_E_NOT_ENOUGH_MEMORY, 0, 270},
               {MAPI_E_USER_CANCEL, 0, 0},
               {S_OK, -1, 270}};  // no line selected: an empty name
  for (const auto& c : cases) {
    services_->createResult = c.result;
    RunAndCancel([&](DialogScript& script, HWND dialog) {
      AddService(script, dialog, c.line);
      if (c.message != 0) {
        EXPECT_EQ(script.AnswerBox(IDOK), Message(c.message));
      }
      ExpectQuiet(script, dialog);
      EXPECT_EQ(script.Items(dialog, kList).size(), 4u);
    });
  }
}

TEST_F(ProfileDialogTest, RemoveSelectsWhatMovesUp) {
  for (FakeService& service : services_->services) service.flags = 0;
  RunAndCancel([&](DialogScript& script, HWND dialog) {
    const auto removeAt = [&](int line) {
      script.Select(dialog, kList, line);
      script.Press(dialog, kRemove);
      return script.Selected(dialog, kList);
    };
    EXPECT_EQ(removeAt(1), 1);
    EXPECT_EQ(script.Items(dialog, kList), (Lines{L"A", L"C", L"D"}));
    EXPECT_EQ(removeAt(2), 1);  // the last one
    services_->deleteResult = MAPI_E_CALL_FAILED;
    EXPECT_EQ(removeAt(0), 0);
    EXPECT_EQ(script.Items(dialog, kList), (Lines{L"A", L"C"}));
    services_->deleteResult = S_OK;
    removeAt(0);
    removeAt(0);
    EXPECT_EQ(script.Items(dialog, kList), Lines{});
    EXPECT_EQ(script.Selected(dialog, kList), -1);
  });
  EXPECT_EQ(services_->log, (CallLog{"delete b", "delete d", "delete a", "delete a", "delete c"}));
}

TEST_F(ProfileDialogTest, ExceptionsEndTheCommandAndNotTheDialog) {
  RunAndCancel([&](DialogScript& script, HWND dialog) {
    services_->onDelete = [] { throw std::bad_alloc(); };
    script.PostPress(dialog, kRemove);
    EXPECT_EQ(script.AnswerBox(IDOK), Message(273));
    ExpectQuiet(script, dialog);
    services_->onDelete = [] { throw 7; };
    script.Press(dialog, kRemove);
    ExpectQuiet(script, dialog);
    EXPECT_EQ(script.Items(dialog, kList).size(), 4u);
  });
}

TEST_F(ProfileDialogTest, ConfigureKeepsTheFirstSectionForEveryService) {
  HWND shown = nullptr;
  Run([&](DialogScript& script, HWND dialog) {
    shown = dialog;
    script.Press(dialog, kConfigure);
    EXPECT_EQ(script.Items(dialog, kList), (Lines{L"a configured", L"B", L"C", L"D"}));
    EXPECT_EQ(script.Selected(dialog, kList), 0);
    // Neither configurable: the double click does nothing.
    script.PostDoubleClick(dialog, kList, 3);
    script.WaitUntil([&] { return script.Selected(dialog, kList) == 3; }, "the selection");
    script.PostDoubleClick(dialog, kList, 1);
    script.WaitUntil([&] { return script.Items(dialog, kList).at(1) != L"B"; }, "the new name");
    // The name comes from the section that stayed open, which is that of the other service.
    EXPECT_EQ(script.Items(dialog, kList), (Lines{L"a configured", L"a configured", L"C", L"D"}));
    EXPECT_EQ(script.Selected(dialog, kList), 1);
    // The line kept its record.
    EXPECT_FALSE(script.IsEnabled(dialog, kRemove));
    script.Close(dialog, IDOK);
  });
  EXPECT_EQ(services_->log, (CallLog{"configure a", "configure b with an open section", "save a"}));
  EXPECT_EQ(services_->lastFlags, 0x80000002u);
  EXPECT_EQ(services_->lastUiParam, reinterpret_cast<ULONG_PTR>(shown));
}

TEST_F(ProfileDialogTest, SectionIsOpenedWhenConfiguringLeftNone) {
  services_->configureOpensNothing = true;
  services_->configureResult = MAPI_E_USER_CANCEL;
  RunAndCancel([&](DialogScript& script, HWND dialog) {
    script.Press(dialog, kConfigure);
    EXPECT_EQ(script.Items(dialog, kList).at(0), L"a configured");
  });
  EXPECT_EQ(services_->log, (CallLog{"configure a", "open a"}));
}

TEST_F(ProfileDialogTest, OkPublishesTheBookFileOfTheConfiguredService) {
  constexpr wchar_t kFile[] = L"C:\\books\\mine.db";
  const auto file = std::as_bytes(std::span(kFile));  // with its terminator
  services_->sectionTexts['a'][PR_ORV_BOOK_FILE_W] = kFile;
  const struct {
    int line;  // -1: nothing is configured
    int button;
    bool published;
  } cases[] = {{0, IDCANCEL, false}, {-1, IDOK, false}, {1, IDOK, false}, {0, IDOK, true}};
  for (const auto& c : cases) {
    Run([&](DialogScript& script, HWND dialog) {
      if (c.line >= 0) {
        script.Select(dialog, kList, c.line);
        script.Press(dialog, kConfigure);
      }
      script.Close(dialog, c.button);
    });
    const RegValue value = ReadRegValue(kWabKey, L"WAB File Name");
    const RegValue expected{REG_SZ, {file.begin(), file.end()}};
    EXPECT_EQ(value == expected, c.published) << c.line << " " << c.button;
  }
}

TEST_F(ProfileDialogTest, EveryFailedBufferIsSurvived) {
  services_->sectionTexts['a'][PR_ORV_BOOK_FILE_W] = L"file";
  bool fired = true;
  for (std::size_t nth = 1; fired; ++nth) {
    const long objects = faults::LiveObjects();
    const long blocks = faults::LiveTaskBlocks();
    faults::Arm(faults::Site::kTaskAllocation, nth);
    EXPECT_EQ(Run([&](DialogScript& script, HWND dialog) {
                script.Select(dialog, kList, 0);
                script.Press(dialog, kConfigure);
                script.Close(dialog, IDOK);
              }),
              IDOK);
    fired = faults::Fired(faults::Site::kTaskAllocation);
    faults::Arm(faults::Site::kTaskAllocation, 0);
    EXPECT_EQ(faults::LiveObjects(), objects) << nth;
    EXPECT_EQ(faults::LiveTaskBlocks(), blocks) << nth;
    ASSERT_LT(nth, 500u);
  }
}

TEST_F(ProfileDialogTest, WhatCannotBeShownIsMinusOne) {
  for (const HMODULE resources : {HMODULE{nullptr}, process::Instance()})
    EXPECT_EQ(ui::ShowProfileDialog(nullptr, resources, services_.Get()), -1);
  const auto noWindow = reinterpret_cast<HWND>(ULONG_PTR{0x12344321});
  EXPECT_EQ(ui::ShowProfileDialog(noWindow, Resources(), services_.Get()), -1);
}

std::vector<std::wstring>* g_topics = nullptr;

HWND WINAPI RecordTopic(HWND, const WCHAR* topic, UINT command, DWORD_PTR) {
  if (command == 0) g_topics->push_back(std::wstring(topic).substr(std::wstring(topic).find(L"::") + 3));
  return nullptr;
}

TEST_F(ProfileDialogTest, AddAndRemoveHaveNoHelpOfTheirOwn) {
  std::vector<std::wstring> topics;
  g_topics = &topics;
  ui::ReplaceHtmlHelp(RecordTopic);
  RunAndCancel([&](DialogScript& script, HWND dialog) {
    for (const int control : {kAdd, kRemove, kConfigure, kList}) {
      HELPINFO help{};
      help.cbSize = sizeof help;
      help.iContextType = HELPINFO_WINDOW;
      help.iCtrlId = control;
      script.Send(dialog, WM_HELP, 0, reinterpret_cast<LPARAM>(&help));
    }
  });
  ui::ReplaceHtmlHelp(nullptr);
  EXPECT_EQ(topics, (Lines{L"3331.htm>$global_Popup", L"3329.htm>$global_Popup"}));
}

}  // namespace
}  // namespace orv::test
