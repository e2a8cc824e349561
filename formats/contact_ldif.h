// Contacts in LDIF files: persons and groups of names.
//
// The attributes are those of inetOrgPerson and groupOfNames. telephoneNumber and facsimileTelephoneNumber are numbers at
// work; options ("facsimileTelephoneNumber;x-home") say another place, or that a number is preferred. Attributes without
// a field are kept as lines X-LDIF-NAME and written again, and so is a JPEG picture. Besides what ContactWriter says it
// cannot hold where a street ends and the further line of its address begins.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "formats/contact.h"

namespace formats {

enum class LdifField : std::uint8_t {
  kIgnored,
  kName,
  kCommonName,
  kSurname,
  kGiven,
  kMiddle,
  kPrefix,
  kSuffix,
  kCompany,
  kDepartment,
  kTitle,
  kNote,
  kUid,
  kEntryUuid,
  kEmail,
  kNumber,
  kPostOfficeBox,
  kStreet,
  kLocality,
  kRegion,
  kPostalCode,
  kCountry,
  kPostalAddress,
  kMember,
  kObjectClass,
  kPicture,
};

struct LdifAttribute {
  LdifField field = LdifField::kIgnored;
  NumberKind kind = NumberKind::kPhone;
  Place place = Place::kNone;
  std::string_view type;  // of a number that is none of the usual kinds
};

// What an attribute of this name is, options excepted; no value for one without a field.
std::optional<LdifAttribute> FindLdifAttribute(std::string_view name);

// The member that a distinguished name means: its first component.
ContactMember MemberOfDn(std::string_view dn);
// The name that MemberOfDn reads.
std::string DnOfMember(const ContactMember& member);

inline constexpr std::string_view kLdifLinePrefix = "X-LDIF-";

}  // namespace formats
