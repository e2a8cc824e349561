// Which services of a profile the services of a file mean.
#pragma once

#include <vector>

#include "tools/orvctl/settings.h"

namespace orvctl {

// For each service of the file that of the profile, or null; each is meant once. Of several of one kind those go together
// that have most in common, since the order in which services are stored says nothing. The result points into `stored`.
std::vector<const Service*> MatchServices(const Library& library, const std::string& profile,
                                          const Json& wanted, const std::vector<Service>& stored);

}  // namespace orvctl
