// The trace's lines, and that they arrive whole.
#include "diag/trace.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <thread>

#ifdef _WIN32
#include <windows.h>
#endif

namespace diag {
namespace {

TEST(Trace, EveryLineIsDated) {
  const TraceStamp stamp = {2024, 2, 29, 1, 2, 3, 4, 0x1a2c};
  const std::string head = "2024-02-29 01:02:03.004 [1a2c] ";
  EXPECT_EQ(FormatTrace(stamp, "text"), head + "text\r\n");
  EXPECT_EQ(FormatTrace(stamp, ""), head + "\r\n");
  EXPECT_EQ(FormatTrace(stamp, "a\r\nb\n\nc\n"),
            head + "a\r\n" + head + "b\r\n" + head + "\r\n" + head + "c\r\n");
}

#ifdef _WIN32
TEST(Trace, LinesOfSeveralWritersStayWholeAndAddUp) {
  const std::filesystem::path path = L"trace_test.log";
  std::filesystem::remove(path);
  constexpr size_t kWriters = 4, kLines = 200;
  const std::string text(300, 'x');
  std::vector<std::jthread> writers(kWriters);
  for (std::jthread& writer : writers) {
    writer = std::jthread([&] {
      const Trace trace(TraceTarget::kFile, path.c_str());
      for (size_t line = 0; line < kLines; ++line) trace.Write(text);
    });
  }
  writers.clear();  // waits for them
  EXPECT_TRUE(Trace(TraceTarget::kFile, path.c_str()).WriteResult("last", 0x8004010F));
  std::ifstream file(path, std::ios::binary);
  size_t count = 0;
  for (std::string line; std::getline(file, line); ++count) {
    const bool last = count == kWriters * kLines;
    ASSERT_EQ(line.substr(line.find("] ") + 2), (last ? "last: MAPI_E_NOT_FOUND (0x8004010F)" : text) + "\r");
  }
  EXPECT_EQ(count, kWriters * kLines + 1);
}

// What programs that show debug output do: the system hands them one text at a time.
class DebugReader {
 public:
  DebugReader() {
    SetEvent(isReady_);
    const auto buffer =
        CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, sizeof(Buffer), L"DBWIN_BUFFER");
    buffer_ = static_cast<const Buffer*>(MapViewOfFile(buffer, FILE_MAP_READ, 0, 0, sizeof(Buffer)));
  }
  std::string Read() const {
    constexpr DWORD kLongest = 5000;  // milliseconds
    while (WaitForSingleObject(hasText_, kLongest) == WAIT_OBJECT_0) {
      const bool isOwn = buffer_->process == GetCurrentProcessId();
      const std::string text = isOwn ? buffer_->text : "";
      SetEvent(isReady_);
      if (isOwn) return text;
    }
    return "nothing came";
  }

 private:
  struct Buffer {
    DWORD process;
    char text[4096 - sizeof(DWORD)];
  };
  HANDLE isReady_ = CreateEventW(nullptr, FALSE, FALSE, L"DBWIN_BUFFER_READY");
  HANDLE hasText_ = CreateEventW(nullptr, FALSE, FALSE, L"DBWIN_DATA_READY");
  const Buffer* buffer_;
};

TEST(Trace, WhoeverReadsDebugOutputSeesTheLines) {
  const DebugReader reader;
  std::jthread writer([] { Trace(TraceTarget::kDebugger).WriteResult("logon", 0x80040111); });
  const std::string line = reader.Read();
  ASSERT_EQ(line.find(" ["), std::strlen("2024-02-29 01:02:03.004")) << line;
  EXPECT_EQ(line.substr(line.find("] ") + 2), "logon: MAPI_E_LOGON_FAILED (0x80040111)\r\n");
}

TEST(Trace, ATargetThatCannotBeOpenedSwallowsItsLines) {
  EXPECT_FALSE(Trace(TraceTarget::kFile, L"no-such-folder\\trace.log").Write("lost"));
}
#endif

}  // namespace
}  // namespace diag
