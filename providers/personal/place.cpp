#include "providers/personal/place.h"

#include <knownfolders.h>
#include <objbase.h>
#include <shlobj.h>

#include <memory>

#include "orv/kit/settings.hpp"

namespace personal {
namespace {

struct Model {
  const wchar_t* file;
  const wchar_t* name;
  wchar_t letter;
};
#define ORV_MODEL(file, name, letter) {file, name, letter},
constexpr Model kModels[] = {
#include "models_table.inc"
};
#undef ORV_MODEL

struct FreeTaskMemory {
  void operator()(wchar_t* text) const { CoTaskMemFree(text); }
};

std::wstring Expanded(const wchar_t* text) {
  std::wstring expanded(ExpandEnvironmentStringsW(text, nullptr, 0), L'\0');
  const DWORD size = ExpandEnvironmentStringsW(text, expanded.data(), static_cast<DWORD>(expanded.size()));
  expanded.resize(size != 0 && size <= expanded.size() ? size - 1 : 0);
  return expanded;
}

bool IsAbsolute(const std::wstring& path) {
  const bool isShare = path.starts_with(L"\\\\");
  return isShare || (path.size() > 2 && path[1] == L':' && (path[2] == L'\\' || path[2] == L'/'));
}

// The last character of our own name, which is installed once for each model.
wchar_t OwnLetter() {
  HMODULE own = nullptr;
  constexpr DWORD kFlags =
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
  if (!GetModuleHandleExW(kFlags, reinterpret_cast<LPCWSTR>(&kModels), &own)) return 0;
  wchar_t path[MAX_PATH];
  const DWORD size = GetModuleFileNameW(own, path, MAX_PATH);
  const std::wstring name = StemOf(std::wstring(path, size < MAX_PATH ? size : 0));
  const wchar_t last = name.empty() ? L'\0' : name.back();
  return last >= L'a' && last <= L'z' ? static_cast<wchar_t>(last - L'a' + L'A') : last;
}

const wchar_t* ModelName() {
  const wchar_t letter = OwnLetter();
  for (const Model& each : kModels) {
    if (each.letter == letter) return each.name;
  }
  return kModels[0].name;
}

}  // namespace

std::wstring StoredPath(const wchar_t* typed) {
  if (*typed == 0) return {};
  const std::wstring expanded = Expanded(typed);
  const bool hasVariables = expanded != typed && IsAbsolute(expanded);
  return hasVariables ? typed : orv::kit::AbsolutePath(typed);
}

std::wstring ReadyPath(const std::wstring& stored) {
  const std::wstring expanded = Expanded(stored.c_str());
  return orv::kit::AbsolutePath((expanded.empty() ? stored : expanded).c_str());
}

std::wstring UsualPath() {
  wchar_t* found = nullptr;
  const HRESULT hr = SHGetKnownFolderPath(FOLDERID_RoamingAppData, 0, nullptr, &found);
  const std::unique_ptr<wchar_t, FreeTaskMemory> folder(found);
  if (FAILED(hr) || folder == nullptr) return {};
  return std::wstring(folder.get()) + L"\\Tovan\\Velmora\\" + ModelName() + L"\\Personal.orvab";
}

std::wstring StemOf(const std::wstring& path) {
  const size_t begin = path.find_last_of(L"\\/:") + 1;
  const size_t dot = path.rfind(L'.');
  return path.substr(begin, dot == std::wstring::npos || dot <= begin ? dot : dot - begin);
}

std::wstring FolderOf(const std::wstring& path) { return path.substr(0, path.find_last_of(L"\\/") + 1); }

bool IsThere(const std::wstring& path) { return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

std::wstring BookOfBackup(const std::wstring& path) {
  constexpr std::wstring_view kBackup = L".bak";
  if (path.size() <= kBackup.size()) return {};
  const std::size_t end = path.size() - kBackup.size(), dot = path.find_last_not_of(L"0123456789", end - 1);
  const bool isBackup = lstrcmpiW(path.c_str() + end, kBackup.data()) == 0 && dot != path.npos &&
                        dot + 1 < end && path[dot] == L'.';
  return isBackup ? path.substr(0, dot) : std::wstring();
}

}  // namespace personal
