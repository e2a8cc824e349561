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
VCard ParseVCardRecord(std::string_view text, VCardVersion version);

// What the properties say in plain UTF-8, for the index and the record alike.
std::string ReadVCardText(const VCardLine& line, VCardVersion version);
std::string ReadVCardUid(const VCardLine& line, VCardVersion version);
std::string ReadVCardEmail(const VCardLine& line, VCardVersion version);
VCardVersion ReadVCardVersion(const VCardLine& line);

// An identifier without "urn:uuid:".
std::string_view StripUuidScheme(std::string_view uid);

}  // namespace formats
