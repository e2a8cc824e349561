// What the settings of the service show, in windows of the system's own: a file box, and a message where the file is none.
#pragma once

#include <windows.h>

#include <string>

namespace sample {

// What a code says of a file, in the system's words.
std::wstring ReasonFor(HRESULT code);

// A file that is there; MAPI_E_USER_CANCEL.
HRESULT ChooseFile(HWND owner, std::wstring* path);
void TellFailure(HWND owner, const std::wstring& path, HRESULT code);

}  // namespace sample
