// The schemes and options of the URIs that stand for numbers and identifiers.
#pragma once

#include <string>
#include <string_view>

namespace formats {

inline bool HasScheme(std::string_view value) { return value.find(':') != std::string_view::npos; }
bool IsUuid(std::string_view text);

// What stands behind "tel:" and "fax:"; `isFax` is set where one of them is a fax's.
std::string_view StripNumberSchemes(std::string_view text, bool* isFax);

// Takes the options of a number's URI from its text and gives them but for the extension, which stands behind the
// number as people write it: "1 ext. 2".
std::string TakeUriOptions(std::string* number);

}  // namespace formats
