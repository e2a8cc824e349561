// Commands on profiles. Each works on an administration object of its own.
#include <algorithm>

#include "diag/names.h"
#include "tools/orvctl/administration.h"
#include "tools/orvctl/catalogue.h"
#include "tools/orvctl/commands.h"
#include "tools/orvctl/errors.h"
#include "tools/orvctl/profile_state.h"
#include "tools/orvctl/service_trial.h"

namespace orvctl {
namespace {

// The profile that a new one of this name would collide with, whatever the case of its letters.
std::string FindSpelling(const Library& library, const std::string& name) {
  for (const Profile& profile : ReadProfiles(library)) {
    const bool isSame =
        CompareStringOrdinal(ToWide(profile.name).c_str(), -1, ToWide(name).c_str(), -1, TRUE) == CSTR_EQUAL;
    if (isSame) return profile.name;
  }
  return {};
}

// What a refused new name means.
std::string WhyRefused(const Library& library, HRESULT result, const std::string& name) {
  const bool isBadName = result == MAPI_E_INVALID_PARAMETER || result == MAPI_E_STRING_TOO_LONG;
  if (isBadName) return ", a name has 1 to 31 characters and no backslash";
  if (result != MAPI_E_NO_ACCESS) return {};
  const std::string taken = FindSpelling(library, name);
  if (taken.empty() || taken == name) return ", there is one called '" + name + "' already";
  return ", there is one called '" + taken + "', the same but for the case of its letters";
}

void CheckNew(const Library& library, HRESULT result, const std::string& doing, const std::string& name) {
  if (SUCCEEDED(result)) return;
  const std::string text = doing + WhyRefused(library, result, name);
  if (result == MAPI_E_NO_ACCESS) throw CommandError(kConflict, "cannot " + text, result);
  Check(result, text);
}

// For copy and rename, whose general failure may mean that there is nothing to copy, or nothing that can be read.
void CheckNaming(const Library& library, HRESULT result, const std::string& old, const std::string& name,
                 const std::string& doing) {
  if (result == MAPI_E_CALL_FAILED && !HasProfile(library, old)) ThrowNoProfile(old, result);
  const bool isOfName = result == MAPI_E_NO_ACCESS || result == MAPI_E_STRING_TOO_LONG;
  const std::string damage = FAILED(result) && !isOfName ? FindDamage(library, old) : "";
  const std::string what = doing + " " + QuotedProfile(old) + " to '" + name + "'";
  if (!damage.empty()) throw CommandError(kDamaged, "cannot " + what + damage, result);
  CheckNew(library, result, what, name);
}

Json Changed(const std::string& profile, bool isChanged) {
  return {{"profile", profile}, {"changed", isChanged}};
}

// "-" stays as it is where there is no default profile.
std::string ProfileNameIfAny(const Library& library, const std::string& given) {
  const std::vector<Profile> all = ReadProfiles(library);
  const auto found = std::find_if(all.begin(), all.end(), [](const Profile& each) { return each.isDefault; });
  return given == "-" && found != all.end() ? found->name : given;
}

std::string FreeName(const Library& library) {
  std::string name = "renaming " + std::to_string(GetCurrentProcessId());
  while (!FindSpelling(library, name).empty()) name += "~";
  return name;
}

bool CanBeName(const std::string& name) {
  const WideString wide = ToWide(name);
  return !wide.empty() && wide.size() <= ORV_MAX_PROFILE_NAME && wide.find(L'\\') == WideString::npos;
}

// What copying or renaming would answer, as far as it can be told.
Report WouldName(const Library& library, const std::string& old, const std::string& name,
                 const std::string& doing) {
  if (!HasProfile(library, old)) ThrowNoProfile(old, MAPI_E_NOT_FOUND);
  const std::string what = doing + " " + QuotedProfile(old) + " to '" + name + "'";
  const std::string taken = FindSpelling(library, name);
  const bool isItself = doing == "rename" && taken == old && name != old;
  if (!taken.empty() && !isItself) CheckNew(library, MAPI_E_NO_ACCESS, what, name);
  if (!CanBeName(name)) CheckNew(library, MAPI_E_INVALID_PARAMETER, what, name);
  return Report::Done("Would " + what + ".", Changed(old, true));
}

// The library answers for the catalogue with codes that could be about the name too.
void CheckDefaultServices(const Library& library, HRESULT result, const std::string& name) {
  if (SUCCEEDED(result) || result == MAPI_E_NO_ACCESS || result == MAPI_E_USER_CANCEL || !CanBeName(name))
    return;
  const Catalogue catalogue = ReadCatalogue(library);
  std::string why;
  for (const CatalogueFault& fault : catalogue.faults) {
    if (fault.RefusesList()) why += "; " + fault.Describe();
  }
  const bool hasDefaults = std::any_of(catalogue.services.begin(), catalogue.services.end(),
                                       [](const OfferedService& each) { return each.isDefault; });
  if (why.empty() && !hasDefaults) why = "; it has no section [Default Services], or nothing in it";
  if (why.empty()) return;
  throw CommandError(kFailed,
                     "cannot create " + QuotedProfile(name) + " with the default services of the catalogue " +
                         catalogue.file + why,
                     result);
}

// Services that a new profile lacks, or has in vain.
void WarnOfLeftOut(const Library& library, Report& report) {
  const Catalogue catalogue = ReadCatalogue(library);
  for (const CatalogueFault& fault : catalogue.faults)
    report.Warn(catalogue.file + ", " + fault.Describe(),
                diag::ResultName(static_cast<uint32_t>(fault.status)));
  for (const OfferedService& service : catalogue.services) {
    const std::string why =
        service.isDefault ? DescribeFailure(ExamineLibrary(service.library, service.entryName)) : "";
    if (!why.empty()) report.Warn("service '" + service.name + "' cannot work" + why);
  }
}

// What the address book keeps for a profile does not go with its services when they are copied. Whoever makes a profile
// of another one carries it over; that it cannot be is no reason not to copy.
class BookSettings {
 public:
  BookSettings(const Library& library, const std::string& profile) : library_(library) {
    Try([&] { settings_ = DescribeBookSettings(library, profile); });
  }

  void GoTo(const std::string& profile, Report& report) {
    if (settings_.is_object()) Try([&] { ApplyBookSettings(library_, profile, settings_, messages_); });
    for (Message& message : messages_) report.messages.push_back(std::move(message));
  }

 private:
  template <class Action>
  void Try(Action action) {
    try {
      action();
    } catch (const CommandError& error) {
      messages_.push_back(
          {std::string("its default container and search path are not carried over: ") + error.what()});
    }
  }

  const Library& library_;
  Json settings_ = nullptr;
  std::vector<Message> messages_;
};

// A name that differs from the old one in case alone is taken by the old one itself.
HRESULT Rename(const Library& library, const std::string& old, const std::string& name) {
  const auto rename = [&](const std::string& from, const std::string& to) {
    // The administration object must be fresh: one whose table was read to its end does not move the default along.
    return library.AdminProfiles()->RenameProfile(ToWide(from).c_str(), ToWide(to).c_str(), MAPI_UNICODE);
  };
  if (name == old || FindSpelling(library, name) != old) return rename(old, name);
  const std::string between = FreeName(library);
  HRESULT result = rename(old, between);
  if (FAILED(result)) return result;
  result = rename(between, name);
  if (FAILED(result)) rename(between, old);
  return result;
}

Report ShowDefault(const Library& library) {
  Listing listing{{{"profile", "Profile"}}, {}};
  for (const Profile& profile : ReadProfiles(library)) {
    if (profile.isDefault) listing.rows.push_back({profile.name});
  }
  return Report::Of(std::move(listing), "There is no default profile.");
}

Report SetDefault(const Library& library, const std::string& name, bool isDryRun) {
  if (isDryRun && !HasProfile(library, name)) ThrowNoProfile(name, MAPI_E_NOT_FOUND);
  if (isDryRun)
    return Report::Done("Would make " + QuotedProfile(name) + " the default.", Changed(name, true));
  const HRESULT result = library.AdminProfiles()->SetDefaultProfile(ToWide(name).c_str(), MAPI_UNICODE);
  if (result == MAPI_E_NOT_FOUND) ThrowNoProfile(name, result);
  Check(result, "make " + QuotedProfile(name) + " the default");
  Report report = Report::Done("The default is now " + QuotedProfile(name) + ".", Changed(name, true));
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
  const bool asks = options.ifMissing || options.dryRun;
  const std::string there = asks ? FindSpelling(library, options.profile) : "";
  if (!there.empty() && options.ifMissing)
    return Report::Done("There is " + QuotedProfile(there) + " already.", Changed(there, false));
  if (!there.empty())
    CheckNew(library, MAPI_E_NO_ACCESS, "create " + QuotedProfile(options.profile), options.profile);
  if (options.dryRun && !CanBeName(options.profile))
    CheckNew(library, MAPI_E_INVALID_PARAMETER, "create " + QuotedProfile(options.profile), options.profile);
  if (options.dryRun)
    return Report::Done("Would create " + QuotedProfile(options.profile) + ".",
                        Changed(options.profile, true));
  const ULONG flags = MAPI_UNICODE | (options.defaultServices ? MAPI_DEFAULT_SERVICES : 0) |
                      (options.dialog ? MAPI_DIALOG : 0);
  const HRESULT result = library.AdminProfiles()->CreateProfile(ToWide(options.profile).c_str(), 0, flags);
  if (options.defaultServices) CheckDefaultServices(library, result, options.profile);
  CheckNew(library, result, "create " + QuotedProfile(options.profile), options.profile);
  Report report =
      Report::Done("Created " + QuotedProfile(options.profile) + ".", Changed(options.profile, true));
  if (options.defaultServices) WarnOfLeftOut(library, report);
  return report;
}

Report DeleteProfile(const Library& library, const Options& options) {
  const std::string name =
      options.ifExists ? ProfileNameIfAny(library, options.profile) : ProfileName(library, options.profile);
  const bool isMissing = (options.ifExists || options.dryRun) && !HasProfile(library, name);
  if (isMissing && options.ifExists)
    return Report::Done("There is no such profile.", Changed(options.profile, false));
  if (isMissing) ThrowNoProfile(name, MAPI_E_NOT_FOUND);
  if (options.dryRun) return Report::Done("Would delete " + QuotedProfile(name) + ".", Changed(name, true));
  const HRESULT result = library.AdminProfiles()->DeleteProfile(ToWide(name).c_str(), MAPI_UNICODE);
  if (result == MAPI_E_NOT_FOUND) ThrowNoProfile(name, result);
  Check(result, "delete " + QuotedProfile(name));
  return Report::Done("Deleted " + QuotedProfile(name) + ".", Changed(name, true));
}

Report CopyProfile(const Library& library, const Options& options) {
  const std::string old = ProfileName(library, options.profile);
  if (options.dryRun) return WouldName(library, old, options.newName, "copy");
  BookSettings settings(library, old);
  const HRESULT result = library.AdminProfiles()->CopyProfile(ToWide(old).c_str(),
                                                              ToWide(options.newName).c_str(), MAPI_UNICODE);
  CheckNaming(library, result, old, options.newName, "copy");
  Report report = Report::Done("Copied " + QuotedProfile(old) + " to '" + options.newName + "'.",
                               Changed(options.newName, true));
  settings.GoTo(options.newName, report);
  return report;
}

Report RenameProfile(const Library& library, const Options& options) {
  const std::string old = ProfileName(library, options.profile);
  if (options.dryRun) return WouldName(library, old, options.newName, "rename");
  BookSettings settings(library, old);
  const HRESULT result = Rename(library, old, options.newName);
  CheckNaming(library, result, old, options.newName, "rename");
  Report report = Report::Done("Renamed " + QuotedProfile(old) + " to '" + options.newName + "'.",
                               Changed(options.newName, true));
  settings.GoTo(options.newName, report);
  return report;
}

Report DefaultProfile(const Library& library, const Options& options) {
  if (!options.profile.empty())
    return SetDefault(library, ProfileName(library, options.profile), options.dryRun);
  if (!options.noDefault) return ShowDefault(library);
  if (options.dryRun)
    return Report::Done("Would leave no default profile.",
                        {{"changed", !ShowDefault(library).listing.rows.empty()}});
  const HRESULT result = library.AdminProfiles()->SetDefaultProfile(nullptr, MAPI_UNICODE);
  // The library cannot clear what is not set; then there is nothing to do.
  if (FAILED(result) && ShowDefault(library).listing.rows.empty()) return ShowDefault(library);
  Check(result, "clear the default profile");
  return Report::Done("There is no default profile now.");
}

}  // namespace orvctl
