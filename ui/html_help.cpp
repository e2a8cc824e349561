// Calls into the HTML Help control.
#include "ui/html_help.h"

#include <htmlhelp.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "platform/module.h"
#include "platform/pointer_check.h"

namespace orv::ui {
namespace {

using HtmlHelpCall = HWND(WINAPI*)(HWND, const WCHAR*, UINT, DWORD_PTR);

constexpr WCHAR kControl[] = L"Hhctrl.ocx";
constexpr WCHAR kRegisteredControl[] = L"CLSID\\{ADB880A6-D8FF-11CF-9377-00AA003B7A11}\\InprocServer32";
constexpr WORD kWideEntryOrdinal = 15;

// The published type of the header depends on UNICODE only in the spelling of its string pointers.
using WindowTypeRecord = HH_WINTYPE;
static_assert(sizeof(WindowTypeRecord) == 280);

constexpr DWORD kPopupMembers = 26;  // properties, extended styles, rectangle
constexpr DWORD kNoToolbar = 0x8000;
const HWND kUnknownType = reinterpret_cast<HWND>(static_cast<INT_PTR>(-1));

#if defined(ORV_FAULT_SEAM)
HtmlHelpCall g_replacement = nullptr;
HtmlHelpCall Replacement() { return g_replacement; }
#else
constexpr HtmlHelpCall Replacement() { return nullptr; }
#endif

WString SystemControlPath() {
  std::array<WCHAR, MAX_PATH> folder{};
  const UINT length = GetSystemDirectoryW(folder.data(), MAX_PATH);
  return length == 0 || length >= MAX_PATH ? WString() : WString(folder.data(), length) + L'\\' + kControl;
}

WString RegisteredControlPath() {
  std::array<WCHAR, MAX_PATH> path{};
  DWORD size = sizeof(path);
  const LSTATUS status = RegGetValueW(HKEY_CLASSES_ROOT, kRegisteredControl, nullptr, RRF_RT_REG_SZ, nullptr,
                                      path.data(), &size);
  return status == ERROR_SUCCESS ? WString(path.data()) : WString();
}

// Once loaded the control stays for the process's life: its windows and threads outlive the call. A bare name in the
// registry means the system's.
HMODULE LoadControl() {
  if (const HMODULE loaded = GetModuleHandleW(kControl)) return loaded;
  if (const HMODULE control = Module::Load(RegisteredControlPath()).Detach()) return control;
  return Module::Load(SystemControlPath()).Detach();
}

HWND CallHtmlHelp(HWND caller, const WCHAR* file, UINT command, DWORD_PTR data) {
  if (const HtmlHelpCall replacement = Replacement()) return replacement(caller, file, command, data);
  const HMODULE control = LoadControl();
  if (control == nullptr) return nullptr;
  const auto entry = reinterpret_cast<HtmlHelpCall>(
      reinterpret_cast<void*>(GetProcAddress(control, MAKEINTRESOURCEA(kWideEntryOrdinal))));
  return entry == nullptr ? nullptr : entry(caller, file, command, data);
}

// Where the query's answer lands differs between controls: one stores a pointer to its own record, the other
// copies the record. So it gets a zeroed record, and the size field and the name behind it, which a pointer
// leaves at zero, tell the two apart.
struct QueryAnswer {
  WindowTypeRecord copied{};

  const WindowTypeRecord* Record() const {
    if (copied.cbStruct == sizeof(WindowTypeRecord) && copied.pszType != nullptr) return &copied;
    const void* stored = nullptr;
    std::memcpy(&stored, &copied, sizeof(stored));
    if (!IsReadable(stored, sizeof(WindowTypeRecord))) return nullptr;
    const auto* record = static_cast<const WindowTypeRecord*>(stored);
    return record->cbStruct == sizeof(WindowTypeRecord) ? record : nullptr;
  }
};

void CopyCaption(const WindowTypeRecord& record, HelpWindowType& type) {
  const void* text = record.pszCaption;
  if (text == nullptr) return;
  const std::size_t most = kHelpCaptionCapacity - 1;
  if (record.fUniCodeStrings) {
    const auto* wide = static_cast<const WCHAR*>(text);
    if (!IsBadStringPtrW(wide, most)) std::copy_n(wide, wcsnlen(wide, most), type.caption.begin());
    return;
  }
  const auto* narrow = static_cast<const char*>(text);
  if (IsBadStringPtrA(narrow, most)) return;
  MultiByteToWideChar(CP_ACP, 0, narrow, static_cast<int>(strnlen(narrow, most)), type.caption.data(),
                      static_cast<int>(most));
}

std::string ToNarrow(const WCHAR* text) {
  const int size = WideCharToMultiByte(CP_ACP, 0, text, -1, nullptr, 0, nullptr, nullptr);
  std::string narrow(static_cast<std::size_t>(std::max(size, 1)), '\0');
  WideCharToMultiByte(CP_ACP, 0, text, -1, narrow.data(), size, nullptr, nullptr);
  return narrow;
}

// The strings' width is a field of the record, so their pointers go through void.
template <class Field>
void SetText(Field& field, const void* text) {
  field = static_cast<Field>(text);
}

}  // namespace

std::optional<HelpWindowType> QueryHelpWindowType(HWND owner, const WString& file, const WString& name) {
  QueryAnswer answer;
  const WString typeOfFile = file + L'>' + name;
  const HWND found =
      CallHtmlHelp(owner, typeOfFile.c_str(), HH_GET_WIN_TYPE, reinterpret_cast<DWORD_PTR>(&answer.copied));
  if (found == kUnknownType) return std::nullopt;
  const WindowTypeRecord* record = answer.Record();
  if (record == nullptr) return std::nullopt;
  HelpWindowType type;
  type.wideStrings = record->fUniCodeStrings;
  type.rectangle = record->rcWindowPos;
  CopyCaption(*record, type);
  return type;
}

void DefineHelpPopup(HWND owner, const WString& file, const WString& name, const HelpWindowType& type) {
  const std::string narrowName = ToNarrow(name.c_str());
  const std::string narrowCaption = ToNarrow(type.caption.data());
  WindowTypeRecord record{};
  record.cbStruct = sizeof(record);
  record.fUniCodeStrings = type.wideStrings;
  SetText(record.pszType, type.wideStrings ? static_cast<const void*>(name.c_str()) : narrowName.c_str());
  SetText(record.pszCaption,
          type.wideStrings ? static_cast<const void*>(type.caption.data()) : narrowCaption.c_str());
  record.fsValidMembers = kPopupMembers;
  record.fsWinProperties = kNoToolbar;
  record.dwExStyles = WS_EX_TOOLWINDOW;
  record.rcWindowPos = type.rectangle;
  CallHtmlHelp(owner, file.c_str(), HH_SET_WIN_TYPE, reinterpret_cast<DWORD_PTR>(&record));
}

HWND DisplayHelpTopic(HWND owner, const WString& topic) {
  return CallHtmlHelp(owner, topic.c_str(), HH_DISPLAY_TOPIC, 0);
}

bool EnsureHtmlHelpLoaded() {
  if (GetModuleHandleW(kControl) != nullptr) return true;
  DWORD_PTR cookie = 0;
  CallHtmlHelp(nullptr, nullptr, HH_INITIALIZE, reinterpret_cast<DWORD_PTR>(&cookie));
  return true;
}

#if defined(ORV_FAULT_SEAM)
void ReplaceHtmlHelp(HtmlHelpFunction function) { g_replacement = function; }
#endif

}  // namespace orv::ui
