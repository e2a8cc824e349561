// The same thing very often: what a process holds must not grow.
#include <cstdio>

#include "soak/library.h"

namespace orv::soak {
namespace {

void LogOnOnce(unsigned) { BookOf(LogOn(kSmall)); }

WString NumberedProfile(unsigned turn) { return L"many " + std::to_wstring(turn); }

void GetProps(unsigned) {
  static const auto section = SectionOf(ServicesOf(kBase).Get(), ReadStored(kBase).begin()->first);
  auto values = TheLibrary().allocator.Own<SPropValue>();
  ULONG count = 0;
  Check(section->GetProps(nullptr, MAPI_UNICODE, &count, values.Put()), "GetProps");
  Require(count > kTexts, "properties are missing");
}

BOOL CALLBACK Cancel(HWND window, LPARAM) {
  if (IsWindowVisible(window)) PostMessageW(window, WM_COMMAND, IDCANCEL, 0);
  return TRUE;
}

// Dispatched by the loop of the dialog that stands.
void CALLBACK CancelDialogs(HWND, UINT, UINT_PTR, DWORD) {
  EnumThreadWindows(GetCurrentThreadId(), Cancel, 0);
}

void ShowAddressDialog() {
  const auto session = LogOn(kBase);
  const auto book = BookOf(session);
  ULONG destination = MAPI_TO;
  ADRPARM parameters{};
  parameters.ulFlags = DIALOG_MODAL;
  parameters.cDestFields = 1;
  parameters.lpulDestComps = &destination;
  auto list = TheLibrary().allocator.Own<ADRLIST>();
  const HRESULT result = TheLibrary().address(0, book.Get(), &parameters, list.InOut());
  if (result != MAPI_E_USER_CANCEL) throw Failed("OrvAddress", result);
}

// Each kind in its turn.
void ShowDialog(unsigned turn) {
  constexpr UINT kLookEvery = 1;  // milliseconds
  const UINT_PTR timer = SetTimer(nullptr, 0, kLookEvery, CancelDialogs);
  if (turn % 2 == 0) {
    ShowAddressDialog();
  } else {
    const HRESULT result = Profiles()->ConfigureProfile(kBase, 0, MAPI_UNICODE);
    if (result != MAPI_E_USER_CANCEL) throw Failed("ConfigureProfile", result);
  }
  KillTimer(nullptr, timer);
}

unsigned CountProfiles() {
  ComPtr<IMAPITable> table;
  Check(Profiles()->GetProfileTable(MAPI_UNICODE, table.Put()), "GetProfileTable");
  ULONG count = 0;
  Check(table->GetRowCount(0, &count), "GetRowCount");
  return count;
}

// All at the same time, which the listing has to show.
void KeepProfiles(unsigned times) {
  const unsigned before = CountProfiles();
  const auto admin = Profiles();
  for (unsigned turn = 0; turn < times; ++turn)
    Check(admin->CreateProfile(NumberedProfile(turn).c_str(), 0, MAPI_UNICODE), "CreateProfile");
  Require(CountProfiles() == before + times, "lost: not every profile is listed");
  for (unsigned turn = times; turn-- != 0;)
    Check(admin->DeleteProfile(NumberedProfile(turn).c_str(), MAPI_UNICODE), "DeleteProfile");
  Require(CountProfiles() == before, "a profile was not deleted");
}

void Repeat(const std::string& what, unsigned times) {
  if (what == "profiles") return KeepProfiles(times);
  const auto step = what == "logons" ? LogOnOnce : what == "getprops" ? GetProps : ShowDialog;
  for (unsigned turn = 0; turn < times; ++turn) step(turn);
}

}  // namespace

void RunRepeats(const std::string& what, unsigned times) {
  Repeat(what, 1 + times / 20);
  Growth growth(what == "dialogs");
  growth.Mark();
  Repeat(what, times);
  growth.Print(times);
}

}  // namespace orv::soak
