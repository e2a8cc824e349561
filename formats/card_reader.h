// One record of a vCard file, of any version, as a contact.
#pragma once

#include <string_view>

#include "formats/contact.h"
#include "formats/vcard_lines.h"

namespace formats {

// The version that the lines of a record say they are in.
VCardVersion FindCardVersion(std::string_view lines);

// `lines` lie between the record's first line and its last. Text that names no character set is in `charset`; where
// that is empty it is UTF-8 or in the system's code page. False where there is nothing to call the record by.
bool ReadCardLines(std::string_view lines, VCardVersion version, std::string_view charset, Contact* contact);

// Empties every field and keeps the memory.
void ClearContact(Contact* contact);

// What a contact without a name is called by: the company, the department, an address or a number. False where
// there is none of them either.
bool NameContact(Contact* contact);

}  // namespace formats
