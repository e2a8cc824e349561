// The sample's windows, which are the system's own: a file box to choose the file in, a message box that shows a contact.
// A provider with templates and texts of its own derives from kit::Dialog instead.
#pragma once

#include <windows.h>

#include <string>

#include "formats/contact.h"

namespace sample {

// What a code says of a file, in the system's words.
std::wstring ReasonFor(HRESULT code);

// A file that is there; MAPI_E_USER_CANCEL.
HRESULT ChooseFile(HWND owner, std::wstring* path);
void TellFailure(HWND owner, const std::wstring& path, HRESULT code);

// `members`: of a list, a name each.
void ShowContact(HWND owner, const formats::Contact& contact, const std::wstring& members,
                 bool isRightToLeft);

}  // namespace sample
