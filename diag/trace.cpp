// The trace's lines and where they go.
#include "diag/trace.h"

#include <cstdio>

#include "diag/names.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace diag {

std::string FormatTrace(const TraceStamp& stamp, std::string_view utf8) {
  char head[96];
  std::snprintf(head, sizeof(head), "%04d-%02d-%02d %02d:%02d:%02d.%03d [%x] ", stamp.year, stamp.month,
                stamp.day, stamp.hour, stamp.minute, stamp.second, stamp.millisecond,
                static_cast<unsigned>(stamp.thread));
  std::string out;
  do {
    const size_t end = utf8.find('\n');
    std::string_view line = utf8.substr(0, end);
    utf8.remove_prefix(end == std::string_view::npos ? utf8.size() : end + 1);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    out.append(head).append(line).append("\r\n");
  } while (!utf8.empty());
  return out;
}

#ifdef _WIN32
namespace {

TraceStamp Now() {
  SYSTEMTIME now;
  GetLocalTime(&now);
  return {now.wYear,   now.wMonth,  now.wDay,          now.wHour,
          now.wMinute, now.wSecond, now.wMilliseconds, GetCurrentThreadId()};
}

HANDLE OpenLogFile(const wchar_t* file) {
  return CreateFileW(file, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS,
                     FILE_ATTRIBUTE_NORMAL, nullptr);
}

// Keeps other writers of the file out, those of other processes too. A byte that the file never reaches stands
// for the file, so that readers are not kept out.
class WriterLock {
 public:
  explicit WriterLock(HANDLE file) : file_(file) {
    place_.OffsetHigh = 0x7FFFFFFF;
    locked_ = LockFileEx(file_, LOCKFILE_EXCLUSIVE_LOCK, 0, 1, 0, &place_) != 0;
  }
  ~WriterLock() {
    if (locked_) UnlockFileEx(file_, 0, 1, 0, &place_);
  }
  WriterLock(const WriterLock&) = delete;
  WriterLock& operator=(const WriterLock&) = delete;
  bool locked() const { return locked_; }

 private:
  HANDLE file_;
  OVERLAPPED place_ = {};
  bool locked_ = false;
};

bool WriteAll(HANDLE target, const std::string& text) {
  DWORD written = 0;
  return WriteFile(target, text.data(), static_cast<DWORD>(text.size()), &written, nullptr) &&
         written == text.size();
}

bool AppendToFile(HANDLE file, const std::string& text) {
  const WriterLock lock(file);
  return lock.locked() && SetFilePointerEx(file, {}, nullptr, FILE_END) && WriteAll(file, text);
}

HANDLE OpenSerialPort() {
  return CreateFileW(L"\\\\.\\COM1", GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL,
                     nullptr);
}

bool WriteToDebugger(const std::string& text) {
  const int size = static_cast<int>(text.size());
  std::wstring wide(text.size(), L'\0');
  const int length = MultiByteToWideChar(CP_UTF8, 0, text.data(), size, wide.data(), size);
  wide.resize(static_cast<size_t>(length));
  OutputDebugStringW(wide.c_str());
  return true;
}

}  // namespace

Trace::Trace(TraceTarget target, const wchar_t* file) : target_(target) {
  if (target == TraceTarget::kDebugger) return;
  const HANDLE opened = target == TraceTarget::kFile ? OpenLogFile(file) : OpenSerialPort();
  if (opened != INVALID_HANDLE_VALUE) handle_ = opened;
}

Trace::~Trace() {
  if (handle_) CloseHandle(handle_);
}

bool Trace::Write(std::string_view utf8) const {
  if (!isOpen()) return false;
  const std::string text = FormatTrace(Now(), utf8);
  switch (target_) {
    case TraceTarget::kFile:
      return AppendToFile(handle_, text);
    case TraceTarget::kSerialPort:
      return WriteAll(handle_, text);
    case TraceTarget::kDebugger:
      return WriteToDebugger(text);
  }
  return false;
}

bool Trace::WriteResult(std::string_view doing, uint32_t code) const {
  return Write(std::string(doing).append(": ").append(ResultName(code)));
}
#endif

}  // namespace diag
