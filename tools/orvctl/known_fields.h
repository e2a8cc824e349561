// Fields that --fields may name, as far as they are known before a command has run.
#pragma once

#include <string>
#include <vector>

#include "tools/orvctl/command_line.h"

namespace orvctl {

// Of commands that change something, ask somebody, or tell one thing; nothing for those whose listing tells.
std::vector<std::string> KnownFields(const Options& options);

// "there is no field 'x'; did you mean 'y'? There are: ..."
std::string DescribeUnknownField(const std::string& field, const std::vector<std::string>& known);

// The first one asked for that there is not, in these words; empty where all of them are known.
std::string FindUnknownField(const std::vector<std::string>& asked, const std::vector<std::string>& known);

}  // namespace orvctl
