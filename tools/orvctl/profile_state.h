// A whole profile as one JSON object: what 'profile export' writes, and 'profile apply' reads.
#pragma once

#include "tools/orvctl/listing.h"
#include "tools/orvctl/settings.h"

namespace orvctl {

inline constexpr char kProfileFormat[] = "orvctl-profile-1";

// What the address book keeps for a profile, its default container and search path, as in such an object; null where it
// keeps nothing. Throws where the profile cannot be logged on to.
Json DescribeBookSettings(const Library& library, const std::string& profile);
// Sets what differs. The containers of another profile are meant by their identifiers, else by their names.
void ApplyBookSettings(const Library& library, const std::string& profile, const Json& settings,
                       std::vector<Message>& messages);

}  // namespace orvctl
