// Another process at a book, which can be killed.
#pragma once

#include <gtest/gtest.h>
#include <windows.h>

#include <cctype>
#include <cstdlib>
#include <stdexcept>
#include <string>

namespace book::test {

// A running book_writer, with what it has said.
class WriterProcess {
 public:
  WriterProcess(const std::wstring& mode, const std::wstring& path, int from) {
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    HANDLE out = nullptr;
    CreatePipe(&read_, &out, &inherited, 1 << 20);
    SetHandleInformation(read_, HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOW start{};
    start.cb = sizeof(start);
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdOutput = start.hStdError = out;
    std::wstring line = L"book_writer.exe " + mode + L" \"" + path + L"\" " + std::to_wstring(from);
    BOOL isStarted = FALSE;
    // The emulation fails so now and then, while it starts others.
    for (int starts = 0; !isStarted && starts < 5; ++starts)
      isStarted = CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start,
                                 &process_);
    CloseHandle(out);
    if (!isStarted) throw std::runtime_error("book_writer does not start");
  }
  ~WriterProcess() {
    Kill();
    CloseHandle(read_);
    CloseHandle(process_.hThread);
    CloseHandle(process_.hProcess);
  }
  WriterProcess(const WriterProcess&) = delete;
  WriterProcess& operator=(const WriterProcess&) = delete;

  // Blocks until it says something; false at its end.
  bool Listen() {
    char bytes[4096];
    DWORD size = 0;
    if (!ReadFile(read_, bytes, sizeof(bytes), &size, nullptr) || size == 0) return false;
    said_.append(bytes, size);
    return true;
  }
  void ListenFor(DWORD milliseconds) {
    const ULONGLONG end = GetTickCount64() + milliseconds;
    while (GetTickCount64() < end) {
      DWORD size = 0;
      if (!PeekNamedPipe(read_, nullptr, 0, nullptr, &size, nullptr)) return;
      if (size == 0) {
        Sleep(1);
      } else {
        Listen();
      }
    }
  }
  void Kill() {
    TerminateProcess(process_.hProcess, 1);
    WaitForSingleObject(process_.hProcess, INFINITE);
  }
  int Wait() {
    while (Listen()) {
    }
    WaitForSingleObject(process_.hProcess, INFINITE);
    DWORD code = 0;
    GetExitCodeProcess(process_.hProcess, &code);
    return static_cast<int>(code);
  }
  // The last number of a whole line; `otherwise` before the first.
  int LastNumber(int otherwise) {
    while (Listen()) {
    }
    EXPECT_EQ(said_.find("failed"), std::string::npos) << said_;
    const std::size_t end = said_.rfind('\n');
    if (end == std::string::npos) return otherwise;
    const std::size_t begin = said_.rfind('\n', end - 1);
    const std::string line = said_.substr(begin == std::string::npos ? 0 : begin + 1);
    return std::isdigit(static_cast<unsigned char>(line[0])) ? std::atoi(line.c_str()) : otherwise;
  }
  bool HasSaid(const std::string& text) const { return said_.find(text) != std::string::npos; }

 private:
  HANDLE read_ = nullptr;
  PROCESS_INFORMATION process_{};
  std::string said_;
};

}  // namespace book::test
