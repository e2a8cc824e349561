#include "tools/orvctl/check/probe.h"

#include <algorithm>
#include <stdexcept>

#include "tools/orvctl/check/objects.h"

namespace orvctl::check {
namespace {

constexpr std::span<const NamedCheck> (*kSubjects[])() = {
    ImageChecks,   EntryChecks, LogonChecks,        IdentifierChecks, PropertyChecks,
    TableChecks,   SeekChecks,  ArrangingChecks,    MemoryChecks,     RecipientChecks,
    WritingChecks, ListChecks,  NotificationChecks, ThreadChecks};

const NamedCheck& FindCheck(const std::string& name) {
  for (const auto subject : kSubjects) {
    const std::span<const NamedCheck> checks = subject();
    const auto found =
        std::find_if(checks.begin(), checks.end(), [&](const NamedCheck& each) { return each.name == name; });
    if (found != checks.end()) return *found;
  }
  throw std::runtime_error("there is no check " + name);
}

Verdict Run(const NamedCheck& check, Probe& probe) {
  try {
    return check.run(probe);
  } catch (const Verdict& verdict) {
    return verdict;
  }
}

// What the provider itself said of it.
std::string ReportsBehind(const Verdict& verdict) {
  std::string text;
  if (verdict.status != Status::kFailed) return text;
  for (const std::string& each : Reports()) text += "; it reports " + each;
  return text;
}

}  // namespace

std::string Count(size_t number, const char* what, const char* plural) {
  if (number == 1) return std::string("1 ") + what;
  return std::to_string(number) + " " + (plural != nullptr ? plural : std::string(what) + "s");
}

Request Request::FromJson(const Json& json) {
  Request request;
  request.library = ToWide(json["library"].get<std::string>());
  request.entry = json["entry"].get<std::string>();
  if (!json["config"].is_null()) request.config = json["config"].get<std::string>();
  request.isWritable = json["writable"].get<bool>();
  request.threadSeconds = json["threadSeconds"].get<int>();
  request.phase = json["phase"].get<int>();
  request.kept = json["kept"];
  return request;
}

Json Request::ToJson() const {
  return {{"library", ToUtf8(library)},
          {"entry", entry},
          {"config", config ? Json(*config) : Json()},
          {"writable", isWritable},
          {"threadSeconds", threadSeconds},
          {"phase", phase},
          {"kept", kept}};
}

void RunCheckTask(const Json& arguments, HostLink& link) {
  Probe probe(Request::FromJson(arguments), link);
  const Verdict verdict = Run(FindCheck(arguments["check"].get<std::string>()), probe);
  link.Send({{"status", static_cast<int>(verdict.status)},
             {"seen", verdict.seen + ReportsBehind(verdict)},
             {"rule", verdict.rule},
             {"kept", probe.kept}});
}

}  // namespace orvctl::check
