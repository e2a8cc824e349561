// Goes through the lists line by line, where loading a catalogue gives up at the first line that is wrong. The same
// functions read and convert the lines, so that both agree on what is.
#include "profiles/catalogue_report.h"

#include <algorithm>
#include <array>
#include <string>
#include <unordered_set>
#include <vector>

#include "orv/orvflags.h"
#include "platform/identity.h"
#include "platform/private_profile.h"
#include "platform/process.h"
#include "profiles/catalogue_rows.h"
#include "props/prop_list.h"
#include "props/tag_array.h"

namespace orv::catalogue {
namespace {

// Behind the ten columns of a service.
constexpr ULONG kLine = kColumnCount;
constexpr ULONG kIsDefault = kLine + 1;
constexpr ULONG kFurtherColumns = 2;

constexpr TagArray kFaultColumns{PR_ORV_CATALOGUE_LINE,   PR_ORV_CATALOGUE_SECTION_W,
                                 PR_SERVICE_NAME_W,       PR_ORV_CATALOGUE_REASON,
                                 PR_ORV_CATALOGUE_STATUS, PR_ORV_CATALOGUE_TEXT_W};

using Names = std::unordered_set<WString>;

struct Fault {
  ULONG line;
  WString section;
  WString service;
  ULONG reason;
  HRESULT status;
  WString text;
};

// A line of a list, taken apart as far as that is possible.
struct Listed {
  ULONG line = 0;
  WString whole;
  HRESULT status = S_OK;
  WString name;
  WString text;

  ServiceLine Parts() const { return {name, text}; }
};

SPropValue TextValue(ULONG tag, const WString& text) {
  SPropValue value{};
  value.ulPropTag = tag;
  value.Value.lpszW = const_cast<LPWSTR>(text.c_str());
  return value;
}

SPropValue NumberValue(ULONG tag, ULONG number) {
  SPropValue value{};
  value.ulPropTag = tag;
  value.Value.ul = number;
  return value;
}

HRESULT FillFaultRow(const Fault& fault, SRow& row) {
  const std::array values{NumberValue(PR_ORV_CATALOGUE_LINE, fault.line),
                          TextValue(PR_ORV_CATALOGUE_SECTION_W, fault.section),
                          TextValue(PR_SERVICE_NAME_W, fault.service),
                          NumberValue(PR_ORV_CATALOGUE_REASON, fault.reason),
                          NumberValue(PR_ORV_CATALOGUE_STATUS, static_cast<ULONG>(fault.status)),
                          TextValue(PR_ORV_CATALOGUE_TEXT_W, fault.text)};
  PropList list;
  for (const SPropValue& value : values) {
    if (const HRESULT hr = list.Set(value); FAILED(hr)) return hr;
  }
  return list.GetRow(kFaultColumns.Get(), row);
}

// A value fits a longer room, or has a directive that nobody knows.
ULONG ReasonForValue(const KeyLine& line, WCHAR letter) {
  WString ignored;
  const bool isTooLong = SUCCEEDED(FormatWithLetter(line.value, letter, line.value.size() + 1, ignored));
  return isTooLong ? ORV_CATALOGUE_TOO_LONG : ORV_CATALOGUE_BAD_FORMAT;
}

WString TrimBlanks(WStringView text) {
  constexpr const WCHAR* kBlanks = L" \t";
  const auto first = text.find_first_not_of(kBlanks);
  if (first == WStringView::npos) return {};
  return WString(text.substr(first, text.find_last_not_of(kBlanks) - first + 1));
}

class Report {
 public:
  explicit Report(const WString& path)
      : path_(path), sections_(path), letter_(ModelLetter(process::Instance(), NameMatch::kExact)) {}

  HRESULT Read();
  HRESULT Detach(RowSetPtr& services, RowSetPtr& leftOut);

 private:
  HRESULT ReadList(const WCHAR* section, std::vector<Listed>& lines);
  HRESULT ReadServices(const std::vector<Listed>& lines);
  HRESULT ReadDefaults(const std::vector<Listed>& lines, const Names& offered);
  bool IsUsable(const Listed& line, const WCHAR* list, Names& seen);
  HRESULT AddService(const Listed& line);
  HRESULT Describe(const Listed& line, const WCHAR* list, SRow& row);
  HRESULT Apply(const Listed& line, const WCHAR* lines, SRow& row);
  void CheckSupportFiles(const Listed& line, const SRow& row);
  bool IsBeside(const WString& file) const;
  const WString& Text();
  ULONG LineNumber(const WString& section, std::size_t position, std::size_t count);
  void LeaveOut(const Listed& line, const WCHAR* list, ULONG reason, HRESULT status, WString text);

  const WString path_;
  Sections sections_;
  const WCHAR letter_;
  WString scratch_;
  WString text_;
  Names defaults_;
  RowSetPtr services_;
  std::vector<Fault> faults_;
};

HRESULT Report::Read() {
  std::vector<Listed> services;
  std::vector<Listed> defaults;
  if (const HRESULT hr = ReadList(kServices, services); FAILED(hr)) return hr;
  // Without one new profiles get no services, which is nobody's fault.
  (void)ReadList(kDefaultServices, defaults);
  Names offered;
  for (const Listed& line : services) offered.insert(line.name);
  for (const Listed& line : defaults) defaults_.insert(line.name);
  HRESULT hr = ReadServices(services);
  if (SUCCEEDED(hr)) hr = ReadDefaults(defaults, offered);
  return hr;
}

HRESULT Report::ReadList(const WCHAR* section, std::vector<Listed>& lines) {
  const WCHAR* text = nullptr;
  const HRESULT hr = sections_.Read(section, text);
  if (FAILED(hr)) return hr == MAPI_E_TOO_BIG ? MAPI_E_INVALID_PARAMETER : hr;
  const std::vector<ULONG> numbers = LineNumbersOf(Text(), section);
  ForEachLine(text, [&](WStringView line) {
    Listed listed;
    ServiceLine parts{};
    listed.whole = line;
    listed.status = ParseServiceLine(line, parts);
    listed.name = parts.name;
    listed.text = parts.text;
    lines.push_back(std::move(listed));
    return S_OK;
  });
  // The platform may count the lines of a peculiar text in a way of its own.
  if (numbers.size() != lines.size()) return S_OK;
  for (std::size_t i = 0; i < lines.size(); ++i) lines[i].line = numbers[i];
  return S_OK;
}

HRESULT Report::ReadServices(const std::vector<Listed>& lines) {
  const HRESULT made = AllocateRoot(CbNewSRowSet(lines.size()), reinterpret_cast<void**>(services_.Put()));
  if (FAILED(made)) return made;
  Names seen;
  for (const Listed& line : lines) {
    if (!IsUsable(line, kServices, seen)) continue;
    if (const HRESULT hr = AddService(line); FAILED(hr)) return hr;
  }
  return S_OK;
}

// Of those that are offered everything is said already.
HRESULT Report::ReadDefaults(const std::vector<Listed>& lines, const Names& offered) {
  Names seen;
  for (const Listed& line : lines) {
    if (!IsUsable(line, kDefaultServices, seen) || offered.contains(line.name)) continue;
    LeaveOut(line, kDefaultServices, ORV_CATALOGUE_NOT_OFFERED, MAPI_E_UNABLE_TO_COMPLETE, line.text);
    SRow row{};
    const HRESULT hr = Describe(line, kDefaultServices, row);
    OrvFreeBuffer(row.lpProps);
    if (hr == MAPI_E_NOT_ENOUGH_MEMORY) return hr;
  }
  return S_OK;
}

bool Report::IsUsable(const Listed& line, const WCHAR* list, Names& seen) {
  if (FAILED(line.status)) {
    LeaveOut(line, list, ORV_CATALOGUE_BAD_LINE, line.status, line.whole);
    return false;
  }
  if (seen.insert(line.name).second) return true;
  LeaveOut(line, list, ORV_CATALOGUE_DUPLICATE, MAPI_E_COLLISION, line.text);
  return false;
}

HRESULT Report::AddService(const Listed& line) {
  const std::size_t faults = faults_.size();
  SRow row{};
  const HRESULT hr = Describe(line, kServices, row);
  if (hr == MAPI_E_NOT_ENOUGH_MEMORY) return hr;
  if (faults_.size() != faults) {
    OrvFreeBuffer(row.lpProps);
    return S_OK;
  }
  row.lpProps[kLine] = NumberValue(PR_ORV_CATALOGUE_LINE, line.line);
  row.lpProps[kIsDefault] = NumberValue(PR_ORV_CATALOGUE_DEFAULT, 0);
  row.lpProps[kIsDefault].Value.b = defaults_.contains(line.name) ? 1 : 0;
  services_->aRow[services_->cRows++] = row;
  return S_OK;
}

// Every value that is wrong is told, so it goes on behind one. The row is the caller's, whatever comes of it.
HRESULT Report::Describe(const Listed& line, const WCHAR* list, SRow& row) {
  const WCHAR* lines = nullptr;
  const HRESULT read = sections_.Read(line.name.c_str(), lines);
  if (read == MAPI_E_NOT_ENOUGH_MEMORY) return read;
  if (read == MAPI_E_TOO_BIG) LeaveOut(line, list, ORV_CATALOGUE_TOO_BIG, read, line.text);
  if (FAILED(read) && read != MAPI_E_TOO_BIG) LeaveOut(line, list, ORV_CATALOGUE_NO_SECTION, read, line.text);
  if (FAILED(read)) return read;
  if (const HRESULT hr = BuildRow(line.Parts(), row, kFurtherColumns); FAILED(hr)) return hr;
  const HRESULT hr = Apply(line, lines, row);
  if (SUCCEEDED(hr)) CheckSupportFiles(line, row);
  return hr;
}

HRESULT Report::Apply(const Listed& line, const WCHAR* lines, SRow& row) {
  const ULONG count = CountLines(lines);
  std::size_t position = 0;
  return ForEachLine(lines, [&](WStringView text) -> HRESULT {
    const std::size_t here = position++;
    const auto key = ParseKeyLine(text);
    if (!key) return S_OK;
    const HRESULT hr = Description(row.lpProps, letter_, scratch_).Apply(*key);
    if (hr != MAPI_E_BAD_VALUE) return hr;
    faults_.push_back({LineNumber(line.name, here, count), line.name, line.name,
                       ReasonForValue(*key, letter_), hr, WString(key->value)});
    return S_OK;
  });
}

void Report::CheckSupportFiles(const Listed& line, const SRow& row) {
  const SWStringArray& files = row.lpProps[kSupportFiles].Value.MVszW;
  for (ULONG i = 0; i < files.cValues; ++i) {
    const WString file = TrimBlanks(files.lppszW[i]);
    if (file.empty() || IsBeside(file)) continue;
    LeaveOut(line, kServices, ORV_CATALOGUE_MISSING_FILE, MAPI_E_UNABLE_TO_COMPLETE, file);
  }
}

// A catalogue comes with the files that it speaks of.
bool Report::IsBeside(const WString& file) const {
  if (!IsBareFileName(file)) return false;
  const WString beside = path_.substr(0, path_.rfind(L'\\') + 1) + file;
  return GetFileAttributesW(beside.c_str()) != INVALID_FILE_ATTRIBUTES;
}

const WString& Report::Text() {
  if (text_.empty()) text_ = ReadProfileText(path_);
  return text_;
}

ULONG Report::LineNumber(const WString& section, std::size_t position, std::size_t count) {
  const std::vector<ULONG> numbers = LineNumbersOf(Text(), section);
  return numbers.size() == count ? numbers[position] : 0;
}

void Report::LeaveOut(const Listed& line, const WCHAR* list, ULONG reason, HRESULT status, WString text) {
  faults_.push_back({line.line, list, line.name, reason, status, std::move(text)});
}

HRESULT Report::Detach(RowSetPtr& services, RowSetPtr& leftOut) {
  RowSetPtr set;
  HRESULT hr = AllocateRoot(CbNewSRowSet(faults_.size()), reinterpret_cast<void**>(set.Put()));
  for (const Fault& fault : faults_) {
    if (FAILED(hr)) return hr;
    hr = FillFaultRow(fault, set->aRow[set->cRows]);
    if (SUCCEEDED(hr)) ++set->cRows;
  }
  if (FAILED(hr)) return hr;
  services = std::move(services_);
  leftOut = std::move(set);
  return S_OK;
}

WString FullPath(const WString& path) {
  WString full(GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), WCHAR{0});
  full.resize(GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
  return full;
}

HRESULT CopyPath(const WString& path, LPWSTR* out) {
  MapiBuffer<WCHAR> copy;
  const HRESULT hr = path.empty() ? S_OK : copy.AllocateArray(path.size() + 1);
  if (SUCCEEDED(hr) && copy) path.copy(copy.Get(), path.size());
  *out = copy.Detach();
  return hr;
}

}  // namespace

HRESULT Open(const WCHAR* file, LPWSTR* path, LPSRowSet* services, LPSRowSet* leftOut) {
  const WString full = file != nullptr ? FullPath(file) : DefaultPath();
  if (path != nullptr) {
    if (const HRESULT hr = CopyPath(full, path); FAILED(hr)) return hr;
  }
  Report report(full);
  RowSetPtr offered;
  RowSetPtr faults;
  HRESULT hr = report.Read();
  if (SUCCEEDED(hr)) hr = report.Detach(offered, faults);
  if (FAILED(hr)) return hr;
  *services = offered.Detach();
  *leftOut = faults.Detach();
  return S_OK;
}

}  // namespace orv::catalogue
