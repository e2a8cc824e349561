// Language choice, companion file names with their fallback, and texts. Stands on the model table of
// platform.
#include "ui/localisation.h"

#include <algorithm>
#include <array>
#include <cwchar>

#include "platform/identity.h"
#include "platform/module.h"
#include "platform/reg_key.h"

namespace orv::ui {
namespace {

struct LanguageRow {
  Language identifier;
  WStringView code;
};

constexpr auto kLanguages = std::to_array<LanguageRow>({
    {9, L"US"},  {17, L"JP"}, {12, L"FR"}, {7, L"DE"},    {16, L"IT"},   {10, L"ES"},
    {22, L"PT"}, {19, L"NL"}, {21, L"PL"}, {25, L"RU"},   {14, L"HU"},   {5, L"CZ"},
    {6, L"DK"},  {20, L"NO"}, {29, L"SE"}, {11, L"FI"},   {8, L"GR"},    {31, L"TR"},
    {1, L"AR"},  {33, L"ID"}, {18, L"KR"}, {2052, L"CN"}, {1028, L"TW"}, {30, L"TH"},
});
// Closing row of the table: what an unknown language gets.
constexpr WStringView kFallbackCode = L"US";

constexpr LANGID kChineseTaiwan = 1028;
constexpr LANGID kChineseMainland = 2052;

constexpr DWORD kInstallerTextBytes = 16;

const LanguageRow* FindLanguage(Language language) {
  const auto row = std::find_if(kLanguages.begin(), kLanguages.end(), [&](const LanguageRow& candidate) {
    return candidate.identifier == language;
  });
  return row == kLanguages.end() ? nullptr : &*row;
}

struct CompanionShape {
  WStringView prefix;
  WStringView extension;
};

CompanionShape ShapeOf(Companion companion) {
  switch (companion) {
    case Companion::kResourceLibrary:
      return {L"XHTFC", L".dll"};
    case Companion::kSecondResourceLibrary:
      return {L"XHTFL", L".dll"};
    case Companion::kContextHelp:
      return {L"XHTFC", L".chm"};
    case Companion::kMainHelp:
      return {L"XHTFH", L".chm"};
  }
  return {};
}

// The value's type is not looked at: whatever its bytes are, they are read as text.
std::optional<WString> InstallerText(HMODULE library) {
  const std::optional<WString> model = ModelName(library);
  if (!model) return std::nullopt;
  RegKey key;
  const WString path = L"Software\\Tovan\\Halvex\\FaxDriverInstaller\\Tovan " + *model + L" series FAX";
  if (key.Open(HKEY_LOCAL_MACHINE, path, KEY_READ) != ERROR_SUCCESS) return std::nullopt;
  std::array<WCHAR, kInstallerTextBytes / sizeof(WCHAR)> text{};
  DWORD size = kInstallerTextBytes;
  if (key.Read(L"InstallerLID", text.data(), size) != ERROR_SUCCESS) return std::nullopt;
  return WString(text.data(), std::find(text.begin(), text.end(), L'\0'));
}

bool CanBeOpened(const WString& path) {
  const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                  OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  CloseHandle(file);
  return true;
}

}  // namespace

Language LanguageFromInstallerText(WStringView text) {
  return std::wcstoul(WString(text).c_str(), nullptr, 16);
}

Language LanguageFromSystem(LANGID identifier) {
  if (identifier == kChineseTaiwan || identifier == kChineseMainland) return identifier;
  const Language primary = PRIMARYLANGID(identifier);
  return FindLanguage(primary) == nullptr ? 0 : primary;
}

Language InstalledLanguage(HMODULE library) {
  if (const std::optional<WString> text = InstallerText(library)) return LanguageFromInstallerText(*text);
  return LanguageFromSystem(GetSystemDefaultLangID());
}

bool IsRightToLeft(HMODULE library) { return InstalledLanguage(library) == kArabic; }

UINT RightToLeftMessageFlags(HMODULE library) {
  return IsRightToLeft(library) ? MB_RIGHT | MB_RTLREADING : 0;
}

WStringView LanguageCode(Language language) {
  const LanguageRow* row = FindLanguage(language);
  return row == nullptr ? kFallbackCode : row->code;
}

WString CompanionName(Companion companion, WCHAR letter, WStringView languageCode) {
  const CompanionShape shape = ShapeOf(companion);
  return WString(shape.prefix).append(1, letter).append(languageCode).append(shape.extension);
}

WString CompanionPath(Companion companion, HMODULE library) {
  const WCHAR letter = ModelLetter(library, NameMatch::kIgnoreCase);
  if (letter == 0) return {};
  const WStringView code = LanguageCode(InstalledLanguage(library));
  WString path = PathBeside(library, CompanionName(companion, letter, code));
  if (CanBeOpened(path)) return path;
  return PathBeside(library, CompanionName(companion, letter, kFallbackCode));
}

HMODULE LoadResourceLibrary(HMODULE library) {
  return Module::Load(CompanionPath(Companion::kResourceLibrary, library)).Detach();
}

WString LoadText(HMODULE resources, UINT identifier, std::size_t capacity) {
  // A null module would mean the program's own strings.
  if (resources == nullptr || capacity == 0) return {};
  WString text(capacity, L'\0');
  const int length = LoadStringW(resources, identifier, text.data(), static_cast<int>(capacity));
  text.resize(static_cast<std::size_t>(length > 0 ? length : 0));
  return text;
}

}  // namespace orv::ui
