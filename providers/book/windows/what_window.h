// The question what a new entry is to be.
#pragma once

#include "orv/kit/window.hpp"

namespace book {

namespace kit = orv::kit;

enum class NewEntry { kNone, kContact, kList };
NewEntry AskWhatIsNew(HWND owner, const kit::Language& language);

}  // namespace book
