// The language of the installation, and the companion files that hold its texts and help. All of it is found
// from the library's own file name, so every operation takes the library's module.
#pragma once

#include <cstddef>
#include <optional>

#include "platform/win.h"

namespace orv::ui {

// Identifier that the language table is keyed by: a primary language, or a whole identifier for Chinese.
using Language = ULONG;
inline constexpr Language kArabic = 1;

// The four kinds of companion that have one file a language.
enum class Companion {
  kResourceLibrary,        // XHTFC<letter><LL>.dll
  kSecondResourceLibrary,  // XHTFL<letter><LL>.dll
  kContextHelp,            // XHTFC<letter><LL>.chm
  kMainHelp,               // XHTFH<letter><LL>.chm
};

// The installer's text is a hexadecimal number; whatever does not read as one is 0, which no row serves.
Language LanguageFromInstallerText(WStringView text);
// The system's identifier as the table keys it; 0 for a language without companions.
Language LanguageFromSystem(LANGID identifier);
// The installer's choice for the model of `library`, else the system's default language.
Language InstalledLanguage(HMODULE library);

bool IsRightToLeft(HMODULE library);
// Message box flags that go with it: right-aligned and reading from the right, or none.
UINT RightToLeftMessageFlags(HMODULE library);

// Two-letter code of a language; US for one that no row serves.
WStringView LanguageCode(Language language);
WString CompanionName(Companion companion, WCHAR letter, WStringView languageCode);
// Full path beside the library: the language's file if it can be opened, else the US one, unchecked. Empty
// when the library's file name belongs to no model.
WString CompanionPath(Companion companion, HMODULE library);

// Loads the resource library of the language as an ordinary module (providers receive the handle and may ask
// its name); null on failure. The caller frees it.
HMODULE LoadResourceLibrary(HMODULE library);

// Text of a string resource, at most `capacity` characters with its terminator; empty when it is missing.
WString LoadText(HMODULE resources, UINT identifier, std::size_t capacity);

}  // namespace orv::ui
