#include "tools/orvctl/service_trial.h"

#include <algorithm>
#include <chrono>

#include "diag/names.h"
#include "tools/orvctl/dependencies.h"
#include "tools/orvctl/host.h"
#include "tools/orvctl/lone_logon.h"

namespace orvctl {
namespace {

using Status = TrialStep::Status;

constexpr TimeLimit kTrialLimit{std::chrono::seconds(10), std::chrono::seconds(20)};

// A step that says how the service fails, in the platform's number for it.
TrialStep Failing(const char* check, DWORD error, std::string detail, std::string fix) {
  return {check, Status::kError, diag::SystemErrorName(error), std::move(detail), std::move(fix)};
}

bool IsBareName(const std::string& name) {
  return !name.empty() && name != "." && name != ".." && name.find_first_of("\\/:") == std::string::npos;
}

class LibraryLook {
 public:
  LibraryLook(const std::string& fileName, const std::string& entryName)
      : name_(fileName), entry_(entryName), path_(OwnFolder() + ToWide(fileName)) {}

  TrialSteps Look() {
    for (const auto step : {&LibraryLook::LookAtFile, &LibraryLook::LookAtMachine,
                            &LibraryLook::LookAtExports, &LibraryLook::LookAtDependencies}) {
      Add((this->*step)());
      if (steps_.back().status == Status::kError) break;
    }
    return std::move(steps_);
  }

 private:
  // A later look at the same says more: the file that is there is cut.
  void Add(TrialStep step) {
    const auto isSame = [&](const TrialStep& each) { return each.check == step.check; };
    steps_.erase(std::remove_if(steps_.begin(), steps_.end(), isSame), steps_.end());
    steps_.push_back(std::move(step));
  }

  TrialStep LookAtFile() {
    if (!IsBareName(name_))
      return Failing("file", ERROR_BAD_PATHNAME, "its library's name '" + name_ + "' is not a file name",
                     "correct PR_SERVICE_DLL_NAME of the service");
    if (path_.size() >= MAX_PATH)
      return Failing("file", ERROR_FILENAME_EXCED_RANGE,
                     "the path of its library " + name_ + " has 260 characters or more",
                     "install everything in a folder with a shorter path");
    std::string why;
    image_ = ReadImageFile(path_, &why);
    const std::string there = "there is " + name_;
    if (image_) return {"file", Status::kOk, "", there};
    if (!IsInOwnFolder(name_))
      return Failing("file", ERROR_MOD_NOT_FOUND, "its library " + name_ + " is missing",
                     "put " + name_ + " beside the address book library");
    return Failing("file", ERROR_BAD_EXE_FORMAT, "its library " + name_ + " is " + why,
                   "install " + name_ + " again");
  }

  TrialStep LookAtMachine() {
    const std::string made = name_ + " is made for " + MachineName(image_->machine);
    if (image_->machine == kMachineX64) return {"machine", Status::kOk, "", made};
    return Failing("machine", ERROR_BAD_EXE_FORMAT, "its library " + made + ", not x64",
                   "install the x64 build of " + name_);
  }

  TrialStep LookAtExports() {
    const bool lacksAny = !image_->Exports(ORV_PROVIDER_OPEN_NAME) || !image_->Exports(entry_);
    if (image_->isShort || (image_->isTruncated && lacksAny))
      return Failing("file", ERROR_BAD_EXE_FORMAT,
                     "its library " + name_ + " is shorter than its own header says",
                     "install " + name_ + " again");
    if (!image_->Exports(ORV_PROVIDER_OPEN_NAME))
      return NotExported(ORV_PROVIDER_OPEN_NAME, "export the function undecorated");
    if (!image_->Exports(entry_))
      return NotExported(entry_, "correct PR_SERVICE_ENTRY_NAME, or export the function undecorated");
    return {"exports", Status::kOk, "", entry_ + " and " ORV_PROVIDER_OPEN_NAME};
  }

  TrialStep NotExported(const std::string& wanted, const char* fix) const {
    return Failing("exports", ERROR_PROC_NOT_FOUND,
                   "its library " + name_ + " does not export '" + wanted + "'" + Decorated(wanted), fix);
  }

  TrialStep LookAtDependencies() {
    const std::vector<MissingImport> missing = FindMissingImports(path_);
    if (missing.empty()) return {"dependencies", Status::kOk, "", "all there"};
    std::string list;
    for (const MissingImport& each : missing) list += (list.empty() ? "" : "; ") + each.Describe();
    const bool lacksFunction = !missing.front().function.empty();
    return Failing("dependencies", lacksFunction ? ERROR_PROC_NOT_FOUND : ERROR_MOD_NOT_FOUND,
                   "its library cannot be loaded: " + list, "install what is missing beside " + name_);
  }

  std::string Decorated(const std::string& wanted) const {
    for (const ImageExport& each : image_->exports) {
      if (UndecoratedName(each.name) == wanted) return ", only '" + each.name + "'";
    }
    return {};
  }

  const std::string name_, entry_;
  const WideString path_;
  std::optional<Image> image_;
  TrialSteps steps_;
};

// What the process told before it ended, however it did.
void Append(const Json& line, TrialSteps& steps) {
  steps.push_back({line.value("check", ""), static_cast<Status>(line.value("status", 0)),
                   line.value("code", ""), line.value("detail", ""), line.value("fix", "")});
}

}  // namespace

TrialSteps ExamineLibrary(const std::string& fileName, const std::string& entryName) {
  return LibraryLook(fileName, entryName).Look();
}

TrialSteps TryService(const Library& library, const std::string& profile, const Service& service) {
  TrialSteps steps = ExamineLibrary(service.library, service.entryName);
  if (steps.back().status == Status::kError) return steps;
  const Json arguments{{"library", library.fileName()},
                       {"profile", profile},
                       {"uid", ToHex(service.uid)},
                       {"provider", service.library}};
  const HostedOutcome outcome =
      RunHosted(kLoneLogonTask, arguments, kTrialLimit, [&](const Json& line) { Append(line, steps); });
  if (!outcome.IsDone())
    steps.push_back({"logon", Status::kError, "", "its library " + service.library + " " + outcome.Describe(),
                     "have the provider's maker look at it"});
  return steps;
}

// A book that cannot be read keeps no service from being added or logged on to.
std::string DescribeFailure(const TrialSteps& steps) {
  for (const TrialStep& step : steps) {
    if (step.check != "book" && step.status == Status::kError)
      return ", " + step.detail + (step.code.empty() ? "" : ": " + step.code);
  }
  return {};
}

}  // namespace orvctl
