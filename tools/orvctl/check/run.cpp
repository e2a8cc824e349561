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

WideString FindLibrary(const std::string& name) {
  const bool isName = name.find_first_of("\\/:") == std::string::npos;
  const WideString path = isName && IsInOwnFolder(name) ? OwnFolder() + ToWide(name) : FullPath(ToWide(name));
  const DWORD attributes = GetFileAttributesW(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES)
    throw CommandError(kNotFound, "there is no file " + ToUtf8(path) +
                                      (isName ? ", nor one of that name in " + ToUtf8(OwnFolder()) : ""));
  if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
    throw CommandError(kNotFound, ToUtf8(path) + " is a folder; name the library's file");
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

bool IsOf(const char* rule, const Verdict& verdict) { return verdict.rule == rule; }

class Runner {
 public:
  explicit Runner(const Options& options)
      : request_(MakeRequest(options)), limit_{std::chrono::seconds(options.stepSeconds), kLongest} {}

  Verdict Run(const Rule& rule) {
    if (!obstacle_.empty()) return {Status::kNotOffered, obstacle_};
    if (Writes(rule.needs) && !request_.isWritable)
      return {Status::kNotOffered, "it would change entries: allow it with --writable"};
    const Verdict verdict = RunPhases(rule);
    const bool isObstacle = std::string_view(rule.name) == "image.loads" && verdict.status == Status::kFailed;
    // Loaded without a function that all need, it tells which; what is not loaded has told why.
    if (isObstacle)
      obstacle_ = IsOf("image.exports", verdict) ? verdict.seen : "the library cannot be loaded";
    return verdict;
  }

 private:
  Verdict RunPhases(const Rule& rule) {
    Request request = request_;
    Verdict verdict = RunOnce(rule, request);
    const bool goesOn = IsRepeated(rule.needs) && verdict.status == Status::kOk;
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
      verdict = Verdict{static_cast<Status>(line["status"].get<int>()), line["seen"].get<std::string>(),
                        line["rule"].get<std::string>()};
      request.kept = line["kept"];
    });
    if (outcome.end == HostedOutcome::End::kNotStarted)
      throw CommandError(kFailed, "a process " + outcome.Describe());
    if (outcome.IsDone() && verdict) return *verdict;
    return {Status::kFailed, outcome.Describe()};
  }

  const Request request_;
  const TimeLimit limit_;
  std::string obstacle_;  // to all that is left
};

struct Checked {
  const Rule& rule;
  Verdict verdict;
};

// Whether `each` failed for what `other` tells: the rule that it came to grief over, or an earlier check the very words.
bool IsToldBy(const Checked& each, const Checked& other) {
  if (&other == &each || other.verdict.status != Status::kFailed) return false;
  const bool isEarlier = &other < &each && other.verdict.rule.empty();
  return each.verdict.rule == other.rule.name || (isEarlier && each.verdict.seen == other.verdict.seen);
}

// What keeps many checks from being made is one failure.
void TellOnce(std::vector<Checked>& all) {
  for (Checked& each : all) {
    const bool isTold =
        each.verdict.status == Status::kFailed &&
        std::any_of(all.begin(), all.end(), [&](const Checked& other) { return IsToldBy(each, other); });
    if (isTold) each.verdict.status = Status::kNotOffered;
  }
}

std::vector<Checked> CheckAll(const Options& options) {
  Runner runner(options);
  std::vector<Checked> all;
  for (const Rule& rule : AllRules()) {
    if (options.only.empty() || options.only == rule.name) all.push_back({rule, runner.Run(rule)});
  }
  TellOnce(all);
  return all;
}

bool IsProblem(const Verdict& verdict) {
  return verdict.status == Status::kFailed || verdict.status == Status::kAdvice;
}

// People read the rule behind what was seen.
std::vector<Cell> RowOf(const Checked& checked) {
  const auto& [rule, verdict] = checked;
  return {rule.name, kStatusNames[static_cast<size_t>(verdict.status)],
          Cell(verdict.seen + " | " + rule.rule + " [" + rule.guide + "]", verdict.seen), rule.rule,
          rule.guide};
}

}  // namespace

Report CheckProvider(const Options& options) {
  Listing listing{
      {{"check", "Check"}, {"status", "Status"}, {"seen", "Seen, and the rule"}, {"rule"}, {"guide"}},
      {},
      true};
  size_t broken = 0, left = 0;
  for (const Checked& each : CheckAll(options)) {
    broken += each.verdict.status == Status::kFailed;
    left += each.verdict.status == Status::kNotOffered;
    if (!options.problems || IsProblem(each.verdict)) listing.rows.push_back(RowOf(each));
  }
  const std::string notMade =
      left == 0 ? "" : "; " + Count(left, "check") + " could not be made, without --problems each says why";
  Report report = Report::Of(std::move(listing), "Nothing is broken, and nothing is advised" + notMade + ".");
  if (broken != 0)
    report.messages.push_back(
        {Count(broken, "rule") + (broken == 1 ? " is" : " are") + " broken", {}, kProblems});
  return report;
}

}  // namespace orvctl
