// A listing as aligned columns.
#pragma once

#include <string>

#include "tools/orvctl/listing.h"

namespace orvctl {

// On a terminal of so many columns a cell that is too long for its own ends in an ellipsis; without one (0) cells stay
// whole. Either way no cell makes the others of its column wider than 60.
std::string TableText(const Listing& listing, size_t terminalWidth);

}  // namespace orvctl
