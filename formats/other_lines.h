// Lines of a card that have no place in a contact, in the form of version 4.0.
#pragma once

#include <string>
#include <string_view>

#include "formats/vcard_lines.h"

namespace formats {

// The line in the form of version 4.0; empty where it says nothing.
std::string NormaliseOtherLine(const VCardLine& line, VCardVersion version, std::string_view charset);

// A record within the record, such as an agent's, as a line of text.
std::string NormaliseNestedCard(std::string_view property, std::string_view lines);

// The kind of medium that versions before 4.0 write of this property in base64, "image/" of a photo; else empty.
std::string_view MediumOf(std::string_view property);
bool IsBase64Char(char c);

}  // namespace formats
