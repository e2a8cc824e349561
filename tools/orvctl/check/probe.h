// What a check works with: what was asked, the wire to the one who asked, and the ways to come to a verdict.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "diag/names.h"
#include "tools/orvctl/host.h"
#include "tools/orvctl/values.h"

namespace orvctl::check {

enum class Status { kOk, kFailed, kNotOffered, kAdvice };

// Thrown by what makes going on senseless, answered by a check that came to its end.
struct Verdict {
  Status status = Status::kOk;
  std::string seen;
  // Name of the rule that was broken where that is not the one that was checked: told once, under its own name.
  std::string rule = {};
};

inline Verdict Ok(std::string seen) { return {Status::kOk, std::move(seen)}; }
inline Verdict Advice(std::string seen) { return {Status::kAdvice, std::move(seen)}; }
[[noreturn]] inline void Fail(std::string seen) { throw Verdict{Status::kFailed, std::move(seen)}; }
// What has to hold before the rule checked can be tried at all.
[[noreturn]] inline void FailOf(const char* rule, std::string seen) {
  throw Verdict{Status::kFailed, std::move(seen), rule};
}
[[noreturn]] inline void NotOffered(std::string seen) { throw Verdict{Status::kNotOffered, std::move(seen)}; }
inline void Require(bool holds, const std::string& seen) {
  if (!holds) Fail(seen);
}

inline std::string Name(HRESULT result) { return diag::ResultName(static_cast<uint32_t>(result)); }
// "3 rows", "1 row"; an irregular plural is named.
std::string Count(size_t number, const char* what, const char* plural = nullptr);

struct Request {
  WideString library;
  std::string entry;  // name of the service entry function, empty when it is not known
  std::optional<std::string> config;
  bool isWritable = false;
  int threadSeconds = 10;
  int phase = 0;  // of a check that takes two processes: 0, then 1
  Json kept;      // what the first phase left for the second

  static Request FromJson(const Json& json);
  Json ToJson() const;
};

class Probe {
 public:
  // A quiet one tells no steps: for threads beside the one that does.
  Probe(Request asked, HostLink& wire, bool isQuiet = false)
      : request(std::move(asked)), link(wire), isQuiet_(isQuiet) {}

  // Calls the provider; an exception that leaves it is a finding, a crash or a hang is told under this name.
  template <class Function>
  auto Call(const char* what, Function function) {
    Step(what);
    try {
      return function();
    } catch (...) {
    }
    Fail(std::string("an exception left ") + what);
  }
  // The same where a failure is a finding.
  template <class Function>
  HRESULT Succeed(const char* what, Function function) {
    const HRESULT result = Call(what, function);
    if (FAILED(result)) Fail(std::string(what) + " answered " + Name(result));
    return result;
  }
  // Repeated ones are told once.
  void Step(const std::string& step) {
    if (isQuiet_ || step == step_) return;
    step_ = step;
    link.Step(step);
  }

  const Request request;
  Json kept;
  HostLink& link;

 private:
  const bool isQuiet_;
  std::string step_;
};

struct NamedCheck {
  const char* name;
  Verdict (*run)(Probe& probe);
};

// By subject; together they hold every name of rules.h.
std::span<const NamedCheck> ImageChecks();
std::span<const NamedCheck> EntryChecks();
std::span<const NamedCheck> LogonChecks();
std::span<const NamedCheck> IdentifierChecks();
std::span<const NamedCheck> PropertyChecks();
std::span<const NamedCheck> TableChecks();
std::span<const NamedCheck> SeekChecks();
std::span<const NamedCheck> ArrangingChecks();
std::span<const NamedCheck> MemoryChecks();
std::span<const NamedCheck> RecipientChecks();
std::span<const NamedCheck> WritingChecks();
std::span<const NamedCheck> ListChecks();
std::span<const NamedCheck> NotificationChecks();
std::span<const NamedCheck> ThreadChecks();

// The task of the process: one check.
void RunCheckTask(const Json& arguments, HostLink& link);

}  // namespace orvctl::check
