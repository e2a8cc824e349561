// Text conversions of the contact file readers: UTF-8, UTF-16 and the code pages that contact files name.
// Works with UTF-8 inside; nothing here depends on the process locale but the ANSI code page on Windows.
#pragma once

#include <string>
#include <string_view>

namespace formats {

bool IsUtf8(std::string_view bytes);

// Decodes one code point at `pos` and moves past it; kNoCodePoint, and past a single byte, where the sequence is none.
inline constexpr char32_t kNoCodePoint = 0xFFFFFFFF;
char32_t NextCodePoint(std::string_view text, size_t& pos);
void AppendUtf8(std::string& out, char32_t value);

// Malformed input becomes U+FFFD, so both conversions always succeed.
std::u16string ToUtf16(std::string_view utf8);
std::string ToUtf8(std::u16string_view text);

// Bytes of a named character set as UTF-8. An empty or unknown name, and text that the named set cannot
// hold, is read as UTF-8 where it is that, else in the ANSI code page (1252 where that is UTF-8 itself).
std::string DecodeCharset(std::string_view bytes, std::string_view charset);

// Whether DecodeCharset knows the name; UTF-8 is one.
bool IsKnownCharset(std::string_view charset);

// A whole file as UTF-8 with LF or CRLF line ends: byte order marks of UTF-8 and UTF-16 are honoured and
// removed.
std::string NormaliseFile(std::string bytes);

// Called for nearly every character of a file, so these are inline.
inline char FoldAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

inline bool EqualsFolded(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (FoldAscii(a[i]) != FoldAscii(b[i])) return false;
  }
  return true;
}

inline std::string_view TrimBlanks(std::string_view text) {
  const auto isBlank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
  return text;
}

std::string FoldAscii(std::string_view text);
bool ContainsFolded(std::string_view text, std::string_view part);

}  // namespace formats
