// What is stored of a service besides what the catalogue says, each setting under a name that files can carry.
#pragma once

#include <string>
#include <vector>

#include "tools/orvctl/administration.h"
#include "tools/orvctl/listing.h"

namespace orvctl {

struct Setting {
  ULONG tag = 0;
  std::string name;       // "PR_ORV_BOOK_FILE_W", or the tag where a name does not tell the type
  Cell value = "";        // empty of a secret one
  bool isSecret = false;  // never shown, never written to a file
  bool canBeSet = true;   // false: of a type that no file or command line holds
};

// In the order in which they are stored. The service must be one that can be read.
std::vector<Setting> ReadSettings(const Library& library, const std::string& profile, const Service& service);

// "TAG=VALUE" of a setting in a file, for OwnedValue; throws where the name or the value cannot be understood.
std::string AsAssignment(const std::string& name, const Json& value);

}  // namespace orvctl
