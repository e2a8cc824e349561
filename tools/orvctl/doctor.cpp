// What is wrong with the installation and with what is stored, line by line, and how it is mended. Writes nothing
// unless it is told to.
#include "tools/orvctl/doctor.h"

#include <algorithm>
#include <memory>

#include "diag/names.h"
#include "tools/orvctl/commands.h"

namespace orvctl {
namespace {

using namespace doctor;

const char* StatusName(Status status) {
  return status == Status::kOk ? "ok" : status == Status::kWarning ? "warning" : "error";
}

// A check that cannot be made is a finding too, and the others go on. What goes meanwhile is nobody's concern.
template <class Check>
void Try(const char* check, const std::string& subject, Findings& findings, Check run) {
  try {
    run();
  } catch (const CommandError& error) {
    if (error.exitCode() == kNotFound) return;
    const auto code = static_cast<uint32_t>(error.result().value_or(MAPI_E_CALL_FAILED));
    findings.push_back({check, subject, Status::kError, diag::ResultName(code), error.what(), ""});
  }
}

// As the library dates what it moves.
std::string Today() {
  SYSTEMTIME now{};
  GetLocalTime(&now);
  const auto twoDigits = [](WORD number) { return std::to_string(100 + number).substr(1); };
  return std::to_string(now.wYear) + "-" + twoDigits(now.wMonth) + "-" + twoDigits(now.wDay);
}

// Every row that cannot be read goes where it harms nobody.
void Mend(const Library& library, const Findings& findings, std::vector<Message>& messages) {
  for (const Finding& finding : findings) {
    if (!finding.damage) continue;
    const auto& [profile, service] = *finding.damage;
    try {
      const std::string place = "Orv Damaged\\" + Today() + "\\" + profile + "\\" + service.key;
      SetAside(library, profile, service);
      messages.push_back({"mended: the service stored in the key '" + service.key + "' of " +
                          QuotedProfile(profile) + ", moved to the key '" + place +
                          "' beside that of the profiles (with a number behind it where that was taken); "
                          "add the service anew"});
    } catch (const CommandError& error) {
      messages.push_back({error.what(), {}, kProblems});
    }
  }
}

bool IsError(const Finding& finding) { return finding.status == Status::kError; }
bool IsDamage(const Finding& finding) { return finding.damage.has_value(); }

Report ToReport(const Findings& findings) {
  Listing listing{{{"check", "Check"},
                   {"subject", "Subject"},
                   {"status", "Status"},
                   {"code", "Code"},
                   {"detail", "Detail"},
                   {"fix", "Fix"}},
                  {}};
  for (const Finding& each : findings)
    listing.rows.push_back(
        {each.check, each.subject, StatusName(each.status), each.code, each.detail, each.fix});
  return Report::Of(std::move(listing), "There is nothing to look at.");
}

class Doctor {
 public:
  Doctor(const Options& options, std::vector<Message>& problems) : profile_(options.profile) {
    fileName_ = options.library.empty() ? DefaultLibraryName() : options.library;
    try {
      library_.emplace(fileName_, &problems);
    } catch (const CommandError& error) {
      reason_ = error;
    }
  }

  Findings Look() const {
    Findings findings;
    if (!library_) {
      CheckWithoutLibrary(fileName_, *reason_, findings);
      return findings;
    }
    const std::vector<std::string> profiles = LookAtNamed(findings);
    const Library& library = *library_;
    Try("library", fileName_, findings, [&] { CheckLibrary(library, findings); });
    Try("companions", fileName_, findings, [&] { CheckCompanions(library, findings); });
    Try("catalogue", fileName_, findings, [&] { CheckCatalogue(library, findings); });
    LookAtProfiles(profiles, findings);
    return findings;
  }

  // What it was is out by now; what is still wrong afterwards is told too, services included that could not be tried.
  std::vector<Message> MendAndLookAgain(const Findings& findings) const {
    std::vector<Message> messages;
    Mend(*library_, findings, messages);
    for (const Finding& each : Look()) {
      if (IsError(each))
        messages.push_back({"still wrong: " + each.check + " of " + each.subject + ", " + each.detail,
                            each.code, kProblems});
    }
    return messages;
  }

 private:
  // One that is not there is no finding, but with such a key nobody knows what is there.
  std::vector<std::string> LookAtNamed(Findings& findings) const {
    if (profile_.empty()) return {};
    bool areListed = false;
    Try("profiles", "the list", findings, [&] { areListed = CheckProfileKeys(*library_, findings); });
    if (!areListed) return profile_ == "-" ? std::vector<std::string>() : std::vector<std::string>{profile_};
    const std::string name = ProfileName(*library_, profile_);
    static_cast<void>(ReadServices(*library_, name));
    return {name};
  }

  void LookAtProfiles(std::vector<std::string> profiles, Findings& findings) const {
    const Library& library = *library_;
    if (profile_.empty())
      Try("profiles", "the list", findings, [&] { profiles = CheckProfileList(library, findings); });
    for (const std::string& profile : profiles)
      Try("profile", profile, findings, [&] { CheckProfile(library, profile, findings); });
  }

  const std::string profile_;
  std::string fileName_;
  std::optional<Library> library_;
  std::optional<CommandError> reason_;  // why there is no library
};

}  // namespace

// Nothing is moved before it was shown.
Report Examine(const Options& options, std::vector<Message>& problems) {
  const auto doctor = std::make_shared<const Doctor>(options, problems);
  const Findings findings = doctor->Look();
  Report report = ToReport(findings);
  if (options.fix && std::any_of(findings.begin(), findings.end(), IsDamage)) {
    report.afterwards = [doctor, findings] { return doctor->MendAndLookAgain(findings); };
  } else if (std::any_of(findings.begin(), findings.end(), IsError)) {
    report.messages.push_back({"problems were found", {}, kProblems});
  }
  return report;
}

}  // namespace orvctl
