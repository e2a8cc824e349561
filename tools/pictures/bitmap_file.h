// Writes what a window shows into a BMP file.
#pragma once

#include <windows.h>

#include <string>

namespace pictures {

// The window with its frame, as it stands on the screen; false when it cannot be read or the file not
// written.
bool SaveWindow(HWND window, const std::wstring& path);

}  // namespace pictures
