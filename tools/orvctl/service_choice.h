// The services of a profile, as the commands choose among them.
#pragma once

#include <string>
#include <vector>

#include "tools/orvctl/administration.h"

namespace orvctl {

// A profile's services, to be looked at or changed.
struct Services {
  // `given` as on the command line.
  Services(const Library& library, const std::string& given);

  // By name, display name, UID or key; an empty name means the only service. A name that two services bear must not
  // hit the wrong one.
  const Service& Find(const std::string& wanted) const;
  // For reading a part of a name, in any case of its letters, is enough.
  const Service& FindByPart(const std::string& wanted) const;

  std::string profile;
  std::vector<Service> all;

 private:
  template <class Fits>
  const Service& OnlyOne(const std::string& wanted, Fits fits) const;
};

MAPIUID UidOf(const Service& service);

}  // namespace orvctl
