#include "tools/orvctl/profile_state.h"

#include <algorithm>

#include "diag/names.h"
#include "tools/orvctl/book_settings.h"
#include "tools/orvctl/commands.h"
#include "tools/orvctl/container_choice.h"
#include "tools/orvctl/errors.h"
#include "tools/orvctl/new_contacts.h"
#include "tools/orvctl/service_choice.h"

namespace orvctl {
namespace {

Json DescribeContainer(const Book& book, const Container& container) {
  return {{"name", PlainNameOf(book, container)}, {"id", ToHex(container.entryId)}};
}

Json DescribeSettings(const std::vector<Setting>& settings, const std::string& service,
                      std::vector<Message>& messages) {
  Json described = Json::object();
  for (const Setting& setting : settings) {
    if (!setting.isSecret && setting.canBeSet) {
      described[setting.name] = setting.value.json;
      continue;
    }
    messages.push_back({"the setting " + setting.name + " of service '" + service + "' is left out, " +
                        (setting.isSecret ? "it is secret; set it again where the file is applied"
                                          : "a file cannot hold its type")});
  }
  return described;
}

Json DescribeService(const Library& library, const std::string& profile, const Service& service,
                     std::vector<Message>& messages) {
  return {{"service", service.name},
          {"library", service.library},
          {"displayName", service.displayName},
          {"uid", ToHex(service.uid)},
          {"settings", DescribeSettings(ReadSettings(library, profile, service), service.name, messages)}};
}

Json DescribeServices(const Library& library, const std::string& profile, std::vector<Message>& messages) {
  Json services = Json::array();
  for (const Service& service : ReadServices(library, profile)) {
    if (FAILED(service.status)) throw CommandError(kDamaged, DescribeUnreadable(profile, service));
    services.push_back(DescribeService(library, profile, service, messages));
  }
  return services;
}

// Where new ones go: what is stored, or also what is found without that.
enum class Contacts { kStored, kFound };

void DescribeBook(const Library& library, const std::string& profile, Contacts contacts, Json& described) {
  const Book book(library, profile);
  const std::vector<Container> containers = book.ReadContainers();
  const auto first = DefaultContainer(library, book, containers);
  if (first && (first->flags & AB_RECIPIENTS) != 0)
    described["defaultContainer"] = DescribeContainer(book, *first);
  const auto goTo =
      contacts == Contacts::kFound ? BookOfNewContacts(book, containers) : StoredBook(book, containers);
  if (goTo) described["newContacts"] = DescribeContainer(book, *goTo);
  for (const Container& container : SearchPath(library, book, containers)) {
    if ((container.flags & AB_RECIPIENTS) != 0)
      described["searchPath"].push_back(DescribeContainer(book, container));
  }
}

bool IsDefault(const Library& library, const std::string& profile) {
  const std::vector<Profile> all = ReadProfiles(library);
  return std::any_of(all.begin(), all.end(),
                     [&](const Profile& each) { return each.isDefault && each.name == profile; });
}

std::string NamesOf(const Json& containers) {
  std::string names;
  for (const Json& each : containers) names += (names.empty() ? "" : ", ") + each.value("name", "");
  return names;
}

Listing AsTable(const Json& profile) {
  Listing listing{{{"what", "What"}, {"value", "Value"}}, {}};
  listing.rows.push_back({"profile", profile.value("profile", "")});
  listing.rows.push_back({"default", profile.value("default", false) ? "yes" : "no"});
  for (const Json& service : profile.at("services")) {
    listing.rows.push_back(
        {"service", service.value("service", "") + " (" + service.value("library", "") + ")"});
    listing.rows.push_back({"  name", service.value("displayName", "")});
    listing.rows.push_back({"  UID", service.value("uid", "")});
    for (const auto& [name, value] : service.at("settings").items())
      listing.rows.push_back({"  " + name, value.is_string() ? value.get<std::string>() : value.dump()});
  }
  for (const auto& [key, title] :
       {std::pair("defaultContainer", "default container"), std::pair("newContacts", "new contacts")}) {
    const Json& container = profile.at(key);
    listing.rows.push_back({title, container.is_null() ? "" : container.value("name", "")});
  }
  listing.rows.push_back({"search path", NamesOf(profile.at("searchPath"))});
  return listing;
}

// Secret settings, and what else cannot be told, are left out, each with a message. Where the profile cannot be logged
// on to nothing is told of its address book.
Json DescribeProfile(const Library& library, const std::string& profile, Contacts contacts,
                     std::vector<Message>& messages) {
  if (!HasProfile(library, profile)) ThrowNoProfile(profile, MAPI_E_NOT_FOUND);
  Json described{{"format", kProfileFormat},
                 {"profile", profile},
                 {"default", IsDefault(library, profile)},
                 {"services", DescribeServices(library, profile, messages)},
                 {"defaultContainer", nullptr},
                 {"newContacts", nullptr},
                 {"searchPath", Json::array()}};
  try {
    DescribeBook(library, profile, contacts, described);
  } catch (const CommandError& error) {
    const std::string name = error.result() ? diag::ResultName(static_cast<uint32_t>(*error.result())) : "";
    messages.push_back({std::string(error.what()) + "; its default container and search path are not told",
                        name, kSomeFailed});
  }
  return described;
}

}  // namespace

// The address book's settings are the values of the profile's own key; what it finds by itself is not kept.
Json DescribeBookSettings(const Library& library, const std::string& profile) {
  const WideString key = ProfilesKey(library) + L"\\" + ToWide(profile);
  DWORD values = 0;
  HKEY opened = nullptr;
  if (RegOpenKeyExW(HKEY_CURRENT_USER, key.c_str(), 0, KEY_READ, &opened) != ERROR_SUCCESS) return nullptr;
  RegQueryInfoKeyW(opened, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &values, nullptr, nullptr,
                   nullptr, nullptr);
  RegCloseKey(opened);
  if (values == 0) return nullptr;
  Json described{{"profile", profile}, {"defaultContainer", nullptr}, {"searchPath", Json::array()}};
  DescribeBook(library, profile, Contacts::kStored, described);
  return described;
}

Report ShowProfile(const Library& library, const Options& options) {
  Report report;
  report.data =
      DescribeProfile(library, ProfileName(library, options.profile), Contacts::kFound, report.messages);
  report.listing = AsTable(report.data);
  report.isListing = true;
  return report;
}

// JSON whether that was asked for or not, since it is for a file.
Report ExportProfile(const Library& library, const Options& options) {
  Report report;
  report.data =
      DescribeProfile(library, ProfileName(library, options.profile), Contacts::kStored, report.messages);
  report.isFile = true;
  return report;
}

Report ShowService(const Library& library, const Options& options) {
  const Services services(library, options.profile);
  const Service& service = services.FindByPart(options.service);
  if (FAILED(service.status)) throw CommandError(kDamaged, DescribeUnreadable(services.profile, service));
  Report report = Report::Of({{{"setting", "Setting"}, {"value", "Value"}}, {}}, "");
  Json settings = Json::object();
  const auto add = [&](const char* name, Cell value) {
    report.listing.rows.push_back({name, std::move(value)});
  };
  add("service", service.name);
  add("name", service.displayName);
  add("provider", service.provider);
  add("library", service.library);
  add("entry function", service.entryName);
  add("flags", ResourceFlagNames(service.flags));
  add("UID", ToHex(service.uid));
  for (const Setting& setting : ReadSettings(library, services.profile, service)) {
    report.listing.rows.push_back({setting.name, setting.value});
    settings[setting.name] = setting.value.json;
  }
  report.data = {{"service", service.name},         {"name", service.displayName},
                 {"provider", service.provider},    {"library", service.library},
                 {"entryPoint", service.entryName}, {"flags", service.flags},
                 {"uid", ToHex(service.uid)},       {"settings", std::move(settings)}};
  return report;
}

}  // namespace orvctl
