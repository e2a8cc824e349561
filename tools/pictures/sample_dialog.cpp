// The content is fixed: names in several scripts, so that every picture also proves the fonts.
#include "tools/pictures/sample_dialog.h"

#include <algorithm>
#include <iterator>

#include "tools/pictures/bitmap_file.h"

namespace pictures {
namespace {

constexpr int kRadioInContainer = 1161;
constexpr int kServices = 1155;
constexpr int kContainers = 1163;
constexpr int kTypeAhead = 1164;
constexpr int kEntries = 1166;
constexpr int kFirstWell = 1018;
constexpr int kWells = 3;
constexpr WORD kBookIcon = 250;
constexpr WORD kGroupIcon = 251;
constexpr WORD kPersonIcon = 252;

struct Entry {
  const wchar_t* name;
  bool group;
};
constexpr Entry kSampleEntries[] = {
    {L"Anna Müller", false},
    {L"Bereitschaft / Support", true},
    {L"Chloé Lefèvre", false},
    {L"David O'Connor", false},
    {L"Équipe commerciale", true},
    {L"Fatima Al-Sayed", false},
    {L"José Ángel Núñez", false},
    {L"佐藤 花子", false},
    {L"営業部", true},
    {L"محمد عبد الله", false},
    {L"فريق المبيعات", true},
    {L"Zoë Østergaard", false},
};
constexpr const wchar_t* kSampleContainers[] = {L"All contacts", L"  Berlin", L"  東京", L"    営業部",
                                                L"القاهرة"};
constexpr const wchar_t* kSampleServices[] = {L"Contacts of the office (vCard)", L"共有アドレス帳",
                                              L"دليل الشركة"};

HICON LoadSmallIcon(HMODULE companion, WORD number) {
  return static_cast<HICON>(LoadImageW(companion, MAKEINTRESOURCEW(number), IMAGE_ICON,
                                       GetSystemMetrics(SM_CXSMICON), GetSystemMetrics(SM_CYSMICON),
                                       LR_SHARED));
}

void AddEntry(HWND list, HMODULE companion, const Entry& entry) {
  const LRESULT index = SendMessageW(list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(entry.name));
  HICON icon = LoadSmallIcon(companion, entry.group ? kGroupIcon : kPersonIcon);
  SendMessageW(list, LB_SETITEMDATA, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(icon));
}

void FillWells(HWND dialog, HMODULE companion) {
  for (int well = 0; well < kWells; ++well) {
    HWND list = GetDlgItem(dialog, kFirstWell + well);
    if (!list) continue;
    AddEntry(list, companion, kSampleEntries[well * 2]);
    AddEntry(list, companion, kSampleEntries[well * 2 + 1]);
  }
}

void FillLists(HWND dialog, HMODULE companion) {
  if (HWND list = GetDlgItem(dialog, kServices)) {
    for (const wchar_t* text : kSampleServices)
      SendMessageW(list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text));
    SendMessageW(list, LB_SETCURSEL, 0, 0);
  }
  if (HWND containers = GetDlgItem(dialog, kContainers)) {
    for (const wchar_t* text : kSampleContainers)
      SendMessageW(containers, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text));
    SendMessageW(containers, CB_SETCURSEL, 0, 0);
  }
  if (HWND entries = GetDlgItem(dialog, kEntries)) {
    for (const Entry& entry : kSampleEntries) AddEntry(entries, companion, entry);
    SendMessageW(entries, LB_SETSEL, TRUE, 2);
    SetDlgItemTextW(dialog, kTypeAhead, L"Ch");
  }
}

void Measure(HWND dialog, MEASUREITEMSTRUCT& item) {
  HDC dc = GetDC(dialog);
  HGDIOBJ font = reinterpret_cast<HGDIOBJ>(SendMessageW(dialog, WM_GETFONT, 0, 0));
  HGDIOBJ previous = SelectObject(dc, font);
  TEXTMETRICW metrics{};
  GetTextMetricsW(dc, &metrics);
  SelectObject(dc, previous);
  ReleaseDC(dialog, dc);
  item.itemHeight = static_cast<UINT>(std::max<LONG>(GetSystemMetrics(SM_CYSMICON), metrics.tmHeight));
}

// Icon at the left, text beside it in the colours of a selected or of an ordinary item.
void Draw(const DRAWITEMSTRUCT& item) {
  if (item.itemID == static_cast<UINT>(-1)) return;
  const int iconWidth = GetSystemMetrics(SM_CXSMICON);
  const bool selected = (item.itemState & ODS_SELECTED) != 0;
  RECT text = item.rcItem;
  text.left += iconWidth + 2;
  FillRect(item.hDC, &item.rcItem, GetSysColorBrush(COLOR_WINDOW));
  FillRect(item.hDC, &text, GetSysColorBrush(selected ? COLOR_HIGHLIGHT : COLOR_WINDOW));
  DrawIconEx(item.hDC, item.rcItem.left + 1, item.rcItem.top, reinterpret_cast<HICON>(item.itemData),
             iconWidth, GetSystemMetrics(SM_CYSMICON), 0, nullptr, DI_NORMAL);
  wchar_t name[128] = L"";
  if (SendMessageW(item.hwndItem, LB_GETTEXTLEN, item.itemID, 0) < static_cast<LRESULT>(std::size(name)))
    SendMessageW(item.hwndItem, LB_GETTEXT, item.itemID, reinterpret_cast<LPARAM>(name));
  SetBkMode(item.hDC, TRANSPARENT);
  SetTextColor(item.hDC, GetSysColor(selected ? COLOR_HIGHLIGHTTEXT : COLOR_WINDOWTEXT));
  text.left += 1;
  DrawTextW(item.hDC, name, -1, &text, DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX);
}

INT_PTR CALLBACK SampleProc(HWND dialog, UINT message, WPARAM, LPARAM parameter) {
  switch (message) {
    case WM_INITDIALOG: {
      auto companion = reinterpret_cast<HMODULE>(parameter);
      SendMessageW(dialog, WM_SETICON, ICON_SMALL,
                   reinterpret_cast<LPARAM>(LoadSmallIcon(companion, kBookIcon)));
      FillLists(dialog, companion);
      FillWells(dialog, companion);
      CheckDlgButton(dialog, kRadioInContainer, BST_CHECKED);
      // Letters of access keys are underlined only after a key was pressed, unless asked for.
      SendMessageW(dialog, WM_UPDATEUISTATE, MAKEWPARAM(UIS_CLEAR, UISF_HIDEACCEL | UISF_HIDEFOCUS), 0);
      return TRUE;
    }
    case WM_MEASUREITEM:
      Measure(dialog, *reinterpret_cast<MEASUREITEMSTRUCT*>(parameter));
      return TRUE;
    case WM_DRAWITEM:
      Draw(*reinterpret_cast<const DRAWITEMSTRUCT*>(parameter));
      return TRUE;
    default:
      return FALSE;
  }
}

void DispatchPending(HWND dialog) {
  MSG message;
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    if (IsDialogMessageW(dialog, &message)) continue;
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
}

}  // namespace

bool SaveDialog(HMODULE companion, WORD number, const std::wstring& path) {
  HWND dialog = CreateDialogParamW(companion, MAKEINTRESOURCEW(number), nullptr, SampleProc,
                                   reinterpret_cast<LPARAM>(companion));
  if (!dialog) return false;
  SetWindowPos(dialog, HWND_TOP, 0, 0, 0, 0, SWP_NOSIZE | SWP_SHOWWINDOW);
  SetForegroundWindow(dialog);
  SendMessageW(dialog, WM_NCACTIVATE, TRUE, 0);
  DispatchPending(dialog);
  RedrawWindow(dialog, nullptr, nullptr, RDW_INVALIDATE | RDW_FRAME | RDW_ALLCHILDREN | RDW_UPDATENOW);
  DispatchPending(dialog);
  const bool saved = SaveWindow(dialog, path);
  DestroyWindow(dialog);
  return saved;
}

}  // namespace pictures
