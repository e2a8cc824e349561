// Texts and templates of a provider's library in the language of the installation.
#include <algorithm>
#include <array>

#include "orv/kit/window.hpp"

namespace orv::kit {
namespace {

constexpr LANGID kEnglish = MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US);

struct Code {
  const wchar_t* letters;
  LANGID language;
};
// The last two letters of a companion's name.
constexpr Code kCodes[] = {
    {L"US", kEnglish}, {L"JP", 0x0411}, {L"FR", 0x040C}, {L"DE", 0x0407}, {L"IT", 0x0410}, {L"ES", 0x0C0A},
    {L"PT", 0x0416},   {L"NL", 0x0413}, {L"PL", 0x0415}, {L"RU", 0x0419}, {L"HU", 0x040E}, {L"CZ", 0x0405},
    {L"DK", 0x0406},   {L"NO", 0x0414}, {L"SE", 0x041D}, {L"FI", 0x040B}, {L"GR", 0x0408}, {L"TR", 0x041F},
    {L"AR", 0x0401},   {L"ID", 0x0421}, {L"KR", 0x0412}, {L"CN", 0x0804}, {L"TW", 0x0404}, {L"TH", 0x041E}};

std::wstring PathOf(HMODULE module) {
  std::array<wchar_t, MAX_PATH> path{};
  const DWORD size = GetModuleFileNameW(module, path.data(), MAX_PATH);
  return {path.data(), size < MAX_PATH ? size : 0};
}

std::wstring WithoutExtension(const std::wstring& path) { return path.substr(0, path.find_last_of(L'.')); }

bool IsSame(std::wstring_view one, std::wstring_view other) {
  return CompareStringOrdinal(one.data(), static_cast<int>(one.size()), other.data(),
                              static_cast<int>(other.size()), TRUE) == CSTR_EQUAL;
}

LANGID LanguageOf(HMODULE companion) {
  const std::wstring name = companion != nullptr ? WithoutExtension(PathOf(companion)) : std::wstring();
  const std::wstring letters = name.size() > 2 ? name.substr(name.size() - 2) : name;
  for (const Code& each : kCodes) {
    if (IsSame(each.letters, letters)) return each.language;
  }
  const WORD primary = PRIMARYLANGID(GetUserDefaultUILanguage());
  for (const Code& each : kCodes) {
    if (PRIMARYLANGID(each.language) == primary) return each.language;
  }
  return kEnglish;
}

const wchar_t* LettersOf(LANGID language) {
  const auto found = std::find_if(std::begin(kCodes), std::end(kCodes),
                                  [&](const Code& each) { return each.language == language; });
  return found != std::end(kCodes) ? found->letters : kCodes[0].letters;
}

// Numbers of RT_DIALOG and RT_STRING.
enum class Type : WORD { kDialog = 5, kStrings = 6 };

const void* Find(HMODULE module, Type type, UINT name, LANGID language) {
  const HRSRC found = FindResourceExW(module, MAKEINTRESOURCEW(type), MAKEINTRESOURCEW(name), language);
  const HGLOBAL loaded = found != nullptr ? LoadResource(module, found) : nullptr;
  return loaded != nullptr ? LockResource(loaded) : nullptr;
}

// Sixteen texts a block, each its length and its characters.
std::wstring TextIn(const void* block, UINT identifier) {
  const auto* at = static_cast<const WORD*>(block);
  for (UINT before = identifier % 16; before > 0; --before) at += 1 + *at;
  return {reinterpret_cast<const wchar_t*>(at + 1), *at};
}

}  // namespace

Language::Language(HMODULE own, HMODULE companion) noexcept : own_(own), id_(kEnglish) {
  try {
    id_ = LanguageOf(companion);
  } catch (const std::bad_alloc&) {
    // It is shown in English then.
  }
}

bool Language::IsRightToLeft() const noexcept { return PRIMARYLANGID(id_) == LANG_ARABIC; }

std::wstring Language::Text(UINT identifier) const {
  for (const LANGID language : {id_, kEnglish}) {
    const void* block = Find(own_, Type::kStrings, identifier / 16 + 1, language);
    std::wstring text = block != nullptr ? TextIn(block, identifier) : std::wstring();
    if (!text.empty()) return text;
  }
  return {};
}

std::wstring Language::Text(UINT identifier, std::span<const std::wstring> values) const {
  std::wstring text = Text(identifier);
  for (size_t at = text.find(L'%'); at != std::wstring::npos; at = text.find(L'%', at)) {
    const size_t number = at + 1 < text.size() ? static_cast<size_t>(text[at + 1] - L'1') : values.size();
    const bool isValue = number < values.size() && number < 9;
    if (isValue) text.replace(at, 2, values[number]);
    at += isValue ? values[number].size() : 1;
  }
  return text;
}

const DLGTEMPLATE* Language::Template(WORD identifier) const noexcept {
  const void* found = Find(own_, Type::kDialog, identifier, id_);
  return static_cast<const DLGTEMPLATE*>(found != nullptr ? found
                                                          : Find(own_, Type::kDialog, identifier, kEnglish));
}

std::wstring Language::HelpFile() const {
  const std::wstring name = WithoutExtension(PathOf(own_));
  const std::wstring file = name + LettersOf(id_) + L".chm";
  const bool isThere = GetFileAttributesW(file.c_str()) != INVALID_FILE_ATTRIBUTES;
  return isThere ? file : name + LettersOf(kEnglish) + L".chm";
}

HMODULE ModuleOf(const void* address) noexcept {
  HMODULE module = nullptr;
  constexpr DWORD kFlags =
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
  GetModuleHandleExW(kFlags, static_cast<LPCWSTR>(address), &module);
  return module;
}

}  // namespace orv::kit
