// What a record is in the terms of the address book, and what a changed property means for it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "formats/contact.h"
#include "formats/vcard_properties.h"

namespace formats {

// Types, plain names, numbers, addresses and remark. `address`, a number of the contact, becomes PR_EMAIL_ADDRESS under
// "FAX"; without one there is none. A list is a distribution list of type "MAPIPDL". Where several fields fit one
// property the first is shown. Identifiers are the caller's to add.
Properties ContactProperties(const Contact& contact, const ContactNumber* address);

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
