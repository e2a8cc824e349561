// The files that belong to a service of a catalogue: whether those that it needs are there, and deleting those
// that go with it.
#pragma once

#include "orv/orvapi.h"
#include "platform/win.h"

namespace orv::ui {

// 0, or the message that says what is wrong with PR_SERVICE_SUPPORT_FILES: the column is missing, it has no
// values, or one of the files is neither on the search path nor in the library's own folder.
UINT FindSupportFilesProblem(const SRow& row);

// Deletes the files of PR_SERVICE_DELETE_FILES that the search path finds in the library's own folder, with a message
// over `parent` for each that stays: one in use, one found elsewhere, whatever is more than a bare file name. True when
// none does.
bool DeleteServiceFiles(HWND parent, HMODULE resources, const SRow& row);

}  // namespace orv::ui
