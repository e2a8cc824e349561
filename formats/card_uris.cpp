#include "formats/card_uris.h"

#include <algorithm>

#include "formats/card_text.h"
#include "formats/text_codec.h"

namespace formats {

bool IsUuid(std::string_view text) {
  constexpr std::string_view kShape = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
  return text.size() == kShape.size() &&
         std::equal(text.begin(), text.end(), kShape.begin(), [](char c, char shape) {
           const char folded = FoldAscii(c);
           const bool hex = (c >= '0' && c <= '9') || (folded >= 'a' && folded <= 'f');
           return shape == '-' ? c == '-' : hex;
         });
}

std::string TakeUriOptions(std::string* number) {
  constexpr std::string_view kExtension = ";ext=";
  std::string kept(std::string_view(*number).substr(0, number->find(';')));
  std::string_view options = std::string_view(*number).substr(kept.size());
  std::string others, extension;
  while (!options.empty()) {
    const std::size_t next = std::min(options.find(';', 1), options.size());
    const std::string_view option = options.substr(0, next);
    const bool isExtension =
        extension.empty() && EqualsFolded(option.substr(0, kExtension.size()), kExtension);
    (isExtension ? extension : others) += option.substr(isExtension ? kExtension.size() : 0);
    options.remove_prefix(next);
  }
  *number = std::string(TrimBlanks(kept));
  if (TrimBlanks(extension).empty()) return std::string(TrimBlanks(others));
  number->append(number->empty() ? "ext. " : " ext. ").append(TrimBlanks(extension));
  return std::string(TrimBlanks(others));
}

std::string_view StripNumberSchemes(std::string_view text, bool* isFax) {
  for (;;) {
    const std::string_view afterPhone = StripPrefix(text, "tel:");
    const std::string_view afterFax = StripPrefix(afterPhone, "fax:");
    *isFax |= afterFax.size() != afterPhone.size();
    if (afterFax.size() == text.size()) return text;
    text = afterFax;
  }
}

}  // namespace formats
