// What a number is compared and told by.
#include "formats/contact.h"

#include <algorithm>
#include <iterator>

#include "formats/text_codec.h"

namespace formats {
namespace {

// The zeros of the decimal digits in use where numbers are dialled; nine more follow each.
constexpr char32_t kZeros[] = {0x0660, 0x06F0, 0x07C0, 0x0966, 0x09E6, 0x0A66, 0x0AE6, 0x0B66, 0x0BE6, 0x0C66,
                               0x0CE6, 0x0D66, 0x0E50, 0x0ED0, 0x0F20, 0x1040, 0x17E0, 0x1810, 0xFF10};
constexpr char32_t kFullWidthPlus = 0xFF0B;
constexpr char32_t kSmallPlus = 0xFE62;

// The ASCII form of a digit or plus of another script, else 0.
char AsciiOf(char32_t c) {
  if (c == kFullWidthPlus || c == kSmallPlus) return '+';
  const auto* zero = std::find_if(std::begin(kZeros), std::end(kZeros),
                                  [c](char32_t each) { return c >= each && c < each + 10; });
  return zero == std::end(kZeros) ? '\0' : static_cast<char>('0' + (c - *zero));
}

bool StartsWithFolded(std::string_view text, std::string_view start) {
  return EqualsFolded(text.substr(0, start.size()), start);
}

// Where a number's extension begins: at "x", "ext" or ";", once a digit has come before it.
bool IsExtension(std::string_view text) {
  return text.front() == ';' || StartsWithFolded(text, "x") || StartsWithFolded(text, "ext");
}

}  // namespace

std::string CanonicalNumber(std::string_view text) {
  std::string number;
  for (std::size_t pos = 0; pos < text.size();) {
    const bool hasDigit = !number.empty() && number != "+";
    if (hasDigit && IsExtension(text.substr(pos))) break;
    const char32_t point = NextCodePoint(text, pos);
    const char c = point < 0x80 ? static_cast<char>(point) : AsciiOf(point);
    if ((c >= '0' && c <= '9') || (c == '+' && number.empty())) number += c;
  }
  return number == "+" ? std::string() : number;
}

uint32_t NumberKey(std::string_view text) {  // FNV-1a
  uint32_t hash = 0x811C9DC5;
  std::string canonical = CanonicalNumber(text);
  // A number of words, such as the name of a mailbox, is told by what is typed.
  if (canonical.empty()) canonical = FoldAscii(TrimBlanks(text));
  for (const char c : canonical) hash = (hash ^ static_cast<unsigned char>(c)) * 0x01000193;
  return hash == 0 ? 1 : hash;
}

bool IsFaxNumber(const ContactNumber& number) {
  const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
  return number.kind == NumberKind::kFax && (std::any_of(number.text.begin(), number.text.end(), isDigit) ||
                                             !CanonicalNumber(number.text).empty());
}

const ContactNumber* MainFax(const Contact& contact) {
  const ContactNumber* best = nullptr;
  const auto rank = [](const ContactNumber& number) {
    if (number.isPreferred) return 2;
    return number.place == Place::kWork ? 1 : 0;
  };
  for (const ContactNumber& number : contact.numbers) {
    if (!IsFaxNumber(number)) continue;
    if (best == nullptr || rank(number) > rank(*best)) best = &number;
  }
  return best;
}

const ContactEmail* MainEmail(const Contact& contact) {
  if (contact.emails.empty()) return nullptr;
  const auto preferred = std::find_if(contact.emails.begin(), contact.emails.end(),
                                      [](const ContactEmail& each) { return each.isPreferred; });
  return preferred != contact.emails.end() ? &*preferred : &contact.emails.front();
}

}  // namespace formats
