// Reading the catalogue into service descriptions, and the few edits of catalogue files.
#include "profiles/catalogue.h"

#include <algorithm>
#include <string_view>
#include <unordered_set>

#include "platform/boundary.h"
#include "platform/identity.h"
#include "platform/private_profile.h"
#include "platform/process.h"
#include "profiles/catalogue_lines.h"
#include "profiles/catalogue_text.h"
#include "props/prop_value.h"
#include "props/tag_array.h"

namespace orv::catalogue {
namespace {

// A section is read into a buffer of so many characters first, then into one twice as large as long as it is full: the
// time it takes grows with the section, not with its square.
constexpr std::size_t kSectionRoom = 2048;
constexpr std::size_t kValueRoom = 2048;

constexpr TagArray kColumnTags{
    PR_INSTANCE_KEY,       PR_SERVICE_NAME_W,     PR_PROVIDER_DISPLAY_W,      PR_DISPLAY_NAME_W,
    PR_SERVICE_DLL_NAME_W, PR_SERVICE_ENTRY_NAME, PR_SERVICE_SUPPORT_FILES_W, PR_SERVICE_DELETE_FILES_W,
    PR_SERVICE_UID,        PR_RESOURCE_FLAGS};
static_assert(kColumnTags.cValues == kColumnCount);

// The given path or our own; empty when there is neither, which counts as a missing file.
WString Resolve(const WString& path) { return path.empty() ? DefaultPath() : path; }

// Calls `visit` with each line of a section block, up to its first failure.
template <class Visit>
HRESULT ForEachLine(const WCHAR* lines, Visit visit) {
  for (WStringView line(lines); !line.empty(); line = WStringView(line.data() + line.size() + 1)) {
    if (const HRESULT hr = visit(line); FAILED(hr)) return hr;
  }
  return S_OK;
}

ULONG CountLines(const WCHAR* lines) {
  ULONG count = 0;
  ForEachLine(lines, [&](WStringView) {
    ++count;
    return S_OK;
  });
  return count;
}

// Writes into one service description: the root array of ten values, to which everything that they point at is chained.
class Description {
 public:
  // `scratch` saves a catalogue of many services a block a value.
  Description(SPropValue* row, WCHAR letter, WString& scratch)
      : row_(row), letter_(letter), scratch_(scratch) {}

  HRESULT Apply(const KeyLine& line);

 private:
  template <class T>
  HRESULT Chain(std::size_t bytes, T** out) {
    return AllocateChained(bytes, row_, reinterpret_cast<void**>(out));
  }
  HRESULT SetText(Column column, WStringView text);
  HRESULT SetAnsi(Column column, WStringView text);
  HRESULT SetFormatted(Column column, WStringView format);
  HRESULT SetFiles(Column column, WStringView format);

  SPropValue* row_;
  WCHAR letter_;
  WString& scratch_;
};

HRESULT Description::SetText(Column column, WStringView text) {
  WCHAR* copy = nullptr;
  if (const HRESULT hr = Chain((text.size() + 1) * sizeof(WCHAR), &copy); FAILED(hr)) return hr;
  text.copy(copy, text.size());
  row_[column].Value.lpszW = copy;
  return S_OK;
}

HRESULT Description::SetAnsi(Column column, WStringView text) {
  const int length = static_cast<int>(text.size());
  const int size = WideCharToMultiByte(CP_ACP, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
  char* copy = nullptr;
  if (const HRESULT hr = Chain(static_cast<std::size_t>(size) + 1, &copy); FAILED(hr)) return hr;
  WideCharToMultiByte(CP_ACP, 0, text.data(), length, copy, size, nullptr, nullptr);
  row_[column].Value.lpszA = copy;
  return S_OK;
}

HRESULT Description::SetFormatted(Column column, WStringView format) {
  const HRESULT hr = FormatWithLetter(format, letter_, kLibraryNameRoom, scratch_);
  return FAILED(hr) ? hr : SetText(column, scratch_);
}

HRESULT Description::SetFiles(Column column, WStringView format) {
  if (const HRESULT hr = FormatWithLetter(format, letter_, kFileListRoom, scratch_); FAILED(hr)) return hr;
  const std::vector<WStringView> pieces = SplitFileList(scratch_);
  // Each comma makes room for a terminator; the last piece needs one more.
  LPWSTR* slots = nullptr;
  const std::size_t characters = (scratch_.size() + 1) * sizeof(WCHAR);
  if (const HRESULT hr = Chain(pieces.size() * sizeof(LPWSTR) + characters, &slots); FAILED(hr)) return hr;
  auto* text = reinterpret_cast<WCHAR*>(slots + pieces.size());
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    slots[i] = text;
    text += pieces[i].copy(text, pieces[i].size()) + 1;
  }
  row_[column].Value.MVszW = {static_cast<ULONG>(pieces.size()), slots};
  return S_OK;
}

HRESULT Description::Apply(const KeyLine& line) {
  switch (line.tag) {
    case PR_DISPLAY_NAME_W:
      return SetText(kDisplayName, line.value);
    case PR_SERVICE_DLL_NAME_W:
      return SetFormatted(kDllName, line.value);
    case PR_SERVICE_ENTRY_NAME:
      return SetAnsi(kEntryName, line.value);
    case PR_SERVICE_SUPPORT_FILES_W:
      return SetFiles(kSupportFiles, line.value);
    case PR_SERVICE_DELETE_FILES_W:
      return SetFiles(kDeleteFiles, line.value);
    default:  // PR_RESOURCE_FLAGS, which accumulate over lines
      row_[kResourceFlags].Value.l |= static_cast<LONG>(ParseResourceFlags(line.value));
      return S_OK;
  }
}

HRESULT BuildRow(const ServiceLine& line, SRow& row) {
  MapiBuffer<SPropValue> values;
  if (const HRESULT hr = values.AllocateArray(kColumnCount); FAILED(hr)) return hr;
  for (ULONG i = 0; i < kColumnCount; ++i) values[i].ulPropTag = kColumnTags.aulPropTag[i];

  WCHAR* name = nullptr;
  const std::size_t characters = line.name.size() + line.text.size() + 2;
  if (const HRESULT hr = values.More(characters * sizeof(WCHAR), &name); FAILED(hr)) return hr;
  WCHAR* text = name + line.name.copy(name, line.name.size()) + 1;
  line.text.copy(text, line.text.size());
  // The key ends in the middle of the name's terminator: others compare it at exactly this length.
  const auto keySize = static_cast<ULONG>(line.name.size() * sizeof(WCHAR) + 1);
  values[kInstanceKey].Value.bin = {keySize, reinterpret_cast<BYTE*>(name)};
  values[kServiceName].Value.lpszW = name;
  values[kProviderDisplay].Value.lpszW = text;
  row.cValues = kColumnCount;
  row.lpProps = values.Detach();
  return S_OK;
}

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

// MAPI_E_TOO_BIG for a section of more than kMostCharacters.
HRESULT ReadBounded(const WString& path, const WString& section, MapiBuffer<WCHAR>& lines) {
  if (path.empty()) return MAPI_E_CALL_FAILED;
  // Room for the last two terminators, which no full buffer has.
  constexpr std::size_t kMost = CatalogueText::kMostCharacters + 3;
  for (std::size_t size = kSectionRoom;; size = std::min(2 * size, kMost)) {
    if (const HRESULT hr = lines.AllocateArray(size); FAILED(hr)) return hr;
    const SectionRead read = ReadProfileSection(path, section, {lines.Get(), size});
    // A full buffer is told by the count alone, whatever else the system says of it.
    const bool full = read.count + 2 >= size;
    if (full && size != kMost) continue;
    if (!full && read.error == ERROR_SUCCESS && read.count != 0) return S_OK;
    lines.Reset();
    if (full) return MAPI_E_TOO_BIG;
    return read.error == ERROR_FILE_NOT_FOUND ? MAPI_E_CALL_FAILED : MAPI_E_INVALID_PARAMETER;
  }
}

// The sections of one catalogue, the file being read once; the platform is asked for those of which its text says
// nothing, and so every failure is the platform's to tell.
class Sections {
 public:
  explicit Sections(const WString& path) : path_(path), text_(ReadProfileText(path)) {}

  // Good until the next one is read. MAPI_E_TOO_BIG as above.
  HRESULT Read(const WCHAR* section, const WCHAR*& lines) {
    lines = text_.Section(section);
    if (lines != nullptr) return S_OK;
    const HRESULT hr = ReadBounded(path_, section, read_);
    lines = read_.Get();
    return hr;
  }

 private:
  const WString& path_;
  CatalogueText text_;
  MapiBuffer<WCHAR> read_;
};

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

const SPropTagArray* Columns() { return kColumnTags.Get(); }

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
