// pictures.exe LANGUAGE PREFIX [SCENE]...: writes PREFIX<number>.bmp for the windows and messages that the library beside
// this program shows, all or those of some scenes, numbered as in the companion of the language, which is the one
// installed. The profiles are those of scripts/pictures.sh.
#include <objbase.h>
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include "tools/pictures/scenes.h"

namespace {

constexpr struct {
  std::wstring_view name;
  void (*show)(const pictures::Edition& edition);
} kScenes[] = {
    {L"wells", pictures::ShowWells},       {L"commands", pictures::ShowCommands},
    {L"contacts", pictures::ShowContacts}, {L"lists", pictures::ShowLists},
    {L"states", pictures::ShowStates},     {L"refusals", pictures::ShowRefusals},
    {L"settings", pictures::ShowSettings}, {L"sample", pictures::ShowSample},
    {L"services", pictures::ShowServices},
};

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

void Show(const std::wstring& language, const std::wstring& prefix, std::span<wchar_t*> wanted) {
  const std::wstring folder = OwnFolder();
  const std::wstring companion = folder + L"XHTFCA" + language + L".dll";
  const pictures::Edition edition{language, LoadLibraryW(companion.c_str()), prefix, folder};
  if (edition.texts == nullptr) throw std::runtime_error("the language is not installed");
  ComeToFront();
  for (const auto& each : kScenes) {
    const bool isWanted =
        std::any_of(wanted.begin(), wanted.end(), [&](const wchar_t* name) { return each.name == name; });
    if (wanted.empty() || isWanted) each.show(edition);
  }
  if (!pictures::AllFitted()) throw std::runtime_error("not everything can be read");
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
  constexpr int kFirstScene = 3;
  if (count < kFirstScene) {
    std::fputws(L"usage: pictures LANGUAGE PREFIX [SCENE]...\n", stderr);
    return 2;
  }
  // The file box is a component, which wants this thread to be an apartment.
  if (FAILED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) return 1;
  try {
    Show(arguments[1], arguments[2], {arguments + kFirstScene, arguments + count});
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "pictures: %ls: %s\n", arguments[1], failure.what());
    return 1;
  }
  CoUninitialize();
  return 0;
}
