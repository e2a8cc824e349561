// Small operations on texts.
#pragma once

#include "platform/win.h"

namespace orv::ui {

// Removes leading and trailing white space. Nothing in the library calls it yet.
void Trim(WString& text);

}  // namespace orv::ui
