// Sort keys are the system's. Hyphens and apostrophes count as any other sign: a name is found where its beginning says.
#include "providers/book/text.h"

#include <windows.h>

#include <objbase.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <new>

#include "formats/text_codec.h"

namespace book {
namespace {

constexpr DWORD kSortFlags =
    LCMAP_SORTKEY | NORM_IGNORECASE | NORM_IGNOREKANATYPE | NORM_IGNOREWIDTH | SORT_STRINGSORT;
constexpr std::size_t kMostSorted = 160;
// Ends the weights of the letters in a sort key; no weight has it.
constexpr char kEndOfWeights = '\x01';
constexpr std::size_t kUidDigits = 32;

// What no taking apart of accents makes plain. A change of these makes the words of every book anew: another format.
struct Letter {
  std::string_view letter, plain;
};
constexpr Letter kLetters[] = {
    {"\u00DF", "ss"}, {"\u1E9E", "SS"}, {"\u00E6", "ae"}, {"\u00C6", "AE"}, {"\u0153", "oe"},
    {"\u0152", "OE"}, {"\u00F8", "o"},  {"\u00D8", "O"},  {"\u0142", "l"},  {"\u0141", "L"},
    {"\u0111", "d"},  {"\u0110", "D"},  {"\u00F0", "d"},  {"\u00D0", "D"},  {"\u00FE", "th"},
    {"\u00DE", "Th"}, {"\u0131", "i"},  {"\u0130", "I"},  {"\u0127", "h"},  {"\u0126", "H"},
    {"\u0167", "t"},  {"\u0166", "T"},  {"\u014B", "n"},  {"\u014A", "N"},  {"\u0133", "ij"},
    {"\u0132", "IJ"},
};

bool IsAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<signed char>(c) >= 0; });
}

// Letters and their marks apart.
std::wstring Decomposed(const std::wstring& text) {
  std::wstring apart(text.size() * 4 + 1, L'\0');
  const int size = FoldStringW(MAP_COMPOSITE, text.data(), static_cast<int>(text.size()), apart.data(),
                               static_cast<int>(apart.size()));
  if (size <= 0) return text;
  apart.resize(static_cast<std::size_t>(size));
  return apart;
}

std::wstring WithoutMarks(const std::wstring& text) {
  std::vector<WORD> types(text.size());
  if (!GetStringTypeW(CT_CTYPE3, text.data(), static_cast<int>(text.size()), types.data())) return text;
  std::wstring kept;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool isMark = (types[i] & C3_NONSPACING) != 0 && (types[i] & C3_ALPHA) == 0;
    if (!isMark) kept += text[i];
  }
  return kept;
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

// A UUID with its hyphens or without; `uid` is folded.
bool ReadUuid(std::string_view uid, EntryKey* key) {
  std::array<uint8_t, kUidDigits> digits{};
  std::size_t count = 0;
  for (const char c : uid) {
    if (c == '-') continue;
    const int digit = HexDigit(c);
    if (digit < 0 || count == kUidDigits) return false;
    digits[count++] = static_cast<uint8_t>(digit);
  }
  if (count != kUidDigits) return false;
  for (std::size_t i = 0; i < kKeySize; ++i)
    (*key)[i] = static_cast<uint8_t>(digits[2 * i] << 4 | digits[2 * i + 1]);
  return true;
}

}  // namespace

std::string ToUtf8(std::wstring_view text) {
  if (text.empty()) return {};
  const int size = static_cast<int>(text.size());
  std::string utf8(text.size() * 3, '\0');
  const int written = WideCharToMultiByte(CP_UTF8, 0, text.data(), size, utf8.data(),
                                          static_cast<int>(utf8.size()), nullptr, nullptr);
  utf8.resize(static_cast<std::size_t>(written));
  return utf8;
}

std::wstring ToWide(std::string_view utf8) {
  if (utf8.empty()) return {};
  std::wstring text(utf8.size(), L'\0');
  const int written = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), text.data(),
                                          static_cast<int>(text.size()));
  text.resize(static_cast<std::size_t>(written));
  return text;
}

std::string PlainLetters(std::string_view text) {
  std::string plain(text);
  if (IsAscii(text)) return plain;
  for (const Letter& each : kLetters) {
    for (std::size_t at = plain.find(each.letter); at != plain.npos; at = plain.find(each.letter, at))
      plain.replace(at, each.letter.size(), each.plain);
  }
  return plain;
}

std::string Folded(std::string_view text) {
  if (IsAscii(text)) return formats::FoldAscii(text);
  std::wstring wide = WithoutMarks(Decomposed(ToWide(PlainLetters(text))));
  CharLowerBuffW(wide.data(), static_cast<DWORD>(wide.size()));
  return ToUtf8(wide);
}

std::string DigitsOf(std::string_view number) {
  std::string digits = formats::CanonicalNumber(number);
  if (!digits.empty() && digits.front() == '+') digits.erase(0, 1);
  return digits;
}

std::string Reversed(std::string_view digits) { return {digits.rbegin(), digits.rend()}; }

std::string UidOfKey(const EntryKey& key) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string uid;
  for (std::size_t i = 0; i < kKeySize; ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) uid += '-';
    uid += {kDigits[key[i] >> 4], kDigits[key[i] & 0xF]};
  }
  return uid;
}

std::string NewUid() {
  GUID guid{};
  EntryKey key{};
  if (FAILED(CoCreateGuid(&guid))) throw std::bad_alloc();
  std::memcpy(key.data(), &guid, kKeySize);
  return UidOfKey(key);
}

EntryKey KeyOfBytes(std::span<const uint8_t> bytes) {
  EntryKey key{};
  if (bytes.size() == kKeySize) std::copy(bytes.begin(), bytes.end(), key.begin());
  return key;
}

uint64_t HashOf(std::string_view text, uint64_t seed) {
  uint64_t hash = 0xCBF29CE484222325 ^ seed;
  for (const char c : text) hash = (hash ^ static_cast<uint8_t>(c)) * 0x100000001B3;
  hash = (hash ^ (hash >> 32)) * 0xD6E8FEB86659FD93;
  return hash ^ (hash >> 32);
}

EntryKey KeyOfUid(std::string_view uid) {
  constexpr std::string_view kScheme = "urn:uuid:";
  std::string folded = formats::FoldAscii(uid);
  if (folded.compare(0, kScheme.size(), kScheme) == 0) folded.erase(0, kScheme.size());
  EntryKey key{};
  if (ReadUuid(folded, &key)) return key;
  constexpr uint64_t kOtherHalf = 0x9E3779B97F4A7C15;
  const std::array<uint64_t, 2> halves = {HashOf(folded, 0), HashOf(folded, kOtherHalf)};
  std::memcpy(key.data(), halves.data(), kKeySize);
  return key;
}

SortKeys::SortKeys(std::string locale) : locale_(std::move(locale)), wide_(ToWide(locale_)) {}

SortKeys SortKeys::OfUser() {
  std::array<wchar_t, LOCALE_NAME_MAX_LENGTH> name{};
  const int size = GetUserDefaultLocaleName(name.data(), static_cast<int>(name.size()));
  return SortKeys(size > 0 ? ToUtf8(name.data()) : std::string("en-US"));
}

std::string SortKeys::Key(std::string_view name) const {
  const std::wstring wide = ToWide(name.substr(0, kMostSorted * 3)).substr(0, kMostSorted);
  std::array<char, kMostSorted * 12> key;
  const int size = LCMapStringEx(wide_.c_str(), kSortFlags, wide.data(), static_cast<int>(wide.size()),
                                 reinterpret_cast<wchar_t*>(key.data()), static_cast<int>(key.size()),
                                 nullptr, nullptr, 0);
  std::string result(key.data(), static_cast<std::size_t>(std::max(size, 0)));
  // Signs without a weight come in the order of their code, before all letters.
  if (result.empty() || result.front() == kEndOfWeights) result.append(name.substr(0, kMostSorted));
  return result;
}

std::string SortKeys::Prefix(std::string_view start) const {
  const std::string key = Key(start);
  return key.empty() || key.front() == kEndOfWeights ? key : key.substr(0, key.find(kEndOfWeights));
}

std::string SortKeys::version() const {
  NLSVERSIONINFOEX info{};
  info.dwNLSVersionInfoSize = sizeof(info);
  if (!GetNLSVersionEx(COMPARE_STRING, wide_.c_str(), &info)) return "0";
  std::string text = std::to_string(info.dwNLSVersion) + '.' + std::to_string(info.dwDefinedVersion);
  return text + '.' + std::to_string(kSortFlags);
}

}  // namespace book
