// Owner drawing of the Address dialog's lists: an icon area at the left, a text area beside it.
#pragma once

#include "platform/win.h"

namespace orv::ui {

// Height of a line in the dialog's font: that of a small icon or of the text, whichever is larger.
int EntryHeight(HWND dialog);

// WM_MEASUREITEM and WM_DRAWITEM of the dialog; false for a control that is no list.
bool MeasureEntry(HWND dialog, MEASUREITEMSTRUCT& measure);
bool DrawListedEntry(const DRAWITEMSTRUCT& draw);

}  // namespace orv::ui
