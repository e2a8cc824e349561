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

// A byte of a file that somebody else may want for himself meanwhile.
class HeldLock {
 public:
  HeldLock(const std::wstring& path, DWORD place)
      : file_(CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE,
                          FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING, 0,
                          nullptr)) {
    if (file_ == INVALID_HANDLE_VALUE || !LockFile(file_, place, 0, 1, 0))
      throw std::runtime_error("a lock cannot be held");
  }
  ~HeldLock() { CloseHandle(file_); }
  HeldLock(const HeldLock&) = delete;
  HeldLock& operator=(const HeldLock&) = delete;

 private:
  HANDLE file_;
};

}  // namespace pictures
