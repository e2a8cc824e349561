// Commands on the message services of a profile.
#include <algorithm>
#include <cstring>

#include "diag/names.h"
#include "formats/text_codec.h"
#include "tools/orvctl/administration.h"
#include "tools/orvctl/catalogue.h"
#include "tools/orvctl/commands.h"
#include "tools/orvctl/errors.h"

namespace orvctl {
namespace {

bool IsNamed(const Service& service, const std::string& wanted) {
  return service.name == wanted || service.displayName == wanted ||
         formats::EqualsFolded(ToHex(service.uid), wanted) || formats::EqualsFolded(service.key, wanted);
}

[[noreturn]] void ThrowNoService(const std::string& wanted, const std::string& profile) {
  const std::string name = wanted.empty() ? "" : " '" + wanted + "'";
  throw CommandError(kNotFound, "there is no service" + name + " in " + QuotedProfile(profile));
}

// A profile's services, to be changed.
struct Services {
  Services(const Library& library, const Options& options)
      : profile(ProfileName(library, options.profile)), all(ReadServices(library, profile)) {}

  // An empty name means the only service. A name that two services bear must not hit the wrong one.
  const Service& Find(const std::string& wanted) const {
    const auto isWanted = [&](const Service& each) { return wanted.empty() || IsNamed(each, wanted); };
    const auto fit = std::count_if(all.begin(), all.end(), isWanted);
    if (fit == 0) ThrowNoService(wanted, profile);
    if (fit == 1) return *std::find_if(all.begin(), all.end(), isWanted);
    throw CommandError(kUsage, std::to_string(fit) + " services fit in " + QuotedProfile(profile) +
                                   "; name one by its UID, which 'orvctl service list' shows");
  }

  std::string profile;
  std::vector<Service> all;
};

MAPIUID ToUid(const Service& service) {
  MAPIUID uid = {};
  if (service.uid.size() != sizeof(uid))
    throw CommandError(kFailed, "service '" + service.name + "' has no UID");
  std::memcpy(&uid, service.uid.data(), sizeof(uid));
  return uid;
}

// The library answers alike for a service that it does not know, a library file that is missing and a configuration
// that the service refuses; the catalogue tells them apart.
[[noreturn]] void ThrowNotAdded(const Library& library, const Options& options, HRESULT result) {
  const std::vector<OfferedService> offered = ReadCatalogue(library.fileName());
  const auto known = std::find_if(offered.begin(), offered.end(),
                                  [&](const OfferedService& each) { return each.name == options.service; });
  const std::string quoted = "service '" + options.service + "'";
  if (known == offered.end()) {
    throw CommandError(kNotFound,
                       "there is no " + quoted + " in the catalogue; 'orvctl service available' lists it",
                       result);
  }
  if (!IsInOwnFolder(known->library)) {
    throw CommandError(kFailed, "cannot add " + quoted + ", its library " + known->library + " is missing",
                       result);
  }
  const std::string config = options.config ? ", with the configuration '" + *options.config + "'" : "";
  throw CommandError(kFailed, "cannot add " + quoted + config, result);
}

void Configure(IABServiceAdmin* admin, const Service& service, ULONG flags, std::vector<SPropValue> values) {
  const MAPIUID uid = ToUid(service);
  ComPtr<IProfSect> section;
  Check(admin->ConfigureMsgService(&uid, 0, MAPI_UNICODE | flags, static_cast<ULONG>(values.size()),
                                   values.empty() ? nullptr : values.data(), section.Put()),
        "configure service '" + service.name + "'");
}

// What is stored is read in some other folder, so a path counts from where the user is now.
WideString FullPath(const WideString& path) {
  if (path.empty()) return path;
  WideString full(GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), L'\0');
  full.resize(GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
  return full.empty() ? path : full;
}

// Only the service itself knows whether it needs a file that is there, so one that is not is no failure.
void WarnOfMissing(const WideString& path, Report& report) {
  if (path.empty() || GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES) return;
  const DWORD error = GetLastError();
  report.Warn("cannot find " + ToUtf8(path), diag::SystemErrorName(error));
}

// A service that is given another UID could not be found again.
void RefuseIdentity(OwnedValue value) {
  if (PROP_ID(value.Get().ulPropTag) != PROP_ID(PR_SERVICE_UID)) return;
  throw CommandError(kUsage, "PR_SERVICE_UID names the service in its profile and cannot be set");
}

}  // namespace

Report ListServices(const Library& library, const Options& options) {
  Listing listing{{{"service", "Service"},
                   {"displayName", "Name"},
                   {"provider", "Provider"},
                   {"library", "Library"},
                   {"entryPoint"},
                   {"flags", "Flags"},
                   {"uid", "UID"},
                   {"key"},
                   {"status"}},
                  {}};
  const Services services(library, options);
  for (const Service& service : services.all) {
    const bool isRead = SUCCEEDED(service.status);
    const std::string uid = ToHex(service.uid);
    listing.rows.push_back({Cell(isRead ? service.name : "(cannot be read)", service.name),
                            service.displayName, service.provider, service.library, service.entryName,
                            Cell(ResourceFlagNames(service.flags), service.flags),
                            Cell(isRead ? uid : service.key, uid), service.key,
                            diag::ResultName(static_cast<uint32_t>(service.status))});
  }
  Report report = Report::Of(std::move(listing), "The profile has no services.");
  for (const Service& service : services.all) {
    if (FAILED(service.status)) report.Warn(DescribeUnreadable(services.profile, service));
  }
  return report;
}

Report AddService(const Library& library, const Options& options) {
  const std::string profile = ProfileName(library, options.profile);
  const ComPtr<IABServiceAdmin> admin = OpenServices(library, profile);
  const WideString name = ToWide(options.service);
  const WideString displayName = options.displayName.empty() ? name : ToWide(options.displayName);
  const WideString config = ToWide(options.config.value_or(""));
  const HRESULT result = admin->CreateMsgService(
      name.c_str(), displayName.c_str(), options.config ? config.c_str() : nullptr, 0, 0, MAPI_UNICODE);
  if (result == MAPI_E_COLLISION) Check(result, "add service '" + options.service + "' a second time");
  if (FAILED(result) && result != MAPI_E_USER_CANCEL) ThrowNotAdded(library, options, result);
  Check(result, "add service '" + options.service + "'");
  return Report::Done("Added service '" + options.service + "' to " + QuotedProfile(profile) + ".");
}

Report RemoveService(const Library& library, const Options& options) {
  const Services services(library, options);
  const Service& service = services.Find(options.service);
  DeleteService(library, services.profile, service);
  const std::string& name = service.name.empty() ? service.key : service.name;
  return Report::Done("Removed service '" + name + "' from " + QuotedProfile(services.profile) + ".");
}

Report SetService(const Library& library, const Options& options) {
  const Services services(library, options);
  const Service& service = services.Find(options.service);
  std::vector<OwnedValue> owned;
  for (const std::string& property : options.properties) RefuseIdentity(OwnedValue::Parse(property).value());
  const WideString path = FullPath(ToWide(options.config.value_or("")));
  if (options.config) owned.push_back(OwnedValue::String(PR_ORV_BOOK_FILE_W, ToUtf8(path)));
  for (const std::string& property : options.properties) owned.push_back(OwnedValue::Parse(property).value());
  std::vector<SPropValue> values;
  for (OwnedValue& value : owned) values.push_back(value.Get());
  const ComPtr<IABServiceAdmin> admin = OpenServices(library, services.profile);
  Configure(admin.Get(), service, options.dialog ? SERVICE_UI_ALWAYS : 0, std::move(values));
  Report report =
      Report::Done("Configured service '" + service.name + "' of " + QuotedProfile(services.profile) + ".");
  WarnOfMissing(path, report);
  return report;
}

}  // namespace orvctl
