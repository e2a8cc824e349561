// What a provider is held to, check by check. Portable: the command line asks for names as well.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace orvctl::check {

// What a check needs besides the library.
enum class Needs {
  kProcess,       // a process that reads or loads it
  kTwoProcesses,  // two, one after the other
  kWriting,       // a process, and the right to create, change and delete entries
  kWritingInTwo   // the same for two
};
constexpr bool Writes(Needs needs) { return needs == Needs::kWriting || needs == Needs::kWritingInTwo; }
constexpr bool IsRepeated(Needs needs) {
  return needs == Needs::kTwoProcesses || needs == Needs::kWritingInTwo;
}

struct Rule {
  const char* name;
  Needs needs;
  const char* rule;   // one sentence
  const char* guide;  // title of the section of docs/provider-guide.md that states it
};

// In the order in which they are checked.
std::span<const Rule> AllRules();
const Rule* FindRule(std::string_view name);
std::string RuleNames();

}  // namespace orvctl::check
