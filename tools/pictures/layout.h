// Whether what a dialog shows can be read whole.
#pragma once

#include <windows.h>

#include <string>

namespace pictures {

// What is wrong with the controls of a dialog and its pages: texts that do not fit, controls that overlap or stand
// outside. Empty for nothing.
std::string LayoutFault(HWND dialog);

}  // namespace pictures
