// vCard files: canonical cards in the words of the version that is asked for, with lines folded.
#include <algorithm>
#include <utility>

#include "formats/card_params.h"
#include "formats/other_lines.h"
#include "formats/reader_base.h"
#include "formats/text_codec.h"
#include "formats/vcard_lines.h"

namespace formats {
namespace {

constexpr std::size_t kLongestLine = 75;

bool IsContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

// A fold never lies within a character. Some readers of version 2.1 keep the blank, so nothing is folded there.
void AppendFolded(std::string& out, std::string_view line) {
  std::size_t room = kLongestLine;
  while (line.size() > room) {
    std::size_t size = room;
    while (size > 1 && IsContinuation(line[size])) --size;
    out.append(line.substr(0, size)).append("\r\n ");
    line.remove_prefix(size);
    room = kLongestLine - 1;
  }
  out.append(line).append("\r\n");
}

// Parameters of a line in the form of version 4.0, one after the other.
std::string_view TakeParam(std::string_view* params) {
  bool quoted = false;
  std::size_t end = 1;
  for (; end < params->size() && (quoted || (*params)[end] != ';'); ++end) {
    if ((*params)[end] == '"') quoted = !quoted;
  }
  const std::string_view param = params->substr(1, std::min(end, params->size()) - 1);
  params->remove_prefix(std::min(end, params->size()));
  return param;
}

struct DataUri {
  std::string type;  // of the medium, upper case: JPEG
  std::string_view base64;
};

// A medium's type that stands as a parameter; "image/svg+xml" does, one with parameters of its own does not.
bool IsTypeName(std::string_view type) {
  return !type.empty() && std::all_of(type.begin(), type.end(), [](char c) {
    const char folded = FoldAscii(c);
    constexpr std::string_view kMarks = "-+.";
    return (folded >= 'a' && folded <= 'z') || (c >= '0' && c <= '9') ||
           kMarks.find(c) != std::string_view::npos;
  });
}

// What versions before 4.0 write in base64. A line that they could not say in that way stays as it is.
std::optional<DataUri> ReadDataUri(const VCardLine& line) {
  constexpr std::string_view kMark = ";base64,";
  const std::string_view medium = MediumOf(line.name);
  const std::string start = "data:" + std::string(medium);
  const std::size_t mark = line.value.find(kMark);
  if (medium.empty() || mark == std::string_view::npos || line.value.substr(0, start.size()) != start)
    return {};
  const std::string_view type = line.value.substr(start.size(), std::max(mark, start.size()) - start.size());
  DataUri uri{{}, line.value.substr(mark + kMark.size())};
  if (!IsTypeName(type) || uri.base64.empty()) return {};
  if (!std::all_of(uri.base64.begin(), uri.base64.end(), IsBase64Char)) return {};
  for (const char c : type) uri.type += c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  return uri;
}

// Versions before 4.0 know groups under names that a program gave them.
std::string_view OldNameOf(std::string_view name) {
  if (name == "KIND") return "X-ADDRESSBOOKSERVER-KIND";
  return name == "MEMBER" ? "X-ADDRESSBOOKSERVER-MEMBER" : name;
}

std::string NameOf(const VCardLine& line) {
  std::string name(line.group);
  if (!name.empty()) name += '.';
  return name.append(OldNameOf(line.name));
}

// Before version 4.0 a preferred number or address is one by its type.
bool IsPreferredParam(std::string_view name, std::string_view param) {
  return param == "PREF=1" && (name == "TEL" || name == "EMAIL" || name == "ADR");
}

class Version30 {
 public:
  static void Append(std::string& out, const VCardLine& line) {
    std::string text = NameOf(line);
    const std::optional<DataUri> uri = ReadDataUri(line);
    if (uri) text.append(";ENCODING=b;TYPE=").append(uri->type);
    for (std::string_view params = line.params; !params.empty();) {
      const std::string_view param = TakeParam(&params);
      text.append(";").append(IsPreferredParam(line.name, param) ? "TYPE=pref" : param);
    }
    text.append(":").append(uri ? uri->base64 : line.value);
    AppendFolded(out, text);
  }
};

// Types stand bare, text beyond ASCII is quoted-printable, and only semicolons are escaped.
class Version21 {
 public:
  static void Append(std::string& out, const VCardLine& line) {
    std::string header = NameOf(line);
    const std::optional<DataUri> uri = ReadDataUri(line);
    if (uri) header.append(";").append(uri->type).append(";ENCODING=BASE64");
    for (std::string_view params = line.params; !params.empty();)
      AppendParam(header, line.name, TakeParam(&params));
    if (uri) return AppendData(out, header, *uri);
    const std::string value = Unescaped(line.value);
    const bool isPlain =
        std::all_of(value.begin(), value.end(), [](char c) { return c >= 0x20 && c < 0x7F; });
    if (isPlain && IsAscii(header)) {
      out.append(header).append(":").append(value).append("\r\n");
    } else {
      AppendQuoted(out, header, value);
    }
  }

 private:
  static bool IsAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
  }

  static void AppendParam(std::string& header, std::string_view name, std::string_view param) {
    constexpr std::string_view kType = "TYPE=";
    if (IsPreferredParam(name, param)) {
      header += ";PREF";
    } else if (param.substr(0, kType.size()) == kType) {
      header += ';';
      for (const char c : param.substr(kType.size())) {
        header += c == ',' ? ';' : c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
      }
    } else {
      header.append(";").append(param);
    }
  }

  static void AppendData(std::string& out, const std::string& header, const DataUri& uri) {
    out.append(header).append(":\r\n");
    for (std::size_t at = 0; at < uri.base64.size(); at += kLongestLine - 3) {
      out.append(" ").append(uri.base64.substr(at, kLongestLine - 3)).append("\r\n");
    }
    out += "\r\n";  // ends the data
  }

  static std::string Unescaped(std::string_view value) {
    std::string out;
    for (std::size_t i = 0; i < value.size(); ++i) {
      const char next = value[i] == '\\' && i + 1 < value.size() ? value[i + 1] : '\0';
      if (next == '\0' || next == ';') {
        out += value[i];
        if (next == ';') out += value[++i];
      } else {
        out += next == 'n' || next == 'N' ? '\n' : next;
        ++i;
      }
    }
    return out;
  }

  static void AppendQuoted(std::string& out, const std::string& header, std::string_view value) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    out.append(header).append(";CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:");
    std::size_t column = 0;
    const auto appendByte = [&](char c) {
      const auto byte = static_cast<unsigned char>(c);
      const bool isPlain = c >= 0x20 && c < 0x7F && c != '=';
      if (column >= kLongestLine - 4) {
        out += "=\r\n";
        column = 0;
      }
      if (isPlain) {
        out += c;
      } else {
        out += '=';
        out += kDigits[byte >> 4];
        out += kDigits[byte & 15];
      }
      column += isPlain ? 1 : 3;
    };
    for (const char c : value) {
      if (c == '\n') appendByte('\r');
      appendByte(c);
    }
    out += "\r\n";
  }
};

class VCardWriter final : public ContactWriter {
 public:
  VCardWriter(ByteSink& sink, WriteFormat format) : sink_(sink), format_(format) {}

  bool Write(const Contact& contact) override {
    WriteCard(contact, &card_);
    out_.clear();
    for (std::string_view left = card_; !left.empty();) {
      const std::size_t end = left.find('\n');
      AppendLine(left.substr(0, end));
      left.remove_prefix(end + 1);
    }
    return works_ = works_ && sink_.Write(out_);
  }

  bool Finish() override { return works_; }

 private:
  void AppendLine(std::string_view line) {
    if (format_ == WriteFormat::kVCard40) return AppendFolded(out_, line);
    const auto parts = SplitVCardLine(line);
    if (!parts) return;
    const bool isOld = format_ == WriteFormat::kVCard21;
    if (parts->name == "VERSION") {
      out_ += isOld ? "VERSION:2.1\r\n" : "VERSION:3.0\r\n";
      hasName_ = false;
      return;
    }
    hasName_ |= parts->name == "N" && parts->group.empty();
    // Both versions want this line of every card.
    if (parts->name == "END" && !hasName_) out_ += "N:;;;;\r\n";
    isOld ? Version21::Append(out_, *parts) : Version30::Append(out_, *parts);
  }

  ByteSink& sink_;
  const WriteFormat format_;
  std::string card_, out_;
  bool works_ = true, hasName_ = false;
};

}  // namespace

std::unique_ptr<ContactWriter> CreateVCardWriter(ByteSink& sink, WriteFormat format) {
  return std::make_unique<VCardWriter>(sink, format);
}

}  // namespace formats
