// press_ok.exe CAPTION: presses OK in the dialog of that caption, which another program shows, as soon as it can be used.
#include <windows.h>

int wmain(int count, wchar_t** arguments) {
  constexpr ULONGLONG kLongest = 60000;
  constexpr DWORD kLookEvery = 20;  // milliseconds, as the other one
  if (count != 2) return 2;
  const ULONGLONG end = GetTickCount64() + kLongest;
  for (; GetTickCount64() < end; Sleep(kLookEvery)) {
    const HWND dialog = FindWindowW(L"#32770", arguments[1]);
    if (dialog == nullptr || !IsWindowVisible(dialog) || !IsWindowEnabled(dialog)) continue;
    return PostMessageW(dialog, WM_COMMAND, IDOK, 0) ? 0 : 1;
  }
  return 1;
}
