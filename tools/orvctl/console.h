// The standard streams in UTF-8, whatever is behind them.
#pragma once

#include <cstddef>
#include <string_view>

namespace orvctl {

// Characters to a console, UTF-8 bytes to a pipe or file. False when the reader has gone.
bool WriteOutput(std::string_view utf8);
bool WriteErrors(std::string_view utf8);

// Columns of the console that the output goes to, 0 where it goes elsewhere.
size_t OutputWidth();

}  // namespace orvctl
