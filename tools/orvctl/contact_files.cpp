#include "tools/orvctl/contact_files.h"

#include <sstream>

#include "formats/contact_csv.h"
#include "tools/orvctl/byte_streams.h"
#include "tools/orvctl/library.h"
#include "tools/orvctl/text_file.h"

namespace orvctl {
namespace {

const char* WhyRefused(DWORD error) {
  switch (error) {
    case ERROR_PATH_NOT_FOUND:
      return ", its folder is not there";
    case ERROR_ACCESS_DENIED:
      return ", it is a folder or may not be accessed";
    case ERROR_SHARING_VIOLATION:
      return ", another program uses it";
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
      return ", the disk is full";
    default:
      return "";
  }
}

[[noreturn]] void ThrowSystem(ExitCode exitCode, const std::string& doing, DWORD error) {
  throw CommandError(exitCode, "cannot " + doing + WhyRefused(error),
                     static_cast<HRESULT>(HRESULT_FROM_WIN32(error)));
}

bool IsMissing(DWORD error) { return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND; }

// Hands out each column and field of a map with the number of their line.
template <class Use>
void ForEachColumn(const std::string& map, Use use) {
  std::istringstream lines(map);
  size_t number = 1;
  for (std::string line; std::getline(lines, line); ++number) {
    const size_t equals = line.find('=');
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (equals != std::string::npos) use(number, line.substr(0, equals), line.substr(equals + 1));
  }
}

std::vector<std::pair<std::string, std::string>> ColumnsOf(const std::string& map) {
  std::vector<std::pair<std::string, std::string>> columns;
  ForEachColumn(map, [&](size_t, std::string column, std::string field) {
    columns.emplace_back(std::move(column), std::move(field));
  });
  return columns;
}

std::string FieldList() {
  std::string names;
  for (const std::string_view each : formats::FieldNames())
    names.append(names.empty() ? "" : ", ").append(each);
  return names;
}

void RequireFields(const std::string& file, const std::string& map) {
  ForEachColumn(map, [&](size_t line, const std::string& column, const std::string& field) {
    if (formats::FindFieldName(field)) return;
    throw CommandError(kUsage, "line " + std::to_string(line) + " of '" + file + "', '" + column + "=" +
                                   field + "', does not fit: --map takes COLUMN=FIELD with a field of " +
                                   FieldList());
  });
}

class NoSink final : public formats::ByteSink {
 public:
  bool Write(std::string_view) override { return true; }
};

bool IsFull(DWORD error) { return error == ERROR_DISK_FULL || error == ERROR_HANDLE_DISK_FULL; }

}  // namespace

std::unique_ptr<formats::ByteSource> OpenSource(const std::string& file) {
  if (file == "-") return StandardInput();
  unsigned long error = 0;
  auto source = formats::OpenFileSource(ToWide(file), &error);
  if (source) return source;
  if (IsMissing(error)) throw CommandError(kNotFound, "there is no file '" + file + "'");
  ThrowSystem(kFailed, "read '" + file + "'", error);
}

void RequirePlace(const std::string& file) {
  const WideString full = FullPath(ToWide(file));
  const DWORD there = GetFileAttributesW(full.c_str());
  const DWORD folder = GetFileAttributesW(full.substr(0, full.find_last_of(L'\\') + 1).c_str());
  constexpr DWORD kTaken = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY;
  const bool isTaken = there != INVALID_FILE_ATTRIBUTES && (there & kTaken) != 0;
  if (folder == INVALID_FILE_ATTRIBUTES) ThrowSystem(kNoOutput, "write '" + file + "'", ERROR_PATH_NOT_FOUND);
  if (isTaken) ThrowSystem(kNoOutput, "write '" + file + "'", ERROR_ACCESS_DENIED);
}

std::string MapOf(const Options& options) {
  if (options.map.empty()) return {};
  std::string map = ReadTextFile(options.map);
  RequireFields(options.map, map);
  return map;
}

formats::ReadOptions ReadingOf(const Options& options, const std::string& map) {
  formats::ReadOptions how;
  if (!options.format.empty()) how.format = FindFormat(options.format)->read;
  how.charset = options.charset;
  how.columns = ColumnsOf(map);
  return how;
}

bool AreOneFile(const std::string& one, const std::string& other) {
  if (one == "-" || other == "-") return false;
  const WideString paths[] = {FullPath(ToWide(one)), FullPath(ToWide(other))};
  return CompareStringOrdinal(paths[0].c_str(), -1, paths[1].c_str(), -1, TRUE) == CSTR_EQUAL;
}

ULONGLONG SizeOf(const std::string& file) {
  WIN32_FILE_ATTRIBUTE_DATA data = {};
  if (file == "-" || !GetFileAttributesExW(ToWide(file).c_str(), GetFileExInfoStandard, &data)) return 0;
  return ULARGE_INTEGER{{data.nFileSizeLow, data.nFileSizeHigh}}.QuadPart;
}

TargetFile::TargetFile(std::string file, bool isForetold) : name_(std::move(file)) {
  unsigned long error = 0;
  if (isForetold) {
    if (!IsStandardOutput()) RequirePlace(name_);
    output_ = std::make_unique<NoSink>();
  } else if (IsStandardOutput()) {
    output_ = StandardOutput();
  } else {
    file_ = formats::CreateFileSink(ToWide(name_), &error);
    if (!file_) ThrowSystem(IsFull(error) ? kNoSpace : kNoOutput, "write '" + name_ + "'", error);
  }
}

formats::ByteSink& TargetFile::sink() {
  if (file_) return *file_;
  return *output_;
}

void TargetFile::Commit() {
  if (file_ && !file_->Commit()) Fail();
}

void TargetFile::Fail() const {
  if (!file_) throw CommandError(kNoOutput, "cannot write the output");
  ThrowSystem(IsFull(file_->error()) ? kNoSpace : kNoOutput, "write '" + name_ + "'", file_->error());
}

}  // namespace orvctl
