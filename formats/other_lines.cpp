#include "formats/other_lines.h"

#include <algorithm>
#include <utility>

#include "formats/card_params.h"
#include "formats/card_text.h"
#include "formats/text_codec.h"

namespace formats {
namespace {

std::string UpperAscii(std::string_view text) {
  std::string out(text);
  for (char& c : out) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  return out;
}

// Version 2.1 escapes separators only; every other backslash is text.
std::string EscapesOfVersion4(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char next = i + 1 < text.size() ? text[i + 1] : '\0';
    out += text[i];
    if (text[i] != '\\') continue;
    if (next == ';' || next == ',') {
      out += text[++i];
    } else {
      out += '\\';
    }
  }
  return out;
}

std::string OnOneLine(std::string_view text) {
  const std::string clean = CleanText(text, TextLayout::kManyLines);
  std::string out;
  out.reserve(clean.size());
  for (const char c : clean) {
    if (c == '\n') {
      out += "\\n";
    } else {
      out += c;
    }
  }
  return out;
}

std::string Base64Of(std::string_view value) {
  std::string out;
  out.reserve(value.size());
  std::copy_if(value.begin(), value.end(), std::back_inserter(out), IsBase64Char);
  return out;
}

std::string DataUri(std::string_view medium, std::string_view type, std::string_view base64) {
  std::string uri = "data:";
  if (!type.empty()) uri.append(medium).append(FoldAscii(type));
  return uri.append(";base64,").append(base64);
}

std::string_view TakeFirstType(std::string* types) {
  const std::size_t end = std::min(types->find(','), types->size());
  return std::string_view(*types).substr(0, end);
}

void AppendTypes(std::string& out, std::string_view types) {
  if (!types.empty()) out.append(";TYPE=").append(types);
}

std::string NameOf(const VCardLine& line) {
  std::string name(line.group);
  if (!name.empty()) name += '.';
  // Labels are looked for under this spelling.
  return name + (EqualsFolded(line.name, "X-ABLABEL") ? "X-ABLabel" : UpperAscii(line.name));
}

std::string Base64Line(const VCardLine& line, CardParams& params) {
  const std::string base64 = Base64Of(line.value);
  if (base64.empty()) return {};
  const std::string_view medium = MediumOf(line.name);
  std::string out = NameOf(line);
  if (medium.empty()) {
    AppendTypes(out, params.types);
    return out.append(params.rest).append(";ENCODING=b:").append(base64);
  }
  const std::string_view type = TakeFirstType(&params.types);
  AppendTypes(out, std::string_view(params.types).substr(std::min(type.size() + 1, params.types.size())));
  return out.append(params.rest).append(":").append(DataUri(medium, type, base64));
}

}  // namespace

bool IsBase64Char(char c) {
  const char folded = FoldAscii(c);
  return (folded >= 'a' && folded <= 'z') || (c >= '0' && c <= '9') || c == '+' || c == '/' || c == '=';
}

std::string_view MediumOf(std::string_view name) {
  constexpr std::pair<std::string_view, std::string_view> kMedia[] = {
      {"PHOTO", "image/"}, {"LOGO", "image/"}, {"SOUND", "audio/"}, {"KEY", "application/"}};
  for (const auto& [known, medium] : kMedia) {
    if (EqualsFolded(known, name)) return medium;
  }
  return {};
}

std::string NormaliseOtherLine(const VCardLine& line, VCardVersion version, std::string_view charset) {
  // They would be taken for the record's own first or last line.
  if (EqualsFolded(line.name, "BEGIN") || EqualsFolded(line.name, "END")) return {};
  CardParams params = ReadCardParams(line.params, LineUse::kOther);
  if (params.encoding == VCardEncoding::kBase64) return Base64Line(line, params);
  VCardCoding decoding;
  decoding.encoding = params.encoding;
  decoding.charset = params.charset.empty() ? charset : std::string_view(params.charset);
  std::string value = DecodeVCardValue(line.value, decoding);
  if (version == VCardVersion::k21) value = EscapesOfVersion4(value);
  value = OnOneLine(value);
  if (value.empty()) return {};
  std::string out = NameOf(line);
  AppendTypes(out, params.types);
  return out.append(params.rest).append(":").append(value);
}

std::string NormaliseNestedCard(std::string_view property, std::string_view lines) {
  const std::string text = CleanText(DecodeCharset(lines, {}), TextLayout::kManyLines);
  std::string out = UpperAscii(property);
  out += ':';
  AppendEscaped(&out, text);
  return out;
}

}  // namespace formats
