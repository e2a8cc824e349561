// Commands on profiles. Each works on an administration object of its own.
#include "tools/orvctl/commands.h"
#include "tools/orvctl/errors.h"

namespace orvctl {
namespace {

struct Profile {
  std::string name;
  bool isDefault = false;
};

std::vector<Profile> ReadProfiles(const Library& library) {
  const ComPtr<IOrvProfAdmin> admin = library.AdminProfiles();
  ComPtr<IMAPITable> table;
  Check(admin->GetProfileTable(MAPI_UNICODE, table.Put()), "list the profiles");
  std::vector<Profile> profiles;
  library.ForEachRow(table.Get(), {PR_DISPLAY_NAME_W, PR_DEFAULT_PROFILE}, [&](const SRow& row) {
    const SPropValue* isDefault = FindValue(row.lpProps, row.cValues, PR_DEFAULT_PROFILE);
    profiles.push_back(
        {StringOf(row.lpProps, row.cValues, PR_DISPLAY_NAME_W), isDefault && isDefault->Value.b});
    return true;
  });
  return profiles;
}

std::string Quoted(const std::string& name) { return "profile '" + name + "'"; }

}  // namespace

Report ListProfiles(const Library& library) {
  Listing listing{{{"profile", "Profile"}, {"default", "Default"}}, {}};
  for (const Profile& profile : ReadProfiles(library)) {
    listing.rows.push_back({profile.name, Cell::YesNo(profile.isDefault)});
  }
  return Report::Of(std::move(listing), "There are no profiles.");
}

Report CreateProfile(const Library& library, const Options& options) {
  const ULONG flags = MAPI_UNICODE | (options.defaultServices ? MAPI_DEFAULT_SERVICES : 0) |
                      (options.dialog ? MAPI_DIALOG : 0);
  Check(library.AdminProfiles()->CreateProfile(ToWide(options.profile).c_str(), 0, flags),
        "create " + Quoted(options.profile));
  return Report::Done("Created " + Quoted(options.profile) + ".");
}

Report DeleteProfile(const Library& library, const Options& options) {
  Check(library.AdminProfiles()->DeleteProfile(ToWide(options.profile).c_str(), MAPI_UNICODE),
        "delete " + Quoted(options.profile));
  return Report::Done("Deleted " + Quoted(options.profile) + ".");
}

Report CopyProfile(const Library& library, const Options& options) {
  Check(library.AdminProfiles()->CopyProfile(ToWide(options.profile).c_str(), ToWide(options.newName).c_str(),
                                             MAPI_UNICODE),
        "copy " + Quoted(options.profile) + " to '" + options.newName + "'");
  return Report::Done("Copied " + Quoted(options.profile) + " to '" + options.newName + "'.");
}

// The administration object must be fresh: one whose table was read to its end does not move the default along.
Report RenameProfile(const Library& library, const Options& options) {
  Check(library.AdminProfiles()->RenameProfile(ToWide(options.profile).c_str(),
                                               ToWide(options.newName).c_str(), MAPI_UNICODE),
        "rename " + Quoted(options.profile) + " to '" + options.newName + "'");
  return Report::Done("Renamed " + Quoted(options.profile) + " to '" + options.newName + "'.");
}

Report DefaultProfile(const Library& library, const Options& options) {
  if (options.noDefault) {
    Check(library.AdminProfiles()->SetDefaultProfile(nullptr, MAPI_UNICODE), "clear the default profile");
    return Report::Done("There is no default profile now.");
  }
  if (!options.profile.empty()) {
    Check(library.AdminProfiles()->SetDefaultProfile(ToWide(options.profile).c_str(), MAPI_UNICODE),
          "make " + Quoted(options.profile) + " the default");
    return Report::Done("The default is now " + Quoted(options.profile) + ".");
  }
  Listing listing{{{"profile", "Profile"}}, {}};
  for (const Profile& profile : ReadProfiles(library)) {
    if (profile.isDefault) listing.rows.push_back({profile.name});
  }
  return Report::Of(std::move(listing), "There is no default profile.");
}

}  // namespace orvctl
