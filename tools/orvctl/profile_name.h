// Which names orvctl gives to profiles.
#pragma once

#include <string>

namespace orvctl {

// Why a profile is not to be called so, a sentence; empty where nothing is said against it. What the library itself
// refuses is left to it.
std::string WhyBadProfileName(const std::string& name);

}  // namespace orvctl
