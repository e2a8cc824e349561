// HTML Help, found at run time: without its control every operation here does nothing and answers "none".
#pragma once

#include <array>
#include <cstddef>
#include <optional>

#include "platform/win.h"

namespace orv::ui {

inline constexpr std::size_t kHelpCaptionCapacity = 312;

// What we use of a help window type.
struct HelpWindowType {
  BOOL wideStrings = FALSE;
  std::array<WCHAR, kHelpCaptionCapacity> caption{};
  RECT rectangle{};
};

// The window type `name` as the help file defines it; none when HTML Help does not know it.
std::optional<HelpWindowType> QueryHelpWindowType(HWND owner, const WString& file, const WString& name);

// Defines a popup for the help file: placed at the type's rectangle, without tool bar, with a tool window's
// frame.
void DefineHelpPopup(HWND owner, const WString& file, const WString& name, const HelpWindowType& type);

// Shows a topic ("file.chm::/topic.htm>window type"); the help window, or null.
HWND DisplayHelpTopic(HWND owner, const WString& topic);

// Initialises HTML Help unless its control is loaded already; always true. Nothing in the library calls it yet: help
// loads the control when it shows something.
bool EnsureHtmlHelpLoaded();

#if defined(ORV_FAULT_SEAM)
using HtmlHelpFunction = HWND(WINAPI*)(HWND caller, const WCHAR* file, UINT command, DWORD_PTR data);
// Tests put a control of their own in HTML Help's place; null removes it again.
void ReplaceHtmlHelp(HtmlHelpFunction function);
#endif

}  // namespace orv::ui
