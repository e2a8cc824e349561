// Shows one dialog of a companion with plausible content in its lists.
#pragma once

#include <windows.h>

#include <string>

namespace pictures {

// Creates the dialog, fills and draws it, saves its picture and destroys it.
bool SaveDialog(HMODULE companion, WORD number, const std::wstring& path);

}  // namespace pictures
