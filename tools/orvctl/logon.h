// Logging on to a profile, and telling why it cannot be done.
#pragma once

#include <string>

#include "tools/orvctl/library.h"

namespace orvctl {

// "-" logs on to the default profile.
ComPtr<IOrvSession> LogOn(const Library& library, const std::string& profile);

}  // namespace orvctl
