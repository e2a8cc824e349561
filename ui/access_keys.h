// Access keys of controls: the letter behind the '&' of a text. Two of them mean the sign itself.
#pragma once

#include "platform/win.h"

namespace orv::ui {

bool HasAccessKey(WStringView text);
// The text without its mark; what is the sign itself stays.
WString WithoutAccessKey(WStringView text);
// The text, which has no access key, with its first letter marked that no control of the dialog has yet, whatever its
// case; as it is when there is none. Signs of scripts that no key types are passed over.
WString WithFreeAccessKey(WString text, HWND dialog);

}  // namespace orv::ui
