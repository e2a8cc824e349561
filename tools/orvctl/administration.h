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
// The key of the profiles, below that of the current user.
WideString ProfilesKey(const Library& library);
bool HasProfile(const Library& library, const std::string& name);
// What PROFILE of the command line means: "-" is the default profile, and there has to be one.
std::string ProfileName(const Library& library, const std::string& given);

struct Service {
  std::string name, displayName, provider, library, entryName;
  Bytes uid;
  ULONG flags = 0;
  std::string key;        // of the registry, where it is stored
  HRESULT status = S_OK;  // a failure: it cannot be read, and what stands above is what could be
};

// The identifier that the profile itself keeps under this tag; empty where it keeps none that can be read. What the
// address book keeps is written when the session ends.
Bytes StoredId(const Library& library, const std::string& profile, ULONG tag);

// Fails for a profile in which a service cannot be read.
ComPtr<IABServiceAdmin> OpenServices(const Library& library, const std::string& profile);
// Those included that cannot be read.
std::vector<Service> ReadServices(const Library& library, const std::string& profile);
// The first service that cannot be read, as the end of a sentence; empty without one.
std::string FindDamage(const Library& library, const std::string& profile);
// Moves one that cannot be read out of the profile, to where nothing reads it.
void SetAside(const Library& library, const std::string& profile, const Service& service);
// Keys beside those of the profiles whose names are too long for one.
std::vector<std::string> FindOverlongProfiles(const Library& library);
void DeleteService(const Library& library, const std::string& profile, const Service& service);
// The command that takes a service out, for somebody to type.
std::string RemoveCommand(const std::string& profile, const Service& service);
// What is wrong with a service that cannot be read, and the way on.
std::string DescribeUnreadable(const std::string& profile, const Service& service);

// Names in messages.
std::string QuotedProfile(const std::string& name);
[[noreturn]] void ThrowNoProfile(const std::string& name, HRESULT result);

}  // namespace orvctl
