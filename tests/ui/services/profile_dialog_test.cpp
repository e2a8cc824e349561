// The profile dialog where clients meet it: profile administration with its window, over the registry.
#include <gtest/gtest.h>

#include <algorithm>
#include <span>

#include "platform/faults.h"
#include "tests/ui/services/services_fixture.h"
#include "ui/html_help.h"

namespace orv::test {
namespace {

constexpr wchar_t kWabKey[] = L"Software\\Tovan\\Velmora\\VX100 series\\Orv Profiles\\WAB";

class ProfileDialogTest : public ServicesFixture {
 protected:
  void SetFlags(const wchar_t* service, ULONG flags) const {
    SetProperty(service, {PR_RESOURCE_FLAGS, 0, {.ul = flags}});
  }
  void SetBookFile(const wchar_t* service, const wchar_t* file) const {
    SetProperty(service, {PR_ORV_BOOK_FILE_W, 0, {.lpszW = const_cast<wchar_t*>(file)}});
  }
};

TEST_F(ProfileDialogTest, ButtonsAndFocusFollowTheSelection) {
  MakeProfile({"a", "b", "c", "d"});
  SetFlags(L"b", ORV_SERVICE_NOT_REMOVABLE);
  SetFlags(L"c", ORV_SERVICE_NOT_CONFIGURABLE);
  SetFlags(L"d", ORV_SERVICE_NOT_REMOVABLE | ORV_SERVICE_NOT_CONFIGURABLE);
  const struct {
    const wchar_t* selected;
    bool remove;
    bool configure;
    int focused;  // before; its heir has the focus afterwards and is the default button
    int heir;
  } cases[] = {{L"a", true, true, kRemove, kRemove},   {L"b", false, true, kRemove, kConfigure},
               {L"c", true, false, kConfigure, IDOK},  {L"d", false, false, kRemove, IDOK},
               {L"d", false, false, kConfigure, IDOK}, {L"none", true, true, kConfigure, kConfigure}};
  ConfigureAndCancel([&](DialogScript& script, HWND dialog) {
    EXPECT_EQ(script.Items(dialog, kList).size(), 4u);
    EXPECT_EQ(script.Selected(dialog, kList), 0);
    for (const auto& c : cases) {
      SelectText(script, dialog, L"a");
      script.Focus(dialog, c.focused);
      SelectText(script, dialog, c.selected);
      EXPECT_EQ(script.IsEnabled(dialog, kRemove), c.remove) << c.selected;
      EXPECT_EQ(script.IsEnabled(dialog, kConfigure), c.configure) << c.selected;
      EXPECT_TRUE(script.HasFocus(dialog, c.heir)) << c.selected;
      const LRESULT style = GetWindowLongPtrW(GetDlgItem(dialog, c.heir), GWL_STYLE) & BS_TYPEMASK;
      EXPECT_EQ(style, BS_DEFPUSHBUTTON) << c.selected;
    }
    // Without a selection the buttons do nothing, and a double click not on what cannot be configured.
    script.Press(dialog, kRemove);
    script.Press(dialog, kConfigure);
    script.PostDoubleClick(dialog, kList, LineOf(script, dialog, L"c"));
    script.Send(dialog, WM_NULL);
    EXPECT_EQ(script.Items(dialog, kList).size(), 4u);
  });
  EXPECT_TRUE(script_.serviceCalls.empty());
}

TEST_F(ProfileDialogTest, AddNeedsMoreThanOneServiceInTheCatalogue) {
  MakeProfile({"a"});
  const std::pair<std::string, bool> cases[] = {
      {CatalogueText({{"a"}}), false}, {"[Services]\r\na=A\r\nb=B\r\n", true}, {"nothing", false}};
  for (const auto& c : cases) {
    installation_.WriteCatalogue(c.first);
    ConfigureAndCancel([&](DialogScript& script, HWND dialog) {
      EXPECT_EQ(script.IsEnabled(dialog, kAdd), c.second) << c.first;
    });
  }
}

TEST_F(ProfileDialogTest, AddedServiceIsTheLastLineAndSelected) {
  MakeProfile({"a", "b"});
  HWND shown = nullptr;
  ConfigureAndConfirm([&](DialogScript& script, HWND dialog) {
    shown = dialog;
    script.Close(OpenAdd(script, dialog, 1), IDOK);
    WaitLines(script, dialog, 3);
    EXPECT_EQ(script.Items(dialog, kList).back(), L"b");
    EXPECT_EQ(script.Selected(dialog, kList), 2);
  });
  ASSERT_EQ(script_.serviceCalls.size(), 1u);
  EXPECT_EQ(script_.serviceCalls[0].context, MSG_SERVICE_CREATE);
  EXPECT_EQ(script_.serviceCalls[0].flags, MAPI_UNICODE | SERVICE_UI_ALWAYS);
  EXPECT_EQ(script_.serviceCalls[0].uiParam, reinterpret_cast<ULONG_PTR>(shown));
}

TEST_F(ProfileDialogTest, FailedAdditionTellsWhyAndLeavesTheProfileAsItWas) {
  MakeProfile({"a", "b"});
  const std::string files = "PR_SERVICE_SUPPORT_FILES=kernel32\r\n";
  installation_.WriteCatalogue(
      CatalogueText({{"a", files + "PR_RESOURCE_FLAGS=SERVICE_SINGLE_COPY\r\n"}, {"b"}}));
  const auto before = Stored();
  const struct {
    int line;  // -1: no service is chosen
    FakeAnswer answer;
    UINT message;
  } cases[] = {{0, {}, 269},
               {1, {MAPI_E_CALL_FAILED}, 270},
               {1, {S_OK, Throws::kBadAlloc}, 270},
               {1, {MAPI_E_USER_CANCEL}, 0},
               {-1, {}, 270}};
  for (const auto& c : cases) {
    script_.answers["ServiceEntry"] = c.answer;
    ConfigureAndConfirm([&](DialogScript& script, HWND dialog) {
      script.Close(OpenAdd(script, dialog, c.line), IDOK);
      ExpectBox(script, c.message);
      WaitLines(script, dialog, 2);
    });
    EXPECT_EQ(Stored(), before) << &c - cases;
  }
}

TEST_F(ProfileDialogTest, RemoveSelectsWhatMovesUp) {
  MakeProfile({"a", "b", "c"});
  ConfigureAndConfirm([&](DialogScript& script, HWND dialog) {
    Lines left = script.Items(dialog, kList);
    for (const int line : {1, 1, 0}) {  // of three, the last of two, the only one
      script.Select(dialog, kList, line);
      script.Press(dialog, kRemove);
      left.erase(left.begin() + line);
      EXPECT_EQ(script.Items(dialog, kList), left);
      EXPECT_EQ(script.Selected(dialog, kList), left.size() == 2 ? 1 : left.empty() ? -1 : 0);
    }
  });
  EXPECT_EQ(Stored(), std::vector<std::string>{});
}

TEST_F(ProfileDialogTest, UnconfirmedChangesLeaveEveryStoredByteAsItWas) {
  MakeProfile({"a", "b", "c"});
  const auto before = Stored();
  script_.newName = L"renamed";
  script_.saves = true;
  ConfigureAndCancel([&](DialogScript& script, HWND dialog) {
    SelectText(script, dialog, L"a");
    script.Press(dialog, kConfigure);
    SelectText(script, dialog, L"b");
    script.Press(dialog, kRemove);
    script.Close(OpenAdd(script, dialog, 2), IDOK);
    script.WaitUntil([&] { return script.Selected(dialog, kList) == 2; }, "the new line");
    script.WaitEnabled(dialog);
    EXPECT_NE(Stored(), before);
  });
  EXPECT_EQ(Stored(), before);
  EXPECT_EQ(admin_->DeleteProfile(L"P", MAPI_UNICODE), S_OK);
  // A profile in the making goes as a whole.
  for (const int button : {IDCANCEL, IDOK}) {
    DialogDriver driver([&](DialogScript& script) {
      const HWND dialog = script.NextDialog();
      EXPECT_EQ(script.Items(dialog, kList).size(), 3u);
      script.Close(dialog, button);
    });
    const bool isMade = button == IDOK;
    EXPECT_EQ(admin_->CreateProfile(L"P", 0, MAPI_UNICODE | MAPI_DEFAULT_SERVICES | MAPI_DIALOG),
              isMade ? S_OK : MAPI_E_USER_CANCEL);
    EXPECT_EQ(SubkeyNames(kProfiles), isMade ? Lines{L"P"} : Lines{});
  }
}

TEST_F(ProfileDialogTest, ConfigureKeepsTheFirstSectionForEveryServiceAndOkSavesIt) {
  MakeProfile({"a", "b", "c"});
  SetFlags(L"c", ORV_SERVICE_NOT_REMOVABLE);
  script_.newName = L"renamed";
  script_.answers["ServiceEntry"] = {MAPI_E_USER_CANCEL};  // a failure hands the section out too
  ConfigureAndConfirm([&](DialogScript& script, HWND dialog) {
    SelectText(script, dialog, L"a");
    script.Press(dialog, kConfigure);
    EXPECT_GE(LineOf(script, dialog, L"renamed"), 0);
    EXPECT_EQ(script.Selected(dialog, kList), LineOf(script, dialog, L"renamed"));
    script.PostDoubleClick(dialog, kList, LineOf(script, dialog, L"c"));
    script.WaitUntil([&] { return LineOf(script, dialog, L"c") < 0; }, "the new name");
    EXPECT_FALSE(script.IsEnabled(dialog, kRemove));  // the line kept its record
  });
  ASSERT_EQ(script_.configured.size(), 2u);
  EXPECT_EQ(script_.configured[0], script_.configured[1]);
  ConfigureAndCancel([&](DialogScript& script, HWND dialog) {
    Lines lines = script.Items(dialog, kList);
    std::sort(lines.begin(), lines.end());
    EXPECT_EQ(lines, (Lines{L"b", L"c", L"renamed"}));
  });
}

TEST_F(ProfileDialogTest, OkPublishesTheBookFileOfTheConfiguredService) {
  constexpr wchar_t kFile[] = L"C:\\books\\mine.db";
  const auto file = std::as_bytes(std::span(kFile));  // with its terminator
  MakeProfile({"a", "b"});
  SetBookFile(L"a", kFile);
  const struct {
    const wchar_t* configured;
    int button;
    bool published;
  } cases[] = {{L"a", IDCANCEL, false}, {L"", IDOK, false}, {L"b", IDOK, false}, {L"a", IDOK, true}};
  for (const auto& c : cases) {
    ConfigureAndPress(c.button, [&](DialogScript& script, HWND dialog) {
      SelectText(script, dialog, c.configured);
      script.Press(dialog, kConfigure);
    });
    const RegValue expected{REG_SZ, {file.begin(), file.end()}};
    EXPECT_EQ(ReadRegValue(kWabKey, L"WAB File Name") == expected, c.published) << c.configured << c.button;
  }
}

// The first allocation, the second and so on fails while a service is configured and the dialog confirmed.
TEST_F(ProfileDialogTest, EveryFailedBufferIsSurvived) {
  MakeProfile({"a"});
  SetBookFile(L"a", L"file");
  bool fired = true;
  for (std::size_t nth = 1; fired; ++nth) {
    const long objects = faults::LiveObjects();
    const long blocks = faults::LiveTaskBlocks();
    Configure([&](DialogScript& script, HWND dialog) {
      faults::Arm(faults::Site::kTaskAllocation, nth);
      script.Press(dialog, kConfigure);
      script.Close(dialog, IDOK);
      fired = faults::Fired(faults::Site::kTaskAllocation);
      faults::Arm(faults::Site::kTaskAllocation, 0);
    });
    EXPECT_EQ(faults::LiveObjects(), objects) << nth;
    EXPECT_EQ(faults::LiveTaskBlocks(), blocks) << nth;
    ASSERT_LT(nth, 500u);
  }
}

WNDPROC g_listProcedure = nullptr;

LRESULT CALLBACK RefuseInsertion(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == LB_INSERTSTRING) return LB_ERRSPACE;
  return CallWindowProcW(g_listProcedure, window, message, wParam, lParam);
}

TEST_F(ProfileDialogTest, NameThatTheListHasNoRoomForLeavesTheLine) {
  MakeProfile({"a", "b"});
  ConfigureAndCancel([&](DialogScript& script, HWND dialog) {
    const Lines before = script.Items(dialog, kList);
    const auto refuse = reinterpret_cast<LONG_PTR>(&RefuseInsertion);
    g_listProcedure =
        reinterpret_cast<WNDPROC>(SetWindowLongPtrW(GetDlgItem(dialog, kList), GWLP_WNDPROC, refuse));
    script.Press(dialog, kConfigure);
    EXPECT_EQ(script.Items(dialog, kList), before);
    EXPECT_EQ(script.Selected(dialog, kList), 0);
  });
}

TEST_F(ProfileDialogTest, DialogThatCannotBeShownIsACancelledOne) {
  MakeProfile({"a"});
  constexpr ULONG_PTR kNoWindow = 0x12344321;
  EXPECT_EQ(admin_->ConfigureProfile(L"P", kNoWindow, MAPI_UNICODE), MAPI_E_USER_CANCEL);
}

Lines g_topics;

HWND WINAPI RecordTopic(HWND, const WCHAR* topic, UINT command, DWORD_PTR) {
  if (command == 0) g_topics.push_back(std::wstring(topic).substr(std::wstring(topic).find(L"::") + 3));
  return nullptr;
}

TEST_F(ProfileDialogTest, AddAndRemoveHaveNoHelpOfTheirOwn) {
  MakeProfile({"a"});
  ui::ReplaceHtmlHelp(RecordTopic);
  ConfigureAndCancel([&](DialogScript& script, HWND dialog) {
    for (const int control : {kAdd, kRemove, kConfigure, kList}) AskHelp(script, dialog, control);
  });
  ui::ReplaceHtmlHelp(nullptr);
  EXPECT_EQ(g_topics, (Lines{L"3331.htm>$global_Popup", L"3329.htm>$global_Popup"}));
}

}  // namespace
}  // namespace orv::test
