// Commands that show a window of the library.
#include <objbase.h>

#include "tools/orvctl/administration.h"
#include "tools/orvctl/book.h"
#include "tools/orvctl/commands.h"
#include "tools/orvctl/errors.h"

namespace orvctl {
namespace {

// The dialog's file boxes are components, which want this thread to be an apartment.
class Apartment {
 public:
  Apartment() : result_(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) {}
  ~Apartment() {
    if (SUCCEEDED(result_)) CoUninitialize();
  }
  Apartment(const Apartment&) = delete;
  Apartment& operator=(const Apartment&) = delete;

 private:
  HRESULT result_;
};

// The boxes of the Address dialog, in their order, in the shape that it takes.
class Wells {
 public:
  explicit Wells(const Options& options) {
    if (options.to || (!options.cc && !options.bcc)) Add(MAPI_TO, L"To");
    if (options.cc) Add(MAPI_CC, L"Cc");
    if (options.bcc) Add(MAPI_BCC, L"Bcc");
  }

  // Points into this object.
  ADRPARM Parameters() {
    pointers_.clear();
    for (WideString& title : titles_) pointers_.push_back(title.data());
    ADRPARM parameters = {};
    parameters.ulFlags = DIALOG_MODAL;
    parameters.cDestFields = static_cast<ULONG>(types_.size());
    parameters.lppszDestTitles = pointers_.data();
    parameters.lpulDestComps = types_.data();
    return parameters;
  }

 private:
  void Add(ULONG type, const WCHAR* title) {
    types_.push_back(type);
    titles_.emplace_back(title);
  }

  std::vector<ULONG> types_;
  std::vector<WideString> titles_;
  std::vector<LPWSTR> pointers_;
};

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

Report PickRecipients(const Library& library, const Options& options) {
  if (!library.addressDialog()) throw CommandError(kNoLibrary, library.fileName() + " has no address dialog");
  const Apartment apartment;
  const Book book(library, options.profile);
  Wells wells(options);
  ADRPARM parameters = wells.Parameters();
  auto chosen = library.allocator().Own<ADRLIST>();
  Check(library.addressDialog()(0, book.addressBook(), &parameters, chosen.InOut()), "choose recipients");
  return book.ReportRecipients(std::move(chosen), "No recipient was chosen.");
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
