// The line level of vCard files.
#include "formats/vcard_lines.h"

#include <algorithm>
#include <array>
#include <cstdlib>

#include "formats/base64.h"
#include "formats/text_codec.h"

namespace formats {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool IsFoldBlank(char c) { return c == ' ' || c == '\t'; }

// "BEGIN:VCARD" with blanks allowed round both words, and a mark where files were joined.
bool IsDelimiter(std::string_view line, std::string_view keyword) {
  constexpr size_t kLongestDelimiter = 64;
  if (line.size() > kLongestDelimiter || line.empty()) return false;
  // Nearly every line is told apart by its first letter.
  const char first = FoldAscii(line.front());
  if (first > ' ' && first != FoldAscii(keyword.front())) return false;
  if (line.substr(0, kByteOrderMark.size()) == kByteOrderMark) line.remove_prefix(kByteOrderMark.size());
  const size_t colon = line.find(':');
  return colon != std::string_view::npos && EqualsFolded(TrimBlanks(line.substr(0, colon)), keyword) &&
         EqualsFolded(TrimBlanks(line.substr(colon + 1)), "VCARD");
}

// Finds the colon that ends name and parameters; it may be called again as the line grows, and goes on from
// where it stopped, so that a line of many folds is still searched once.
class ValueColon {
 public:
  std::optional<size_t> Find(std::string_view line) {
    for (; !found_ && pos_ < line.size(); ++pos_) {
      if (line[pos_] == '"') quoted_ = !quoted_;
      if (line[pos_] == ':' && !quoted_) {
        found_ = pos_;
        break;
      }
    }
    return found_;
  }

 private:
  size_t pos_ = 0;
  bool quoted_ = false;
  std::optional<size_t> found_;
};

// Tells whether a line whose last physical line ends in "=" goes on as quoted-printable; the parameters are
// looked at once.
class SoftBreak {
 public:
  bool At(std::string_view line, std::string_view lastPhysical) {
    const size_t last = lastPhysical.find_last_not_of(" \t");
    if (last == std::string_view::npos || lastPhysical[last] != '=') return false;
    const std::optional<size_t> colon = colon_.Find(line);
    if (!colon) return false;
    if (!encoded_) encoded_ = IsQuotedPrintable(line.substr(0, *colon));
    return *encoded_;
  }

 private:
  static bool IsQuotedPrintable(std::string_view header) {
    const size_t params = header.find(';');
    if (params == std::string_view::npos) return false;
    return ParseVCardParams(header.substr(params)).encoding == VCardEncoding::kQuotedPrintable;
  }

  ValueColon colon_;
  std::optional<bool> encoded_;
};

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  const char folded = FoldAscii(c);
  return folded >= 'a' && folded <= 'f' ? folded - 'a' + 10 : -1;
}

// Malformed escapes stay as they are; a soft break that reached this point is dropped.
std::string DecodeQuotedPrintable(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    const int high = text[i] == '=' && i + 2 < text.size() ? HexDigit(text[i + 1]) : -1;
    const int low = high >= 0 ? HexDigit(text[i + 2]) : -1;
    if (low >= 0) {
      out += static_cast<char>(high * 16 + low);
      i += 2;
    } else if (text[i] != '=' || i + 1 != text.size()) {
      out += text[i];
    }
  }
  return out;
}

// Some writers join the words, as in "WORKFAX".
void ApplyType(std::string_view type, VCardParams& params) {
  if (ContainsFolded(type, "FAX")) params.fax = true;
  if (ContainsFolded(type, "HOME")) params.home = true;
  if (ContainsFolded(type, "WORK")) params.work = true;
  if (EqualsFolded(type, "CELL")) params.mobile = true;
  if (EqualsFolded(type, "PAGER")) params.pager = true;
  if (EqualsFolded(type, "PREF")) params.preference = 1;
}

void ApplyEncoding(std::string_view encoding, VCardParams& params) {
  if (EqualsFolded(encoding, "QUOTED-PRINTABLE") || EqualsFolded(encoding, "Q"))
    params.encoding = VCardEncoding::kQuotedPrintable;
  if (EqualsFolded(encoding, "BASE64") || EqualsFolded(encoding, "B"))
    params.encoding = VCardEncoding::kBase64;
}

std::string_view Unquote(std::string_view text) {
  text = TrimBlanks(text);
  if (!text.empty() && text.front() == '"') text.remove_prefix(1);
  if (!text.empty() && text.back() == '"') text.remove_suffix(1);
  return text;
}

// Calls `use` with every piece of `text` between separators outside quotation marks.
template <class Use>
void ForEachPiece(std::string_view text, char separator, Use use) {
  bool quoted = false;
  size_t begin = 0;
  for (size_t i = 0; i <= text.size(); ++i) {
    if (i < text.size() && text[i] == '"') quoted = !quoted;
    if (i < text.size() && (quoted || text[i] != separator)) continue;
    use(text.substr(begin, i - begin));
    begin = i + 1;
  }
}

int ParsePreference(std::string_view text) {
  int value = 0;
  for (const char c : text.substr(0, 3)) {
    if (c < '0' || c > '9') return VCardParams::kNotPreferred;
    value = value * 10 + (c - '0');
  }
  return value >= 1 && value <= 100 ? value : VCardParams::kNotPreferred;
}

void ApplyParam(std::string_view param, VCardParams& params) {
  const size_t equals = param.find('=');
  if (equals == std::string_view::npos) {
    // Version 2.1 writes types and encodings bare.
    ApplyType(TrimBlanks(param), params);
    if (TrimBlanks(param).size() > 1) ApplyEncoding(TrimBlanks(param), params);
    return;
  }
  const std::string_view name = TrimBlanks(param.substr(0, equals));
  const std::string_view value = Unquote(param.substr(equals + 1));
  if (EqualsFolded(name, "TYPE"))
    ForEachPiece(value, ',', [&](std::string_view type) { ApplyType(Unquote(type), params); });
  if (EqualsFolded(name, "ENCODING")) ApplyEncoding(value, params);
  if (EqualsFolded(name, "CHARSET")) params.charset = value;
  if (EqualsFolded(name, "PREF")) params.preference = ParsePreference(value);
}

// What a backslash and this character stand for; none where the backslash is ordinary text. Version 2.1
// escapes separators only, so that its paths and domain names keep their backslashes.
std::optional<char> EscapedChar(char c, VCardVersion version) {
  constexpr std::string_view kSeparators = ";,";
  constexpr std::string_view kLaterEscapes = "\\:\"";
  if (kSeparators.find(c) != std::string_view::npos) return c;
  if (version == VCardVersion::k21) return std::nullopt;
  if (c == 'n' || c == 'N') return '\n';
  if (kLaterEscapes.find(c) != std::string_view::npos) return c;
  return std::nullopt;
}

bool IsNameChar(char c) {
  const char folded = FoldAscii(c);
  return (folded >= 'a' && folded <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '_' || c == '.';
}

}  // namespace

bool VCardLineReader::Next() {
  while (next_ < text_.size()) {
    lineBegin_ = next_;
    line_ = ReadPhysicalLine();
    if (TrimBlanks(line_).empty()) continue;
    if (MayContinue()) AppendContinuations();
    return true;
  }
  return false;
}

std::string_view VCardLineReader::ReadPhysicalLine() {
  const size_t end = std::min(text_.find('\n', next_), text_.size());
  std::string_view line = text_.substr(next_, end - next_);
  next_ = end == text_.size() ? end : end + 1;
  if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  return line;
}

// Whether the line just read may go on at all; few do.
bool VCardLineReader::MayContinue() const {
  if (next_ >= text_.size()) return false;
  const char last = line_.back();
  return IsFoldBlank(text_[next_]) || last == '=' || IsFoldBlank(last);
}

void VCardLineReader::AppendContinuations() {
  SoftBreak softBreak;
  bool copied = false;
  std::string_view lastPhysical = line_;
  while (next_ < text_.size()) {
    const bool soft = softBreak.At(line_, lastPhysical);
    const bool folded = !soft && IsFoldBlank(text_[next_]);
    if (!soft && !folded) return;
    const size_t before = next_;
    std::string_view more = ReadPhysicalLine();
    // A record's end is believed before an encoding that was cut off.
    if (soft && (IsVCardBegin(more) || IsVCardEnd(more))) {
      next_ = before;
      return;
    }
    if (!copied) unfolded_.assign(line_);
    copied = true;
    if (soft) unfolded_.erase(unfolded_.find_last_of('='));
    if (folded && version_ != VCardVersion::k21) more.remove_prefix(1);
    unfolded_.append(more);
    line_ = unfolded_;
    lastPhysical = more;
  }
}

std::optional<VCardLine> SplitVCardLine(std::string_view line) {
  if (line.substr(0, kByteOrderMark.size()) == kByteOrderMark) line.remove_prefix(kByteOrderMark.size());
  std::optional<size_t> colon = ValueColon().Find(line);
  // A quotation mark that nobody closes is ordinary text.
  if (!colon && line.find(':') != std::string_view::npos) colon = line.find(':');
  if (!colon) return std::nullopt;
  const std::string_view header = line.substr(0, *colon);
  const size_t nameEnd = std::min(header.find(';'), header.size());
  std::string_view name = TrimBlanks(header.substr(0, nameEnd));
  if (name.empty() || !std::all_of(name.begin(), name.end(), IsNameChar)) return std::nullopt;
  VCardLine result;
  const size_t dot = name.rfind('.');
  if (dot != std::string_view::npos) {
    result.group = name.substr(0, dot);
    name.remove_prefix(dot + 1);
  }
  if (name.empty()) return std::nullopt;  // a group alone
  result.name = name;
  result.params = header.substr(nameEnd);
  result.value = line.substr(*colon + 1);
  return result;
}

VCardParams ParseVCardParams(std::string_view params) {
  VCardParams result;
  ForEachPiece(params, ';', [&](std::string_view param) { ApplyParam(param, result); });
  return result;
}

bool IsPlainVCardValue(std::string_view value, const VCardParams& params) {
  if (params.encoding != VCardEncoding::kNone) return false;
  unsigned allBits = 0;
  char before = '\0';
  for (const char c : value) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || c == '\\' || (c == ' ' && before == ' ')) return false;
    allBits |= byte;
    before = c;
  }
  const bool ascii = allBits < 0x80;
  return ascii || (params.charset.empty() && IsUtf8(value));
}

std::string DecodeVCardValue(std::string_view value, const VCardParams& params) {
  switch (params.encoding) {
    case VCardEncoding::kQuotedPrintable:
      return DecodeCharset(DecodeQuotedPrintable(value), params.charset);
    case VCardEncoding::kBase64:
      return DecodeCharset(DecodeBase64(value), params.charset);
    case VCardEncoding::kNone:
      break;
  }
  return DecodeCharset(value, params.charset);
}

std::string UnescapeVCardText(std::string_view text, VCardVersion version) {
  std::string out;
  out.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    std::optional<char> escaped;
    if (text[i] == '\\' && i + 1 < text.size()) escaped = EscapedChar(text[i + 1], version);
    out += escaped.value_or(text[i]);
    if (escaped) ++i;
  }
  return out;
}

std::vector<std::string> SplitVCardComponents(std::string_view text, VCardVersion version) {
  std::vector<std::string> components;
  size_t begin = 0;
  for (size_t i = 0; i <= text.size(); ++i) {
    const bool escape = i + 1 < text.size() && text[i] == '\\' && EscapedChar(text[i + 1], version);
    if (escape) ++i;
    if (i < text.size() && (escape || text[i] != ';')) continue;
    components.push_back(UnescapeVCardText(text.substr(begin, i - begin), version));
    begin = i + 1;
  }
  return components;
}

bool IsVCardBegin(std::string_view line) { return IsDelimiter(line, "BEGIN"); }
bool IsVCardEnd(std::string_view line) { return IsDelimiter(line, "END"); }

}  // namespace formats
