// Scenes in the Address dialog.
#pragma once

#include "tools/pictures/book.h"
#include "tools/pictures/stage.h"

namespace pictures {

// `act` finds the dialog open and leaves it so; it is cancelled then.
void PlayAddress(const Edition& edition, const std::string& scene, const Book& book, const Wells& wells,
                 const std::function<void(Script&, HWND)>& act, ULONG flags = 0);

}  // namespace pictures
