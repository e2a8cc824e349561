// Own file name, folder and model. The model table is product data, compiled in from data/models.csv.
#include "platform/identity.h"

#include <algorithm>
#include <array>

namespace orv {
namespace {

struct ModelRow {
  const WCHAR* file;
  const WCHAR* model;
  WCHAR letter;
};

#define ORV_MODEL(file, model, letter) ModelRow{file, model, letter},
constexpr auto kModels = std::to_array<ModelRow>({
#include "models_table.inc"
});
#undef ORV_MODEL

constexpr WCHAR FoldAscii(WCHAR c) {
  return c >= ORV_W('A') && c <= ORV_W('Z') ? static_cast<WCHAR>(c + (ORV_W('a') - ORV_W('A'))) : c;
}

const ModelRow* FindModel(WStringView fileName, NameMatch match) {
  const auto row = std::find_if(kModels.begin(), kModels.end(), [&](const ModelRow& candidate) {
    return match == NameMatch::kExact ? fileName == candidate.file
                                      : EqualIgnoringAsciiCase(fileName, candidate.file);
  });
  return row == kModels.end() ? nullptr : &*row;
}

WStringView LastComponent(WStringView path) {
  const auto separator = path.rfind(ORV_W('\\'));
  return separator == WStringView::npos ? path : path.substr(separator + 1);
}

}  // namespace

WString ModulePath(HMODULE module) {
  std::array<WCHAR, MAX_PATH> buffer{};
  const DWORD length = GetModuleFileNameW(module, buffer.data(), static_cast<DWORD>(buffer.size()));
  return length == 0 || length >= buffer.size() ? WString() : WString(buffer.data(), length);
}

WString ModuleFileName(HMODULE module) { return WString(LastComponent(ModulePath(module))); }

WString PathBeside(HMODULE module, WStringView name) {
  WString path = ModulePath(module);
  if (path.empty()) return path;
  path.erase(path.size() - LastComponent(path).size());
  return path.append(name);
}

std::optional<WString> ModelName(HMODULE module) {
  const ModelRow* row = FindModel(ModuleFileName(module), NameMatch::kIgnoreCase);
  if (row == nullptr || *row->model == 0) return std::nullopt;
  return WString(row->model);
}

WCHAR ModelLetter(HMODULE module, NameMatch match) {
  const ModelRow* row = FindModel(ModuleFileName(module), match);
  return row == nullptr ? WCHAR{0} : row->letter;
}

bool IsBareFileName(WStringView name) {
  return !name.empty() && name.find_first_of(ORV_W("\\/:")) == WStringView::npos && name != ORV_W(".") &&
         name != ORV_W("..");
}

bool EqualIgnoringAsciiCase(WStringView a, WStringView b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](WCHAR x, WCHAR y) { return FoldAscii(x) == FoldAscii(y); });
}

}  // namespace orv
