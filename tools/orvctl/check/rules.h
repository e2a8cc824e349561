// What a provider is held to, check by check. Portable: the command line asks for names as well.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace orvctl::check {

// What a check needs besides the library.
enum class Needs {
  kProcess,      // a process that reads or loads it
  kWriting,      // the same, and the right to create, change and delete entries
  kTwoProcesses  // the same twice, one after the other
};

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
