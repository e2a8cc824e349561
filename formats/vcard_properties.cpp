// Which field of a record becomes which property.
#include "formats/vcard_properties.h"

#include <algorithm>
#include <utility>

namespace formats {
namespace {

void AddText(Properties& properties, ULONG tag, const std::u16string& text) {
  if (!text.empty()) properties.push_back({tag, text});
}

// Two tags serve one kind of number; a third number of the kind is left out.
struct NumberTags {
  ULONG first;
  ULONG second;
};

NumberTags TagsFor(const VCardPhone& phone) {
  const bool home = phone.place == VCardPlace::kHome;
  const bool work = phone.place == VCardPlace::kWork;
  if (phone.fax && home) return {PR_HOME_FAX_NUMBER, PR_PRIMARY_FAX_NUMBER};
  if (phone.fax && work) return {PR_BUSINESS_FAX_NUMBER, PR_PRIMARY_FAX_NUMBER};
  if (phone.fax) return {PR_PRIMARY_FAX_NUMBER, PR_PRIMARY_FAX_NUMBER};
  if (phone.pager) return {PR_PAGER_TELEPHONE_NUMBER, PR_OTHER_TELEPHONE_NUMBER};
  if (phone.mobile) return {PR_MOBILE_TELEPHONE_NUMBER, PR_OTHER_TELEPHONE_NUMBER};
  if (home) return {PR_HOME_TELEPHONE_NUMBER, PR_HOME2_TELEPHONE_NUMBER};
  if (work) return {PR_BUSINESS_TELEPHONE_NUMBER, PR_BUSINESS2_TELEPHONE_NUMBER};
  return {PR_PRIMARY_TELEPHONE_NUMBER, PR_OTHER_TELEPHONE_NUMBER};
}

void AddPhone(Properties& properties, const VCardPhone& phone) {
  const NumberTags tags = TagsFor(phone);
  const ULONG tag = FindProperty(properties, tags.first) == nullptr ? tags.first : tags.second;
  if (FindProperty(properties, tag) == nullptr) AddText(properties, tag, phone.number);
}

void AddPostalAddress(Properties& properties, const VCardAddress& address) {
  const bool home = address.place == VCardPlace::kHome;
  const std::pair<ULONG, const std::u16string*> parts[] = {
      {home ? PR_HOME_ADDRESS_STREET : PR_STREET_ADDRESS, &address.street},
      {home ? PR_HOME_ADDRESS_CITY : PR_LOCALITY, &address.locality},
      {home ? PR_HOME_ADDRESS_STATE_OR_PROVINCE : PR_STATE_OR_PROVINCE, &address.region},
      {home ? PR_HOME_ADDRESS_POSTAL_CODE : PR_POSTAL_CODE, &address.postalCode},
      {home ? PR_HOME_ADDRESS_POST_OFFICE_BOX : PR_POST_OFFICE_BOX, &address.postOfficeBox},
      {home ? PR_HOME_ADDRESS_COUNTRY : PR_COUNTRY, &address.country},
  };
  // The first address of a place counts: parts of two addresses must not mix.
  for (const auto& [tag, text] : parts) {
    if (FindProperty(properties, tag) != nullptr) return;
  }
  for (const auto& [tag, text] : parts) AddText(properties, tag, *text);
}

// This is the address book of a fax driver: a fax number comes before an e-mail address.
void AddDeliveryAddress(Properties& properties, const VCard& card) {
  const auto fax = std::find_if(card.phones.begin(), card.phones.end(),
                                [](const VCardPhone& phone) { return phone.fax && !phone.number.empty(); });
  if (fax != card.phones.end()) {
    properties.push_back({PR_ADDRTYPE, u"FAX"});
    properties.push_back({PR_EMAIL_ADDRESS, fax->number});
  } else if (!card.emails.empty()) {
    properties.push_back({PR_ADDRTYPE, u"SMTP"});
    properties.push_back({PR_EMAIL_ADDRESS, card.emails.front()});
  }
}

void AddPerson(Properties& properties, const VCard& card) {
  AddDeliveryAddress(properties, card);
  if (!card.emails.empty()) {
    properties.push_back({PR_SMTP_ADDRESS, card.emails.front()});
    properties.push_back({PR_CONTACT_EMAIL_ADDRESSES, card.emails});
  }
  AddText(properties, PR_GIVEN_NAME, card.givenName);
  AddText(properties, PR_SURNAME, card.familyName);
  AddText(properties, PR_COMPANY_NAME, card.organisation);
  AddText(properties, PR_DEPARTMENT_NAME, card.department);
  AddText(properties, PR_TITLE, card.title);
  for (const VCardPhone& phone : card.phones) AddPhone(properties, phone);
  for (const VCardAddress& address : card.addresses) AddPostalAddress(properties, address);
}

Properties EntryProperties(const std::u16string& name, ULONG objectType, ULONG displayType) {
  return {{PR_DISPLAY_NAME, name}, {PR_OBJECT_TYPE, objectType}, {PR_DISPLAY_TYPE, displayType}};
}

// What a table of contacts shows; any other tag is worth reading the whole record.
VCardFields FieldsOf(ULONG tag) {
  switch (PROP_ID(tag)) {
    case PROP_ID(PR_NULL):
    case PROP_ID(PR_ENTRYID):
    case PROP_ID(PR_INSTANCE_KEY):
    case PROP_ID(PR_OBJECT_TYPE):
    case PROP_ID(PR_DISPLAY_TYPE):
      return 0;
    case PROP_ID(PR_DISPLAY_NAME):
      return kVCardDisplayName;
    case PROP_ID(PR_ADDRTYPE):
    case PROP_ID(PR_EMAIL_ADDRESS):
      return kVCardPhones | kVCardEmails;
    default:
      return kVCardEverything;
  }
}

}  // namespace

VCardFields VCardFieldsOf(std::span<const ULONG> tags) {
  VCardFields fields = 0;
  for (const ULONG tag : tags) fields |= FieldsOf(tag);
  return fields;
}

const Property* FindProperty(const Properties& properties, ULONG tag) {
  const auto sameIdentifier = [tag](const Property& each) { return PROP_ID(each.tag) == PROP_ID(tag); };
  const auto found = std::find_if(properties.begin(), properties.end(), sameIdentifier);
  return found == properties.end() ? nullptr : &*found;
}

Properties VCardProperties(const VCard& card) {
  Properties properties = card.isGroup ? EntryProperties(card.displayName, MAPI_DISTLIST, DT_PRIVATE_DISTLIST)
                                       : EntryProperties(card.displayName, MAPI_MAILUSER, DT_MAILUSER);
  if (card.isGroup) {
    properties.push_back({PR_ADDRTYPE, u"MAPIPDL"});
  } else {
    AddPerson(properties, card);
  }
  AddText(properties, PR_COMMENT, card.note);
  return properties;
}

Properties AddressProperties(const std::u16string& email) {
  Properties properties = EntryProperties(email, MAPI_MAILUSER, DT_MAILUSER);
  properties.push_back({PR_ADDRTYPE, u"SMTP"});
  properties.push_back({PR_EMAIL_ADDRESS, email});
  return properties;
}

}  // namespace formats
