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

void ShowBareDialog(unsigned turn) {
  constexpr WORD kProfileDialog = 255;
  ShowBare(kCompanion, turn % 2 == 0 ? kAddressDialog : kProfileDialog);
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

// Less what the platform keeps of the same templates, which it shows `bare`; nothing is late there any more.
void RunWindows(const Repetition& repeat, const Repetition& bare, unsigned times) {
  const auto platforms = Grow(bare, times / 2);
  Run(repeat, times, true, platforms);
}

void RunDialogs(unsigned times) {
  constexpr UINT kLookEvery = 1;  // milliseconds
  const UINT_PTR timer = SetTimer(nullptr, 0, kLookEvery, CancelDialogs);
  RunWindows([](unsigned count) { Repeat(ShowDialog, count); },
             [](unsigned count) { Repeat(ShowBareDialog, count); }, times);
  KillTimer(nullptr, timer);
}

}  // namespace

void RunRepeats(const std::string& what, unsigned times) {
  if (what == "dialogs") return RunDialogs(times);
  if (what == "windows") return RunWindows(ShowEveryWindow, ShowEveryBareWindow, times);
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
