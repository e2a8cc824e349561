// The line level of vCard files.
#include "formats/vcard_lines.h"

#include <algorithm>
#include <array>
#include <cstdlib>

#include "formats/base64.h"
#include "formats/hex.h"
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

std::string_view Unquote(std::string_view text) {
  text = TrimBlanks(text);
  if (!text.empty() && text.front() == '"') text.remove_prefix(1);
  if (!text.empty() && text.back() == '"') text.remove_suffix(1);
  return text;
}

// Version 2.1 writes encodings bare.
bool IsQuotedPrintable(std::string_view param) {
  const size_t equals = param.find('=');
  const bool isBare = equals == std::string_view::npos;
  const std::string_view value = isBare ? TrimBlanks(param) : Unquote(param.substr(equals + 1));
  if (!isBare && !EqualsFolded(TrimBlanks(param.substr(0, equals)), "ENCODING")) return false;
  return EqualsFolded(value, "QUOTED-PRINTABLE") || (!isBare && EqualsFolded(value, "Q"));
}

// Tells whether a line whose last physical line ends in "=" goes on as quoted-printable; the parameters are
// looked at once.
class SoftBreak {
 public:
  bool At(std::string_view line, std::string_view lastPhysical) {
    const size_t last = lastPhysical.find_last_not_of(" \t");
    if (last == std::string_view::npos || lastPhysical[last] != '=') return false;
    const std::optional<size_t> colon = colon_.Find(line);
    if (!colon) return false;
    if (!encoded_) encoded_ = IsEncoded(line.substr(0, *colon));
    return *encoded_;
  }

 private:
  static bool IsEncoded(std::string_view header) {
    bool isEncoded = false;
    ForEachPiece(header.substr(std::min(header.find(';'), header.size())), ';',
                 [&](std::string_view param) { isEncoded = isEncoded || IsQuotedPrintable(param); });
    return isEncoded;
  }

  ValueColon colon_;
  std::optional<bool> encoded_;
};

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

std::string DecodeVCardValue(std::string_view value, const VCardCoding& coding) {
  switch (coding.encoding) {
    case VCardEncoding::kQuotedPrintable:
      return DecodeCharset(DecodeQuotedPrintable(value), coding.charset);
    case VCardEncoding::kBase64:
      return DecodeCharset(DecodeBase64(value), coding.charset);
    case VCardEncoding::kNone:
      break;
  }
  return DecodeCharset(value, coding.charset);
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
