// Parsing of catalogue lines.
#include "profiles/catalogue_lines.h"

#include <algorithm>
#include <array>

namespace orv::catalogue {
namespace {

constexpr WStringView kBlanks = ORV_W(" \t");
constexpr WStringView kNameEnds = ORV_W(" \t=");

struct KeyRow {
  WStringView key;
  ULONG tag;
};
constexpr auto kKeys = std::to_array<KeyRow>({
    {ORV_W("PR_DISPLAY_NAME"), PR_DISPLAY_NAME_W},
    {ORV_W("PR_SERVICE_DLL_NAME"), PR_SERVICE_DLL_NAME_W},
    {ORV_W("PR_SERVICE_ENTRY_NAME"), PR_SERVICE_ENTRY_NAME},
    {ORV_W("PR_SERVICE_SUPPORT_FILES"), PR_SERVICE_SUPPORT_FILES_W},
    {ORV_W("PR_SERVICE_DELETE_FILES"), PR_SERVICE_DELETE_FILES_W},
    {ORV_W("PR_RESOURCE_FLAGS"), PR_RESOURCE_FLAGS},
});

struct FlagRow {
  WStringView name;
  ULONG value;
};
constexpr auto kFlags = std::to_array<FlagRow>({{ORV_W("SERVICE_SINGLE_COPY"), SERVICE_SINGLE_COPY}});

WStringView SkipBlanks(WStringView text) {
  return text.substr(std::min(text.find_first_not_of(kBlanks), text.size()));
}

WStringView Trim(WStringView text) {
  text = SkipBlanks(text);
  const auto last = text.find_last_not_of(kBlanks);
  return text.substr(0, last == WStringView::npos ? 0 : last + 1);
}

// A word up to a blank or "=", then "=" and what follows the blanks behind it.
struct Assignment {
  WStringView word;
  WStringView rest;
};
std::optional<Assignment> ParseAssignment(WStringView line) {
  line = SkipBlanks(line);
  const auto end = std::min(line.find_first_of(kNameEnds), line.size());
  const WStringView behind = SkipBlanks(line.substr(end));
  if (behind.empty() || behind.front() != ORV_W('=')) return std::nullopt;
  return Assignment{line.substr(0, end), SkipBlanks(behind.substr(1))};
}

}  // namespace

HRESULT ParseServiceLine(WStringView line, ServiceLine& parsed) {
  const auto assignment = ParseAssignment(line);
  if (!assignment || assignment->rest.empty()) return MAPI_E_BAD_VALUE;
  parsed = {assignment->word, assignment->rest};
  return S_OK;
}

std::optional<KeyLine> ParseKeyLine(WStringView line) {
  const auto assignment = ParseAssignment(line);
  if (!assignment) return std::nullopt;
  const auto row = std::find_if(kKeys.begin(), kKeys.end(),
                                [&](const KeyRow& candidate) { return candidate.key == assignment->word; });
  if (row == kKeys.end()) return std::nullopt;
  return KeyLine{row->tag, assignment->rest};
}

HRESULT FormatWithLetter(WStringView format, WCHAR letter, std::size_t room, WString& formatted) {
  formatted.clear();
  for (std::size_t i = 0; i < format.size(); ++i) {
    WCHAR next = format[i];
    if (next == ORV_W('%')) {
      const WCHAR directive = ++i < format.size() ? format[i] : WCHAR{0};
      const bool known = directive == ORV_W('%') || (directive == ORV_W('c') && letter != 0);
      if (!known) return MAPI_E_BAD_VALUE;
      if (directive == ORV_W('c')) next = letter;
    }
    formatted.push_back(next);
    if (formatted.size() >= room) return MAPI_E_BAD_VALUE;
  }
  return S_OK;
}

std::vector<WStringView> SplitFileList(WStringView list) {
  std::vector<WStringView> pieces;
  pieces.reserve(static_cast<std::size_t>(std::count(list.begin(), list.end(), ORV_W(','))) + 1);
  for (;;) {
    const auto comma = list.find(ORV_W(','));
    pieces.push_back(list.substr(0, comma));
    if (comma == WStringView::npos) return pieces;
    list.remove_prefix(comma + 1);
  }
}

ULONG ParseResourceFlags(WStringView list) {
  ULONG flags = 0;
  for (;;) {
    const auto bar = list.find(ORV_W('|'));
    const WStringView name = Trim(list.substr(0, bar));
    for (const FlagRow& row : kFlags) {
      if (row.name == name) flags |= row.value;
    }
    if (bar == WStringView::npos) return flags;
    list.remove_prefix(bar + 1);
  }
}

}  // namespace orv::catalogue
