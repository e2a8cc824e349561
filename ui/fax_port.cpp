// Fax ports: the list comes from the driver's own settings file.
#include "ui/fax_port.h"

#include <winspool.h>

#include <array>

#include "platform/identity.h"

namespace orv::ui {
namespace {

constexpr DWORD kDirectoryBytes = 520;
constexpr DWORD kPrefixCapacity = 512;

WString FaxSettingsPath(HMODULE library) {
  const WCHAR letter = ModelLetter(library, NameMatch::kIgnoreCase);
  std::array<WCHAR, kDirectoryBytes / sizeof(WCHAR)> directory{};
  DWORD needed = 0;
  if (letter == 0 ||
      !GetPrinterDriverDirectoryW(nullptr, nullptr, 1, reinterpret_cast<BYTE*>(directory.data()),
                                  kDirectoryBytes, &needed)) {
    return {};
  }
  return WString(directory.data()).append(L"\\XHTFCF").append(1, letter).append(L".ini");
}

}  // namespace

bool StartsWithListedPrefix(WStringView port, WStringView prefixes) {
  while (!prefixes.empty()) {
    const std::size_t comma = prefixes.find(L',');
    const WStringView piece = prefixes.substr(0, comma);
    if (!piece.empty() && port.starts_with(piece)) return true;
    prefixes.remove_prefix(comma == WStringView::npos ? prefixes.size() : comma + 1);
  }
  return false;
}

bool IsFaxPort(WStringView port, HMODULE library) {
  const WString path = FaxSettingsPath(library);
  if (path.empty()) return false;
  std::array<WCHAR, kPrefixCapacity> prefixes{};
  GetPrivateProfileStringW(L"FaxTypeSupportedPorts", L"PortPrefix", L"", prefixes.data(), kPrefixCapacity,
                           path.c_str());
  return StartsWithListedPrefix(port, prefixes.data());
}

}  // namespace orv::ui
