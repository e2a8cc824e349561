// One vCard record: what each property means.
#pragma once

#include <string>
#include <string_view>

#include "formats/vcard.h"
#include "formats/vcard_lines.h"

namespace formats {

enum class VCardProperty {
  kOther,
  kAddress,
  kAgent,
  kEmail,
  kFormattedName,
  kKind,
  kLabel,
  kMember,
  kName,
  kNickname,
  kNote,
  kOrganisation,
  kPhone,
  kTitle,
  kUid,
  kVersion,
};

VCardProperty FindVCardProperty(std::string_view name);

// `text` lies between the record's begin and end lines.
VCard ParseVCardRecord(std::string_view text, VCardVersion version, VCardFields fields = kVCardEverything);

enum class VCardLayout { kAsWritten, kOneLine };

// What a value says, in plain UTF-8: decoded, unescaped, without control characters and blanks at its ends. A plain
// value is not copied, so the line must outlive this.
class VCardText {
 public:
  VCardText(const VCardLine& line, const VCardParams& params, VCardVersion version,
            VCardLayout layout = VCardLayout::kAsWritten);
  VCardText(const VCardLine& line, VCardVersion version, VCardLayout layout = VCardLayout::kAsWritten)
      : VCardText(line, ParseVCardParams(line.params), version, layout) {}
  VCardText(const VCardText&) = delete;
  VCardText& operator=(const VCardText&) = delete;

  std::string_view view() const { return view_; }

 private:
  std::string decoded_;
  std::string_view view_;
};

VCardVersion ReadVCardVersion(const VCardLine& line);

// An e-mail address without "mailto:".
std::string_view StripMailScheme(std::string_view email);
// An identifier without "urn:uuid:".
std::string_view StripUuidScheme(std::string_view uid);

}  // namespace formats
