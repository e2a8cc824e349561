// The open-file dialog in which the user chooses a catalogue.
#pragma once

#include <optional>

#include "platform/win.h"

namespace orv::ui {

// A filter as the open-file dialog wants it: the text's last character separates its parts and becomes a
// terminator; a further one ends the list.
WString OpenFileFilter(WString text);

// The chosen file's path; none when the user cancelled.
std::optional<WString> ChooseCatalogueFile(HWND owner, HMODULE resources);

}  // namespace orv::ui
