// Small operations on texts.
#pragma once

#include "platform/win.h"

namespace orv::ui {

// Removes leading and trailing white space. Nothing in the library calls it yet.
void Trim(WString& text);

// The text with `value` in the place of "%1", where it has one.
WString WithValue(WString text, WStringView value);

// Digits grouped as the user's locale groups them.
WString GroupedDigits(ULONG number);

}  // namespace orv::ui
