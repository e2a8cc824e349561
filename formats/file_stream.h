// Contact files on disk, through the system's own calls: a standard stream would hold a slot of the thread's storage in
// every library that uses one. Windows only.
#pragma once

#include <memory>
#include <string>

#include "formats/contact_io.h"

namespace formats {

// Null where the file cannot be opened; `error` is then the system's code. A pipe or a device may be read, a folder not.
std::unique_ptr<ByteSource> OpenFileSource(const std::wstring& path, unsigned long* error);

// A file that is written under a name of its own beside `path` and takes its place at Commit, so that what was there
// stays until all is written. Without Commit nothing remains.
class FileSink : public ByteSink {
 public:
  // Makes the file durable and gives it its name; false, with the system's code in error(), when that fails.
  virtual bool Commit() = 0;
  // The system's code of the call that failed.
  virtual unsigned long error() const = 0;
};

std::unique_ptr<FileSink> CreateFileSink(const std::wstring& path, unsigned long* error);

}  // namespace formats
