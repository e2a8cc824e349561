// Small operations on texts.
#include "ui/text.h"

#include <algorithm>
#include <array>
#include <cwctype>
#include <iterator>
#include <string>

namespace orv::ui {
namespace {

// The locale's sizes of groups, as "3;0" or "3;2;0", in the form that formatting wants: 3 and 32. Without the last
// zero the last size is not repeated, which is a zero there.
UINT Grouping(const WCHAR* sizes) {
  UINT grouping = 0;
  bool isRepeated = false;
  for (; *sizes != 0; ++sizes) {
    if (*sizes < L'0' || *sizes > L'9') continue;
    isRepeated = *sizes == L'0';
    if (!isRepeated) grouping = grouping * 10 + static_cast<UINT>(*sizes - L'0');
  }
  return isRepeated ? grouping : grouping * 10;
}

}  // namespace

void Trim(WString& text) {
  const auto isSpace = [](WCHAR c) { return std::iswspace(c) != 0; };
  text.erase(std::find_if_not(text.rbegin(), text.rend(), isSpace).base(), text.end());
  text.erase(text.begin(), std::find_if_not(text.begin(), text.end(), isSpace));
}

WString WithValue(WString text, WStringView value) {
  constexpr WStringView kPlace = L"%1";
  if (const std::size_t at = text.find(kPlace); at != WString::npos) text.replace(at, kPlace.size(), value);
  return text;
}

WString GroupedDigits(ULONG number) {
  const WString digits = std::to_wstring(number);
  std::array<WCHAR, 16> separator{}, sizes{};
  std::array<WCHAR, 64> grouped{};
  NUMBERFMTW format{};
  WCHAR point[] = L".";
  format.lpDecimalSep = point;
  format.lpThousandSep = separator.data();
  const bool isKnown =
      GetLocaleInfoEx(LOCALE_NAME_USER_DEFAULT, LOCALE_STHOUSAND, separator.data(), separator.size()) > 0 &&
      GetLocaleInfoEx(LOCALE_NAME_USER_DEFAULT, LOCALE_SGROUPING, sizes.data(), sizes.size()) > 0;
  format.Grouping = Grouping(sizes.data());
  const bool isDone = isKnown && GetNumberFormatEx(LOCALE_NAME_USER_DEFAULT, 0, digits.c_str(), &format,
                                                   grouped.data(), grouped.size()) > 0;
  return isDone ? WString(grouped.data()) : digits;
}

}  // namespace orv::ui
