// What the doctor finds, line by line, and the parts of the system that he looks at.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/orvctl/administration.h"
#include "tools/orvctl/errors.h"

namespace orvctl::doctor {

enum class Status { kOk, kWarning, kError };

// A row of a profile that cannot be read, which can be moved to where it harms nobody.
struct Damage {
  std::string profile;
  Service service;
};

// One line: what was looked at and what came of it.
struct Finding {
  std::string check;
  std::string subject;
  Status status = Status::kOk;
  std::string code = {};
  std::string detail = {};
  std::string fix = {};
  std::optional<Damage> damage = {};
};
using Findings = std::vector<Finding>;

// What can be said of an installation whose library cannot be loaded, for the reason given.
void CheckWithoutLibrary(const std::string& fileName, const CommandError& reason, Findings& findings);
void CheckLibrary(const Library& library, Findings& findings);
void CheckCompanions(const Library& library, Findings& findings);
void CheckCatalogue(const Library& library, Findings& findings);
// True where no key beside those of the profiles keeps them from being listed.
bool CheckProfileKeys(const Library& library, Findings& findings);
// The names of all profiles; none where they cannot be listed.
std::vector<std::string> CheckProfileList(const Library& library, Findings& findings);
// What is stored of it, then each service.
void CheckProfile(const Library& library, const std::string& profile, Findings& findings);

}  // namespace orvctl::doctor
