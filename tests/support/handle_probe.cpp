#include "tests/support/handle_probe.h"

#include <cstdint>
#include <set>

#include "platform/win.h"

namespace orv::test {
namespace {

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

}  // namespace

HandleCounts CountHandles() {
  HandleCounts counts;
  for (std::uintptr_t slot = 1; slot < kSlots; ++slot) {
    if (const DWORD type = GetObjectType(AtSlot<HGDIOBJ>(slot)); type != 0)
      ++(kDrawing.contains(type) ? counts.drawing : counts.cached);
    // The other kinds share one table, whose slots are even.
    if (slot % 2 != 0) continue;
    counts.windows += IsOwnWindow(AtSlot<HWND>(slot));
    counts.menus += IsMenu(AtSlot<HMENU>(slot)) != FALSE;
    counts.icons += IsIcon(AtSlot<HICON>(slot));
  }
  return counts;
}

}  // namespace orv::test
