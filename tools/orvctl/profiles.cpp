// Commands on profiles. Each works on an administration object of its own.
#include "tools/orvctl/administration.h"
#include "tools/orvctl/catalogue.h"
#include "tools/orvctl/commands.h"
#include "tools/orvctl/errors.h"

namespace orvctl {
namespace {

// What a refused new name means.
std::string WhyRefused(HRESULT result, const std::string& name) {
  if (result == MAPI_E_NO_ACCESS) return ", there is one called '" + name + "' in some spelling of case";
  const bool isBadName = result == MAPI_E_INVALID_PARAMETER || result == MAPI_E_STRING_TOO_LONG;
  return isBadName ? ", a name has 1 to 64 characters and no backslash" : std::string();
}

// For copy and rename, whose general failure may mean that there is nothing to copy.
void CheckNaming(const Library& library, HRESULT result, const std::string& old, const std::string& name,
                 const std::string& doing) {
  if (result == MAPI_E_CALL_FAILED && !HasProfile(library, old)) ThrowNoProfile(old, result);
  Check(result, doing + " " + QuotedProfile(old) + " to '" + name + "'" + WhyRefused(result, name));
}

Report ShowDefault(const Library& library) {
  Listing listing{{{"profile", "Profile"}}, {}};
  for (const Profile& profile : ReadProfiles(library)) {
    if (profile.isDefault) listing.rows.push_back({profile.name});
  }
  return Report::Of(std::move(listing), "There is no default profile.");
}

Report SetDefault(const Library& library, const std::string& name) {
  const HRESULT result = library.AdminProfiles()->SetDefaultProfile(ToWide(name).c_str(), MAPI_UNICODE);
  if (result == MAPI_E_NOT_FOUND) ThrowNoProfile(name, result);
  Check(result, "make " + QuotedProfile(name) + " the default");
  Report report = Report::Done("The default is now " + QuotedProfile(name) + ".");
  if (ShowDefault(library).listing.rows.empty())
    report.Warn("a name of that length is stored, but never recognised as the default");
  return report;
}

}  // namespace

Report ListProfiles(const Library& library, const Options&) {
  Listing listing{{{"profile", "Profile"}, {"default", "Default"}}, {}};
  for (const Profile& profile : ReadProfiles(library)) {
    listing.rows.push_back({profile.name, Cell::YesNo(profile.isDefault)});
  }
  return Report::Of(std::move(listing), "There are no profiles.");
}

Report CreateProfile(const Library& library, const Options& options) {
  const ULONG flags = MAPI_UNICODE | (options.defaultServices ? MAPI_DEFAULT_SERVICES : 0) |
                      (options.dialog ? MAPI_DIALOG : 0);
  const HRESULT result = library.AdminProfiles()->CreateProfile(ToWide(options.profile).c_str(), 0, flags);
  // An unreadable catalogue has a message of its own.
  if (result == MAPI_E_CALL_FAILED && options.defaultServices) ReadCatalogue(library.fileName());
  Check(result, "create " + QuotedProfile(options.profile) + WhyRefused(result, options.profile));
  return Report::Done("Created " + QuotedProfile(options.profile) + ".");
}

Report DeleteProfile(const Library& library, const Options& options) {
  const std::string name = ProfileName(library, options.profile);
  const HRESULT result = library.AdminProfiles()->DeleteProfile(ToWide(name).c_str(), MAPI_UNICODE);
  if (result == MAPI_E_NOT_FOUND) ThrowNoProfile(name, result);
  Check(result, "delete " + QuotedProfile(name));
  return Report::Done("Deleted " + QuotedProfile(name) + ".");
}

Report CopyProfile(const Library& library, const Options& options) {
  const std::string old = ProfileName(library, options.profile);
  const HRESULT result = library.AdminProfiles()->CopyProfile(ToWide(old).c_str(),
                                                              ToWide(options.newName).c_str(), MAPI_UNICODE);
  CheckNaming(library, result, old, options.newName, "copy");
  return Report::Done("Copied " + QuotedProfile(old) + " to '" + options.newName + "'.");
}

// The administration object must be fresh: one whose table was read to its end does not move the default along.
Report RenameProfile(const Library& library, const Options& options) {
  const std::string old = ProfileName(library, options.profile);
  const HRESULT result = library.AdminProfiles()->RenameProfile(
      ToWide(old).c_str(), ToWide(options.newName).c_str(), MAPI_UNICODE);
  CheckNaming(library, result, old, options.newName, "rename");
  return Report::Done("Renamed " + QuotedProfile(old) + " to '" + options.newName + "'.");
}

Report DefaultProfile(const Library& library, const Options& options) {
  if (!options.profile.empty()) return SetDefault(library, ProfileName(library, options.profile));
  if (!options.noDefault) return ShowDefault(library);
  const HRESULT result = library.AdminProfiles()->SetDefaultProfile(nullptr, MAPI_UNICODE);
  // The library cannot clear what is not set; then there is nothing to do.
  if (FAILED(result) && ShowDefault(library).listing.rows.empty()) return ShowDefault(library);
  Check(result, "clear the default profile");
  return Report::Done("There is no default profile now.");
}

}  // namespace orvctl
