// Draws one line of a list with the system's colours only, so that high contrast follows.
#include "ui/address/entry_drawing.h"

#include <algorithm>

namespace orv::ui {
namespace {

constexpr int kIconMargin = 1;

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

void DrawTextArea(HDC dc, const RECT& area, bool selected, const WString& text) {
  const int ground = selected ? COLOR_HIGHLIGHT : COLOR_WINDOW;
  FillRect(dc, &area, GetSysColorBrush(ground));
  const COLORREF oldText = SetTextColor(dc, GetSysColor(selected ? COLOR_HIGHLIGHTTEXT : COLOR_WINDOWTEXT));
  const COLORREF oldGround = SetBkColor(dc, GetSysColor(ground));
  const int top = area.top + (area.bottom - TextHeight(dc) - area.top + 1) / 2;
  ExtTextOutW(dc, area.left + 1, top, ETO_CLIPPED, &area, text.c_str(), static_cast<UINT>(text.size()),
              nullptr);
  SetBkColor(dc, oldGround);
  SetTextColor(dc, oldText);
}

}  // namespace

EntryAreas SplitEntryRectangle(const RECT& item, int iconWidth) {
  EntryAreas areas{item, item};
  areas.icon.right = item.left + iconWidth + 2 * kIconMargin;
  areas.text.left = areas.icon.right;
  return areas;
}

void DrawEntry(const DRAWITEMSTRUCT& draw, const WString& text, HICON icon) {
  const EntryAreas areas = SplitEntryRectangle(draw.rcItem, GetSystemMetrics(SM_CXSMICON));
  const bool drawsText = (draw.itemAction & (ODA_DRAWENTIRE | ODA_SELECT)) != 0;
  if (draw.itemAction & ODA_DRAWENTIRE) DrawIconArea(draw.hDC, areas.icon, icon);
  if (drawsText) DrawTextArea(draw.hDC, areas.text, (draw.itemState & ODS_SELECTED) != 0, text);
  // Drawing the rectangle twice takes it away: alone for a change of focus, once more after a text.
  const bool drawsFocus = drawsText ? (draw.itemState & ODS_FOCUS) != 0 : (draw.itemAction & ODA_FOCUS) != 0;
  if (drawsFocus) DrawFocusRect(draw.hDC, &areas.text);
}

int EntryHeight(HWND window, HFONT font) {
  HDC dc = GetDC(window);
  if (dc == nullptr) return GetSystemMetrics(SM_CYSMICON);
  const HGDIOBJ old = font == nullptr ? nullptr : SelectObject(dc, font);
  const int height = TextHeight(dc);
  if (old != nullptr) SelectObject(dc, old);
  ReleaseDC(window, dc);
  return std::max(GetSystemMetrics(SM_CYSMICON), height);
}

}  // namespace orv::ui
