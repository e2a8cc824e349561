// Centring, fax ports, message boxes.
#include "platform/win.h"

#include <gtest/gtest.h>
#include <winspool.h>

#include <filesystem>
#include <fstream>

#include "tests/support/dialog_driver.h"
#include "tests/ui/resource_fixture.h"
#include "ui/activation_context.h"
#include "ui/fax_port.h"
#include "ui/message_box.h"
#include "ui/text.h"
#include "ui/window_utils.h"

namespace orv::ui {
namespace {

using test::DialogDriver;
using test::DialogScript;
using test::ResourceFixture;

TEST(Centring, HalvesAreIntegersAndTheDesktopMayBeSmaller) {
  const struct {
    RECT window;
    RECT desktop;
    POINT origin;
  } cases[] = {
      {{0, 0, 100, 50}, {0, 0, 800, 600}, {350, 275}},
      {{30, 40, 131, 91}, {0, 0, 801, 601}, {350, 275}},  // odd sizes: halves cut off one by one
      {{0, 0, 900, 700}, {0, 0, 800, 600}, {-50, -50}},
  };
  for (const auto& c : cases) {
    const POINT origin = CentredOrigin(c.window, c.desktop);
    EXPECT_EQ(origin.x, c.origin.x);
    EXPECT_EQ(origin.y, c.origin.y);
  }
}

TEST(FaxPort, PrefixListCases) {
  const struct {
    const wchar_t* port;
    const wchar_t* prefixes;
    bool isFax;
  } cases[] = {
      {L"XYZ1:", L"ABC,XYZ", true}, {L"ABC", L"ABC,XYZ", true}, {L"XYZ1:", L"", false},
      {L"XYZ1:", L",,", false},     {L"xyz1:", L"XYZ", false},  {L"XY", L"XYZ", false},
      {L"XYZ", L",XYZ,", true},     {L"", L"A", false},         {L"XYZ1:", L"ABC, XYZ", false},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(StartsWithListedPrefix(c.port, c.prefixes), c.isFax) << c.port << " in " << c.prefixes;
  }
}

TEST(FaxPort, ListIsReadFromTheDriversSettingsOfTheModel) {
  wchar_t directory[MAX_PATH] = {};
  DWORD needed = 0;
  ASSERT_TRUE(GetPrinterDriverDirectoryW(nullptr, nullptr, 1, reinterpret_cast<BYTE*>(directory),
                                         sizeof(directory), &needed));
  std::filesystem::create_directories(directory);
  const std::filesystem::path settings = std::filesystem::path(directory) / L"XHTFCFB.ini";
  std::ofstream(settings) << "[FaxTypeSupportedPorts]\r\nPortPrefix=ABC,XYZ\r\n";
  {
    const test::Installation modelB(L"xhtabb.dll");
    EXPECT_TRUE(IsFaxPort(L"XYZ1:", process::Instance()));
    EXPECT_FALSE(IsFaxPort(L"LPT1:", process::Instance()));
  }
  const test::Installation modelA;
  EXPECT_FALSE(IsFaxPort(L"XYZ1:", process::Instance()));  // its settings are missing
  EXPECT_FALSE(IsFaxPort(L"XYZ1:", nullptr));              // a program that is no model of ours
  std::filesystem::remove(settings);
}

using Boxes = ResourceFixture;

TEST_F(Boxes, QuestionDefaultsToNo) {
  for (const int answer : {IDYES, IDNO}) {
    std::wstring caption;
    DialogDriver driver([&](DialogScript& script) {
      const HWND box = script.NextDialog();
      caption = test::WindowText(box);
      script.WaitUntil([&] { return script.HasFocus(box, IDNO); }, "No to be the default");
      script.Close(box, answer);
    });
    EXPECT_EQ(AskQuestion(280, Resources(), nullptr), answer == IDYES);
    driver.Finish();
    EXPECT_EQ(caption, LoadText(Resources(), 266, 80));
  }
}

TEST_F(Boxes, ArabicReadsFromTheRight) {
  EXPECT_EQ(MessageStyle(MB_ICONERROR, process::Instance()), 0x10u);
  UseLanguage(L"1");
  EXPECT_EQ(MessageStyle(MB_ICONERROR, process::Instance()), 0x180010u);
  EXPECT_NE(LoadText(Resources(), 270, 160).find_first_of(L"\u0627\u0644"), WString::npos);
}

using CommonControls = ResourceFixture;

// True when who asks for the common controls by name is sent to another file than the system's own.
bool AreRedirected() {
  ACTCTX_SECTION_KEYED_DATA found{};
  found.cbSize = sizeof found;
  return FindActCtxSectionStringW(0, nullptr, ACTIVATION_CONTEXT_SECTION_DLL_REDIRECTION, L"comctl32.dll",
                                  &found) != FALSE;
}

TEST_F(CommonControls, ManifestIsInForceWhileTheContextLives) {
  for (const HMODULE library : {HMODULE{nullptr}, Resources(), process::Instance()}) {
    {
      const ActivationContext context(library);
      EXPECT_EQ(context.IsActive(), library == Resources());
      EXPECT_EQ(AreRedirected(), library == Resources());
    }
    EXPECT_FALSE(AreRedirected());
  }
}

}  // namespace
}  // namespace orv::ui
