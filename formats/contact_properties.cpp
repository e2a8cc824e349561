// Which field of a record is which property, in tables that reading and writing share.
#include "formats/contact_properties.h"

#include <algorithm>
#include <iterator>

#include "formats/text_codec.h"

namespace formats {
namespace {

struct TextField {
  ULONG tag;
  std::string Contact::*text;
};
constexpr TextField kTexts[] = {
    {PR_DISPLAY_NAME, &Contact::name},
    {PR_TRANSMITABLE_DISPLAY_NAME, &Contact::name},
    {PR_GIVEN_NAME, &Contact::given},
    {PR_MIDDLE_NAME, &Contact::middle},
    {PR_SURNAME, &Contact::surname},
    {PR_DISPLAY_NAME_PREFIX, &Contact::prefix},
    {PR_GENERATION, &Contact::suffix},
    {PR_COMPANY_NAME, &Contact::company},
    {PR_DEPARTMENT_NAME, &Contact::department},
    {PR_TITLE, &Contact::title},
    {PR_COMMENT, &Contact::note},
};

// A property shows the number that stands at `index` among those of its kind and place. Where place does not matter
// every one fits; nowhere in particular and elsewhere are one place for faxes.
struct NumberField {
  ULONG tag;
  NumberKind kind;
  Place place;
  int index = 0;
};
constexpr NumberField kNumbers[] = {
    {PR_BUSINESS_FAX_NUMBER, NumberKind::kFax, Place::kWork},
    {PR_HOME_FAX_NUMBER, NumberKind::kFax, Place::kHome},
    {PR_PRIMARY_FAX_NUMBER, NumberKind::kFax, Place::kNone},
    {PR_BUSINESS_TELEPHONE_NUMBER, NumberKind::kPhone, Place::kWork},
    {PR_BUSINESS2_TELEPHONE_NUMBER, NumberKind::kPhone, Place::kWork, 1},
    {PR_HOME_TELEPHONE_NUMBER, NumberKind::kPhone, Place::kHome},
    {PR_HOME2_TELEPHONE_NUMBER, NumberKind::kPhone, Place::kHome, 1},
    {PR_PRIMARY_TELEPHONE_NUMBER, NumberKind::kPhone, Place::kNone},
    {PR_OTHER_TELEPHONE_NUMBER, NumberKind::kPhone, Place::kOther},
    {PR_MOBILE_TELEPHONE_NUMBER, NumberKind::kMobile, Place::kNone},
    {PR_PAGER_TELEPHONE_NUMBER, NumberKind::kPager, Place::kNone},
};

struct AddressField {
  ULONG tag;
  Place place;
  std::string ContactAddress::*text;
};
constexpr AddressField kAddresses[] = {
    {PR_STREET_ADDRESS, Place::kWork, &ContactAddress::street},
    {PR_LOCALITY, Place::kWork, &ContactAddress::locality},
    {PR_STATE_OR_PROVINCE, Place::kWork, &ContactAddress::region},
    {PR_POSTAL_CODE, Place::kWork, &ContactAddress::postalCode},
    {PR_POST_OFFICE_BOX, Place::kWork, &ContactAddress::postOfficeBox},
    {PR_COUNTRY, Place::kWork, &ContactAddress::country},
    {PR_HOME_ADDRESS_STREET, Place::kHome, &ContactAddress::street},
    {PR_HOME_ADDRESS_CITY, Place::kHome, &ContactAddress::locality},
    {PR_HOME_ADDRESS_STATE_OR_PROVINCE, Place::kHome, &ContactAddress::region},
    {PR_HOME_ADDRESS_POSTAL_CODE, Place::kHome, &ContactAddress::postalCode},
    {PR_HOME_ADDRESS_POST_OFFICE_BOX, Place::kHome, &ContactAddress::postOfficeBox},
    {PR_HOME_ADDRESS_COUNTRY, Place::kHome, &ContactAddress::country},
    {PR_OTHER_ADDRESS_STREET, Place::kOther, &ContactAddress::street},
    {PR_OTHER_ADDRESS_CITY, Place::kOther, &ContactAddress::locality},
    {PR_OTHER_ADDRESS_STATE_OR_PROVINCE, Place::kOther, &ContactAddress::region},
    {PR_OTHER_ADDRESS_POSTAL_CODE, Place::kOther, &ContactAddress::postalCode},
    {PR_OTHER_ADDRESS_POST_OFFICE_BOX, Place::kOther, &ContactAddress::postOfficeBox},
    {PR_OTHER_ADDRESS_COUNTRY, Place::kOther, &ContactAddress::country},
};

template <class Field, size_t kCount>
const Field* FindField(const Field (&fields)[kCount], ULONG tag) {
  const auto found = std::find_if(std::begin(fields), std::end(fields),
                                  [tag](const Field& each) { return PROP_ID(each.tag) == PROP_ID(tag); });
  return found != std::end(fields) ? found : nullptr;
}

bool Fits(const ContactNumber& number, const NumberField& field) {
  if (number.kind != field.kind) return false;
  if (field.kind == NumberKind::kMobile || field.kind == NumberKind::kPager) return true;
  const bool isElsewhere = field.kind == NumberKind::kFax && number.place == Place::kOther;
  return (isElsewhere ? Place::kNone : number.place) == field.place;
}

template <class Numbers>  // constant or not
auto FindShown(Numbers& numbers, const NumberField& field) {
  int left = field.index;
  return std::find_if(numbers.begin(), numbers.end(),
                      [&](const ContactNumber& each) { return Fits(each, field) && left-- == 0; });
}

template <class Addresses>
auto FindShown(Addresses& addresses, Place place) {
  return std::find_if(addresses.begin(), addresses.end(), [place](const ContactAddress& each) {
    return (each.place == Place::kNone ? Place::kWork : each.place) == place;
  });
}

void AddText(Properties& properties, ULONG tag, const std::string& text) {
  if (!text.empty()) properties.push_back({tag, ToUtf16(text)});
}

void AddNumbers(Properties& properties, const Contact& contact) {
  for (const NumberField& field : kNumbers) {
    const auto found = FindShown(contact.numbers, field);
    if (found != contact.numbers.end()) AddText(properties, field.tag, found->text);
  }
}

void AddEmails(Properties& properties, const Contact& contact) {
  if (contact.emails.empty()) return;
  std::vector<std::u16string> all;
  for (const ContactEmail& each : contact.emails) all.push_back(ToUtf16(each.text));
  AddText(properties, PR_SMTP_ADDRESS, MainEmail(contact)->text);
  properties.push_back({PR_CONTACT_EMAIL_ADDRESSES, std::move(all)});
}

void AddAddresses(Properties& properties, const Contact& contact) {
  for (const AddressField& field : kAddresses) {
    const auto found = FindShown(contact.addresses, field.place);
    if (found != contact.addresses.end()) AddText(properties, field.tag, (*found).*field.text);
  }
}

// One line; of a text of several lines the line feeds stay.
std::string Clean(std::string_view text, bool keepsLines) {
  std::string clean;
  for (const char each : text) {
    const bool isControl = static_cast<unsigned char>(each) < ' ' || each == '\x7F';
    if (each == '\r' && keepsLines) continue;
    clean += isControl && !(keepsLines && each == '\n') ? ' ' : each;
  }
  return clean;
}

void SetNumber(Contact* contact, const NumberField& field, const std::string& text) {
  const auto found = FindShown(contact->numbers, field);
  if (found == contact->numbers.end()) {
    if (!text.empty()) contact->numbers.push_back({text, field.kind, field.place, false, 0, {}});
  } else if (text.empty()) {
    contact->numbers.erase(found);
  } else if (found->text != text) {
    found->key = KeyOf(*found);  // it stays the same number, whatever is typed
    found->text = text;
  }
}

bool IsEmpty(const ContactAddress& address) {
  ContactAddress nothing;
  nothing.place = address.place;
  nothing.isPreferred = address.isPreferred;
  nothing.rest = address.rest;
  return address == nothing;
}

void SetAddressPart(Contact* contact, const AddressField& field, const std::string& text) {
  auto found = FindShown(contact->addresses, field.place);
  if (found == contact->addresses.end()) {
    if (text.empty()) return;
    contact->addresses.emplace_back().place = field.place;
    found = std::prev(contact->addresses.end());
  }
  (*found).*field.text = text;
  if (IsEmpty(*found)) contact->addresses.erase(found);
}

void SetMainEmail(Contact* contact, const std::string& text) {
  std::vector<ContactEmail>& emails = contact->emails;
  const ContactEmail* const main = MainEmail(*contact);
  if (main == nullptr) {
    if (!text.empty()) emails.push_back({text, Place::kNone, false, {}});
    return;
  }
  const auto found = emails.begin() + (main - emails.data());
  if (text.empty())
    emails.erase(found);
  else
    found->text = text;
}

ContactNumber* FindFax(Contact& contact, uint32_t key) {
  const auto* found = key != 0 ? FindNumber(contact, key) : MainFax(contact);
  return const_cast<ContactNumber*>(found);
}

ContactNumber* FindSameFax(Contact& contact, std::string_view text) {
  const std::string canonical = CanonicalNumber(text);
  const auto isSame = [&](const ContactNumber& each) {
    return each.kind == NumberKind::kFax &&
           (each.text == text || (!canonical.empty() && CanonicalNumber(each.text) == canonical));
  };
  const auto found = std::find_if(contact.numbers.begin(), contact.numbers.end(), isSame);
  return found != contact.numbers.end() ? &*found : nullptr;
}

void Prefer(Contact& contact, ContactNumber& main) {
  for (ContactNumber& each : contact.numbers)
    each.isPreferred = each.isPreferred && each.kind != NumberKind::kFax;
  main.isPreferred = true;
}

}  // namespace

uint32_t KeyOf(const ContactNumber& number) { return number.key != 0 ? number.key : NumberKey(number.text); }

const ContactNumber* FindNumber(const Contact& contact, uint32_t key) {
  const ContactNumber* found = nullptr;
  for (const ContactNumber& each : contact.numbers) {
    if (KeyOf(each) != key) continue;
    if (each.kind == NumberKind::kFax) return &each;
    if (found == nullptr) found = &each;
  }
  return found;
}

Properties ContactProperties(const Contact& contact, const ContactNumber* address) {
  Properties properties{{PR_OBJECT_TYPE, LONGLONG{contact.isList ? MAPI_DISTLIST : MAPI_MAILUSER}},
                        {PR_DISPLAY_TYPE, LONGLONG{contact.isList ? DT_PRIVATE_DISTLIST : DT_MAILUSER}},
                        {PR_ADDRTYPE, std::u16string(contact.isList ? u"MAPIPDL" : u"FAX")}};
  if (address != nullptr) AddText(properties, PR_EMAIL_ADDRESS, address->text);
  for (const TextField& field : kTexts) AddText(properties, field.tag, contact.*field.text);
  AddNumbers(properties, contact);
  AddEmails(properties, contact);
  AddAddresses(properties, contact);
  return properties;
}

bool IsContactProperty(ULONG tag) {
  if (tag == PR_CONTACT_EMAIL_ADDRESSES) return true;
  if (PROP_TYPE(tag) != PT_UNICODE) return false;
  return FindField(kTexts, tag) != nullptr || FindField(kNumbers, tag) != nullptr ||
         FindField(kAddresses, tag) != nullptr || PROP_ID(tag) == PROP_ID(PR_SMTP_ADDRESS);
}

bool SetContactText(Contact* contact, ULONG tag, std::string_view text) {
  if (PROP_ID(tag) == PROP_ID(PR_SMTP_ADDRESS)) {
    SetMainEmail(contact, Clean(text, false));
  } else if (const TextField* field = FindField(kTexts, tag)) {
    contact->*field->text = Clean(text, field->text == &Contact::note);
  } else if (const NumberField* number = FindField(kNumbers, tag)) {
    SetNumber(contact, *number, Clean(text, false));
  } else if (const AddressField* address = FindField(kAddresses, tag)) {
    SetAddressPart(contact, *address, Clean(text, true));
  } else {
    return false;
  }
  return true;
}

void SetContactEmails(Contact* contact, const std::vector<std::string>& texts) {
  std::vector<ContactEmail> emails;
  for (const std::string& each : texts) {
    const std::string text = Clean(each, false);
    const auto known = std::find_if(contact->emails.begin(), contact->emails.end(),
                                    [&](const ContactEmail& email) { return email.text == text; });
    if (text.empty()) continue;
    emails.push_back(known != contact->emails.end() ? *known : ContactEmail{text, Place::kNone, false, {}});
  }
  contact->emails = std::move(emails);
}

void SetContactAddress(Contact* contact, uint32_t key, std::string_view text) {
  const std::string clean = Clean(text, false);
  ContactNumber* number = FindFax(*contact, key);
  ContactNumber* same = key == 0 && !clean.empty() ? FindSameFax(*contact, clean) : nullptr;
  if (same != nullptr && same != number) {
    Prefer(*contact, *same);
  } else if (number == nullptr) {
    if (!clean.empty()) contact->numbers.push_back({clean, NumberKind::kFax, Place::kNone, false, 0, {}});
  } else if (clean.empty()) {
    contact->numbers.erase(contact->numbers.begin() + (number - contact->numbers.data()));
  } else if (number->text != clean) {
    number->key = KeyOf(*number);
    number->text = clean;
  }
}

}  // namespace formats
