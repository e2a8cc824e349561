// What a record is in the terms of the address book, and what a changed property means for it.
#pragma once

#include <string>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

#include "formats/contact.h"
#include "orv/orvtags.h"

namespace formats {

// One value. Numbers of every width are kept in 64 bits, as the value's union holds them.
struct Property {
  ULONG tag = PR_NULL;
  std::variant<LONGLONG, std::u16string, std::vector<std::u16string>> value;
};
using Properties = std::vector<Property>;

// Types, plain names, numbers, addresses and remark. `address`, a number of the contact, becomes PR_EMAIL_ADDRESS under
// "FAX"; without one there is none. A list is a distribution list of type "MAPIPDL". Where several fields fit one
// property the first is shown. Identifiers are the caller's to add.
Properties ContactProperties(const Contact& contact, const ContactNumber* address);

// Sets all of them in a list of somebody else's, which has Set for numbers and texts, and SetTexts.
template <class List>
void SetProperties(const Properties& properties, List& list) {
  for (const Property& each : properties) {
    std::visit(
        [&]<class Value>(const Value& value) {
          if constexpr (std::is_same_v<Value, std::vector<std::u16string>>) {
            list.SetTexts(each.tag, value);
          } else {
            list.Set(each.tag, value);
          }
        },
        each.value);
  }
}

// Whether SetContactText, or for PR_CONTACT_EMAIL_ADDRESSES SetContactEmails, takes the property. PR_ADDRTYPE and
// PR_EMAIL_ADDRESS are not among them: SetContactAddress.
bool IsContactProperty(ULONG tag);

// The field that the property shows gets this text; an empty one takes it away. Of numbers and addresses the one that
// is shown is changed, its other marks stay. False: no such property. Control characters become blanks.
bool SetContactText(Contact* contact, ULONG tag, std::string_view text);

// E-mail addresses in this order; what is known of those that are kept stays.
void SetContactEmails(Contact* contact, const std::vector<std::string>& texts);

// The fax number with the key becomes `text`; empty: it is taken away. The key 0 stands for the main one: another fax
// number of the contact that is the same becomes the main one then, and a contact without one gets a new one.
void SetContactAddress(Contact* contact, uint32_t key, std::string_view text);

// `key` as stored, or made of the text.
uint32_t KeyOf(const ContactNumber& number);
// A telephone may have the number of a fax: then the fax.
const ContactNumber* FindNumber(const Contact& contact, uint32_t key);

}  // namespace formats
