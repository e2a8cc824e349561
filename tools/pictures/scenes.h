// What is shown: every window of the library and of its providers over real profiles, and the messages that come up on
// the way. What a scene changes it cancels, but for the catalogue of services and what is said to be changed by others.
#pragma once

#include <string>

#include "tools/pictures/stage.h"

namespace pictures {

// The demo's contacts, in a book and as a file.
inline constexpr wchar_t kProfile[] = L"Pictures";
// A book in each of the states that one can be in, and a provider that refuses.
inline constexpr wchar_t kStatesProfile[] = L"States";
inline constexpr wchar_t kEmptyProfile[] = L"Nothing";

// The Address dialog with up to three wells.
void ShowWells(const Edition& edition);
// The context menu, where a new entry goes, the messages of the buttons.
void ShowCommands(const Edition& edition);
// The windows of a contact: known, new, read-only, twice there, changed or deleted by somebody else meanwhile.
void ShowContacts(const Edition& edition);
// Those of a list, and the question what a new entry is to be.
void ShowLists(const Edition& edition);
// The line under the list of entries in all its states.
void ShowStates(const Edition& edition);
// The messages after commands that a provider refuses.
void ShowRefusals(const Edition& edition);
// The profile, add and install dialogs and the one in which a file is chosen.
void ShowServices(const Edition& edition);
// The settings of a personal address book whose file is there, new, or in a state in which it cannot be used.
void ShowSettings(const Edition& edition);
// The windows of the provider of contact files.
void ShowSample(const Edition& edition);

}  // namespace pictures
