// A file that no other program may open or delete meanwhile.
#pragma once

#include <windows.h>

#include <stdexcept>
#include <string>

namespace pictures {

class HeldFile {
 public:
  explicit HeldFile(const std::wstring& path)
      : file_(CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_ALWAYS, 0, nullptr)) {
    if (file_ == INVALID_HANDLE_VALUE) throw std::runtime_error("a file cannot be held open");
  }
  ~HeldFile() { CloseHandle(file_); }
  HeldFile(const HeldFile&) = delete;
  HeldFile& operator=(const HeldFile&) = delete;

 private:
  HANDLE file_;
};

}  // namespace pictures
