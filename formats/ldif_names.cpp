// Attributes and distinguished names of directory entries.
#include <algorithm>
#include <array>
#include <iterator>

#include "formats/card_text.h"
#include "formats/card_uris.h"
#include "formats/contact_ldif.h"
#include "formats/hex.h"
#include "formats/text_codec.h"

namespace formats {
namespace {

struct NamedAttribute {
  std::string_view name;  // lower case
  LdifAttribute attribute;
};

constexpr LdifAttribute Text(LdifField field, Place place = Place::kNone) {
  return {field, NumberKind::kPhone, place, {}};
}
constexpr LdifAttribute Number(NumberKind kind, Place place, std::string_view type = {}) {
  return {LdifField::kNumber, kind, place, type};
}

constexpr NamedAttribute kAttributes[] = {
    {"dn", Text(LdifField::kIgnored)},
    {"objectclass", Text(LdifField::kObjectClass)},
    {"cn", Text(LdifField::kCommonName)},
    {"commonname", Text(LdifField::kCommonName)},
    {"displayname", Text(LdifField::kName)},
    {"sn", Text(LdifField::kSurname)},
    {"surname", Text(LdifField::kSurname)},
    {"givenname", Text(LdifField::kGiven)},
    {"gn", Text(LdifField::kGiven)},
    {"middlename", Text(LdifField::kMiddle)},
    {"personaltitle", Text(LdifField::kPrefix)},
    {"generationqualifier", Text(LdifField::kSuffix)},
    {"o", Text(LdifField::kCompany)},
    {"organizationname", Text(LdifField::kCompany)},
    {"company", Text(LdifField::kCompany)},
    {"ou", Text(LdifField::kDepartment)},
    {"organizationalunitname", Text(LdifField::kDepartment)},
    {"department", Text(LdifField::kDepartment)},
    {"orgunit", Text(LdifField::kDepartment)},
    {"title", Text(LdifField::kTitle)},
    {"description", Text(LdifField::kNote)},
    {"info", Text(LdifField::kNote)},
    {"comment", Text(LdifField::kNote)},
    {"uid", Text(LdifField::kUid)},
    {"userid", Text(LdifField::kUid)},
    {"entryuuid", Text(LdifField::kEntryUuid)},
    {"mail", Text(LdifField::kEmail)},
    {"rfc822mailbox", Text(LdifField::kEmail)},
    {"email", Text(LdifField::kEmail)},
    {"telephonenumber", Number(NumberKind::kPhone, Place::kWork)},
    {"othertelephone", Number(NumberKind::kPhone, Place::kWork)},
    {"homephone", Number(NumberKind::kPhone, Place::kHome)},
    {"hometelephonenumber", Number(NumberKind::kPhone, Place::kHome)},
    {"otherhomephone", Number(NumberKind::kPhone, Place::kHome)},
    {"mobile", Number(NumberKind::kMobile, Place::kNone)},
    {"mobiletelephonenumber", Number(NumberKind::kMobile, Place::kNone)},
    {"cellphone", Number(NumberKind::kMobile, Place::kNone)},
    {"othermobile", Number(NumberKind::kMobile, Place::kNone)},
    {"pager", Number(NumberKind::kPager, Place::kNone)},
    {"pagertelephonenumber", Number(NumberKind::kPager, Place::kNone)},
    {"pagerphone", Number(NumberKind::kPager, Place::kNone)},
    {"facsimiletelephonenumber", Number(NumberKind::kFax, Place::kWork)},
    {"fax", Number(NumberKind::kFax, Place::kWork)},
    {"otherfacsimiletelephonenumber", Number(NumberKind::kFax, Place::kWork)},
    {"homefacsimiletelephonenumber", Number(NumberKind::kFax, Place::kHome)},
    {"homefax", Number(NumberKind::kFax, Place::kHome)},
    {"telexnumber", Number(NumberKind::kOther, Place::kNone, "telex")},
    {"internationalisdnnumber", Number(NumberKind::kOther, Place::kNone, "isdn")},
    {"street", Text(LdifField::kStreet, Place::kWork)},
    {"streetaddress", Text(LdifField::kStreet, Place::kWork)},
    {"postofficebox", Text(LdifField::kPostOfficeBox, Place::kWork)},
    {"l", Text(LdifField::kLocality, Place::kWork)},
    {"locality", Text(LdifField::kLocality, Place::kWork)},
    {"localityname", Text(LdifField::kLocality, Place::kWork)},
    {"st", Text(LdifField::kRegion, Place::kWork)},
    {"region", Text(LdifField::kRegion, Place::kWork)},
    {"stateorprovincename", Text(LdifField::kRegion, Place::kWork)},
    {"postalcode", Text(LdifField::kPostalCode, Place::kWork)},
    {"c", Text(LdifField::kCountry, Place::kWork)},
    {"co", Text(LdifField::kCountry, Place::kWork)},
    {"countryname", Text(LdifField::kCountry, Place::kWork)},
    {"friendlycountryname", Text(LdifField::kCountry, Place::kWork)},
    {"postaladdress", Text(LdifField::kPostalAddress, Place::kWork)},
    {"homepostaladdress", Text(LdifField::kPostalAddress, Place::kHome)},
    {"member", Text(LdifField::kMember)},
    {"uniquemember", Text(LdifField::kMember)},
    {"jpegphoto", Text(LdifField::kPicture)},
    {"userpassword", Text(LdifField::kIgnored)},
    {"modifytimestamp", Text(LdifField::kIgnored)},
    {"control", Text(LdifField::kIgnored)},
};

// Programs put a word of their own before these.
constexpr NamedAttribute kEndings[] = {
    {"homestreet", Text(LdifField::kStreet, Place::kHome)},
    {"homelocalityname", Text(LdifField::kLocality, Place::kHome)},
    {"homestate", Text(LdifField::kRegion, Place::kHome)},
    {"homepostalcode", Text(LdifField::kPostalCode, Place::kHome)},
    {"homecountryname", Text(LdifField::kCountry, Place::kHome)},
    {"secondemail", Text(LdifField::kEmail)},
};

// One character of a distinguished name that may be escaped; `at` moves past it.
char TakeDnChar(std::string_view dn, std::size_t* at) {
  const char c = dn[(*at)++];
  if (c != '\\' || *at == dn.size()) return c;
  const int high = HexDigit(dn[*at]), low = *at + 1 < dn.size() ? HexDigit(dn[*at + 1]) : -1;
  if (high < 0 || low < 0) return dn[(*at)++];
  *at += 2;
  return static_cast<char>(high * 16 + low);
}

// The value up to the plus or comma that ends it.
std::string TakeDnValue(std::string_view dn, std::size_t* at) {
  std::string value;
  bool quoted = false;
  while (*at < dn.size() && (quoted || (dn[*at] != ',' && dn[*at] != '+' && dn[*at] != ';'))) {
    if (dn[*at] == '"') {
      quoted = !quoted;
      ++*at;
    } else {
      value += TakeDnChar(dn, at);
    }
  }
  return value;
}

void SetMember(ContactMember& member, std::string_view attribute, std::string value) {
  const auto known = FindLdifAttribute(attribute);
  if (!known || value.empty()) return;
  switch (known->field) {
    case LdifField::kUid:
    case LdifField::kEntryUuid:
      member.uid = std::move(value);
      return;
    case LdifField::kCommonName:
    case LdifField::kName:
      member.name = std::move(value);
      return;
    case LdifField::kEmail:
      member.email = value.substr(0, value.find('?'));
      return;
    case LdifField::kNumber:
      member.number = std::move(value);
      return;
    default:
      return;
  }
}

void AppendRdn(std::string& dn, std::string_view attribute, std::string_view value) {
  if (value.empty()) return;
  if (!dn.empty()) dn += '+';
  dn.append(attribute).append("=");
  for (std::size_t i = 0; i < value.size(); ++i) {
    constexpr std::string_view kSpecial = ",+\"\\<>;=";
    const bool atEdge = (value[i] == ' ' && (i == 0 || i + 1 == value.size())) || (value[i] == '#' && i == 0);
    if (atEdge || kSpecial.find(value[i]) != std::string_view::npos) dn += '\\';
    dn += value[i];
  }
}

bool EndsWith(std::string_view text, std::string_view end) {
  return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

}  // namespace

std::optional<LdifAttribute> FindLdifAttribute(std::string_view name) {
  const std::string folded = FoldAscii(name);
  for (const NamedAttribute& each : kAttributes) {
    if (each.name == folded) return each.attribute;
  }
  const auto* ending =
      std::find_if(std::begin(kEndings), std::end(kEndings),
                   [&folded](const NamedAttribute& each) { return EndsWith(folded, each.name); });
  if (ending == std::end(kEndings)) return std::nullopt;
  return ending->attribute;
}

// A name alone may be the identifier of an entry as well.
ContactMember MemberOfDn(std::string_view dn) {
  ContactMember member;
  for (std::size_t at = 0; at < dn.size();) {
    const std::size_t equals = dn.find('=', at);
    if (equals == std::string_view::npos) break;
    const std::string_view attribute = TrimBlanks(dn.substr(at, equals - at));
    at = equals + 1;
    const std::string value = TakeDnValue(dn, &at);
    SetMember(member, attribute, CleanText(DecodeCharset(value, {}), TextLayout::kOneLine));
    // The address that follows the name is how mail programs tell namesakes apart.
    const bool isMailNext =
        at < dn.size() && EqualsFolded(TrimBlanks(dn.substr(at + 1)).substr(0, 5), "mail=");
    if (at >= dn.size() || (dn[at] != '+' && !isMailNext)) break;
    ++at;
  }
  const bool hasNameOnly = member.uid.empty() && member.number.empty() && member.email.empty();
  if (hasNameOnly && !HasScheme(member.name) && !IsUuid(member.name)) member.uid = member.name;
  return member;
}

std::string DnOfMember(const ContactMember& member) {
  std::string dn;
  if (member.uid != member.name) AppendRdn(dn, "uid", member.uid);
  AppendRdn(dn, "cn", member.name);
  AppendRdn(dn, "facsimileTelephoneNumber", member.number);
  AppendRdn(dn, "mail", member.email);
  return dn;
}

}  // namespace formats
