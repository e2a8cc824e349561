// The one way to the Windows headers. On the native build the same names come from platform/host.
#pragma once

#include <windows.h>

#include <unknwn.h>

#include <string>
#include <string_view>

// A literal of UTF-16 characters: WCHAR is wchar_t on Windows and char16_t natively.
#if defined(_WIN32)
#define ORV_W(text) L##text
#else
#define ORV_W(text) u##text
#endif

namespace orv {

using WString = std::basic_string<WCHAR>;
using WStringView = std::basic_string_view<WCHAR>;

}  // namespace orv
