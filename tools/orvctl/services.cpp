// Commands on the message services of a profile.
#include <algorithm>
#include <cstring>

#include "formats/text_codec.h"
#include "tools/orvctl/commands.h"
#include "tools/orvctl/errors.h"

namespace orvctl {
namespace {

struct Service {
  std::string name, displayName, provider, library, entryName;
  Bytes uid;
  ULONG flags = 0;
};

std::vector<Service> ReadServices(const Library& library, IABServiceAdmin* admin) {
  ComPtr<IMAPITable> table;
  Check(admin->GetMsgServiceTable(MAPI_UNICODE, table.Put()), "list the services");
  const std::vector<ULONG> columns = {PR_SERVICE_NAME_W,     PR_DISPLAY_NAME_W,     PR_PROVIDER_DISPLAY_W,
                                      PR_SERVICE_DLL_NAME_W, PR_SERVICE_ENTRY_NAME, PR_SERVICE_UID,
                                      PR_RESOURCE_FLAGS};
  std::vector<Service> services;
  library.ForEachRow(table.Get(), columns, [&](const SRow& row) {
    const auto text = [&](ULONG tag) { return StringOf(row.lpProps, row.cValues, tag); };
    services.push_back({text(PR_SERVICE_NAME_W), text(PR_DISPLAY_NAME_W), text(PR_PROVIDER_DISPLAY_W),
                        text(PR_SERVICE_DLL_NAME_W), text(PR_SERVICE_ENTRY_NAME),
                        BytesOf(row.lpProps, row.cValues, PR_SERVICE_UID),
                        NumberOf(row.lpProps, row.cValues, PR_RESOURCE_FLAGS, 0)});
    return true;
  });
  return services;
}

bool IsNamed(const Service& service, const std::string& wanted) {
  return service.name == wanted || service.displayName == wanted ||
         formats::EqualsFolded(ToHex(service.uid), wanted);
}

// An empty name means the only service. A name that two services bear must not hit the wrong one.
Service FindService(const Library& library, IABServiceAdmin* admin, const Options& options) {
  std::vector<Service> found = ReadServices(library, admin);
  if (!options.service.empty()) {
    found.erase(std::remove_if(found.begin(), found.end(),
                               [&](const Service& service) { return !IsNamed(service, options.service); }),
                found.end());
  }
  const std::string where = " in profile '" + options.profile + "'";
  if (found.empty()) {
    throw CommandError(
        kNotFound,
        (options.service.empty() ? "there is no service" : "there is no service '" + options.service + "'") +
            where);
  }
  if (found.size() > 1) {
    throw CommandError(kUsage,
                       std::to_string(found.size()) + " services fit" + where + "; name one by its UID");
  }
  return found.front();
}

MAPIUID ToUid(const Service& service) {
  MAPIUID uid = {};
  if (service.uid.size() != sizeof(uid))
    throw CommandError(kFailed, "service '" + service.name + "' has no UID");
  std::memcpy(&uid, service.uid.data(), sizeof(uid));
  return uid;
}

void Configure(IABServiceAdmin* admin, const Service& service, ULONG flags, std::vector<SPropValue> values) {
  const MAPIUID uid = ToUid(service);
  ComPtr<IProfSect> section;
  Check(admin->ConfigureMsgService(&uid, 0, MAPI_UNICODE | flags, static_cast<ULONG>(values.size()),
                                   values.empty() ? nullptr : values.data(), section.Put()),
        "configure service '" + service.name + "'");
}

}  // namespace

Report ListServices(const Library& library, const Options& options) {
  Listing listing{{{"service", "Service"},
                   {"displayName", "Name"},
                   {"provider", "Provider"},
                   {"library", "Library"},
                   {"entryPoint"},
                   {"flags", "Flags"},
                   {"uid", "UID"}},
                  {}};
  const ComPtr<IABServiceAdmin> admin = library.AdminServices(options.profile);
  for (const Service& service : ReadServices(library, admin.Get())) {
    listing.rows.push_back({service.name, service.displayName, service.provider, service.library,
                            service.entryName, Cell(ResourceFlagNames(service.flags), service.flags),
                            ToHex(service.uid)});
  }
  return Report::Of(std::move(listing), "The profile has no services.");
}

Report AddService(const Library& library, const Options& options) {
  const ComPtr<IABServiceAdmin> admin = library.AdminServices(options.profile);
  const WideString name = ToWide(options.service);
  const WideString displayName = options.displayName.empty() ? name : ToWide(options.displayName);
  const WideString config = ToWide(options.config.value_or(""));
  Check(admin->CreateMsgService(name.c_str(), displayName.c_str(), options.config ? config.c_str() : nullptr,
                                0, 0, MAPI_UNICODE),
        "add service '" + options.service + "'");
  return Report::Done("Added service '" + options.service + "' to profile '" + options.profile + "'.");
}

Report RemoveService(const Library& library, const Options& options) {
  const ComPtr<IABServiceAdmin> admin = library.AdminServices(options.profile);
  const Service service = FindService(library, admin.Get(), options);
  const MAPIUID uid = ToUid(service);
  Check(admin->DeleteMsgService(&uid), "remove service '" + service.name + "'");
  return Report::Done("Removed service '" + service.name + "' from profile '" + options.profile + "'.");
}

Report SetService(const Library& library, const Options& options) {
  const ComPtr<IABServiceAdmin> admin = library.AdminServices(options.profile);
  const Service service = FindService(library, admin.Get(), options);
  std::vector<OwnedValue> owned;
  if (options.config) owned.push_back(OwnedValue::String(PR_ORV_BOOK_FILE_W, *options.config));
  for (const std::string& property : options.properties) owned.push_back(OwnedValue::Parse(property).value());
  std::vector<SPropValue> values;
  for (OwnedValue& value : owned) values.push_back(value.Get());
  Configure(admin.Get(), service, options.dialog ? SERVICE_UI_ALWAYS : 0, std::move(values));
  return Report::Done("Configured service '" + service.name + "' of profile '" + options.profile + "'.");
}

}  // namespace orvctl
