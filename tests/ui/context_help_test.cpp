// Context help: where a popup goes, which topic a control has, what HTML Help is asked.
#include "ui/context_help.h"

#include <gtest/gtest.h>
#include <htmlhelp.h>

#include <cstring>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "orv/orv.h"
#include "tests/support/dialog_driver.h"
#include "tests/ui/resource_fixture.h"
#include "ui/dialog.h"
#include "ui/html_help.h"
#include "ui/window_utils.h"

namespace orv::ui {
namespace {

using test::DialogDriver;
using test::DialogScript;
using test::RectangleText;

TEST(PopupPlace, CasesOnADesktopOfThousandBySevenHundred) {
  constexpr RECT kDesktop{0, 0, 1000, 700};
  constexpr SIZE kSize{299, 178};
  const struct {
    RECT control;
    SIZE popup;
    const char* place;
  } cases[] = {
      {{400, 300, 500, 320}, kSize, "251,310,550,488"},  // half of 299 is 149
      {{100, 300, 200, 320}, kSize, "0,310,299,488"},    // not beyond the left edge
      {{851, 300, 900, 320}, kSize, "701,310,1000,488"},
      {{400, 690, 500, 699}, kSize, "251,522,550,700"},
      {{-50, -40, 10, -20}, kSize, "0,-30,299,148"},  // only the left edge is minded above
      {{400, 300, 500, 320}, {1200, 800}, "-200,-100,1000,700"},
      {{400, 300, 500, 320}, {-3, 20}, "401,310,398,330"},  // -3 / 2 is -1
  };
  for (const auto& c : cases) EXPECT_EQ(RectangleText(PlacePopup(c.control, c.popup, kDesktop)), c.place);
}

TEST(PopupPlace, OneLineTopicsAreLower) {
  constexpr RECT kRectangle{10, 20, 309, 198};
  EXPECT_EQ(PopupSize(kRectangle, 0xD01, false).cx, 299);
  EXPECT_EQ(PopupSize(kRectangle, 0xD01, false).cy, 178);
  EXPECT_EQ(PopupSize(kRectangle, 0xD01, true).cy, 154) << "a common topic";
  for (const UINT identifier : {0x812F0385u, 0x812F0002u, 0x812F0003u, 0x80650418u})
    EXPECT_EQ(PopupSize(kRectangle, identifier, false).cy, 154) << std::hex << identifier;
}

// HTML Help's place is taken by this record of what it was asked.
struct FakeHelp {
  // What a query of the window type is told; at first that it is unknown.
  std::function<HWND(void* data)> answer = [](void*) { return reinterpret_cast<HWND>(INT_PTR{-1}); };
  HWND window = nullptr;
  HWND caller = nullptr;
  std::vector<std::wstring> queried;
  std::vector<std::string> defined;  // name, caption and place
  std::vector<std::wstring> displayed;
};
FakeHelp* g_help = nullptr;

std::string Narrow(const HH_WINTYPE& record, const void* text) {
  if (!record.fUniCodeStrings) return static_cast<const char*>(text);
  const std::wstring wide = static_cast<const WCHAR*>(text);
  return "wide:" + std::filesystem::path(wide).string();
}

HWND WINAPI FakeHtmlHelp(HWND caller, const WCHAR* file, UINT command, DWORD_PTR data) {
  if (command == HH_GET_WIN_TYPE) {
    g_help->queried.push_back(file);
    return g_help->answer(reinterpret_cast<void*>(data));
  }
  if (command == HH_SET_WIN_TYPE) {
    const auto& record = *reinterpret_cast<const HH_WINTYPE*>(data);
    EXPECT_EQ(record.cbStruct, 280);
    EXPECT_EQ(record.fsValidMembers, 26u);
    EXPECT_EQ(record.fsWinProperties, 0x8000u);
    EXPECT_EQ(record.dwExStyles, 0x80u);
    EXPECT_TRUE(std::wstring(file).ends_with(L"\\XHTFCAUS.chm"));
    g_help->defined.push_back(Narrow(record, record.pszType) + " " + Narrow(record, record.pszCaption) + " " +
                              RectangleText(record.rcWindowPos));
    return nullptr;
  }
  if (command != HH_DISPLAY_TOPIC) return nullptr;
  g_help->caller = caller;
  g_help->displayed.push_back(file);
  return g_help->window;
}

constexpr HelpIdPair kTopics[] = {{1155, 0xD01}, {1156, 0xD02}, {1158, 0x812F0002}, {1157, 0}};

// Dialog 255 of the real companion, with nothing behind it but help.
struct HelpDialog final : ModalDialog {
  HelpDialog() : ModalDialog(process::ResourceLibrary(), 255, kTopics) {}
  bool OnInitialise() override { return true; }
};

class ContextHelp : public test::ResourceFixture {
 protected:
  ContextHelp() {
    g_help = &help_;
    ReplaceHtmlHelp(FakeHtmlHelp);
  }
  ~ContextHelp() override {
    ReplaceHtmlHelp(nullptr);
    g_help = nullptr;
  }

  // Shows the dialog, lets the script act on it and cancels it.
  void Run(const std::function<void(DialogScript&, HWND dialog)>& act) {
    DialogDriver driver([&](DialogScript& script) {
      const HWND dialog = script.NextDialog();
      act(script, dialog);
      script.Close(dialog, IDCANCEL);
    });
    EXPECT_EQ(HelpDialog().Show(nullptr), IDCANCEL);
  }

  std::wstring Topic(const wchar_t* number) const {
    return installation_.Path(L"XHTFCAUS.chm") + L"::/" + number + L".htm>$global_Popup";
  }

  FakeHelp help_;
};

POINT Middle(HWND dialog, int control) {
  const RECT r = WindowRectangle(GetDlgItem(dialog, control));
  return {(r.left + r.right) / 2, (r.top + r.bottom) / 2};
}

TEST_F(ContextHelp, TopicComesFromTheDialogsTableThenTheCommonOne) {
  Run([&](DialogScript& script, HWND dialog) {
    AskHelp(script, dialog, 1155);
    AskHelp(script, dialog, 1);
    AskHelp(script, dialog, 1157);  // identifier 0: no help
    AskHelp(script, dialog, 1205);  // in no table
    AskHelp(script, dialog, 9);     // in the common table, but no such control
    AskHelp(script, dialog, 0, Middle(dialog, 1156));
    AskHelp(script, dialog, 0, {-30000, -30000});
  });
  EXPECT_EQ(help_.displayed, (std::vector{Topic(L"3329"), Topic(L"2167341057"), Topic(L"3330")}));
  EXPECT_EQ(help_.queried.at(0), installation_.Path(L"XHTFCAUS.chm") + L">Popup");
}

// The record is the process's and is never reset, so this comes before whatever gets an answer.
TEST_F(ContextHelp, DefaultsStandInUntilHtmlHelpAnswersAndTheFirstRectangleStays) {
  RECT list{};
  Run([&](DialogScript& script, HWND dialog) {
    list = WindowRectangle(GetDlgItem(dialog, 1155));
    const auto unknown = help_.answer;
    AskHelp(script, dialog, 1155);
    help_.answer = [](void*) { return HWND{nullptr}; };
    AskHelp(script, dialog, 1155);
    // The first answer that comes brings its rectangle; later ones only their caption.
    HH_WINTYPE type{};
    type.pszType = L"Popup";
    const auto askWith = [&](bool asPointer, BOOL isWide, const void* caption, const RECT& place) {
      type.cbStruct = sizeof type;
      type.fUniCodeStrings = isWide;
      std::memcpy(&type.pszCaption, &caption, sizeof caption);
      type.rcWindowPos = place;
      help_.answer = [&, asPointer](void* data) {
        HH_WINTYPE* const pointer = &type;
        asPointer ? std::memcpy(data, &pointer, sizeof pointer) : std::memcpy(data, &type, sizeof type);
        return HWND{nullptr};
      };
      AskHelp(script, dialog, 1155);
    };
    askWith(false, TRUE, L"Wide", {5, 5, 105, 85});
    const std::string longCaption(400, 'x');
    askWith(true, FALSE, longCaption.c_str(), {0, 0, 500, 400});
    help_.answer = unknown;  // what was answered before is kept
    AskHelp(script, dialog, 1155);
  });
  const RECT desktop = WindowRectangle(GetDesktopWindow());
  const std::string byDefault =
      "$global_Popup Tovan Dorin FAX Help " + RectangleText(PlacePopup(list, {299, 178}, desktop));
  const std::string fromFile = RectangleText(PlacePopup(list, {100, 80}, desktop));
  const std::string cut = "$global_Popup " + std::string(311, 'x') + " " + fromFile;
  EXPECT_EQ(help_.defined, (std::vector<std::string>{byDefault, byDefault,
                                                     "wide:$global_Popup wide:Wide " + fromFile, cut, cut}));
}

TEST_F(ContextHelp, MenuComesFirstAndDecides) {
  Run([&](DialogScript& script, HWND dialog) {
    const auto ask = [&](HWND window, POINT point) {
      script.Post(dialog, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(window), MAKELPARAM(point.x, point.y));
      return script.NextMenu();
    };
    HWND menu = ask(GetDlgItem(dialog, 1155), Middle(dialog, 1155));
    script.Post(menu, WM_KEYDOWN, VK_ESCAPE);
    script.WaitClosed(menu);
    script.Send(dialog, WM_NULL);
    EXPECT_TRUE(help_.displayed.empty());

    // From the keyboard the menu opens at the centre of the control.
    menu = ask(GetDlgItem(dialog, 1155), {-1, -1});
    const RECT at = WindowRectangle(menu);
    EXPECT_NEAR(at.left, Middle(dialog, 1155).x, 4);
    EXPECT_NEAR(at.top, Middle(dialog, 1155).y, 4);
    script.Post(dialog, WM_KEYDOWN, VK_DOWN);
    script.Post(dialog, WM_KEYDOWN, VK_RETURN);
    script.WaitClosed(menu);
    script.WaitUntil([&] { return !help_.displayed.empty(); }, "the topic");
  });
  EXPECT_EQ(help_.displayed, std::vector{Topic(L"3329")});
}

// The path of the main help is found once for the process, so this is the one test that asks for it.
TEST_F(ContextHelp, MainHelpIsShownOverTheCallersWindowOrNotFound) {
  const HWND owner = GetDesktopWindow();
  EXPECT_EQ(OrvShowHelp(reinterpret_cast<ULONG_PTR>(owner)), MAPI_E_NOT_FOUND);
  help_.window = owner;
  EXPECT_EQ(OrvShowHelp(reinterpret_cast<ULONG_PTR>(owner)), S_OK);
  EXPECT_EQ(help_.displayed, std::vector(2, installation_.Path(L"XHTFHAUS.chm") + L">main"));
  EXPECT_EQ(help_.caller, owner);
}

// The real control over the real help file, twice: the second query finds the window type that the first
// display brought in.
TEST_F(ContextHelp, RealControlShowsATopicOfOurHelpFileOnly) {
  ReplaceHtmlHelp(nullptr);
  installation_.WriteTextFile(L"XHTFCAUS.chm", "no help file at all");
  Run([&](DialogScript&, HWND dialog) {
    ULONG shown = 0;
    EXPECT_EQ(ShowContextHelp({dialog, 1155, WM_HELP, std::nullopt}, Resources(), kTopics, shown), nullptr);
    EXPECT_EQ(shown, 0u);
  });
  installation_.CopyIn(L"XHTFCAUS.chm", L"XHTFCAUS.chm");
  HWND popup = nullptr;
  Run([&](DialogScript& script, HWND dialog) {
    AskHelp(script, dialog, 1155);
    ULONG shown = 0;
    popup = ShowContextHelp({dialog, 1155, WM_HELP, std::nullopt}, Resources(), kTopics, shown);
    EXPECT_TRUE(IsWindow(popup));
    EXPECT_EQ(shown, 1u);
  });
  EXPECT_FALSE(IsWindow(popup));
}

}  // namespace
}  // namespace orv::ui
