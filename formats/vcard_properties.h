// What a vCard record is in the terms of the address book: property values under the published tags. Shared by
// whoever serves, imports or exports contact files.
#pragma once

#include <span>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

#include "formats/vcard.h"
#include "orv/orvtags.h"

namespace formats {

// One value. Numbers of every width are kept in 64 bits, as the value's union holds them.
struct Property {
  ULONG tag = PR_NULL;
  std::variant<LONGLONG, std::u16string, std::vector<std::u16string>, std::vector<BYTE>> value;
};
using Properties = std::vector<Property>;

// The property with the tag's identifier, whatever the tag's type is; null when there is none.
const Property* FindProperty(const Properties& properties, ULONG tag);

// Object and display type, names, address, numbers, postal addresses and remark. A group is a distribution list
// of type "MAPIPDL"; a person's address is the first fax number ("FAX"), else the first e-mail address ("SMTP").
// Identifiers and keys are the caller's to add.
Properties VCardProperties(const VCard& card);

// The parts of a record that properties of these tags are made from, by identifier as in FindProperty.
VCardFields VCardFieldsOf(std::span<const ULONG> tags);

// An address that no record has, as a mail user.
Properties AddressProperties(const std::u16string& email);

// Sets all of them in a list of somebody else's, which has Set for numbers, texts and bytes, and SetTexts.
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

}  // namespace formats
