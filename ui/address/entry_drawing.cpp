// Draws one line of a list with the system's colours only, so that high contrast follows.
#include "ui/address/entry_drawing.h"

#include <algorithm>

#include "ui/address/entry_list_box.h"

namespace orv::ui {
namespace {

constexpr int kIconMargin = 1;
constexpr int kTextMargin = 1;

int TextHeight(HDC dc) {
  TEXTMETRICW metrics{};
  GetTextMetricsW(dc, &metrics);
  return metrics.tmHeight;
}

void DrawIconArea(HDC dc, const RECT& area, HICON icon) {
  FillRect(dc, &area, GetSysColorBrush(COLOR_WINDOW));
  if (icon == nullptr) return;
  const int height = GetSystemMetrics(SM_CYSMICON);
  const int top = area.top + (area.bottom - area.top - height) / 2;
  DrawIconEx(dc, area.left + kIconMargin, top, icon, GetSystemMetrics(SM_CXSMICON), height, 0, nullptr,
             DI_NORMAL);
}

// The first letter that has a direction decides.
bool ReadsFromLeft(const WString& text) {
  for (const WCHAR letter : text) {
    WORD direction = C2_NOTAPPLICABLE;
    GetStringTypeW(CT_CTYPE2, &letter, 1, &direction);
    if (direction == C2_LEFTTORIGHT || direction == C2_RIGHTTOLEFT) return direction == C2_LEFTTORIGHT;
  }
  return false;
}

bool Overflows(HDC dc, const RECT& area, const WString& text) {
  SIZE size{};
  GetTextExtentPoint32W(dc, text.c_str(), static_cast<int>(text.size()), &size);
  return size.cx > area.right - area.left - kTextMargin;
}

// Text stands at the edge where lines begin. In a mirrored list that is the right one, which would cut the beginning
// off a text that is too long and reads from the left: such a text stands at the other edge.
void DrawLine(HDC dc, const RECT& area, const WString& text) {
  const bool isMirrored = (GetLayout(dc) & LAYOUT_RTL) != 0;
  const bool atOtherEdge = isMirrored && ReadsFromLeft(text) && Overflows(dc, area, text);
  const UINT oldAlignment = SetTextAlign(dc, atOtherEdge ? TA_RIGHT : TA_LEFT);
  const int edge = atOtherEdge ? area.right - kTextMargin : area.left + kTextMargin;
  const int top = area.top + (area.bottom - TextHeight(dc) - area.top + 1) / 2;
  // Mirrored, the area's last column is the one before it on the screen.
  RECT clip = area;
  if (isMirrored) clip.right -= kTextMargin;
  ExtTextOutW(dc, edge, top, ETO_CLIPPED, &clip, text.c_str(), static_cast<UINT>(text.size()), nullptr);
  SetTextAlign(dc, oldAlignment);
}

void DrawTextArea(HDC dc, const RECT& area, bool selected, const WString& text) {
  const int ground = selected ? COLOR_HIGHLIGHT : COLOR_WINDOW;
  FillRect(dc, &area, GetSysColorBrush(ground));
  const COLORREF oldText = SetTextColor(dc, GetSysColor(selected ? COLOR_HIGHLIGHTTEXT : COLOR_WINDOWTEXT));
  const COLORREF oldGround = SetBkColor(dc, GetSysColor(ground));
  DrawLine(dc, area, text);
  SetBkColor(dc, oldGround);
  SetTextColor(dc, oldText);
}

struct EntryAreas {
  RECT icon;
  RECT text;
};

EntryAreas Split(const RECT& item) {
  EntryAreas areas{item, item};
  areas.icon.right = item.left + GetSystemMetrics(SM_CXSMICON) + 2 * kIconMargin;
  areas.text.left = areas.icon.right;
  return areas;
}

void DrawEntry(const DRAWITEMSTRUCT& draw, const WString& text, HICON icon) {
  const EntryAreas areas = Split(draw.rcItem);
  const bool drawsText = (draw.itemAction & (ODA_DRAWENTIRE | ODA_SELECT)) != 0;
  if (draw.itemAction & ODA_DRAWENTIRE) DrawIconArea(draw.hDC, areas.icon, icon);
  if (drawsText) DrawTextArea(draw.hDC, areas.text, (draw.itemState & ODS_SELECTED) != 0, text);
  // Drawing the rectangle twice takes it away: alone for a change of focus, once more after a text.
  const bool drawsFocus = drawsText ? (draw.itemState & ODS_FOCUS) != 0 : (draw.itemAction & ODA_FOCUS) != 0;
  if (drawsFocus) DrawFocusRect(draw.hDC, &areas.text);
}

}  // namespace

int EntryHeight(HWND dialog) {
  HDC dc = GetDC(dialog);
  if (dc == nullptr) return GetSystemMetrics(SM_CYSMICON);
  const auto font = reinterpret_cast<HFONT>(SendMessageW(dialog, WM_GETFONT, 0, 0));
  const HGDIOBJ old = font == nullptr ? nullptr : SelectObject(dc, font);
  const int height = TextHeight(dc);
  if (old != nullptr) SelectObject(dc, old);
  ReleaseDC(dialog, dc);
  return std::max(GetSystemMetrics(SM_CYSMICON), height);
}

bool MeasureEntry(HWND dialog, MEASUREITEMSTRUCT& measure) {
  if (measure.CtlType != ODT_LISTBOX) return false;
  measure.itemHeight = static_cast<UINT>(EntryHeight(dialog));
  return true;
}

bool DrawListedEntry(const DRAWITEMSTRUCT& draw) {
  if (draw.CtlType != ODT_LISTBOX) return false;
  const EntryListBox box(draw.hwndItem);
  const int line = static_cast<int>(draw.itemID);
  // An empty list that has the focus asks for line -1.
  const EntryItem* item = line < 0 ? nullptr : box.ItemAt(line);
  DrawEntry(draw, line < 0 ? WString() : box.TextAt(line), item == nullptr ? nullptr : item->icon);
  return true;
}

}  // namespace orv::ui
