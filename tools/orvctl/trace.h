// The trace that --trace asked for: what was done, step by step, with the code that each step answered.
#pragma once

#include <windows.h>

#include <string>

namespace orvctl {

// "file", "com1" or "debugger"; false where it cannot be opened, and nothing is traced then.
bool StartTrace(const std::string& target);

void TraceText(const std::string& text);
// `doing` completes "cannot ...".
void TraceResult(const std::string& doing, HRESULT result);

}  // namespace orvctl
