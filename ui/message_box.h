// Message boxes whose texts come from the resource library, right-to-left where the language is.
#pragma once

#include "platform/win.h"

namespace orv::ui {

// What MessageBoxW gets for a wanted style: the language's direction is added.
UINT MessageStyle(UINT style, HMODULE library);

// Shows text `identifier` under the caption of all error boxes; returns the button's identifier.
int ShowMessage(UINT identifier, HMODULE resources, HWND parent, UINT style);

// The same with a text that was made, of any length.
int ShowText(const WString& text, HMODULE resources, HWND parent, UINT style);

// Yes or No, with No as the default; true for Yes.
bool AskQuestion(UINT identifier, HMODULE resources, HWND parent);

}  // namespace orv::ui
