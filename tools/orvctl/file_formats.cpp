#include "tools/orvctl/file_formats.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "formats/text_codec.h"

namespace orvctl {
namespace {

// As orvbook.h numbers them, which is for Windows alone.
constexpr unsigned long kVCard = 1, kVCard30 = 2, kCsv = 3, kLdif = 4;

using formats::FileFormat;
using formats::WriteFormat;

constexpr FormatName kFormats[] = {
    {"vcard", "vCard", kVCard, FileFormat::kVCard, WriteFormat::kVCard40},
    {"vcard30", "vCard 3.0", kVCard30, FileFormat::kVCard, WriteFormat::kVCard30},
    {"csv", "CSV", kCsv, FileFormat::kCsv, WriteFormat::kCsv},
    {"ldif", "LDIF", kLdif, FileFormat::kLdif, WriteFormat::kLdif}};

// Ends of files' names.
constexpr std::pair<const char*, const char*> kEnds[] = {
    {".vcf", "vcard"}, {".vcard", "vcard"}, {".csv", "csv"}, {".ldif", "ldif"}, {".ldi", "ldif"}};

}  // namespace

std::string FormatNames() {
  std::string names;
  for (const FormatName& each : kFormats) names.append(names.empty() ? "" : ", ").append(each.name);
  return names;
}

const FormatName* FindFormat(const std::string& name) {
  const auto found = std::find_if(std::begin(kFormats), std::end(kFormats), [&](const FormatName& each) {
    return formats::EqualsFolded(each.name, name);
  });
  return found != std::end(kFormats) ? found : nullptr;
}

const FormatName* FormatOf(const std::string& name, const std::string& file) {
  if (!name.empty()) return FindFormat(name);
  if (file == "-") return kFormats;
  const std::string end = file.substr(std::min(file.rfind('.'), file.size()));
  for (const auto& [known, format] : kEnds) {
    if (formats::EqualsFolded(known, end)) return FindFormat(format);
  }
  return nullptr;
}

std::string WhyNoFormat(const std::string& file, const std::string& option) {
  std::string ends;
  for (const auto& [known, format] : kEnds) ends.append(ends.empty() ? "" : ", ").append(known);
  return "the name of '" + file + "' does not tell its format: end it with one of " + ends + ", or give " +
         option + " with one of " + FormatNames();
}

}  // namespace orvctl
