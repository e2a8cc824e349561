// Base64, as vCard and LDIF files hold it.
#pragma once

#include <string>
#include <string_view>

namespace formats {

// Passes over what is no digit and ends at the padding.
std::string DecodeBase64(std::string_view text);
std::string EncodeBase64(std::string_view bytes);

}  // namespace formats
