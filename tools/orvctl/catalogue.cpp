#include "tools/orvctl/catalogue.h"

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

[[noreturn]] void ThrowUnreadable(const WideString& path, DWORD error) {
  throw CommandError(kFailed,
                     "cannot read the catalogue " + ToUtf8(path) + ": " + diag::SystemErrorName(error));
}

// A full buffer is told only by the count returned: the size less two. A section that is missing may be answered as
// a file that was not found.
WideString ReadSection(const WideString& path, const WCHAR* section) {
  WideString text(4096, L'\0');
  for (;;) {
    const auto size = static_cast<DWORD>(text.size());
    SetLastError(ERROR_SUCCESS);
    const DWORD count = GetPrivateProfileSectionW(section, text.data(), size, path.c_str());
    const DWORD error = GetLastError();
    if (count == 0 && error != ERROR_SUCCESS && error != ERROR_FILE_NOT_FOUND) ThrowUnreadable(path, error);
    if (count < size - 2) return text.substr(0, count);
    text.resize(text.size() * 2);
  }
}

// "name=text" with the blanks round both dropped; nothing where either is empty.
std::optional<Line> ParseLine(const WideString& line) {
  const size_t equals = line.find(L'=');
  if (equals == WideString::npos || equals == 0) return std::nullopt;
  const size_t nameEnd = line.find_last_not_of(L" \t", equals - 1);
  const size_t textBegin = line.find_first_not_of(L" \t", equals + 1);
  if (nameEnd == WideString::npos || textBegin == WideString::npos) return std::nullopt;
  return Line{line.substr(0, nameEnd + 1), line.substr(textBegin)};
}

std::vector<Line> ReadLines(const WideString& path, const WCHAR* section) {
  const WideString text = ReadSection(path, section);
  std::vector<Line> lines;
  for (size_t at = 0; at < text.size();) {
    const WideString line = text.c_str() + at;
    at += line.size() + 1;
    if (std::optional<Line> parsed = ParseLine(line)) lines.push_back(*std::move(parsed));
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

std::vector<Line> ReadServiceLines(const WideString& path) {
  if (GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES) ThrowUnreadable(path, GetLastError());
  return ReadLines(path, L"Services");
}

}  // namespace

std::vector<CatalogueSection> ReadCatalogueSections(const std::string& libraryName) {
  const WideString path = CataloguePath(libraryName);
  std::vector<CatalogueSection> sections;
  const auto add = [&](const WideString& name) {
    sections.push_back({ToUtf8(name), ReadSection(path, name.c_str()).size()});
  };
  const std::vector<Line> services = ReadServiceLines(path);
  add(L"Services");
  add(L"Default Services");
  for (const Line& service : services) add(service.name);
  return sections;
}

std::vector<OfferedService> ReadCatalogue(const std::string& libraryName) {
  const WideString path = CataloguePath(libraryName);
  const std::vector<Line> services = ReadServiceLines(path);
  const std::vector<Line> defaults = ReadLines(path, L"Default Services");
  std::vector<OfferedService> offered;
  for (const Line& service : services) {
    const std::vector<Line> section = ReadLines(path, service.name.c_str());
    const WideString file = WithLetter(ValueOf(section, L"PR_SERVICE_DLL_NAME"), ModelLetter(libraryName));
    offered.push_back({ToUtf8(service.name), ToUtf8(ValueOf(section, L"PR_DISPLAY_NAME")),
                       ToUtf8(service.text), ToUtf8(file), ToUtf8(ValueOf(section, L"PR_RESOURCE_FLAGS")),
                       !ValueOf(defaults, service.name.c_str()).empty()});
  }
  return offered;
}

Report ListAvailableServices(const std::string& libraryName) {
  Listing listing{{{"service", "Service"},
                   {"displayName", "Name"},
                   {"provider", "Provider"},
                   {"library", "Library"},
                   {"flags", "Flags"},
                   {"default", "Default"}},
                  {}};
  for (const OfferedService& service : ReadCatalogue(libraryName)) {
    listing.rows.push_back({service.name, service.displayName, service.provider, service.library,
                            service.flags, Cell::YesNo(service.isDefault)});
  }
  return Report::Of(std::move(listing), "The catalogue lists no services.");
}

}  // namespace orvctl
