// One pass over the text, which is laid out anew in place: a section's lines move up to where its heading ended, each
// with its terminator, and are never longer there than they were.
#include "profiles/catalogue_text.h"

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <utility>

namespace orv::catalogue {
namespace {

constexpr WCHAR kFirstPrintable = ORV_W(' ');
constexpr WCHAR kFirstBeyondAscii = 0x7F;
constexpr WStringView kBlanks = ORV_W(" \t");

WCHAR Fold(WCHAR c) noexcept {
  return c >= ORV_W('A') && c <= ORV_W('Z') ? static_cast<WCHAR>(c - ORV_W('A') + ORV_W('a')) : c;
}

bool IsSameName(WStringView a, WStringView b) noexcept {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](WCHAR x, WCHAR y) { return Fold(x) == Fold(y); });
}

bool IsBlank(WCHAR c) noexcept { return c == ORV_W(' ') || c == ORV_W('\t'); }

// Takes the next line off the text.
WStringView NextLine(WStringView& text) {
  const auto end = std::min(text.find(ORV_W('\n')), text.size());
  WStringView line = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  if (!line.empty() && line.back() == ORV_W('\r')) line.remove_suffix(1);
  return line;
}

// "[name]" and nothing else, the name in ASCII without blanks at its ends; empty for another line.
WStringView HeadingName(WStringView line) {
  if (line.size() < 3 || line.front() != ORV_W('[') || line.back() != ORV_W(']')) return {};
  const WStringView name = line.substr(1, line.size() - 2);
  const bool plain = std::all_of(name.begin(), name.end(), [](WCHAR c) {
    return c >= kFirstPrintable && c < kFirstBeyondAscii && c != ORV_W('[') && c != ORV_W(']');
  });
  return plain && !IsBlank(name.front()) && !IsBlank(name.back()) ? name : WStringView();
}

// A line in which nothing is quoted or hidden, that is no comment, and that has a key and no blanks at its end, which
// are not the same to every platform.
bool IsPlainLine(WStringView line) {
  if (WStringView(ORV_W(";#=")).find(line.front()) != WStringView::npos || IsBlank(line.back())) return false;
  return std::all_of(line.begin(), line.end(),
                     [](WCHAR c) { return (c >= kFirstPrintable || c == ORV_W('\t')) && c != ORV_W('"'); });
}

WStringView TrimEnd(WStringView text) { return text.substr(0, text.find_last_not_of(kBlanks) + 1); }
WStringView TrimStart(WStringView text) {
  return text.substr(std::min(text.find_first_not_of(kBlanks), text.size()));
}

// Writes a line that is not empty at `out`, which lies at or before it; the end of what was written, or null when it is
// not plain.
WCHAR* CompactLine(WStringView line, WCHAR* out) {
  const auto equals = line.find(ORV_W('='));
  if (equals == WStringView::npos || !IsPlainLine(line)) return nullptr;
  const WStringView key = TrimEnd(line.substr(0, equals));
  const WStringView value = TrimStart(line.substr(equals + 1));
  out = std::copy(key.begin(), key.end(), out);
  *out++ = ORV_W('=');
  out = std::copy(value.begin(), value.end(), out);
  *out++ = 0;
  return out;
}

}  // namespace

CatalogueText::CatalogueText(WString text) : text_(std::move(text)) {
  if (!Split()) sections_.clear();
}

// False for a heading that is not plain: the lines behind it may belong to anybody.
bool CatalogueText::Split() {
  Current current;
  for (WStringView rest = text_; !rest.empty();) {
    if (!TakeLine(NextLine(rest), current)) return false;
  }
  Finish(current);
  return true;
}

bool CatalogueText::TakeLine(WStringView line, Current& current) {
  const WStringView content = TrimStart(line);
  if (content.empty() || line.front() == ORV_W(';')) return true;
  if (content.front() != ORV_W('[')) {
    if (current.end != nullptr) current.end = CompactLine(content, current.end);
    return true;
  }
  const WStringView name = HeadingName(line);
  if (name.empty()) return false;
  Finish(current);
  // Behind the name, which stays: "]" and the end of the line leave room for the last two terminators.
  WCHAR* lines = text_.data() + (name.data() + name.size() - text_.data());
  current = {name, lines, lines};
  return true;
}

// A later section of the name finds it taken, even if this one has nothing to say.
void CatalogueText::Finish(const Current& current) {
  if (current.name.empty()) return;
  const bool says = current.end != nullptr && current.end != current.lines &&
                    static_cast<std::size_t>(current.end - current.lines) <= kMostCharacters;
  if (says) *current.end = 0;
  sections_.try_emplace(current.name, says ? current.lines : nullptr);
}

const WCHAR* CatalogueText::Section(WStringView name) const {
  const auto section = sections_.find(name);
  return section == sections_.end() ? nullptr : section->second;
}

// FNV-1a.
std::size_t CatalogueText::FoldedHash::operator()(WStringView name) const noexcept {
  constexpr std::uint64_t kBasis = 14695981039346656037u;
  constexpr std::uint64_t kPrime = 1099511628211u;
  return std::accumulate(name.begin(), name.end(), kBasis,
                         [](std::uint64_t hash, WCHAR c) { return (hash ^ Fold(c)) * kPrime; });
}

bool CatalogueText::FoldedEqual::operator()(WStringView a, WStringView b) const noexcept {
  return IsSameName(a, b);
}

std::vector<ULONG> LineNumbersOf(WStringView text, WStringView section) {
  std::vector<ULONG> numbers;
  bool isInside = false;
  for (ULONG number = 1; !text.empty(); ++number) {
    const WStringView content = TrimStart(NextLine(text));
    if (content.empty() || content.front() == ORV_W(';')) continue;
    if (content.front() != ORV_W('[')) {
      if (isInside) numbers.push_back(number);
    } else if (isInside) {
      return numbers;
    } else {
      isInside = IsSameName(content.substr(1, content.find(ORV_W(']')) - 1), section);
    }
  }
  return numbers;
}

}  // namespace orv::catalogue
