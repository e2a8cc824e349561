#include "formats/text_codec.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <utility>

#include "formats/charset_tables.h"

#ifdef _WIN32
#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>
#endif

namespace formats {
namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr unsigned kWindows1252 = 1252;
constexpr unsigned kUtf8CodePage = 65001;

// Nearly all text is ASCII, which needs no decoding: eight bytes are looked at together.
size_t AsciiPrefix(std::string_view text) {
  constexpr uint64_t kHighBits = 0x8080808080808080;
  size_t size = 0;
  for (uint64_t block; size + sizeof(block) <= text.size(); size += sizeof(block)) {
    std::memcpy(&block, text.data() + size, sizeof(block));
    if ((block & kHighBits) != 0) break;
  }
  while (size < text.size() && static_cast<unsigned char>(text[size]) < 0x80) ++size;
  return size;
}

bool IsContinuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

void AppendUtf16(std::u16string& out, char32_t value) {
  if (value < 0x10000) {
    out += static_cast<char16_t>(value);
    return;
  }
  out += static_cast<char16_t>(0xD800 + ((value - 0x10000) >> 10));
  out += static_cast<char16_t>(0xDC00 + ((value - 0x10000) & 0x3FF));
}

// Encodes `count` UTF-16 units that `unitAt` hands out; unpaired surrogates become U+FFFD.
template <class UnitAt>
std::string EncodeUnits(size_t count, UnitAt unitAt) {
  std::string out;
  out.reserve(count);
  for (size_t i = 0; i < count; ++i) {
    char32_t value = unitAt(i);
    if (value >= 0xD800 && value <= 0xDFFF) {
      const char32_t low = i + 1 < count ? unitAt(i + 1) : 0;
      const bool paired = value < 0xDC00 && low >= 0xDC00 && low <= 0xDFFF;
      value = paired ? 0x10000 + ((value - 0xD800) << 10) + (low - 0xDC00) : kReplacement;
      if (paired) ++i;
    }
    AppendUtf8(out, value);
  }
  return out;
}

std::string DecodeUtf16Bytes(std::string_view bytes, bool bigEndian) {
  return EncodeUnits(bytes.size() / 2, [&](size_t i) -> char32_t {
    const auto first = static_cast<unsigned char>(bytes[2 * i]);
    const auto second = static_cast<unsigned char>(bytes[2 * i + 1]);
    return bigEndian ? static_cast<char32_t>(first << 8 | second)
                     : static_cast<char32_t>(second << 8 | first);
  });
}

unsigned AnsiCodePage() {
#ifdef _WIN32
  const unsigned codePage = GetACP();
  return codePage == kUtf8CodePage ? kWindows1252 : codePage;
#else
  return kWindows1252;
#endif
}

// A code page of the system that has no table is asked of the system.
std::string DecodeSystemPage(std::string_view bytes) {
  const unsigned codePage = AnsiCodePage();
  if (std::optional<DecodedText> decoded = DecodeCodePage(bytes, codePage)) return std::move(decoded->text);
#ifdef _WIN32
  const int size = static_cast<int>(bytes.size());
  const int needed = MultiByteToWideChar(codePage, 0, bytes.data(), size, nullptr, 0);
  std::wstring wide(static_cast<size_t>(std::max(needed, 0)), L'\0');
  if (needed > 0 && MultiByteToWideChar(codePage, 0, bytes.data(), size, wide.data(), needed) == needed)
    return EncodeUnits(wide.size(), [&](size_t i) -> char32_t { return wide[i]; });
#endif
  return DecodeCodePage(bytes, kWindows1252)->text;
}

}  // namespace

void AppendUtf8(std::string& out, char32_t value) {
  if (value < 0x80) {
    out += static_cast<char>(value);
    return;
  }
  const int extra = value < 0x800 ? 1 : value < 0x10000 ? 2 : 3;
  constexpr std::array<unsigned, 4> kLeads = {0, 0xC0, 0xE0, 0xF0};
  out += static_cast<char>(kLeads[static_cast<size_t>(extra)] | (value >> (6 * extra)));
  for (int i = extra - 1; i >= 0; --i) out += static_cast<char>(0x80u | ((value >> (6 * i)) & 0x3Fu));
}

char32_t NextCodePoint(std::string_view text, size_t& pos) {
  const auto byteAt = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byteAt(pos++);
  if (lead < 0x80) return lead;
  const size_t extra = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
  if (lead < 0xC2 || lead > 0xF4 || text.size() - pos < extra) return kNoCodePoint;
  char32_t value = lead & (0x3Fu >> extra);
  for (size_t i = 0; i < extra; ++i) {
    if (!IsContinuation(byteAt(pos + i))) return kNoCodePoint;
    value = (value << 6) | (byteAt(pos + i) & 0x3Fu);
  }
  const bool overlong = (extra == 2 && value < 0x800) || (extra == 3 && value < 0x10000);
  if (overlong || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) return kNoCodePoint;
  pos += extra;
  return value;
}

bool IsUtf8(std::string_view bytes) {
  for (size_t pos = AsciiPrefix(bytes); pos < bytes.size();) {
    if (NextCodePoint(bytes, pos) == kNoCodePoint) return false;
  }
  return true;
}

std::u16string ToUtf16(std::string_view utf8) {
  size_t pos = AsciiPrefix(utf8);
  std::u16string out(utf8.begin(), utf8.begin() + static_cast<std::ptrdiff_t>(pos));
  out.reserve(utf8.size());
  while (pos < utf8.size()) {
    const char32_t value = NextCodePoint(utf8, pos);
    AppendUtf16(out, value == kNoCodePoint ? kReplacement : value);
  }
  return out;
}

std::string ToUtf8(std::u16string_view text) {
  return EncodeUnits(text.size(), [&](size_t i) -> char32_t { return text[i]; });
}

std::string DecodeCharset(std::string_view bytes, std::string_view charset) {
  const unsigned codePage = charset.empty() ? 0 : CodePageOf(charset);
  if (codePage != 0 && codePage != kUtf8CodePage) {
    std::optional<DecodedText> decoded = DecodeCodePage(bytes, codePage);
    // Bytes that are no text of the named set, but are UTF-8, were named wrongly.
    if (decoded && !(decoded->isMalformed && IsUtf8(bytes))) return std::move(decoded->text);
  }
  return IsUtf8(bytes) ? std::string(bytes) : DecodeSystemPage(bytes);
}

bool IsKnownCharset(std::string_view charset) { return CodePageOf(charset) != 0; }

std::string NormaliseFile(std::string bytes) {
  const std::string_view text = bytes;
  if (text.substr(0, 3) == "\xEF\xBB\xBF") {
    bytes.erase(0, 3);
  } else if (text.substr(0, 2) == "\xFF\xFE" || text.substr(0, 2) == "\xFE\xFF") {
    bytes = DecodeUtf16Bytes(text.substr(2), bytes[0] == '\xFE');
  }
  // Old writers end lines with a bare CR; with any LF about, a CR is only half of a line end.
  if (bytes.find('\n') == std::string::npos) std::replace(bytes.begin(), bytes.end(), '\r', '\n');
  return bytes;
}

std::string FoldAscii(std::string_view text) {
  std::string out(text);
  for (char& c : out) c = FoldAscii(c);
  return out;
}

bool ContainsFolded(std::string_view text, std::string_view part) {
  for (size_t at = 0; at + part.size() <= text.size(); ++at) {
    if (EqualsFolded(text.substr(at, part.size()), part)) return true;
  }
  return false;
}

}  // namespace formats
