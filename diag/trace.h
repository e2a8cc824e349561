// The trace: dated lines for those who look for the cause of something, to a file, the serial port or the
// debugger. Nothing in the library writes one; a program that wants a trace makes one.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace diag {

struct TraceStamp {
  int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0, millisecond = 0;
  uint32_t thread = 0;
};

// "2024-02-29 12:00:00.005 [1a2c] text" and a line end; a text of several lines becomes several such lines.
std::string FormatTrace(const TraceStamp& stamp, std::string_view utf8);

#ifdef _WIN32

enum class TraceTarget { kFile, kSerialPort, kDebugger };

class Trace {
 public:
  static constexpr const wchar_t* kDefaultFile = L"C:\\ORVLOG.TXT";

  // A target that cannot be opened leaves a trace that swallows what it is given; isOpen() tells. `file` is
  // looked at for kFile only.
  explicit Trace(TraceTarget target, const wchar_t* file = kDefaultFile);
  ~Trace();
  Trace(const Trace&) = delete;
  Trace& operator=(const Trace&) = delete;

  bool isOpen() const { return target_ == TraceTarget::kDebugger || handle_ != nullptr; }
  // May be called from any thread; one text reaches the target in one piece, so that the lines of several
  // threads and processes do not mix.
  bool Write(std::string_view utf8) const;
  // "doing: MAPI_E_NOT_FOUND (0x8004010F)".
  bool WriteResult(std::string_view doing, uint32_t code) const;

 private:
  TraceTarget target_;
  void* handle_ = nullptr;
};

#endif

}  // namespace diag
