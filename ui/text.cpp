// Small operations on texts.
#include "ui/text.h"

#include <algorithm>
#include <cwctype>

namespace orv::ui {

void Trim(WString& text) {
  const auto isSpace = [](WCHAR c) { return std::iswspace(c) != 0; };
  text.erase(std::find_if_not(text.rbegin(), text.rend(), isSpace).base(), text.end());
  text.erase(text.begin(), std::find_if_not(text.begin(), text.end(), isSpace));
}

}  // namespace orv::ui
