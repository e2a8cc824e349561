// One service's logon without the others and without a trace, in a process of its own.
#pragma once

#include "tools/orvctl/host.h"

namespace orvctl {

inline constexpr char kLoneLogonTask[] = "logon";

// Arguments: "library", the address book library; "profile"; "uid" of the service, in hexadecimal; "provider", the file
// name of its library. Sends a line for each step: "check", "status" (of TrialStep), "code", "detail", "fix".
void LogOnAlone(const Json& arguments, HostLink& link);

}  // namespace orvctl
