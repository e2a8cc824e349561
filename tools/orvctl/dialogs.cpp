// Commands that show a window of the library.
#include "tools/orvctl/administration.h"
#include "tools/orvctl/apartment.h"
#include "tools/orvctl/commands.h"
#include "tools/orvctl/errors.h"

namespace orvctl {
namespace {

BOOL CALLBACK FindOwnWindow(HWND window, LPARAM found) {
  DWORD process = 0;
  GetWindowThreadProcessId(window, &process);
  if (process != GetCurrentProcessId() || !IsWindowVisible(window)) return TRUE;
  *reinterpret_cast<bool*>(found) = true;
  return FALSE;
}

bool HasVisibleWindow() {
  bool found = false;
  EnumWindows(FindOwnWindow, reinterpret_cast<LPARAM>(&found));
  return found;
}

// Windows of the help system end with their process and need its messages dispatched.
void WaitUntilClosed() {
  constexpr DWORD kLookEvery = 200;  // milliseconds
  while (HasVisibleWindow()) {
    MsgWaitForMultipleObjects(0, nullptr, FALSE, kLookEvery, QS_ALLINPUT);
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
      TranslateMessage(&message);
      DispatchMessageW(&message);
    }
  }
}

}  // namespace

Report ConfigureProfile(const Library& library, const Options& options) {
  const Apartment apartment;
  const std::string name = ProfileName(library, options.profile);
  const HRESULT result = library.AdminProfiles()->ConfigureProfile(ToWide(name).c_str(), 0, MAPI_UNICODE);
  if (result == MAPI_E_NOT_FOUND) ThrowNoProfile(name, result);
  Check(result, "configure " + QuotedProfile(name));
  return Report::Done("Configured " + QuotedProfile(name) + ".");
}

Report ShowHelp(const Library& library, const Options&) {
  if (!library.showHelp()) throw CommandError(kNoLibrary, library.fileName() + " has no help window");
  const Apartment apartment;
  const HRESULT result = library.showHelp()(0);
  if (result == MAPI_E_NOT_FOUND) {
    throw CommandError(
        kFailed, "there is no help file beside " + library.fileName() + ", or nothing to show it", result);
  }
  Check(result, "show the help");
  WaitUntilClosed();
  return Report::Done("The help was closed.");
}

}  // namespace orvctl
