// Where a personal address book lies.
#pragma once

#include <windows.h>

#include <string>

namespace personal {

// As it is stored: absolute, but with the variables in it that somebody typed, where these lead to an absolute one.
std::wstring StoredPath(const wchar_t* typed);

// Where a stored path leads now.
std::wstring ReadyPath(const std::wstring& stored);

// Of who has chosen no file: in the user's application data, under the model's name. Empty where the system tells none.
std::wstring UsualPath();

// The file's name without its extension, and its folder with a backslash.
std::wstring StemOf(const std::wstring& path);
std::wstring FolderOf(const std::wstring& path);

bool IsThere(const std::wstring& path);

// The book that a file is a backup of, by its name: "<book>.<digits>.bak". Empty for any other.
std::wstring BookOfBackup(const std::wstring& path);

}  // namespace personal
