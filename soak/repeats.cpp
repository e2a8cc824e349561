// The same thing very often: what a process holds must not grow.
#include <cstdio>
#include <functional>

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

// Each kind in its turn.
void ShowDialog(unsigned turn) {
  if (turn % 2 == 0) return ShowAddressDialog(BookOf(LogOn(kBase)).Get());
  const HRESULT result = Profiles()->ConfigureProfile(kBase, 0, MAPI_UNICODE);
  if (result != MAPI_E_USER_CANCEL) throw Failed("ConfigureProfile", result);
}

INT_PTR CALLBACK CloseBareDialog(HWND dialog, UINT message, WPARAM wParam, LPARAM) {
  if (message == WM_COMMAND && LOWORD(wParam) == IDCANCEL) EndDialog(dialog, IDCANCEL);
  return message == WM_INITDIALOG;
}

// The templates of the dialogs above, shown by the platform alone: what it keeps of a dialog is not ours.
void ShowBareDialog(unsigned turn) {
  constexpr WORD kManifest = 2, kAddressDialog = 260, kProfileDialog = 255;
  static const HMODULE companion = LoadLibraryW(PathBeside(L"XHTFCBUS.dll").c_str());
  ACTCTXW controls{};
  controls.cbSize = sizeof controls;
  controls.dwFlags = ACTCTX_FLAG_HMODULE_VALID | ACTCTX_FLAG_RESOURCE_NAME_VALID;
  controls.hModule = companion;
  controls.lpResourceName = MAKEINTRESOURCEW(kManifest);
  const HANDLE context = CreateActCtxW(&controls);
  ULONG_PTR cookie = 0;
  Require(context != INVALID_HANDLE_VALUE && ActivateActCtx(context, &cookie), "no controls for a dialog");
  const WORD dialog = turn % 2 == 0 ? kAddressDialog : kProfileDialog;
  const INT_PTR result = DialogBoxParamW(companion, MAKEINTRESOURCEW(dialog), nullptr, CloseBareDialog, 0);
  DeactivateActCtx(0, cookie);
  ReleaseActCtx(context);
  Require(result == IDCANCEL, "a bare dialog was not shown");
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

void Repeat(void (*step)(unsigned turn), unsigned times) {
  for (unsigned turn = 0; turn < times; ++turn) step(turn);
}

using Repetition = std::function<void(unsigned times)>;

// What `times` leave behind, the first ones not counted.
Growth::Counts Grow(const Repetition& repeat, unsigned times) {
  repeat(1 + times / 20);
  Growth growth(true);
  growth.Mark();
  repeat(times);
  return growth.Since();
}

void Run(const Repetition& repeat, unsigned times, bool countsWindows, const Growth::Counts& allowed = {}) {
  repeat(1 + times / 20);
  RunBatches(countsWindows, allowed, [&] {
    repeat(times / 2);
    return times / 2;
  });
}

void RunDialogs(unsigned times) {
  constexpr UINT kLookEvery = 1;  // milliseconds
  const UINT_PTR timer = SetTimer(nullptr, 0, kLookEvery, CancelDialogs);
  const auto platforms = Grow([](unsigned count) { Repeat(ShowBareDialog, count); }, times / 2);
  Run([](unsigned count) { Repeat(ShowDialog, count); }, times, true, platforms);
  KillTimer(nullptr, timer);
}

}  // namespace

void RunRepeats(const std::string& what, unsigned times) {
  if (what == "dialogs") return RunDialogs(times);
  if (what == "windows") return Run(ShowEveryWindow, times, true);
  // All of them at the same time, so not in batches.
  if (what == "profiles") {
    Growth growth(false);
    KeepProfiles(1 + times / 20);
    growth.Mark();
    KeepProfiles(times);
    growth.Print(times);
    return;
  }
  const auto step = what == "logons" ? LogOnOnce : GetProps;
  Run([step](unsigned count) { Repeat(step, count); }, times, false);
}

}  // namespace orv::soak
