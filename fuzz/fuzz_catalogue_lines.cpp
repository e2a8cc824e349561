// Any text as a line and as every kind of value of the catalogue. Beyond the sanitizers: what is returned lies inside
// the line, formats stay in their room, and a split list joins to what it was.
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "profiles/catalogue_lines.h"

namespace {

using orv::WString;
using orv::WStringView;

void Demand(bool condition) {
  if (!condition) std::abort();
}

bool Within(WStringView part, WStringView whole) {
  return part.data() >= whole.data() && part.data() + part.size() <= whole.data() + whole.size();
}

void TryLine(WStringView line) {
  using namespace orv::catalogue;
  ServiceLine service{};
  if (SUCCEEDED(ParseServiceLine(line, service))) {
    Demand(Within(service.name, line) && Within(service.text, line) && !service.text.empty());
    Demand(service.name.find(u'=') == WStringView::npos);
  }
  if (const auto key = ParseKeyLine(line)) Demand(Within(key->value, line) && key->tag != 0);
}

void TryValue(WStringView value, char16_t letter) {
  using namespace orv::catalogue;
  for (const std::size_t room : {kLibraryNameRoom, kFileListRoom}) {
    WString formatted;
    if (FAILED(FormatWithLetter(value, letter, room, formatted))) continue;
    Demand(formatted.size() < room && formatted.size() <= value.size());
  }
  WString joined;
  for (const WStringView piece : SplitFileList(value)) {
    joined.append(piece);
    joined.push_back(u',');
  }
  joined.pop_back();
  Demand(joined == value);
  Demand((ParseResourceFlags(value) & ~SERVICE_SINGLE_COPY) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // Exactly as long as the input, so that a read beyond it is seen.
  WString text(size / sizeof(char16_t), u'\0');
  std::memcpy(text.data(), data, text.size() * sizeof(char16_t));
  TryLine(text);
  TryValue(text, size % 2 == 0 ? u'A' : u'\0');
  return 0;
}
