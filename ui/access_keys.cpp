#include "ui/access_keys.h"

#include <array>

namespace orv::ui {
namespace {

constexpr WCHAR kMark = L'&';
constexpr int kTextCapacity = 256;

// Where the mark of the access key stands.
std::size_t FindMark(WStringView text) {
  std::size_t at = text.find(kMark);
  while (at != WStringView::npos && at + 1 < text.size() && text[at + 1] == kMark)
    at = text.find(kMark, at + 2);
  return at != WStringView::npos && at + 1 < text.size() ? at : WStringView::npos;
}

WCHAR Folded(WCHAR letter) {
  CharUpperBuffW(&letter, 1);
  return letter;
}

// Only of buttons and labels a mark is one; what a list or an edit holds is the user's.
bool MayHaveKey(HWND control) {
  const LRESULT code = SendMessageW(control, WM_GETDLGCODE, 0, 0);
  const LONG_PTR style = GetWindowLongPtrW(control, GWL_STYLE);
  return (code & DLGC_BUTTON) != 0 || ((code & DLGC_STATIC) != 0 && (style & SS_NOPREFIX) == 0);
}

WCHAR KeyOf(HWND control) {
  if (!MayHaveKey(control)) return 0;
  std::array<WCHAR, kTextCapacity> text{};
  GetWindowTextW(control, text.data(), kTextCapacity);
  const std::size_t mark = FindMark(text.data());
  return mark == WStringView::npos ? WCHAR{0} : Folded(text[mark + 1]);
}

WString KeysOf(HWND dialog) {
  WString keys;
  for (HWND child = GetWindow(dialog, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
    if (const WCHAR key = KeyOf(child)) keys += key;
  }
  return keys;
}

bool IsTyped(WCHAR letter) {
  WORD kind = 0;
  WORD script = 0;
  GetStringTypeW(CT_CTYPE1, &letter, 1, &kind);
  GetStringTypeW(CT_CTYPE3, &letter, 1, &script);
  return (kind & (C1_ALPHA | C1_DIGIT)) != 0 && (script & (C3_IDEOGRAPH | C3_HIRAGANA | C3_KATAKANA)) == 0;
}

}  // namespace

bool HasAccessKey(WStringView text) { return FindMark(text) != WStringView::npos; }

WString WithoutAccessKey(WStringView text) {
  WString plain(text);
  if (const std::size_t mark = FindMark(text); mark != WStringView::npos) plain.erase(mark, 1);
  return plain;
}

WString WithFreeAccessKey(WString text, HWND dialog) {
  const WString taken = KeysOf(dialog);
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (!IsTyped(text[at]) || taken.find(Folded(text[at])) != WString::npos) continue;
    return text.insert(at, 1, kMark);
  }
  return text;
}

}  // namespace orv::ui
