#include "tools/orvctl/contact_files.h"

#include "diag/names.h"
#include "tools/orvctl/byte_streams.h"

namespace orvctl {
namespace {

[[noreturn]] void ThrowSystem(ExitCode exitCode, const std::string& doing, DWORD error) {
  throw CommandError(exitCode, "cannot " + doing + ": " + diag::SystemErrorName(error),
                     static_cast<HRESULT>(HRESULT_FROM_WIN32(error)));
}

bool IsMissing(DWORD error) { return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND; }

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

ULONGLONG SizeOf(const std::string& file) {
  WIN32_FILE_ATTRIBUTE_DATA data = {};
  if (file == "-" || !GetFileAttributesExW(ToWide(file).c_str(), GetFileExInfoStandard, &data)) return 0;
  return ULARGE_INTEGER{{data.nFileSizeLow, data.nFileSizeHigh}}.QuadPart;
}

TargetFile::TargetFile(std::string file) : name_(std::move(file)) {
  unsigned long error = 0;
  if (IsStandardOutput()) {
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
