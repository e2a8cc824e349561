// What is stored: the list of profiles, their rows, and whether each service can be used.
#include <algorithm>

#include "diag/names.h"
#include "tools/orvctl/doctor.h"
#include "tools/orvctl/service_trial.h"

namespace orvctl::doctor {
namespace {

// Several services of one name are told apart by their UIDs.
std::string SubjectOf(const std::string& profile, const Service& service, const std::vector<Service>& all) {
  const auto bearers =
      std::count_if(all.begin(), all.end(), [&](const Service& each) { return each.name == service.name; });
  return profile + ": " + service.name + (bearers > 1 ? " (" + ToHex(service.uid) + ")" : "");
}

Finding DamagedRow(const std::string& profile, const Service& service) {
  return {"service",
          profile + ": " + (service.name.empty() ? service.key : service.name),
          Status::kError,
          diag::ResultName(static_cast<uint32_t>(service.status)),
          "what is stored in the key '" + service.key +
              "' is damaged; while it is there the profile may be refused",
          "'orvctl doctor --fix' moves it aside; or " + RemoveCommand(profile, service),
          Damage{profile, service}};
}

void CheckService(const Library& library, const std::string& profile, const Service& service,
                  const std::string& subject, Findings& findings) {
  for (const TrialStep& step : TryService(library, profile, service)) {
    findings.push_back(
        {step.check, subject, static_cast<Status>(step.status), step.code, step.detail, step.fix});
  }
}

// The library refuses the settings of every service of such a profile.
void CheckFilesOnly(const Service& service, const std::string& subject, Findings& findings) {
  for (const TrialStep& step : ExamineLibrary(service.library, service.entryName)) {
    findings.push_back(
        {step.check, subject, static_cast<Status>(step.status), step.code, step.detail, step.fix});
  }
  findings.push_back({"logon", subject, Status::kWarning, "",
                      "not tried, since another service of the profile is damaged",
                      "mend the profile first"});
}

// Something of another program's among the profiles.
bool IsForeign(const std::string& profile) {
  return CompareStringOrdinal(ToWide(profile).c_str(), -1, L"WAB", -1, TRUE) == CSTR_EQUAL;
}

// What is stored as the default's name, which the library shows only where it fits a profile. Empty: nothing.
std::string StoredDefault(const Library& library) {
  WideString name(MAX_PATH, L'\0');
  auto size = static_cast<DWORD>(name.size() * sizeof(WCHAR));
  const LSTATUS read = RegGetValueW(HKEY_CURRENT_USER, ProfilesKey(library).c_str(), L"DefaultProfile",
                                    RRF_RT_REG_SZ, nullptr, name.data(), &size);
  return read == ERROR_SUCCESS ? ToUtf8(name.c_str()) : std::string();
}

Finding CheckDefault(const Library& library, const std::vector<Profile>& profiles) {
  const std::string stored = StoredDefault(library);
  const bool isRecognised =
      std::any_of(profiles.begin(), profiles.end(), [](const Profile& each) { return each.isDefault; });
  const char* const subject = "the default";
  if (isRecognised) return {"profiles", subject, Status::kOk, "", QuotedProfile(stored)};
  if (stored.empty()) return {"profiles", subject, Status::kOk, "", "there is none"};
  const bool isThere =
      std::any_of(profiles.begin(), profiles.end(), [&](const Profile& each) { return each.name == stored; });
  return {"profiles",
          subject,
          Status::kWarning,
          diag::ResultName(static_cast<uint32_t>(MAPI_E_NOT_FOUND)),
          "the default is " + QuotedProfile(stored) +
              (isThere ? ", whose name is too long to be recognised" : ", and there is none of that name"),
          "'orvctl profile default NAME' sets another, 'orvctl profile default --none' clears it"};
}

}  // namespace

bool CheckProfileKeys(const Library& library, Findings& findings) {
  const std::vector<std::string> overlong = FindOverlongProfiles(library);
  for (const std::string& name : overlong) {
    findings.push_back(
        {"profiles", name, Status::kError, diag::ResultName(static_cast<uint32_t>(MAPI_E_STRING_TOO_LONG)),
         "a key beside those of the profiles has a name of " + std::to_string(ToWide(name).size()) +
             " characters; while it is there no profile can be listed",
         "rename or export and delete the key with the registry editor"});
  }
  return overlong.empty();
}

std::vector<std::string> CheckProfileList(const Library& library, Findings& findings) {
  std::vector<std::string> names;
  if (!CheckProfileKeys(library, findings)) return names;
  const std::vector<Profile> profiles = ReadProfiles(library);
  for (const Profile& profile : profiles) {
    if (!IsForeign(profile.name)) names.push_back(profile.name);
  }
  findings.push_back({"profiles", "the list", Status::kOk, "", std::to_string(names.size()) + " profiles"});
  findings.push_back(CheckDefault(library, profiles));
  return names;
}

void CheckProfile(const Library& library, const std::string& profile, Findings& findings) {
  const std::vector<Service> services = ReadServices(library, profile);
  const auto isDamaged = [](const Service& service) { return FAILED(service.status); };
  const bool hasDamage = std::any_of(services.begin(), services.end(), isDamaged);
  findings.push_back({"profile", profile, Status::kOk, "", std::to_string(services.size()) + " services"});
  for (const Service& service : services) {
    if (isDamaged(service)) {
      findings.push_back(DamagedRow(profile, service));
    } else if (hasDamage) {
      CheckFilesOnly(service, SubjectOf(profile, service, services), findings);
    } else {
      CheckService(library, profile, service, SubjectOf(profile, service, services), findings);
    }
  }
}

}  // namespace orvctl::doctor
