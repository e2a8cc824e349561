#include "formats/card_text.h"

#include <array>

#include "formats/text_codec.h"

namespace formats {
namespace {

bool IsDropped(char c) { return (static_cast<unsigned char>(c) < 0x20 && c != '\n') || c == 0x7F; }

// Tabs as blanks, line ends as line feeds, other control characters gone.
std::string WithoutControls(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (IsHighControl(text, i)) {
      ++i;
    } else if (c == '\t') {
      out += ' ';
    } else if (c == '\r') {
      if (i + 1 == text.size() || text[i + 1] != '\n') out += '\n';
    } else if (!IsDropped(c)) {
      out += c;
    }
  }
  return out;
}

// 1 for what must be looked at: control characters, and C2, with which more of them begin.
constexpr std::array<unsigned char, 256> MakeSuspects() {
  std::array<unsigned char, 256> suspects{};
  for (std::size_t c = 0; c < 0x20; ++c) suspects[c] = 1;
  suspects[0x7F] = suspects[0xC2] = 1;
  return suspects;
}
constexpr std::array<unsigned char, 256> kSuspects = MakeSuspects();

constexpr std::array<unsigned char, 256> MakeEscaped() {
  std::array<unsigned char, 256> escaped{};
  for (const char c : {'\\', ',', ';', '\n'}) escaped[static_cast<unsigned char>(c)] = 1;
  return escaped;
}
constexpr std::array<unsigned char, 256> kEscaped = MakeEscaped();

}  // namespace

bool IsHighControl(std::string_view text, std::size_t at) {
  if (text[at] != '\xC2' || at + 1 == text.size()) return false;
  const auto next = static_cast<unsigned char>(text[at + 1]);
  return next >= 0x80 && next < 0xA0;
}

std::string CleanText(std::string_view text, TextLayout layout) {
  const std::string cleaned = WithoutControls(text);
  const std::string_view trimmed = TrimBlanks(cleaned);
  if (layout == TextLayout::kManyLines) return std::string(trimmed);
  std::string out;
  out.reserve(trimmed.size());
  for (const char c : trimmed) {
    const bool blank = c == ' ' || c == '\n';
    if (!blank) out += c;
    if (blank && out.back() != ' ') out += ' ';
  }
  return out;
}

bool IsCleanText(std::string_view text) {
  if (text.empty()) return true;
  if (text.front() == ' ' || text.back() == ' ') return false;
  char before = '\0';
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (kSuspects[static_cast<unsigned char>(c)] != 0 && (c != '\xC2' || IsHighControl(text, i)))
      return false;
    if (c == ' ' && before == ' ') return false;
    before = c;
  }
  return true;
}

std::string_view StripPrefix(std::string_view text, std::string_view prefix) {
  while (text.size() >= prefix.size() && EqualsFolded(text.substr(0, prefix.size()), prefix)) {
    text = TrimBlanks(text.substr(prefix.size()));
  }
  return text;
}

void AppendEscaped(std::string* out, std::string_view text) {
  std::size_t begin = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (kEscaped[static_cast<unsigned char>(text[i])] == 0) continue;
    out->append(text.substr(begin, i - begin));
    *out += '\\';
    *out += text[i] == '\n' ? 'n' : text[i];
    begin = i + 1;
  }
  out->append(text.substr(begin));
}

}  // namespace formats
