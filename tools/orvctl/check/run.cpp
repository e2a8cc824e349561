// The command: what is asked, a process for each check, a line for each result.
#include <algorithm>
#include <optional>

#include "tools/orvctl/catalogue.h"
#include "tools/orvctl/check/probe.h"
#include "tools/orvctl/check/rules.h"
#include "tools/orvctl/commands.h"
#include "tools/orvctl/dependencies.h"
#include "tools/orvctl/errors.h"

namespace orvctl {
namespace {

using namespace check;

constexpr const char* kStatusNames[] = {"ok", "failed", "not offered", "advice"};
// Of a whole check; those that go on for long tell so by steps.
constexpr std::chrono::minutes kLongest{30};

WideString FullPath(const WideString& path) {
  WideString full(GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), L'\0');
  full.resize(GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
  return full;
}

WideString FindLibrary(const std::string& name) {
  const bool isName = name.find_first_of("\\/:") == std::string::npos;
  const WideString path = isName && IsInOwnFolder(name) ? OwnFolder() + ToWide(name) : FullPath(ToWide(name));
  if (GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES)
    throw CommandError(kNotFound, "there is no file " + ToUtf8(path));
  return path;
}

// The only export besides the one that every provider has; empty when there are none or several.
std::string OnlyOtherExport(const WideString& library) {
  std::string why, found;
  const std::optional<Image> image = ReadImageFile(library, &why);
  if (!image) return {};
  for (const ImageExport& each : image->exports) {
    if (each.name == ORV_PROVIDER_OPEN_NAME || UndecoratedName(each.name) == ORV_PROVIDER_OPEN_NAME) continue;
    if (!found.empty()) return {};
    found = each.name;
  }
  return found;
}

// What the catalogue beside this program says of a file of that name; empty where it says nothing or cannot be read.
std::string CataloguedEntry(const WideString& library, const std::string& own) {
  const WideString file = library.substr(library.find_last_of(L"\\/") + 1);
  try {
    for (const OfferedService& each : ReadCatalogue(Library(own)).services) {
      const bool isSame =
          CompareStringOrdinal(ToWide(each.library).c_str(), -1, file.c_str(), -1, TRUE) == CSTR_EQUAL;
      if (isSame) return each.entryName;
    }
  } catch (const CommandError&) {
    // A provider may be checked where nothing is installed.
  }
  return {};
}

std::string FindEntry(const Options& options, const WideString& library) {
  if (!options.entryFunction.empty()) return options.entryFunction;
  const std::string own = options.library.empty() ? DefaultLibraryName() : options.library;
  const std::string catalogued = CataloguedEntry(library, own);
  return catalogued.empty() ? OnlyOtherExport(library) : catalogued;
}

Request MakeRequest(const Options& options) {
  Request request;
  request.library = FindLibrary(options.provider);
  request.entry = FindEntry(options, request.library);
  request.config = options.config;
  request.isWritable = options.writable;
  request.threadSeconds = options.threadSeconds;
  return request;
}

class Runner {
 public:
  explicit Runner(const Options& options)
      : request_(MakeRequest(options)), limit_{std::chrono::seconds(options.stepSeconds), kLongest} {}

  Verdict Run(const Rule& rule) {
    if (!canLoad_) return {Status::kNotOffered, "the library cannot be loaded"};
    const bool writes = rule.needs != Needs::kProcess;
    if (writes && !request_.isWritable)
      return {Status::kNotOffered, "it would change entries: allow it with --writable"};
    const Verdict verdict = RunPhases(rule);
    const bool isLoad = std::string_view(rule.name) == "image.loads";
    canLoad_ = !isLoad || verdict.status == Status::kOk;
    return verdict;
  }

 private:
  Verdict RunPhases(const Rule& rule) {
    Request request = request_;
    Verdict verdict = RunOnce(rule, request);
    const bool goesOn = rule.needs == Needs::kTwoProcesses && verdict.status == Status::kOk;
    if (!goesOn) return verdict;
    request.phase = 1;
    return RunOnce(rule, request);
  }

  // A process that does not come to a verdict is the finding.
  Verdict RunOnce(const Rule& rule, Request& request) {
    std::optional<Verdict> verdict;
    Json arguments = request.ToJson();
    arguments["check"] = rule.name;
    const HostedOutcome outcome = RunHosted("check", arguments, limit_, [&](const Json& line) {
      verdict = Verdict{static_cast<Status>(line["status"].get<int>()), line["seen"].get<std::string>()};
      request.kept = line["kept"];
    });
    if (outcome.end == HostedOutcome::End::kNotStarted)
      throw CommandError(kFailed, "a process " + outcome.Describe());
    if (outcome.IsDone() && verdict) return *verdict;
    return {Status::kFailed, outcome.Describe()};
  }

  const Request request_;
  const TimeLimit limit_;
  bool canLoad_ = true;
};

}  // namespace

Report CheckProvider(const Options& options) {
  Runner runner(options);
  Listing listing{
      {{"check", "Check"}, {"status", "Status"}, {"seen", "Seen"}, {"rule", "Rule"}, {"guide", "Guide"}}, {}};
  size_t broken = 0;
  for (const Rule& rule : AllRules()) {
    if (!options.only.empty() && options.only != rule.name) continue;
    const Verdict verdict = runner.Run(rule);
    broken += verdict.status == Status::kFailed;
    listing.rows.push_back(
        {rule.name, kStatusNames[static_cast<size_t>(verdict.status)], verdict.seen, rule.rule, rule.guide});
  }
  Report report = Report::Of(std::move(listing), "There is nothing to check.");
  if (broken != 0)
    report.messages.push_back(
        {Count(broken, "rule") + (broken == 1 ? " is" : " are") + " broken", {}, kProblems});
  return report;
}

}  // namespace orvctl
