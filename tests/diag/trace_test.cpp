// The trace's lines, and that they arrive whole.
#include "diag/trace.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>
#include <vector>

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
std::string ReadAndRemove(const std::filesystem::path& path) {
  std::stringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  std::filesystem::remove(path);
  return text.str();
}

TEST(Trace, LinesOfSeveralWritersStayWhole) {
  const std::filesystem::path path = L"trace_test.log";
  std::filesystem::remove(path);
  constexpr size_t kWriters = 4, kLines = 200;
  const std::string text(300, 'x');
  std::vector<std::thread> writers;
  for (size_t i = 0; i < kWriters; ++i) {
    writers.emplace_back([&] {
      const Trace trace(TraceTarget::kFile, path.c_str());
      for (size_t line = 0; line < kLines; ++line) trace.Write(text);
    });
  }
  for (std::thread& writer : writers) writer.join();
  std::istringstream lines(ReadAndRemove(path));
  size_t count = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    ASSERT_EQ(line.substr(line.find("] ") + 2), text + "\r");
  }
  EXPECT_EQ(count, kWriters * kLines);
}

TEST(Trace, ALaterTraceAddsToTheFile) {
  const std::filesystem::path path = L"trace_test.log";
  std::filesystem::remove(path);
  EXPECT_TRUE(Trace(TraceTarget::kFile, path.c_str()).Write("first"));
  EXPECT_TRUE(Trace(TraceTarget::kFile, path.c_str()).WriteResult("second", 0x8004010F));
  const std::string text = ReadAndRemove(path);
  EXPECT_LT(text.find("] first\r\n"), text.find("] second: MAPI_E_NOT_FOUND (0x8004010F)\r\n"));
}

TEST(Trace, ATargetThatCannotBeOpenedSwallowsItsLines) {
  const Trace trace(TraceTarget::kFile, L"no-such-folder\\trace.log");
  EXPECT_FALSE(trace.isOpen());
  EXPECT_FALSE(trace.Write("lost"));
  EXPECT_TRUE(Trace(TraceTarget::kDebugger).Write("to the debugger"));
}
#endif

}  // namespace
}  // namespace diag
