// pictures.exe LANGUAGE PROFILE PREFIX: writes PREFIX<number>.bmp for the dialogs and messages that the library beside
// this program shows over a profile, numbered as in the companion of the language, which is the one installed.
#include <objbase.h>
#include <windows.h>

#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>

#include "tools/pictures/scenes.h"

namespace {

// With a backslash at its end.
std::wstring OwnFolder() {
  wchar_t path[MAX_PATH] = L"";
  GetModuleFileNameW(nullptr, path, MAX_PATH);
  const std::wstring whole = path;
  return whole.substr(0, whole.find_last_of(L'\\') + 1);
}

// The first window of a process comes up behind those of others and is not drawn as the active one: let it be this.
void ComeToFront() {
  HWND first = CreateWindowExW(0, L"STATIC", L"", WS_POPUP | WS_VISIBLE, 0, 0, 1, 1, nullptr, nullptr,
                               nullptr, nullptr);
  SetForegroundWindow(first);
  DestroyWindow(first);
}

void ShowAll(const std::wstring& language, const std::wstring& profile, const std::wstring& prefix) {
  const std::wstring folder = OwnFolder();
  const std::wstring companion = folder + L"XHTFCA" + language + L".dll";
  const pictures::Edition edition{language, LoadLibraryW(companion.c_str()), prefix};
  if (edition.texts == nullptr) throw std::runtime_error("the language is not installed");
  ComeToFront();
  pictures::ShowAddressDialogs(edition, profile);
  pictures::ShowServiceDialogs(edition, profile, folder);
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
  if (count != 4) {
    std::fputws(L"usage: pictures LANGUAGE PROFILE PREFIX\n", stderr);
    return 2;
  }
  // The file box is a component, which wants this thread to be an apartment.
  if (FAILED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) return 1;
  try {
    ShowAll(arguments[1], arguments[2], arguments[3]);
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "pictures: %ls: %s\n", arguments[1], failure.what());
    return 1;
  }
  CoUninitialize();
  return 0;
}
