// The service catalogue, read as its file stands: what may be added to a profile.
#include <windows.h>

#include "diag/names.h"
#include "tools/orvctl/commands.h"
#include "tools/orvctl/errors.h"

namespace orvctl {
namespace {

struct Line {
  WideString name;
  WideString text;
};

WideString CataloguePath(const std::string& libraryName) {
  const WCHAR letter = ModelLetter(libraryName);
  if (letter == 0)
    throw CommandError(kNoLibrary, libraryName + " is not the file name of any model's library");
  return OwnFolder() + L"XHTASV" + letter + L".ini";
}

// A full buffer is told only by the count returned: the size less two.
WideString ReadSection(const WideString& path, const WCHAR* section) {
  WideString text(4096, L'\0');
  for (;;) {
    const auto size = static_cast<DWORD>(text.size());
    const DWORD count = GetPrivateProfileSectionW(section, text.data(), size, path.c_str());
    if (count < size - 2) {
      text.resize(count);
      return text;
    }
    text.resize(text.size() * 2);
  }
}

std::vector<Line> ReadLines(const WideString& path, const WCHAR* section) {
  const WideString text = ReadSection(path, section);
  std::vector<Line> lines;
  for (size_t at = 0; at < text.size();) {
    const WideString line = text.c_str() + at;
    at += line.size() + 1;
    const size_t equals = line.find(L'=');
    if (equals == WideString::npos) continue;
    const size_t nameEnd = line.find_last_not_of(L" \t", equals - 1);
    const size_t textBegin = line.find_first_not_of(L" \t", equals + 1);
    if (equals == 0 || nameEnd == WideString::npos || textBegin == WideString::npos) continue;
    lines.push_back({line.substr(0, nameEnd + 1), line.substr(textBegin)});
  }
  return lines;
}

WideString ValueOf(const std::vector<Line>& lines, const WCHAR* key) {
  WideString value;
  for (const Line& line : lines) {
    if (line.name == key) value = line.text;
  }
  return value;
}

// "%c" is the model's letter and "%%" a percent sign; nothing else is known to the format.
WideString WithLetter(const WideString& format, WCHAR letter) {
  WideString out;
  for (size_t i = 0; i < format.size(); ++i) {
    const WCHAR next = format[i] == L'%' && i + 1 < format.size() ? format[i + 1] : L'\0';
    if (next == L'c') out += letter;
    if (next == L'%') out += L'%';
    if (next == L'c' || next == L'%') {
      ++i;
    } else {
      out += format[i];
    }
  }
  return out;
}

}  // namespace

Report ListAvailableServices(const std::string& libraryName) {
  const WideString path = CataloguePath(libraryName);
  if (GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES) {
    throw CommandError(
        kFailed, "cannot read the catalogue " + ToUtf8(path) + ": " + diag::SystemErrorName(GetLastError()));
  }
  const std::vector<Line> defaults = ReadLines(path, L"Default Services");
  Listing listing{{{"service", "Service"},
                   {"displayName", "Name"},
                   {"provider", "Provider"},
                   {"library", "Library"},
                   {"flags", "Flags"},
                   {"default", "Default"}},
                  {}};
  for (const Line& service : ReadLines(path, L"Services")) {
    const std::vector<Line> section = ReadLines(path, service.name.c_str());
    const WideString file = WithLetter(ValueOf(section, L"PR_SERVICE_DLL_NAME"), ModelLetter(libraryName));
    listing.rows.push_back({ToUtf8(service.name), ToUtf8(ValueOf(section, L"PR_DISPLAY_NAME")),
                            ToUtf8(service.text), ToUtf8(file),
                            ToUtf8(ValueOf(section, L"PR_RESOURCE_FLAGS")),
                            Cell::YesNo(!ValueOf(defaults, service.name.c_str()).empty())});
  }
  return Report::Of(std::move(listing), "The catalogue lists no services.");
}

}  // namespace orvctl
