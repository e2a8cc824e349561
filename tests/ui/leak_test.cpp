// Each dialog many times: what it took is given back. A dialog that is added joins here.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <set>
#include <utility>

#include "platform/faults.h"
#include "tests/ui/address/address_world.h"
#include "tests/ui/services/services_fixture.h"
#include "ui/services/install_dialog.h"

namespace orv::test {
namespace {

// What this process has, found by trying every handle value: the system's own counters are not to be had everywhere.
struct HandleCounts {
  enum Kind { kWindows, kMenus, kIcons, kDrawingObjects, kKinds };
  std::array<int, kKinds> kept{};
  // Device contexts, regions and bitmaps. The system keeps some of them for the next window, a few more whenever
  // two windows are drawn at once, so these are steady but for that.
  int cached = 0;
};

// A handle's low half is its slot; the high half, 0 here, is not compared then.
constexpr std::uintptr_t kSlots = 0x10000;
const std::set<DWORD> kDrawing = {OBJ_PEN, OBJ_EXTPEN, OBJ_BRUSH, OBJ_PAL, OBJ_FONT};

bool IsOwnWindow(HWND window) {
  DWORD process = 0;
  return GetWindowThreadProcessId(window, &process) != 0 && process == GetCurrentProcessId();
}

bool IsIcon(HICON icon) {
  ICONINFO info{};
  if (!GetIconInfo(icon, &info)) return false;
  if (info.hbmColor != nullptr) DeleteObject(info.hbmColor);
  if (info.hbmMask != nullptr) DeleteObject(info.hbmMask);
  return true;
}

template <class Handle>
Handle AtSlot(std::uintptr_t slot) {
  return reinterpret_cast<Handle>(slot);
}

HandleCounts CountHandles() {
  HandleCounts counts;
  for (std::uintptr_t slot = 1; slot < kSlots; ++slot) {
    if (const DWORD type = GetObjectType(AtSlot<HGDIOBJ>(slot)); type != 0)
      ++(kDrawing.contains(type) ? counts.kept[HandleCounts::kDrawingObjects] : counts.cached);
    // The other kinds share one table, whose slots are even.
    if (slot % 2 != 0) continue;
    counts.kept[HandleCounts::kWindows] += IsOwnWindow(AtSlot<HWND>(slot));
    counts.kept[HandleCounts::kMenus] += IsMenu(AtSlot<HMENU>(slot)) != FALSE;
    counts.kept[HandleCounts::kIcons] += IsIcon(AtSlot<HICON>(slot));
  }
  return counts;
}

// What the first times create for the process, and what the system then keeps for the next window, stays; every later
// one must leave everything as it was.
void ExpectNothingStays(const std::function<void()>& once) {
  constexpr int kTimes = 24;
  const auto countAfter = [&](int times) {
    for (int i = 0; i < times; ++i) once();
    return CountHandles();
  };
  HandleCounts before = countAfter(8);
  const long objects = faults::LiveObjects();
  const long blocks = faults::LiveTaskBlocks();
  HandleCounts after = countAfter(kTimes);
  // What the system makes late it makes once, whereas a leak keeps something in every batch.
  for (int batch = 1; batch < 4; ++batch) {
    if (after.kept == before.kept && after.cached < before.cached + kTimes / 4) break;
    before = std::exchange(after, countAfter(kTimes));
  }
  EXPECT_EQ(after.kept, before.kept);
  EXPECT_LT(after.cached, before.cached + kTimes / 4) << "one in four showings keeps something";
  EXPECT_EQ(faults::LiveObjects(), objects);
  EXPECT_EQ(faults::LiveTaskBlocks(), blocks);
}

using LeakTest = ServicesFixture;

TEST_F(LeakTest, ProbeSeesOneObjectOfEachKind) {
  // The first window brings further ones with it, and a shared icon stays.
  const auto make = [] {
    return CreateWindowW(L"STATIC", L"", 0, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
  };
  const HWND first = make();
  const HICON shared = LoadIconW(nullptr, IDI_WARNING);
  HandleCounts expected = CountHandles();
  for (int& count : expected.kept) ++count;
  const HWND window = make();
  const HMENU menu = CreatePopupMenu();
  const HICON icon = CopyIcon(shared);
  const HBRUSH brush = CreateSolidBrush(RGB(1, 2, 3));
  EXPECT_EQ(CountHandles().kept, expected.kept);
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

TEST_F(AddressTest, DialogWithAndWithoutWellsInTurnLeavesNothing) {
  ExpectNothingStays([&, wells = 0u]() mutable {
    wells = 3 - wells;
    list_ = MakeRecipients({{Id("anna"), L"Anna", MAPI_TO}, {Id("bernd"), L"Bernd", MAPI_CC}});
    ShowAndConfirm(wells, [&](Pilot pilot) {
      if (wells > 0) pilot.PressFor({1, 2}, kToButton);
    });
    list_.Reset();
    log_.lines.clear();
  });
}

TEST_F(AddressTest, NewEntryDialogLeavesNothing) {
  ShowAndCancel(0, [&](Pilot pilot) {
    // Counted on the helper thread: between two rounds the dialog's own only waits.
    ExpectNothingStays([&] {
      pilot.AnswerNewEntry(IDOK);
      log_.lines.clear();
    });
  });
}

}  // namespace
}  // namespace orv::test
