#include "ui/services/open_file.h"

#include <commdlg.h>

#include <algorithm>
#include <array>

#include "ui/localisation.h"

namespace orv::ui {
namespace {

constexpr UINT kTitle = 285;
constexpr UINT kFilter = 286;
constexpr UINT kDefaultExtension = 287;
constexpr std::size_t kTitleCapacity = 80;
constexpr std::size_t kFilterCapacity = 260;
constexpr std::size_t kExtensionCapacity = 6;

}  // namespace

WString OpenFileFilter(WString text) {
  if (text.empty()) return text;
  std::replace(text.begin(), text.end(), WCHAR{text.back()}, L'\0');
  return text;
}

std::optional<WString> ChooseCatalogueFile(HWND owner, HMODULE resources) {
  const WString title = LoadText(resources, kTitle, kTitleCapacity);
  const WString filter = OpenFileFilter(LoadText(resources, kFilter, kFilterCapacity));
  const WString extension = LoadText(resources, kDefaultExtension, kExtensionCapacity);
  std::array<WCHAR, MAX_PATH> path{};

  OPENFILENAMEW dialog{};
  dialog.lStructSize = sizeof(dialog);
  dialog.hwndOwner = owner;
  dialog.lpstrFilter = filter.empty() ? nullptr : filter.c_str();
  dialog.lpstrFile = path.data();
  dialog.nMaxFile = static_cast<DWORD>(path.size());
  dialog.lpstrTitle = title.empty() ? nullptr : title.c_str();
  dialog.lpstrDefExt = extension.empty() ? nullptr : extension.c_str();
  dialog.Flags = OFN_HIDEREADONLY | OFN_NOCHANGEDIR | OFN_PATHMUSTEXIST | OFN_FILEMUSTEXIST;
  if (!GetOpenFileNameW(&dialog)) return std::nullopt;
  return WString(path.data());
}

}  // namespace orv::ui
