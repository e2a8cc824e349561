// Why a service cannot be used: its library looked at file by file, then its logon alone, in a process of its own.
// Writes nothing: the provider is handed a copy of the service's settings, and what it saves there goes nowhere.
#pragma once

#include <string>
#include <vector>

#include "tools/orvctl/administration.h"

namespace orvctl {

struct TrialStep {
  enum class Status { kOk, kWarning, kError };

  // "file", "machine", "exports", "dependencies", "load", "entry", "logon", "containers", "book".
  std::string check;
  Status status = Status::kOk;
  std::string code = {};    // of the library or the platform
  std::string detail = {};  // what was seen, as the end of a sentence about the service
  std::string fix = {};
};
using TrialSteps = std::vector<TrialStep>;

// Reads files only; the last step is the first that fails.
TrialSteps ExamineLibrary(const std::string& fileName, const std::string& entryName);
// The same, then loads the library and logs on. Nobody else's row of the profile may be damaged.
TrialSteps TryService(const Library& library, const std::string& profile, const Service& service);

// The step that failed, as the end of "cannot add service 'X'": ", its library x.dll is made for x86, not x64"; empty
// when none did.
std::string DescribeFailure(const TrialSteps& steps);

}  // namespace orvctl
