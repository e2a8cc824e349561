// What is wrong with the installation and with what is stored, line by line, and how it is mended. Writes nothing
// unless it is told to.
#include "tools/orvctl/doctor.h"

#include <algorithm>

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

// Every row that cannot be read goes where it harms nobody; what does not work stays a finding.
void Mend(const Library& library, Findings& findings, std::vector<Message>& messages) {
  for (Finding& finding : findings) {
    if (!finding.damage) continue;
    const auto& [profile, service] = *finding.damage;
    const std::string what =
        "the service stored in the key '" + service.key + "' of " + QuotedProfile(profile);
    try {
      SetAside(library, profile, service);
      finding.status = Status::kWarning;
      finding.fix = "moved to the key 'Orv Damaged' beside that of the profiles; add the service anew";
      messages.push_back({"mended: " + what + " was moved to the key 'Orv Damaged'"});
    } catch (const CommandError& error) {
      messages.push_back({error.what(), {}, kProblems});
    }
  }
}

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
  Report report = Report::Of(std::move(listing), "There is nothing to look at.");
  const bool hasErrors = std::any_of(findings.begin(), findings.end(),
                                     [](const Finding& each) { return each.status == Status::kError; });
  if (hasErrors) report.messages.push_back({"problems were found", {}, kProblems});
  return report;
}

}  // namespace

Report Examine(const Library& library, const Options& options) {
  Findings findings;
  std::vector<std::string> profiles;
  if (!options.profile.empty()) {
    profiles = {ProfileName(library, options.profile)};
    // One that is not there is no finding.
    static_cast<void>(ReadServices(library, profiles.front()));
  }
  Try("library", library.fileName(), findings, [&] { CheckLibrary(library, findings); });
  Try("companions", library.fileName(), findings, [&] { CheckCompanions(library, findings); });
  Try("catalogue", library.fileName(), findings, [&] { CheckCatalogue(library, findings); });
  if (options.profile.empty()) {
    Try("profiles", "the list", findings, [&] { profiles = CheckProfileList(library, findings); });
  }
  for (const std::string& profile : profiles)
    Try("profile", profile, findings, [&] { CheckProfile(library, profile, findings); });
  std::vector<Message> mended;
  if (options.fix) Mend(library, findings, mended);
  Report report = ToReport(findings);
  report.messages.insert(report.messages.begin(), mended.begin(), mended.end());
  return report;
}

}  // namespace orvctl
