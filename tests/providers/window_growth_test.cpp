// Each window of a personal book many times: what it took is given back. A window that is added joins here.
#include <algorithm>
#include <array>
#include <cstdint>

#include "platform/faults.h"
#include "tests/providers/windows_fixture.h"
#include "tests/support/process_probe.h"

namespace orv::test {
namespace {

constexpr int kTimes = 10;
// The system's own keeping differs by this much between two moments; a block that stays each time is more.
constexpr long long kHeapNoise = 2048;

using Counts = std::map<std::string, long long>;

Counts Count() {
  const auto [slots, handles, libraries, bytes] = CountProcess();
  const WindowObjects windows = CountWindowObjects();
  return {{"slots", slots},
          {"handles", handles},
          {"libraries", libraries},
          {"bytes", bytes},
          {"objects", faults::LiveObjects()},
          {"blocks", faults::LiveTaskBlocks()},
          {"user", windows.user},
          {"drawing", windows.drawing}};
}

// What each of several batches leaves beyond `allowed`: what the system makes late it makes once.
Counts Grown(const std::function<void()>& open, const Counts& allowed) {
  constexpr int kBatches = 3;
  Counts least, before = Count();
  for (int batch = 0; batch < kBatches; ++batch) {
    for (int i = 0; i < kTimes; ++i) open();
    bool hasGrown = false;
    for (const auto& [name, count] : Count()) {
      const auto floor = allowed.find(name);
      const long long grown = count - before[name] - (floor != allowed.end() ? floor->second : 0);
      least[name] = batch == 0 ? grown : std::min(least[name], grown);
      hasGrown |= least[name] > 0;
    }
    if (!hasGrown) break;
    before = Count();
  }
  return least;
}

// A window and, of a contact, its pages by the platform alone, with the controls that the library's manifest asks for:
// what it keeps of them is not ours.
INT_PTR CALLBACK BareProcedure(HWND dialog, UINT message, WPARAM first, LPARAM) {
  if (message == WM_INITDIALOG && GetDlgItem(dialog, IDC_TABS) != nullptr) {
    for (int page = IDD_CONTACT_NAME; page <= IDD_CONTACT_NOTE; ++page)
      ShowWindow(CreateDialogParamW(GetModuleHandleW(L"xhtpaba.dll"),
                                    MAKEINTRESOURCEW(static_cast<WORD>(page)), dialog, BareProcedure, 0),
                 SW_SHOWNA);
  }
  if (message == WM_COMMAND && LOWORD(first) == IDCANCEL) EndDialog(dialog, IDCANCEL);
  return message == WM_INITDIALOG;
}

void ShowBare(int dialog) {
  ACTCTXW controls{};
  controls.cbSize = sizeof controls;
  controls.dwFlags = ACTCTX_FLAG_HMODULE_VALID | ACTCTX_FLAG_RESOURCE_NAME_VALID;
  controls.hModule = GetModuleHandleW(L"xhtpaba.dll");
  controls.lpResourceName = MAKEINTRESOURCEW(2);
  const HANDLE context = CreateActCtxW(&controls);
  ULONG_PTR cookie = 0;
  ASSERT_TRUE(ActivateActCtx(context, &cookie));
  {
    DialogDriver driver([](DialogScript& script) { script.Close(script.NextDialog(), IDCANCEL); });
    EXPECT_EQ(DialogBoxParamW(controls.hModule, MAKEINTRESOURCEW(dialog), nullptr, BareProcedure, 0),
              IDCANCEL);
  }
  DeactivateActCtx(0, cookie);
  ReleaseActCtx(context);
}

class GrowthTest : public WindowsTest {
 protected:
  void Expect(const char* window, const std::function<void()>& open,
              const Counts& platforms = {{"bytes", kHeapNoise}}) {
    for (int i = 0; i < 3; ++i) open();
    for (const auto& [name, grown] : Grown(open, platforms)) EXPECT_LE(grown, 0) << window << ": " << name;
  }
};

void Cancel(DialogScript&, Pilot window) { window.Close(IDCANCEL); }

TEST_F(GrowthTest, WindowsThatAreOpenedOftenLeaveNothing) {
  const auto store = Elsewhere();
  formats::Contact ida = Named("Ida"), all = Named("All", true);
  const book::EntryKey key = AddTo(*store, ida);
  all.members.push_back({ContactIn(*store, key).uid, "", "", "Ida", "", ""});
  AddTo(*store, all);
  {
    Client client;
    const std::vector<Bytes> ids = Ids(client.Open());
    const auto ofPlatform = [](int dialog) {
      ShowBare(dialog);
      Counts counts = Grown([dialog] { ShowBare(dialog); }, {});
      counts["bytes"] += kHeapNoise;
      return counts;
    };
    const Counts pages = ofPlatform(IDD_CONTACT), lists = ofPlatform(IDD_LIST);
    Expect(
        "list", [&] { Details(client, ids.at(0), Cancel); }, lists);
    Expect(
        "contact",
        [&] {
          Details(client, ids.at(1), [](DialogScript& script, Pilot window) {
            for (const int page : {1, 2, 3, 4}) window.Turn(page);
            Cancel(script, window);
          });
        },
        pages);
    Expect(
        "new contact", [&] { New(client, MAPI_MAILUSER, Cancel); }, pages);
    Expect(
        "new list", [&] { New(client, MAPI_DISTLIST, Cancel); }, lists);
    Expect("contact or list", [&] { New(client, 0, Cancel); });
    Expect(
        "conflict",
        [&, turn = 0]() mutable {
          ida.title = std::to_string(++turn);
          Details(client, ids.at(1), [&](DialogScript& script, Pilot window) {
            EXPECT_EQ(store->Change(key, ida, book::kAnyVersion, nullptr), S_OK);
            window.Type(IDC_TITLE, L"mine");
            window.PostPress(IDOK);
            Cancel(script, {script, script.NextDialog()});
            script.WaitEnabled(window.Window());
            window.PostPress(IDCANCEL);
            script.AnswerBox(IDYES);
          });
        },
        pages);
    Expect(
        "settings", [&] { Configure(Cancel); }, ofPlatform(IDD_CONFIGURE));
  }
  EXPECT_EQ(GetModuleHandleW(L"xhtpaba.dll"), nullptr) << "somebody still has an object of it";
}

}  // namespace
}  // namespace orv::test
