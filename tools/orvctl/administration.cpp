#include "tools/orvctl/administration.h"

#include <algorithm>
#include <cstring>

#include "diag/names.h"
#include "tools/orvctl/errors.h"
#include "tools/orvctl/table.h"

namespace orvctl {

namespace {

// A key that is no profile's keeps all of them from being listed.
std::string WhyUnlisted(const Library& library) {
  try {
    const std::vector<std::string> names = FindOverlongProfiles(library);
    if (!names.empty())
      return ", the key '" + names.front() + "' beside theirs has a name of more than 64 characters";
  } catch (const CommandError&) {
  }
  return {};
}

}  // namespace

std::vector<Profile> ReadProfiles(const Library& library) {
  const std::string doing = "list the profiles";
  const ComPtr<IOrvProfAdmin> admin = library.AdminProfiles();
  ComPtr<IMAPITable> table;
  const HRESULT result = admin->GetProfileTable(MAPI_UNICODE, table.Put());
  Receive(table, result, doing + (FAILED(result) ? WhyUnlisted(library) : ""));
  TagArray columns{PR_DISPLAY_NAME_W, PR_DEFAULT_PROFILE};
  std::vector<Profile> profiles;
  ForEachRow(library, table.Get(), columns.Get(), doing, [&](const ValueView& row) {
    profiles.push_back({TextOf(row, PR_DISPLAY_NAME_W), row.Flag(PR_DEFAULT_PROFILE)});
    return true;
  });
  return profiles;
}

WideString ProfilesKey(const Library& library) {
  return L"Software\\Tovan\\Velmora\\" + ModelName(library.fileName()) + L" series\\Orv Profiles";
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

namespace {

// A value of the profile's key as it is stored: this, then the value's bytes.
struct CellHead {
  uint32_t length, dataSize, tag, padding, count, others[3];
};

}  // namespace

Bytes StoredId(const Library& library, const std::string& profile, ULONG tag) {
  const WideString key = ProfilesKey(library) + L"\\" + ToWide(profile), name = std::to_wstring(tag);
  DWORD size = 0;
  const auto read = [&](void* to) {
    return RegGetValueW(HKEY_CURRENT_USER, key.c_str(), name.c_str(), RRF_RT_REG_BINARY, nullptr, to, &size);
  };
  Bytes cell;
  if (read(nullptr) == ERROR_SUCCESS) cell.resize(size);
  CellHead head = {};
  if (cell.size() < sizeof(head) || read(cell.data()) != ERROR_SUCCESS || size != cell.size()) return {};
  std::memcpy(&head, cell.data(), sizeof(head));
  const bool fits =
      head.length == size && head.count <= head.dataSize && head.dataSize <= size - sizeof(head);
  if (head.tag != tag || !fits) return {};
  return Bytes(cell.begin() + sizeof(head), cell.begin() + sizeof(head) + head.count);
}

namespace {

template <class Interface>
ComPtr<Interface> AdminStored(const Library& library) {
  ComPtr<Interface> admin = library.AdminProfiles().template As<Interface>();
  if (!admin)
    throw CommandError(kNoLibrary, library.fileName() + " is too old to show what is stored of profiles");
  return admin;
}

ComPtr<IOrvProfAdmin2> AdminStoredServices(const Library& library) {
  return AdminStored<IOrvProfAdmin2>(library);
}

}  // namespace

std::string FindDamage(const Library& library, const std::string& profile) {
  for (const Service& service : ReadServices(library, profile)) {
    if (FAILED(service.status)) return ", " + DescribeUnreadable(profile, service);
  }
  return {};
}

std::vector<std::string> FindOverlongProfiles(const Library& library) {
  const std::string doing = "list what is stored of profiles";
  ComPtr<IMAPITable> table;
  Receive(table, AdminStored<IOrvProfAdmin3>(library)->GetStoredProfileTable(MAPI_UNICODE, table.Put()),
          doing);
  TagArray columns{PR_DISPLAY_NAME_W, PR_ORV_PROFILE_STATUS};
  std::vector<std::string> names;
  ForEachRow(library, table.Get(), columns.Get(), doing, [&](const ValueView& row) {
    if (row.Number(PR_ORV_PROFILE_STATUS) != 0) names.push_back(TextOf(row, PR_DISPLAY_NAME_W));
    return true;
  });
  return names;
}

void SetAside(const Library& library, const std::string& profile, const Service& service) {
  Check(AdminStored<IOrvProfAdmin3>(library)->SetAsideStoredService(
            ToWide(profile).c_str(), ToWide(service.key).c_str(), MAPI_UNICODE),
        "move the service stored in the key '" + service.key + "' aside");
}

ComPtr<IABServiceAdmin> OpenServices(const Library& library, const std::string& profile) {
  ComPtr<IABServiceAdmin> services;
  const HRESULT result =
      library.AdminProfiles()->AdminServices(ToWide(profile).c_str(), MAPI_UNICODE, services.Put());
  if (result == MAPI_E_NOT_FOUND) ThrowNoProfile(profile, result);
  const std::string damage = FAILED(result) ? FindDamage(library, profile) : "";
  const std::string doing = "read what is stored of the services of " + QuotedProfile(profile);
  if (!damage.empty()) throw CommandError(kDamaged, "cannot " + doing + damage, result);
  Receive(services, result, doing);
  return services;
}

std::vector<Service> ReadServices(const Library& library, const std::string& profile) {
  const std::string doing = "list the services of " + QuotedProfile(profile);
  ComPtr<IMAPITable> table;
  const HRESULT result =
      AdminStoredServices(library)->GetStoredServiceTable(ToWide(profile).c_str(), MAPI_UNICODE, table.Put());
  if (result == MAPI_E_NOT_FOUND) ThrowNoProfile(profile, result);
  Receive(table, result, doing);
  TagArray columns{PR_SERVICE_NAME_W,     PR_DISPLAY_NAME_W,     PR_PROVIDER_DISPLAY_W,
                   PR_SERVICE_DLL_NAME_W, PR_SERVICE_ENTRY_NAME, PR_SERVICE_UID,
                   PR_RESOURCE_FLAGS,     PR_ORV_SERVICE_KEY_W,  PR_ORV_SERVICE_STATUS};
  std::vector<Service> services;
  ForEachRow(library, table.Get(), columns.Get(), doing, [&](const ValueView& row) {
    services.push_back({TextOf(row, PR_SERVICE_NAME_W), TextOf(row, PR_DISPLAY_NAME_W),
                        TextOf(row, PR_PROVIDER_DISPLAY_W), TextOf(row, PR_SERVICE_DLL_NAME_W),
                        TextOf(row, PR_SERVICE_ENTRY_NAME), BytesOf(row, PR_SERVICE_UID),
                        row.Number(PR_RESOURCE_FLAGS), TextOf(row, PR_ORV_SERVICE_KEY_W),
                        static_cast<HRESULT>(row.Number(PR_ORV_SERVICE_STATUS))});
    return true;
  });
  return services;
}

void DeleteService(const Library& library, const std::string& profile, const Service& service) {
  const HRESULT result = AdminStoredServices(library)->DeleteStoredService(
      ToWide(profile).c_str(), ToWide(service.key).c_str(), MAPI_UNICODE);
  Check(result, "remove service '" + (service.name.empty() ? service.key : service.name) + "'");
}

std::string RemoveCommand(const std::string& profile, const Service& service) {
  return "orvctl service remove \"" + profile + "\" " + service.key;
}

std::string DescribeUnreadable(const std::string& profile, const Service& service) {
  return "the service stored in the key '" + service.key + "' cannot be read (" +
         diag::ResultName(static_cast<uint32_t>(service.status)) + "); 'orvctl doctor \"" + profile +
         "\" --fix' moves it aside, '" + RemoveCommand(profile, service) + "' takes it out";
}

std::string QuotedProfile(const std::string& name) { return "profile '" + name + "'"; }

void ThrowNoProfile(const std::string& name, HRESULT result) {
  throw CommandError(kNotFound, "there is no " + QuotedProfile(name), result);
}

}  // namespace orvctl
