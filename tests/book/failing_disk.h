// Makes the engine's writes to files fail, in the whole process, for as long as one lives.
#pragma once

namespace book::test {

class FailingDisk {
 public:
  // `result` is the engine's, such as SQLITE_FULL.
  explicit FailingDisk(int result);
  ~FailingDisk();
  FailingDisk(const FailingDisk&) = delete;
  FailingDisk& operator=(const FailingDisk&) = delete;

  // Before the first file is opened.
  static void Install();
};

}  // namespace book::test
