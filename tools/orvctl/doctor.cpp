// What is wrong with what is stored, line by line, and how it is mended. Reads only.
#include <algorithm>

#include "diag/names.h"
#include "tools/orvctl/administration.h"
#include "tools/orvctl/catalogue.h"
#include "tools/orvctl/commands.h"
#include "tools/orvctl/errors.h"

namespace orvctl {
namespace {

// As the library reads it: longer ones are left out.
constexpr size_t kLongestSection = size_t{1} << 20;

// One line: what was looked at and what came of it.
struct Finding {
  std::string check;
  std::string subject;
  std::string code = {};  // of what is wrong; empty: nothing is
  std::string detail = {};
  std::string fix = {};
};
using Findings = std::vector<Finding>;

void CheckCatalogue(const std::string& libraryName, Findings& findings) {
  Finding file{"catalogue", "Services"};
  for (const CatalogueSection& section : ReadCatalogueSections(libraryName)) {
    if (section.characters <= kLongestSection) continue;
    findings.push_back({"catalogue", section.name, "MAPI_E_TOO_BIG",
                        "the section has " + std::to_string(section.characters) +
                            " characters; one of more than 1048576 is left out with its service",
                        "shorten the section, or take it out of the catalogue"});
  }
  if (findings.empty()) findings.push_back(std::move(file));
}

void CheckProfile(const Library& library, const std::string& profile, Findings& findings) {
  const std::vector<Service> services = ReadServices(library, profile);
  findings.push_back({"profile", profile});
  for (const Service& service : services) {
    Finding finding{"service", profile + ": " + (service.name.empty() ? service.key : service.name)};
    if (FAILED(service.status)) {
      finding.code = diag::ResultName(static_cast<uint32_t>(service.status));
      finding.detail = "what is stored in the key '" + service.key +
                       "' is damaged; while it is there the profile may be refused";
      finding.fix = RemoveCommand(profile, service);
    }
    findings.push_back(std::move(finding));
  }
}

// A check that cannot be made is a finding too, and the others go on.
template <class Check>
void Try(const char* check, const std::string& subject, Findings& findings, Check run) {
  try {
    run();
  } catch (const CommandError& error) {
    if (error.exitCode() == kNotFound) return;
    const std::optional<HRESULT> result = error.result();
    findings.push_back({check, subject,
                        result ? diag::ResultName(static_cast<uint32_t>(*result)) : "MAPI_E_CALL_FAILED",
                        error.what(), ""});
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
  bool isWell = true;
  for (const Finding& each : findings) {
    isWell = isWell && each.code.empty();
    listing.rows.push_back(
        {each.check, each.subject, each.code.empty() ? "ok" : "error", each.code, each.detail, each.fix});
  }
  Report report = Report::Of(std::move(listing), "There is nothing to look at.");
  if (!isWell) report.messages.push_back({"problems were found", {}, kProblems});
  return report;
}

}  // namespace

Report Examine(const Library& library, const Options& options) {
  Findings findings;
  Try("catalogue", library.fileName(), findings, [&] { CheckCatalogue(library.fileName(), findings); });
  if (!options.profile.empty()) {
    CheckProfile(library, ProfileName(library, options.profile), findings);
    return ToReport(findings);
  }
  // One that goes meanwhile is nobody's concern.
  for (const Profile& profile : ReadProfiles(library)) {
    Try("profile", profile.name, findings, [&] { CheckProfile(library, profile.name, findings); });
  }
  return ToReport(findings);
}

}  // namespace orvctl
