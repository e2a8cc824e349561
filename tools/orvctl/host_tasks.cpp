// What can be asked of a process of our own: name and function.
#include <algorithm>
#include <iterator>

#include "tools/orvctl/check/probe.h"
#include "tools/orvctl/entry_trial.h"
#include "tools/orvctl/host.h"
#include "tools/orvctl/lone_logon.h"

namespace orvctl {
namespace {

struct NamedTask {
  const char* name;
  HostedTask run;
};

// Says nothing and ends: shows that a process can be started at all.
void Nothing(const Json&, HostLink&) {}

constexpr NamedTask kTasks[] = {{"nothing", Nothing},
                                {"check", check::RunCheckTask},
                                {kLoneLogonTask, LogOnAlone},
                                {kEntryTask, CallEntryAlone}};

}  // namespace

HostedTask FindHostedTask(const std::string& name) {
  const auto found = std::find_if(std::begin(kTasks), std::end(kTasks),
                                  [&](const NamedTask& each) { return name == each.name; });
  return found != std::end(kTasks) ? found->run : nullptr;
}

}  // namespace orvctl
