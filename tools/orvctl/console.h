// The standard streams in UTF-8, whatever is behind them.
#pragma once

#include <string_view>

namespace orvctl {

// Characters to a console, UTF-8 bytes to a pipe or file. False when the reader has gone.
bool WriteOutput(std::string_view utf8);
bool WriteErrors(std::string_view utf8);

}  // namespace orvctl
