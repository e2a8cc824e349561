// Logging on to a profile, and telling why it cannot be done.
#pragma once

#include <string>

#include "tools/orvctl/last_words.h"
#include "tools/orvctl/library.h"

namespace orvctl {

// What is told of each of the profile's services where its library crashes; nothing where they cannot be listed.
std::vector<CrashText> CrashTexts(const Library& library, const std::string& profile);

// "-" logs on to the default profile.
ComPtr<IOrvSession> LogOn(const Library& library, const std::string& profile);

}  // namespace orvctl
