#include "tools/orvctl/file_formats.h"

#include <algorithm>
#include <iterator>

#include "formats/text_codec.h"

namespace orvctl {
namespace {

// As orvbook.h numbers them, which is for Windows alone.
constexpr unsigned long kVCard = 1, kVCard30 = 2, kCsv = 3, kLdif = 4;

using formats::FileFormat;
using formats::WriteFormat;

constexpr FormatName kFormats[] = {{"vcard", kVCard, FileFormat::kVCard, WriteFormat::kVCard40},
                                   {"vcard30", kVCard30, FileFormat::kVCard, WriteFormat::kVCard30},
                                   {"csv", kCsv, FileFormat::kCsv, WriteFormat::kCsv},
                                   {"ldif", kLdif, FileFormat::kLdif, WriteFormat::kLdif}};

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

const FormatName& FormatOf(const std::string& name, const std::string& file) {
  const size_t dot = file.rfind('.');
  const FormatName* found =
      FindFormat(!name.empty() || dot == std::string::npos ? name : file.substr(dot + 1));
  return found != nullptr ? *found : kFormats[0];
}

}  // namespace orvctl
