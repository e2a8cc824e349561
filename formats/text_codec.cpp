// Text conversions of the contact file readers. The Windows build asks the system for its code pages;
// elsewhere only Windows-1252, which is built in, is known.
#include "formats/text_codec.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>

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

// The 32 code points where Windows-1252 differs from Latin-1; unassigned bytes keep their control code.
constexpr std::array<char16_t, 32> kWindows1252High = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

struct CharsetName {
  std::string_view name;  // letters and digits only, lower case
  unsigned codePage;
};

// Latin-1 is read as its superset 1252, because that is what writers who name it mean.
constexpr CharsetName kCharsetNames[] = {{"utf8", kUtf8CodePage},
                                         {"usascii", kWindows1252},
                                         {"ascii", kWindows1252},
                                         {"iso88591", kWindows1252},
                                         {"latin1", kWindows1252},
                                         {"iso88592", 28592},
                                         {"latin2", 28592},
                                         {"iso88593", 28593},
                                         {"iso88594", 28594},
                                         {"iso88595", 28595},
                                         {"iso88596", 28596},
                                         {"iso88597", 28597},
                                         {"iso88598", 28598},
                                         {"iso88599", 28599},
                                         {"iso885913", 28603},
                                         {"iso885915", 28605},
                                         {"latin9", 28605},
                                         {"shiftjis", 932},
                                         {"sjis", 932},
                                         {"xsjis", 932},
                                         {"windows31j", 932},
                                         {"cp932", 932},
                                         {"eucjp", 20932},
                                         {"iso2022jp", 50220},
                                         {"gb2312", 936},
                                         {"gbk", 936},
                                         {"cp936", 936},
                                         {"gb18030", 54936},
                                         {"big5", 950},
                                         {"euckr", 949},
                                         {"ksc56011987", 949},
                                         {"cp949", 949},
                                         {"koi8r", 20866},
                                         {"koi8u", 21866},
                                         {"tis620", 874},
                                         {"windows874", 874},
                                         {"macintosh", 10000}};

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

std::string DecodeWindows1252(std::string_view bytes) {
  std::string out;
  out.reserve(bytes.size() + bytes.size() / 8);
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    const bool special = byte >= 0x80 && byte < 0xA0;
    AppendUtf8(out, special ? kWindows1252High[byte - 0x80u] : byte);
  }
  return out;
}

std::optional<std::string> DecodeCodePage(std::string_view bytes, unsigned codePage) {
  if (codePage == kWindows1252) return DecodeWindows1252(bytes);
#ifdef _WIN32
  if (bytes.empty()) return std::string();
  const int size = static_cast<int>(bytes.size());
  const int needed = MultiByteToWideChar(codePage, 0, bytes.data(), size, nullptr, 0);
  if (needed <= 0) return std::nullopt;
  std::wstring wide(static_cast<size_t>(needed), L'\0');
  if (MultiByteToWideChar(codePage, 0, bytes.data(), size, wide.data(), needed) != needed)
    return std::nullopt;
  return EncodeUnits(wide.size(), [&](size_t i) -> char32_t { return wide[i]; });
#else
  return std::nullopt;
#endif
}

unsigned AnsiCodePage() {
#ifdef _WIN32
  const unsigned codePage = GetACP();
  return codePage == kUtf8CodePage ? kWindows1252 : codePage;
#else
  return kWindows1252;
#endif
}

// "windows-1250" and "cp1250" carry their number; every other name is looked up. 0 means unknown.
unsigned CodePageOf(std::string_view charset) {
  std::string name;
  for (const char c : charset.substr(0, 32)) {
    const char folded = FoldAscii(c);
    if ((folded >= 'a' && folded <= 'z') || (folded >= '0' && folded <= '9')) name += folded;
  }
  for (const CharsetName& known : kCharsetNames) {
    if (known.name == name) return known.codePage;
  }
  for (const std::string_view prefix : {std::string_view("windows125"), std::string_view("cp125")}) {
    const bool numbered = name.size() == prefix.size() + 1 && name.compare(0, prefix.size(), prefix) == 0;
    if (numbered && name.back() >= '0' && name.back() <= '8')
      return 1250u + static_cast<unsigned>(name.back() - '0');
  }
  return 0;
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
  if (lead < 0xC2 || lead > 0xF4 || text.size() - pos < extra) return kMalformed;
  char32_t value = lead & (0x3Fu >> extra);
  for (size_t i = 0; i < extra; ++i) {
    if (!IsContinuation(byteAt(pos + i))) return kMalformed;
    value = (value << 6) | (byteAt(pos + i) & 0x3Fu);
  }
  const bool overlong = (extra == 2 && value < 0x800) || (extra == 3 && value < 0x10000);
  if (overlong || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) return kMalformed;
  pos += extra;
  return value;
}

bool IsUtf8(std::string_view bytes) {
  for (size_t pos = AsciiPrefix(bytes); pos < bytes.size();) {
    if (NextCodePoint(bytes, pos) == kMalformed) return false;
  }
  return true;
}

std::u16string ToUtf16(std::string_view utf8) {
  size_t pos = AsciiPrefix(utf8);
  std::u16string out(utf8.begin(), utf8.begin() + static_cast<std::ptrdiff_t>(pos));
  out.reserve(utf8.size());
  while (pos < utf8.size()) {
    const char32_t value = NextCodePoint(utf8, pos);
    AppendUtf16(out, value == kMalformed ? kReplacement : value);
  }
  return out;
}

std::string ToUtf8(std::u16string_view text) {
  return EncodeUnits(text.size(), [&](size_t i) -> char32_t { return text[i]; });
}

std::string DecodeCharset(std::string_view bytes, std::string_view charset) {
  const unsigned codePage = charset.empty() ? 0 : CodePageOf(charset);
  if (codePage != 0 && codePage != kUtf8CodePage) {
    if (auto text = DecodeCodePage(bytes, codePage)) return *std::move(text);
  }
  if (IsUtf8(bytes)) return std::string(bytes);
  if (auto text = DecodeCodePage(bytes, AnsiCodePage())) return *std::move(text);
  return DecodeWindows1252(bytes);
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
