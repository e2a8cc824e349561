// Whole files of texts that people write, and the standard streams under the name "-".
#pragma once

#include <string>

namespace orvctl {

// In UTF-8 without a byte order mark. Throws where it cannot be read or is not believable as a text file.
std::string ReadTextFile(const std::string& file);

}  // namespace orvctl
