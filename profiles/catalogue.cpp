// Reading the catalogue into service descriptions, and the few edits of catalogue files.
#include "profiles/catalogue.h"

#include <algorithm>
#include <string_view>
#include <unordered_set>

#include "platform/boundary.h"
#include "platform/identity.h"
#include "platform/private_profile.h"
#include "platform/process.h"
#include "profiles/catalogue_rows.h"
#include "props/prop_value.h"

namespace orv::catalogue {
namespace {

constexpr std::size_t kValueRoom = 2048;

// The given path or our own; empty when there is neither, which counts as a missing file.
WString Resolve(const WString& path) { return path.empty() ? DefaultPath() : path; }

HRESULT BuildRows(const WCHAR* lines, RowSetPtr& rows) {
  const ULONG count = CountLines(lines);
  if (const HRESULT hr = AllocateRoot(CbNewSRowSet(count), reinterpret_cast<void**>(rows.Put()));
      FAILED(hr)) {
    return hr;
  }
  return ForEachLine(lines, [&](WStringView line) -> HRESULT {
    ServiceLine service{};
    if (const HRESULT hr = ParseServiceLine(line, service); FAILED(hr)) return hr;
    const HRESULT hr = BuildRow(service, rows->aRow[rows->cRows]);
    if (SUCCEEDED(hr)) ++rows->cRows;
    return hr;
  });
}

// Once the lines are read, a name may stand only once. By hash, since a catalogue may be long.
HRESULT CheckInstanceKeys(const SRowSet& rows) {
  std::unordered_set<std::string_view> seen(rows.cRows);
  for (ULONG i = 0; i < rows.cRows; ++i) {
    const SBinary& key = rows.aRow[i].lpProps[kInstanceKey].Value.bin;
    if (key.cb == 0) return MAPI_E_INVALID_OBJECT;
    if (!seen.emplace(reinterpret_cast<const char*>(key.lpb), key.cb).second) return MAPI_E_COLLISION;
  }
  return S_OK;
}

// Every listed service must have a section of its own; MAPI_E_TOO_BIG when that is too long to be believed.
HRESULT Describe(Sections& sections, const WCHAR* service, Description description) {
  const WCHAR* lines = nullptr;
  if (const HRESULT hr = sections.Read(service, lines); FAILED(hr)) return hr;
  return ForEachLine(lines, [&](WStringView line) {
    const auto key = ParseKeyLine(line);
    return key ? description.Apply(*key) : S_OK;
  });
}

// Takes one description out; the others move up.
void LeaveOut(SRowSet& rows, ULONG index) {
  OrvFreeBuffer(rows.aRow[index].lpProps);
  SRow* const end = rows.aRow + rows.cRows;
  std::move(rows.aRow + index + 1, end, rows.aRow + index);
  --rows.cRows;
}

// A service whose section is too long is left out; the others are not kept from anybody by it.
HRESULT DescribeAll(Sections& sections, SRowSet& rows) {
  // File names take any spelling of our own name, the values of a catalogue only the exact one.
  const WCHAR letter = ModelLetter(process::Instance(), NameMatch::kExact);
  WString scratch;
  for (ULONG i = 0; i < rows.cRows;) {
    SPropValue* row = rows.aRow[i].lpProps;
    const HRESULT hr = Describe(sections, row[kServiceName].Value.lpszW, {row, letter, scratch});
    if (hr == MAPI_E_TOO_BIG) {
      LeaveOut(rows, i);
      continue;
    }
    if (FAILED(hr)) return hr;
    ++i;
  }
  return S_OK;
}

HRESULT LoadFrom(Sections& sections, const WCHAR* section, RowSetPtr& rows) {
  const WCHAR* lines = nullptr;
  HRESULT hr = sections.Read(section, lines);
  if (hr == MAPI_E_TOO_BIG) return MAPI_E_INVALID_PARAMETER;
  if (SUCCEEDED(hr)) hr = BuildRows(lines, rows);
  if (SUCCEEDED(hr)) hr = CheckInstanceKeys(*rows);
  return FAILED(hr) ? hr : DescribeAll(sections, *rows);
}

HRESULT ServiceNameOf(const SRow& row, WString& name) {
  const SPropValue* value = FindValue(row.lpProps, row.cValues, PR_SERVICE_NAME_W);
  const bool named = value != nullptr && value->Value.lpszW != nullptr && *value->Value.lpszW != 0;
  if (!named) return MAPI_E_INVALID_PARAMETER;
  name = value->Value.lpszW;
  return S_OK;
}

HRESULT CopyService(const WString& source, const WString& target, const WString& name) {
  const WString text = ReadProfileValue(source, kServices, name, kValueRoom);
  if (text.empty()) return S_OK;
  const WString defaultText = ReadProfileValue(source, kDefaultServices, name, kValueRoom);
  const bool listed = WriteProfileValue(target, kServices, name, text) &&
                      (defaultText.empty() || WriteProfileValue(target, kDefaultServices, name, defaultText));
  if (!listed) return MAPI_E_CALL_FAILED;
  MapiBuffer<WCHAR> lines;
  if (const HRESULT hr = ReadSection(source, name, lines); FAILED(hr)) return hr;
  return WriteProfileSection(target, name, lines.Get()) ? S_OK : MAPI_E_CALL_FAILED;
}

void RemoveNamed(const WString& path, const WString& name) {
  DeleteProfileKey(path, kDefaultServices, name);
  DeleteProfileKey(path, kServices, name);
  DeleteProfileSection(path, name);
}

}  // namespace

WString DefaultPath() {
  const HMODULE self = process::Instance();
  const WCHAR letter = ModelLetter(self, NameMatch::kIgnoreCase);
  if (letter == 0) return {};
  return PathBeside(self, WString(L"XHTASV") + letter + L".ini");
}

HRESULT ReadSection(const WString& path, const WString& section, MapiBuffer<WCHAR>& lines) {
  const HRESULT hr = ReadBounded(path, section, lines);
  return hr == MAPI_E_TOO_BIG ? MAPI_E_INVALID_PARAMETER : hr;
}

HRESULT Load(const WString& path, const WString& section, RowSetPtr& rows) {
  const HRESULT hr = Guarded([&] {
    const WString file = Resolve(path);
    Sections sections(file);
    return LoadFrom(sections, section.c_str(), rows);
  });
  if (FAILED(hr)) rows.Reset();
  return hr;
}

HRESULT CountServices(const WString& path, const WString& section, ULONG& count) {
  return Guarded([&]() -> HRESULT {
    MapiBuffer<WCHAR> lines;
    const HRESULT hr = ReadSection(Resolve(path), section, lines);
    if (SUCCEEDED(hr)) count = CountLines(lines.Get());
    return hr;
  });
}

HRESULT InstallService(const WString& source, const WString& target, const SRow& row) {
  return Guarded([&]() -> HRESULT {
    WString name;
    if (source.empty()) return MAPI_E_INVALID_PARAMETER;
    if (const HRESULT hr = ServiceNameOf(row, name); FAILED(hr)) return hr;
    const WString file = Resolve(target);
    if (file.empty()) return MAPI_E_CALL_FAILED;
    const HRESULT hr = CopyService(source, file, name);
    if (FAILED(hr)) RemoveNamed(file, name);
    return hr;
  });
}

void RemoveService(const WString& path, const SRow& row) {
  Guarded([&]() -> HRESULT {
    const WString file = Resolve(path);
    WString name;
    if (!file.empty() && SUCCEEDED(ServiceNameOf(row, name))) RemoveNamed(file, name);
    return S_OK;
  });
}

std::vector<WString> FilesToDelete(const SRow& row) {
  std::vector<WString> names;
  const SPropValue* files = FindValue(row.lpProps, row.cValues, PR_SERVICE_DELETE_FILES_W);
  if (files == nullptr) return names;
  for (ULONG i = 0; i < files->Value.MVszW.cValues; ++i) names.emplace_back(files->Value.MVszW.lppszW[i]);
  return names;
}

WString FindOnSearchPath(const WString& name, const WCHAR* extension, std::size_t room) {
  WString path(room, WCHAR{0});
  const DWORD length =
      SearchPathW(nullptr, name.c_str(), extension, static_cast<DWORD>(room), path.data(), nullptr);
  path.resize(length < room ? length : 0);
  return path;
}

}  // namespace orv::catalogue
