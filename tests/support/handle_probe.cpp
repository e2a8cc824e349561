#include "tests/support/handle_probe.h"

#include <cstdint>

#include "platform/win.h"

namespace orv::test {
namespace {

// A handle's low half is its slot; the high half, 0 here, is not compared then.
constexpr std::uintptr_t kSlots = 0x10000;

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

void CountDrawing(DWORD type, HandleCounts& counts) {
  switch (type) {
    case 0:
      return;
    case OBJ_PEN:
    case OBJ_EXTPEN:
    case OBJ_BRUSH:
    case OBJ_PAL:
    case OBJ_FONT:
      ++counts.drawing;
      return;
    default:
      ++counts.cached;
  }
}

template <class Handle>
Handle AtSlot(std::uintptr_t slot) {
  return reinterpret_cast<Handle>(slot);
}

}  // namespace

HandleCounts CountHandles() {
  HandleCounts counts;
  for (std::uintptr_t slot = 1; slot < kSlots; ++slot) {
    CountDrawing(GetObjectType(AtSlot<HGDIOBJ>(slot)), counts);
    // The other kinds share one table, whose slots are even.
    if (slot % 2 != 0) continue;
    counts.windows += IsOwnWindow(AtSlot<HWND>(slot));
    counts.menus += IsMenu(AtSlot<HMENU>(slot)) != FALSE;
    counts.icons += IsIcon(AtSlot<HICON>(slot));
  }
  return counts;
}

}  // namespace orv::test
