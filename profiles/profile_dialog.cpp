// There is no window to show: every dialog is a cancelled one.
#include "profiles/profile_dialog.h"

namespace orv {

bool EditServices(ULONG_PTR, IOrvProfAdmin*, IABServiceAdmin*) { return false; }

}  // namespace orv
