// Sections by the text where it is plain, else by the platform; values by their key.
#include "profiles/catalogue_rows.h"

#include <algorithm>

#include "platform/private_profile.h"
#include "props/tag_array.h"

namespace orv::catalogue {
namespace {

// A section is read into a buffer of so many characters first, then into one twice as large as long as it is full: the
// time it takes grows with the section, not with its square.
constexpr std::size_t kSectionRoom = 2048;

constexpr TagArray kColumnTags{
    PR_INSTANCE_KEY,       PR_SERVICE_NAME_W,     PR_PROVIDER_DISPLAY_W,      PR_DISPLAY_NAME_W,
    PR_SERVICE_DLL_NAME_W, PR_SERVICE_ENTRY_NAME, PR_SERVICE_SUPPORT_FILES_W, PR_SERVICE_DELETE_FILES_W,
    PR_SERVICE_UID,        PR_RESOURCE_FLAGS};
static_assert(kColumnTags.cValues == kColumnCount);

}  // namespace

ULONG CountLines(const WCHAR* lines) {
  ULONG count = 0;
  ForEachLine(lines, [&](WStringView) {
    ++count;
    return S_OK;
  });
  return count;
}

const SPropTagArray* Columns() { return kColumnTags.Get(); }

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

Sections::Sections(const WString& path) : path_(path), text_(ReadProfileText(path)) {}

HRESULT Sections::Read(const WCHAR* section, const WCHAR*& lines) {
  lines = text_.Section(section);
  if (lines != nullptr) return S_OK;
  const HRESULT hr = ReadBounded(path_, section, read_);
  lines = read_.Get();
  return hr;
}

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

HRESULT BuildRow(const ServiceLine& line, SRow& row, ULONG moreColumns) {
  MapiBuffer<SPropValue> values;
  if (const HRESULT hr = values.AllocateArray(kColumnCount + moreColumns); FAILED(hr)) return hr;
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
  row.cValues = kColumnCount + moreColumns;
  row.lpProps = values.Detach();
  return S_OK;
}

}  // namespace orv::catalogue
