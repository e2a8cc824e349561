// How many windows, menus, icons and drawing objects this process has, found by trying every handle value: the
// system's own counters are not to be had everywhere.
#pragma once

namespace orv::test {

struct HandleCounts {
  int windows = 0;
  int menus = 0;
  int icons = 0;
  int drawing = 0;  // pens, brushes, palettes, fonts
  // Device contexts, regions and bitmaps. The system keeps some of them for the next window, a few more whenever
  // two windows are drawn at once, so these are steady but for that.
  int cached = 0;
};

HandleCounts CountHandles();

}  // namespace orv::test
