// What profile and service administration hold, as the commands read it.
#pragma once

#include <string>
#include <vector>

#include "tools/orvctl/library.h"

namespace orvctl {

struct Profile {
  std::string name;
  bool isDefault = false;
};

std::vector<Profile> ReadProfiles(const Library& library);
bool HasProfile(const Library& library, const std::string& name);
// What PROFILE of the command line means: "-" is the default profile, and there has to be one.
std::string ProfileName(const Library& library, const std::string& given);

struct Service {
  std::string name, displayName, provider, library, entryName;
  Bytes uid;
  ULONG flags = 0;
};

ComPtr<IABServiceAdmin> OpenServices(const Library& library, const std::string& profile);
std::vector<Service> ReadServices(const Library& library, IABServiceAdmin* admin);

// Names in messages.
std::string QuotedProfile(const std::string& name);
[[noreturn]] void ThrowNoProfile(const std::string& name, HRESULT result);

}  // namespace orvctl
