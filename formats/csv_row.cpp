// The cells of a table's rows.
#include <algorithm>

#include "formats/card_text.h"
#include "formats/card_uris.h"
#include "formats/contact_csv.h"
#include "formats/number_words.h"
#include "formats/text_codec.h"

namespace formats {
namespace {

std::string_view WordOf(NumberKind kind) {
  switch (kind) {
    case NumberKind::kFax:
      return "fax";
    case NumberKind::kMobile:
      return "mobile";
    case NumberKind::kPager:
      return "pager";
    case NumberKind::kOther:
      return "telex";
    case NumberKind::kPhone:
      break;
  }
  return "phone";
}

std::string_view WordOf(Place place) {
  switch (place) {
    case Place::kWork:
      return "work ";
    case Place::kHome:
      return "home ";
    case Place::kOther:
      return "other ";
    case Place::kNone:
      break;
  }
  return {};
}

// A word before a number has a blank behind its colon.
bool IsNumberUri(std::string_view line) {
  bool isFax = false;
  const std::string_view text = StripNumberSchemes(line, &isFax);
  return text.size() != line.size() && !text.empty() && line[line.size() - text.size() - 1] == ':';
}

bool TakeScheme(std::string_view* line, std::string_view scheme) {
  if (!EqualsFolded(line->substr(0, scheme.size()), scheme)) return false;
  *line = TrimBlanks(line->substr(scheme.size()));
  return true;
}

}  // namespace

void CsvRow::Clear() {
  cells_.clear();
  isQuoted_ = isMisclosed_ = false;
}

// Adds what stands in quotation marks from `at` on, and gives the place behind it.
std::size_t CsvRow::AddQuoted(std::string_view line, std::size_t at) {
  for (;;) {
    const std::size_t quote = std::min(line.find('"', at), line.size());
    cells_.back().append(line.substr(at, quote - at));
    if (quote == line.size()) return quote;
    at = quote + 1;
    if (at == line.size() || line[at] != '"') {
      isQuoted_ = false;
      return at;
    }
    cells_.back() += '"';
    ++at;
  }
}

bool CsvRow::Add(std::string_view line) {
  std::size_t at = 0;
  if (isQuoted_) {
    cells_.back() += '\n';
    at = AddQuoted(line, 0);
    const std::size_t behind = line.find_first_not_of(' ', at);
    isMisclosed_ |= behind != std::string_view::npos && delimiters_.find(line[behind]) == std::string::npos;
  } else {
    cells_.emplace_back();
  }
  while (at < line.size()) {
    const bool opens = line[at] == '"' && TrimBlanks(cells_.back()).empty();
    if (opens && !isQuoted_) {
      isQuoted_ = true;
      cells_.back().clear();
      at = AddQuoted(line, at + 1);
    } else if (delimiters_.find(line[at]) != std::string::npos) {
      cells_.emplace_back();
      ++at;
    } else {
      cells_.back() += line[at++];
    }
  }
  return isQuoted_;
}

bool CsvRow::isBlank() const {
  return std::all_of(cells_.begin(), cells_.end(),
                     [](const std::string& cell) { return TrimBlanks(cell).empty(); });
}

std::string LineOfNumber(const ContactNumber& number) {
  std::string line(WordOf(number.place));
  return line.append(WordOf(number.kind)).append(": ").append(number.text);
}

bool IsRoundedNumber(std::string_view cell) {
  constexpr std::string_view kDigits = "0123456789", kExponent = "E+";
  cell = TrimBlanks(cell);
  std::size_t at = cell.find_first_not_of(kDigits);
  if (at != 1) return false;
  if (cell[at] == ',' || cell[at] == '.') at = std::min(cell.find_first_not_of(kDigits, at + 1), cell.size());
  const std::string_view power = cell.substr(at);
  return power.size() > kExponent.size() && EqualsFolded(power.substr(0, kExponent.size()), kExponent) &&
         power.find_first_not_of(kDigits, kExponent.size()) == std::string_view::npos;
}

// A line without words is a number alone.
ContactNumber NumberOfLine(std::string_view line) {
  ContactNumber number;
  const bool isUri = IsNumberUri(line);
  const std::size_t colon = line.find(':');
  NumberWords words =
      colon == std::string_view::npos ? NumberWords() : ReadNumberWords(line.substr(0, colon));
  if (words.isWhole && (words.HasKind() || words.HasPlace())) {
    line.remove_prefix(colon + 1);
  } else {
    words = {};
  }
  number.kind = words.kind();
  number.place = words.place();
  bool isFax = false;
  number.text = StripNumberSchemes(TrimBlanks(line), &isFax);
  std::string plain = number.text;
  if (isUri && TakeUriOptions(&plain).empty()) number.text = std::move(plain);
  if (isFax) number.kind = NumberKind::kFax;
  return number;
}

std::string LineOfMember(const ContactMember& member) {
  const bool isBare = !member.uid.empty() && member.uid == member.name;
  if (!member.uid.empty() && !isBare) return "urn:uuid:" + member.uid;
  if (!member.uid.empty()) return member.uid;
  if (!member.number.empty()) return "tel:" + member.number;
  return member.email.empty() ? member.name : "mailto:" + member.email;
}

ContactMember MemberOfLine(std::string_view line) {
  ContactMember member;
  line = TrimBlanks(line);
  if (TakeScheme(&line, "tel:") || TakeScheme(&line, "fax:")) {
    member.number = line;
  } else if (TakeScheme(&line, "mailto:")) {
    member.email = line.substr(0, line.find('?'));
  } else if (TakeScheme(&line, "urn:uuid:")) {
    member.uid = StripPrefix(line, "urn:uuid:");
  } else {
    member.uid = line;
    if (!HasScheme(line) && !IsUuid(line)) member.name = line;
  }
  return member;
}

}  // namespace formats
