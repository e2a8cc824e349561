// What is shown: every dialog of the library over a real profile, and the messages that come up on the way. What a
// scene changes it cancels, but for the catalogue of services.
#pragma once

#include <string>

#include "tools/pictures/stage.h"

namespace pictures {

// The Address dialog with up to three wells, the new-entry dialog, the context menu.
void ShowAddressDialogs(const Edition& edition, const std::wstring& profile);

// The profile, add and install dialogs and the one in which a file is chosen. `folder` is the installation's.
void ShowServiceDialogs(const Edition& edition, const std::wstring& profile, const std::wstring& folder);

}  // namespace pictures
