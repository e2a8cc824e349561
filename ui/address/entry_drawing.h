// Owner drawing of the Address dialog's lists: an icon area at the left, a text area beside it.
#pragma once

#include "platform/win.h"

namespace orv::ui {

struct EntryAreas {
  RECT icon;
  RECT text;
};
// The icon area is as wide as a small icon and two pixels more.
EntryAreas SplitEntryRectangle(const RECT& item, int iconWidth);

// Draws what the message asks for. `icon` may be null.
void DrawEntry(const DRAWITEMSTRUCT& draw, const WString& text, HICON icon);

// Height of a line in a list with this font: that of a small icon or of the text, whichever is larger.
int EntryHeight(HWND window, HFONT font);

}  // namespace orv::ui
