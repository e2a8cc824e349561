#include "tools/orvctl/administration.h"

#include <algorithm>

#include "tools/orvctl/errors.h"
#include "tools/orvctl/table.h"

namespace orvctl {

std::vector<Profile> ReadProfiles(const Library& library) {
  const std::string doing = "list the profiles";
  const ComPtr<IOrvProfAdmin> admin = library.AdminProfiles();
  ComPtr<IMAPITable> table;
  Receive(table, admin->GetProfileTable(MAPI_UNICODE, table.Put()), doing);
  TagArray columns{PR_DISPLAY_NAME_W, PR_DEFAULT_PROFILE};
  std::vector<Profile> profiles;
  ForEachRow(library, table.Get(), columns.Get(), doing, [&](const ValueView& row) {
    profiles.push_back({TextOf(row, PR_DISPLAY_NAME_W), row.Flag(PR_DEFAULT_PROFILE)});
    return true;
  });
  return profiles;
}

bool HasProfile(const Library& library, const std::string& name) {
  const std::vector<Profile> all = ReadProfiles(library);
  return std::any_of(all.begin(), all.end(), [&](const Profile& each) { return each.name == name; });
}

std::string ProfileName(const Library& library, const std::string& given) {
  if (given != "-") return given;
  for (const Profile& profile : ReadProfiles(library)) {
    if (profile.isDefault) return profile.name;
  }
  throw CommandError(kNotFound, "there is no default profile");
}

ComPtr<IABServiceAdmin> OpenServices(const Library& library, const std::string& profile) {
  ComPtr<IABServiceAdmin> services;
  const HRESULT result =
      library.AdminProfiles()->AdminServices(ToWide(profile).c_str(), MAPI_UNICODE, services.Put());
  if (result == MAPI_E_NOT_FOUND) ThrowNoProfile(profile, result);
  Receive(services, result, "read what is stored of the services of " + QuotedProfile(profile));
  return services;
}

std::vector<Service> ReadServices(const Library& library, IABServiceAdmin* admin) {
  const std::string doing = "list the services";
  ComPtr<IMAPITable> table;
  Receive(table, admin->GetMsgServiceTable(MAPI_UNICODE, table.Put()), doing);
  TagArray columns{PR_SERVICE_NAME_W,     PR_DISPLAY_NAME_W, PR_PROVIDER_DISPLAY_W, PR_SERVICE_DLL_NAME_W,
                   PR_SERVICE_ENTRY_NAME, PR_SERVICE_UID,    PR_RESOURCE_FLAGS};
  std::vector<Service> services;
  ForEachRow(library, table.Get(), columns.Get(), doing, [&](const ValueView& row) {
    services.push_back({TextOf(row, PR_SERVICE_NAME_W), TextOf(row, PR_DISPLAY_NAME_W),
                        TextOf(row, PR_PROVIDER_DISPLAY_W), TextOf(row, PR_SERVICE_DLL_NAME_W),
                        TextOf(row, PR_SERVICE_ENTRY_NAME), BytesOf(row, PR_SERVICE_UID),
                        row.Number(PR_RESOURCE_FLAGS)});
    return true;
  });
  return services;
}

std::string QuotedProfile(const std::string& name) { return "profile '" + name + "'"; }

void ThrowNoProfile(const std::string& name, HRESULT result) {
  throw CommandError(kNotFound, "there is no " + QuotedProfile(name), result);
}

}  // namespace orvctl
