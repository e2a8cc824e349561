#include "providers/book/windows/controls.h"

#include <commctrl.h>

#include <algorithm>
#include <iterator>
#include <string_view>

#include "providers/book/text.h"

namespace book {
namespace {

constexpr int kShares = 100;

LRESULT Send(HWND window, UINT message, WPARAM first = 0, LPARAM second = 0) {
  return SendMessageW(window, message, first, second);
}

LPARAM Pointer(const void* of) { return reinterpret_cast<LPARAM>(of); }

// Without the bar that scrolls, so that it does not bring the other one with it.
int RoomIn(HWND list) {
  RECT inside{};
  GetClientRect(list, &inside);
  return inside.right - GetSystemMetrics(SM_CXVSCROLL);
}

bool IsListView(HWND control) {
  wchar_t name[32] = L"";
  GetClassNameW(control, name, static_cast<int>(std::size(name)));
  return std::wstring_view(name) == WC_LISTVIEWW;
}

// Room that columns have asked for, as their shares say: what one does not need goes to the others.
std::vector<int> Divide(int room, std::vector<int> widths, std::span<const ListView::Column> columns) {
  std::vector<bool> isSettled(widths.size());
  int shares = kShares;
  const auto fair = [&](size_t column) { return shares > 0 ? room * columns[column].share / shares : 0; };
  for (bool hasChanged = true; hasChanged;) {
    hasChanged = false;
    for (size_t each = 0; each < widths.size(); ++each) {
      if (isSettled[each] || widths[each] > fair(each)) continue;
      isSettled[each] = hasChanged = true;
      room -= widths[each];
      shares -= columns[each].share;
    }
  }
  const bool isLeft = shares == 0;
  if (isLeft) shares = kShares;
  for (size_t each = 0; each < widths.size(); ++each) {
    if (isLeft) widths[each] += fair(each);
    if (!isSettled[each]) widths[each] = fair(each);
  }
  return widths;
}

constexpr LONG_PTR kFromTheRight = WS_EX_LAYOUTRTL | WS_EX_RTLREADING | WS_EX_RIGHT;
constexpr wchar_t kLeftToRightMark = L'\u200E';

// As its first letter does; without one as numbers do, where there are any.
bool ReadsFromTheLeft(const std::wstring& text) {
  bool hasDigit = false;
  for (const wchar_t each : text) {
    WORD type = 0;
    GetStringTypeW(CT_CTYPE2, &each, 1, &type);
    if (type == C2_LEFTTORIGHT || type == C2_RIGHTTOLEFT) return type == C2_LEFTTORIGHT;
    hasDigit |= type == C2_EUROPENUMBER || type == C2_ARABICNUMBER || each == L'+';
  }
  return hasDigit;
}

bool IsControl(char each) { return (each >= 0 && each < ' ') || each == '\x7F'; }

}  // namespace

void ListView::SetColumns(std::span<const Column> columns) const {
  constexpr LPARAM kStyle = LVS_EX_FULLROWSELECT | LVS_EX_LABELTIP;
  Send(list_, LVM_SETEXTENDEDLISTVIEWSTYLE, kStyle, kStyle);
  while (Send(list_, LVM_DELETECOLUMN, 0) != 0) {
  }
  WPARAM number = 0;
  for (const Column& each : columns) {
    std::wstring title = texts_.Text(each.title);
    LVCOLUMNW column{};
    column.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_SUBITEM;
    column.pszText = title.data();
    column.cx = RoomIn(list_) * each.share / kShares;
    column.iSubItem = static_cast<int>(number);
    Send(list_, LVM_INSERTCOLUMNW, number++, Pointer(&column));
  }
}

// With the blank that a cell has on both sides.
int ListView::WidthOf(const std::wstring& text) const {
  const LRESULT blank = Send(list_, LVM_GETSTRINGWIDTHW, 0, Pointer(L"MM"));
  return static_cast<int>(Send(list_, LVM_GETSTRINGWIDTHW, 0, Pointer(text.c_str())) + blank);
}

void ListView::FitColumns(std::span<const Column> columns, const Rows& rows) const {
  std::vector<int> widths;
  for (const Column& each : columns) widths.push_back(WidthOf(texts_.Text(each.title)));
  for (const std::vector<std::wstring>& row : rows) {
    for (size_t column = 0; column < row.size(); ++column)
      widths[column] = std::max(widths[column], WidthOf(row[column]));
  }
  WPARAM number = 0;
  for (const int width : Divide(RoomIn(list_), widths, columns))
    Send(list_, LVM_SETCOLUMNWIDTH, number++, MAKELPARAM(width, 0));
}

void ListView::SetRows(const Rows& rows) const {
  Send(list_, WM_SETREDRAW, FALSE);
  Send(list_, LVM_DELETEALLITEMS);
  int number = 0;
  for (const std::vector<std::wstring>& row : rows) {
    LVITEMW item{};
    item.iItem = number;
    Send(list_, LVM_INSERTITEMW, 0, Pointer(&item));
    for (size_t column = 0; column < row.size(); ++column)
      SetCell(number, static_cast<int>(column), row[column]);
    ++number;
  }
  Send(list_, WM_SETREDRAW, TRUE);
  InvalidateRect(list_, nullptr, TRUE);
}

void ListView::SetCell(int row, int column, const std::wstring& text) const {
  LVITEMW item{};
  item.iSubItem = column;
  std::wstring shown = InItsOrder(texts_, text);
  item.pszText = shown.data();
  Send(list_, LVM_SETITEMTEXTW, static_cast<WPARAM>(row), Pointer(&item));
}

int ListView::SelectedBehind(int row) const {
  return static_cast<int>(Send(list_, LVM_GETNEXTITEM, static_cast<WPARAM>(row), LVNI_SELECTED));
}

int ListView::Selected() const { return SelectedBehind(-1); }

std::vector<int> ListView::AllSelected() const {
  std::vector<int> rows;
  for (int row = Selected(); row >= 0; row = SelectedBehind(row)) rows.push_back(row);
  return rows;
}

void ListView::SelectAll() const {
  LVITEMW item{};
  item.stateMask = item.state = LVIS_SELECTED;
  Send(list_, LVM_SETITEMSTATE, static_cast<WPARAM>(-1), Pointer(&item));
}

void ListView::Select(int row) const {
  LVITEMW item{};
  item.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
  Send(list_, LVM_SETITEMSTATE, static_cast<WPARAM>(-1), Pointer(&item));
  if (row < 0) return;
  item.state = item.stateMask;
  Send(list_, LVM_SETITEMSTATE, static_cast<WPARAM>(row), Pointer(&item));
  Send(list_, LVM_ENSUREVISIBLE, static_cast<WPARAM>(row));
}

bool IsSelection(const NMHDR& header) {
  if (header.code != static_cast<UINT>(LVN_ITEMCHANGED)) return false;
  const auto& change = reinterpret_cast<const NMLISTVIEW&>(header);
  return ((change.uNewState ^ change.uOldState) & LVIS_SELECTED) != 0;
}

// A row that is selected while another control has the focus has the colour of buttons, which where contrast is high is
// that of the window: it gets the colour of a selection there.
LRESULT DrawList(const NMHDR& header) {
  if (header.code != static_cast<UINT>(NM_CUSTOMDRAW) || !IsListView(header.hwndFrom)) return CDRF_DODEFAULT;
  auto& draw = const_cast<NMLVCUSTOMDRAW&>(reinterpret_cast<const NMLVCUSTOMDRAW&>(header));
  const bool isHidden = GetSysColor(COLOR_BTNFACE) == GetSysColor(COLOR_WINDOW);
  if (draw.nmcd.dwDrawStage == CDDS_PREPAINT) return isHidden ? CDRF_NOTIFYITEMDRAW : CDRF_DODEFAULT;
  const bool isSelected = Send(header.hwndFrom, LVM_GETITEMSTATE, draw.nmcd.dwItemSpec, LVIS_SELECTED) != 0;
  if (draw.nmcd.dwDrawStage != CDDS_ITEMPREPAINT || !isSelected || GetFocus() == header.hwndFrom)
    return CDRF_DODEFAULT;
  draw.nmcd.uItemState &= ~static_cast<UINT>(CDIS_SELECTED);
  draw.clrText = GetSysColor(COLOR_HIGHLIGHTTEXT);
  draw.clrTextBk = GetSysColor(COLOR_HIGHLIGHT);
  return CDRF_NEWFONT;
}

// As high as the edits beside it, which the system makes it at 96 dots an inch alone. Twice: what it says of the field's
// height at first is not always what it takes for it.
void FitDropDown(const kit::Dialog& window, int control) {
  constexpr LONG kEditHeight = 13;  // dialog units
  constexpr auto kField = static_cast<WPARAM>(-1);
  const HWND list = window.Item(control);
  RECT edit{0, 0, 0, kEditHeight};
  if (!MapDialogRect(window.Window(), &edit)) return;
  LRESULT field = Send(list, CB_GETITEMHEIGHT, kField);
  for (int round = 0; round < 2; ++round) {
    RECT own{};
    GetWindowRect(list, &own);
    field += edit.bottom - (own.bottom - own.top);
    Send(list, CB_SETITEMHEIGHT, kField, field);
  }
}

void FillDropDown(const kit::Dialog& window, int control, std::span<const UINT> texts) {
  const HWND list = window.Item(control);
  FitDropDown(window, control);
  for (const UINT each : texts) Send(list, CB_ADDSTRING, 0, Pointer(window.Texts().Text(each).c_str()));
  Send(list, CB_SETCURSEL, 0);
}

int ChosenIn(const kit::Dialog& window, int control) {
  return static_cast<int>(Send(window.Item(control), CB_GETCURSEL));
}

void Choose(const kit::Dialog& window, int control, int row) {
  Send(window.Item(control), CB_SETCURSEL, static_cast<WPARAM>(row));
}

void ReadFromTheLeft(const kit::Dialog& window, int control) {
  const HWND edit = window.Item(control);
  SetWindowLongPtrW(edit, GWL_EXSTYLE, GetWindowLongPtrW(edit, GWL_EXSTYLE) & ~kFromTheRight);
}

// What the edit was made with is kept in it.
void ReadAsTyped(const kit::Dialog& window, int control) {
  if (!window.Texts().IsRightToLeft()) return;
  constexpr LONG_PTR kIsKept = 1;
  const HWND edit = window.Item(control);
  const LONG_PTR style = GetWindowLongPtrW(edit, GWL_EXSTYLE);
  if (GetWindowLongPtrW(edit, GWLP_USERDATA) == 0)
    SetWindowLongPtrW(edit, GWLP_USERDATA, (style & kFromTheRight) | kIsKept);
  const LONG_PTR made = GetWindowLongPtrW(edit, GWLP_USERDATA) & kFromTheRight;
  const LONG_PTR wanted = (style & ~kFromTheRight) | (ReadsFromTheLeft(window.TextOf(control)) ? 0 : made);
  if (wanted == style) return;
  SetWindowLongPtrW(edit, GWL_EXSTYLE, wanted);
  constexpr UINT kFrameOnly = SWP_FRAMECHANGED | SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE;
  SetWindowPos(edit, nullptr, 0, 0, 0, 0, kFrameOnly);
  InvalidateRect(edit, nullptr, TRUE);
}

std::wstring InItsOrder(const kit::Language& language, std::wstring text) {
  if (!language.IsRightToLeft() || !ReadsFromTheLeft(text)) return text;
  return kLeftToRightMark + text + kLeftToRightMark;
}

bool IsControlKey(UINT key, char letter) {
  return key == static_cast<UINT>(letter) && GetKeyState(VK_CONTROL) < 0 && GetKeyState(VK_MENU) >= 0;
}

std::vector<std::string> CopiedLines(HWND owner) {
  std::vector<std::string> lines;
  if (!OpenClipboard(owner)) return lines;
  const HANDLE data = GetClipboardData(CF_UNICODETEXT);
  const auto* text = static_cast<const wchar_t*>(data != nullptr ? GlobalLock(data) : nullptr);
  const std::string copied = text != nullptr ? ToUtf8(text) : std::string();
  if (text != nullptr) GlobalUnlock(data);
  CloseClipboard();
  constexpr const char* kEnds = "\r\n;";
  for (size_t first = 0; first < copied.size();) {
    const size_t end = std::min(copied.find_first_of(kEnds, first), copied.size());
    if (std::string line = Trimmed(copied.substr(first, end - first)); !line.empty())
      lines.push_back(std::move(line));
    first = end + 1;
  }
  return lines;
}

std::string TypedIn(const kit::Dialog& window, int control) {
  std::string text = ToUtf8(window.TextOf(control));
  std::erase(text, '\r');
  std::replace_if(
      text.begin(), text.end(), [](char each) { return IsControl(each) && each != '\n'; }, ' ');
  return text;
}

void ShowText(const kit::Dialog& window, int control, std::string_view text) {
  std::string lines;
  for (const char each : text) lines += each == '\n' ? std::string("\r\n") : std::string(1, each);
  window.SetText(control, ToWide(lines));
  ReadAsTyped(window, control);
}

std::string Trimmed(std::string_view text) {
  constexpr const char* kBlanks = " \n";
  const size_t first = text.find_first_not_of(kBlanks);
  if (first == text.npos) return {};
  return std::string(text.substr(first, text.find_last_not_of(kBlanks) + 1 - first));
}

}  // namespace book
