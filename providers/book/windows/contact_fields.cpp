#include "providers/book/windows/contact_fields.h"

#include <algorithm>

#include "providers/book/text.h"
#include "providers/book/windows/contact_kinds.h"
#include "providers/book/windows/controls.h"
#include "providers/book/windows/resource.h"

namespace book {
namespace {

using formats::Contact;

struct TextField {
  std::string Contact::*text;
  UINT title;
};
// Fields up to the title, in their order.
constexpr TextField kTexts[] = {
    {&Contact::name, IDS_FIELD_NAME},       {&Contact::prefix, IDS_FIELD_PREFIX},
    {&Contact::given, IDS_FIELD_GIVEN},     {&Contact::middle, IDS_FIELD_MIDDLE},
    {&Contact::surname, IDS_FIELD_SURNAME}, {&Contact::suffix, IDS_FIELD_SUFFIX},
    {&Contact::company, IDS_FIELD_COMPANY}, {&Contact::department, IDS_FIELD_DEPARTMENT},
    {&Contact::title, IDS_FIELD_TITLE}};
static_assert(std::size(kTexts) == static_cast<size_t>(Field::kNumbers));

const TextField* TextFieldOf(Field field) {
  return field < Field::kNumbers ? &kTexts[static_cast<size_t>(field)] : nullptr;
}

// Calls with the member of the contact that the field is.
template <class Action>
auto WithMember(Field field, const Action& action) {
  if (const TextField* text = TextFieldOf(field); text != nullptr) return action(text->text);
  switch (field) {
    case Field::kNumbers:
      return action(&Contact::numbers);
    case Field::kEmails:
      return action(&Contact::emails);
    case Field::kAddresses:
      return action(&Contact::addresses);
    case Field::kMembers:
      return action(&Contact::members);
    case Field::kOthers:
      return action(&Contact::others);
    default:
      return action(&Contact::note);
  }
}

std::wstring LinesOf(const kit::Language&, const std::string& text) { return ToWide(text); }
template <class Item>
std::wstring LinesOf(const kit::Language& language, const std::vector<Item>& items) {
  std::wstring lines;
  for (const Item& each : items) lines += (lines.empty() ? L"" : L"\n") + LineOf(language, each);
  return lines;
}

using formats::ContactAddress;
constexpr std::string ContactAddress::*kAddressTexts[] = {
    &ContactAddress::postOfficeBox, &ContactAddress::extended, &ContactAddress::street,
    &ContactAddress::locality,      &ContactAddress::region,   &ContactAddress::postalCode,
    &ContactAddress::country};

bool IsEmpty(const ContactAddress& address) {
  return std::all_of(std::begin(kAddressTexts), std::end(kAddressTexts),
                     [&](auto text) { return (address.*text).empty(); });
}

void Trim(ContactAddress& address) {
  for (const auto text : kAddressTexts) address.*text = Trimmed(address.*text);
}

}  // namespace

UINT TitleOf(Field field) {
  if (const TextField* text = TextFieldOf(field); text != nullptr) return text->title;
  switch (field) {
    case Field::kNumbers:
      return IDS_FIELD_NUMBERS;
    case Field::kEmails:
      return IDS_FIELD_EMAILS;
    case Field::kAddresses:
      return IDS_FIELD_ADDRESSES;
    case Field::kMembers:
      return IDS_FIELD_MEMBERS;
    case Field::kOthers:
      return IDS_FIELD_OTHERS;
    default:
      return IDS_FIELD_NOTE;
  }
}

std::wstring TextOf(const kit::Language& language, const Contact& contact, Field field) {
  return WithMember(field, [&](auto member) { return LinesOf(language, contact.*member); });
}

bool IsSame(const Contact& one, const Contact& other, Field field) {
  return WithMember(field, [&](auto member) { return one.*member == other.*member; });
}

void Copy(const Contact& from, Field field, Contact* to) {
  WithMember(field, [&](auto member) { to->*member = from.*member; });
}

void PreferOne(Contact* contact, const formats::ContactNumber* wanted) {
  const formats::ContactNumber* chosen = wanted != nullptr ? wanted : formats::MainFax(*contact);
  for (formats::ContactNumber& each : contact->numbers) {
    if (each.kind == formats::NumberKind::kFax) each.isPreferred = &each == chosen;
  }
}

Contact Tidied(Contact contact) {
  for (const TextField& each : kTexts) contact.*each.text = Trimmed(contact.*each.text);
  for (ContactAddress& each : contact.addresses) Trim(each);
  std::erase_if(contact.addresses, IsEmpty);
  return contact;
}

}  // namespace book
