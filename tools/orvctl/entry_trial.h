// A service's entry function called before it is called in earnest, in a process of its own and with settings that
// nobody stores: one that crashes, hangs or raises an exception leaves the profile as it was and is told as such.
#pragma once

#include <optional>
#include <string>

#include "tools/orvctl/administration.h"
#include "tools/orvctl/host.h"

namespace orvctl {

inline constexpr char kEntryTask[] = "entry";

// The task's other end; arguments as EntryTrial makes them.
void CallEntryAlone(const Json& arguments, HostLink& link);

struct EntryTrial {
  const Service& service;
  std::string profile;                // empty: the service is to be created
  std::optional<std::string> config;  // of its creation, or the path that it is to be configured with

  // How the entry function breaks, as the end of a sentence about the service; empty where it answers, whatever it is.
  std::string Run(const Library& library) const;
};

}  // namespace orvctl
