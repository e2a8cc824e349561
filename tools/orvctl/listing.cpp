// JSON, and texts that are safe to show.
#include "tools/orvctl/listing.h"

#include <algorithm>
#include <cstdio>

#include "formats/text_codec.h"
#include "tools/orvctl/code_ranges.h"
#include "tools/orvctl/table_text.h"

namespace orvctl {
namespace {

Json ListingJson(const Listing& listing) {
  Json array = Json::array();
  for (const auto& row : listing.rows) {
    Json object = Json::object();
    for (size_t i = 0; i < row.size(); ++i) object[listing.columns[i].key] = row[i].json;
    array.push_back(std::move(object));
  }
  return array;
}

// Marks that turn the direction of what stands behind them, that break lines, or that nobody sees.
constexpr Range kSteering[] = {{0x061C, 0x061C}, {0x200E, 0x200F}, {0x2028, 0x202E},
                               {0x2066, 0x2069}, {0xFEFF, 0xFEFF}, {0xFFF9, 0xFFFB}};

// The character of up to three bytes that the text begins with, and its size; other texts are taken byte by byte.
struct FirstCharacter {
  explicit FirstCharacter(std::string_view utf8) {
    const auto byte = [&](size_t i) { return i < utf8.size() ? static_cast<unsigned char>(utf8[i]) : 0u; };
    const auto follows = [&](size_t i) { return (byte(i) & 0xC0) == 0x80; };
    value = byte(0);
    if ((value & 0xE0) == 0xC0 && follows(1)) {
      value = (value & 0x1F) << 6 | (byte(1) & 0x3F);
      size = 2;
    } else if ((value & 0xF0) == 0xE0 && follows(1) && follows(2)) {
      value = (value & 0x0F) << 12 | (byte(1) & 0x3F) << 6 | (byte(2) & 0x3F);
      size = 3;
    }
  }
  bool IsControl() const {
    const bool isAscii = size == 1 && (value < 0x20 || value == 0x7F);
    return isAscii || (size == 2 && value >= 0x80 && value < 0xA0) || (size > 1 && IsIn(kSteering, value));
  }

  char32_t value = 0;
  size_t size = 1;
};

// The text with what `escape` gives for a character in its place; nothing leaves it as it is.
template <class Escape>
std::string Written(std::string_view utf8, Escape escape) {
  std::string out;
  out.reserve(utf8.size());
  while (!utf8.empty()) {
    const FirstCharacter first(utf8);
    const std::string escaped = escape(first);
    out.append(escaped.empty() ? utf8.substr(0, first.size) : std::string_view(escaped));
    utf8.remove_prefix(first.size);
  }
  return out;
}

std::string Escaped(char32_t control) {
  if (control == '\n') return "\\n";
  if (control == '\r') return "\\r";
  if (control == '\t') return "\\t";
  char text[16];
  std::snprintf(text, sizeof(text), control < 0x100 ? "\\x%02X" : "\\u%04X", static_cast<unsigned>(control));
  return text;
}

// As JSON writes a character; those below the blank were written so before.
std::string JsonEscaped(char32_t control) {
  char text[16];
  std::snprintf(text, sizeof(text), "\\u%04x", static_cast<unsigned>(control));
  return text;
}

constexpr int kIndent = 2;

std::string DumpPlain(const Json& json) {
  return json.dump(kIndent, ' ', false, Json::error_handler_t::replace);
}

// Only texts hold such characters, save for the line breaks between them.
std::string WithoutControls(const std::string& dumped) {
  if (IsPlainAscii(dumped)) return dumped;
  return Written(dumped, [](const FirstCharacter& first) {
    return first.IsControl() && first.value != '\n' ? JsonEscaped(first.value) : std::string();
  });
}

std::string Dump(const Json& json) { return WithoutControls(DumpPlain(json) + "\n"); }

}  // namespace

std::string ToText(const Report& report, size_t terminalWidth) {
  if (report.isSilent) return {};
  if (report.isFile) return Dump(report.data);
  if (report.isListing && !report.listing.rows.empty()) return TableText(report.listing, terminalWidth);
  // Where nothing could be read nobody knows that there is nothing.
  const bool isUnknown =
      report.isListing && std::any_of(report.messages.begin(), report.messages.end(),
                                      [](const Message& each) { return !each.IsWarning(); });
  if (isUnknown) return {};
  return Printable(report.sentence) + "\n";
}

std::string ToJson(const Report& report) {
  if (report.isSilent) return {};
  if (report.isFile) return Dump(report.data);
  if (report.isListing) return Dump(report.data.is_null() ? ListingJson(report.listing) : report.data);
  Json json{{"result", report.sentence}};
  if (report.data.is_object()) json.update(report.data);
  return Dump(json);
}

std::string JsonItem(const Json& object) {
  std::string indented(kIndent, ' ');
  for (const char each : DumpPlain(object)) {
    indented += each;
    if (each == '\n') indented.append(kIndent, ' ');
  }
  return WithoutControls(indented);
}

std::string WithCode(const Message& message) {
  if (message.resultName.empty()) return message.text;
  const bool isSentence = !message.text.empty() && message.text.back() == '.';
  return message.text + (isSentence ? " " : ": ") + message.resultName;
}

std::string ToText(const Message& message) {
  std::string text =
      (message.IsWarning() ? "orvctl: warning: " : "orvctl: ") + Printable(WithCode(message)) + "\n";
  for (const std::string& cause : message.causes) text += "  " + Printable(cause) + "\n";
  if (!message.next.empty()) text += "  " + Printable(message.next) + "\n";
  return text;
}

std::string ToJson(const Message& message) {
  Json json{{message.IsWarning() ? "warning" : "error", message.text}, {"exitCode", message.exitCode}};
  if (!message.resultName.empty()) json["code"] = message.resultName;
  if (!message.causes.empty()) json["causes"] = message.causes;
  if (!message.next.empty()) json["next"] = message.next;
  return Dump(json);
}

std::string Counted(unsigned long long count, const std::string& one, const std::string& many) {
  const std::string several = many.empty() ? one + "s" : many;
  return std::to_string(count) + " " + (count == 1 ? one : several);
}

bool IsPlainAscii(std::string_view utf8) {
  return std::all_of(utf8.begin(), utf8.end(), [](char each) { return each >= ' ' && each <= '~'; });
}

std::string Printable(std::string_view utf8) {
  if (IsPlainAscii(utf8)) return std::string(utf8);
  return Written(utf8, [](const FirstCharacter& first) {
    return first.IsControl() ? Escaped(first.value) : std::string();
  });
}

}  // namespace orvctl
