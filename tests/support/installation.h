// A private folder laid out like an installation: a library under a name of the model table, which the
// process then takes for itself, with the catalogue and the providers beside it. Gone with the object.
#pragma once

#include <string_view>

#include "platform/module.h"
#include "platform/win.h"

namespace orv::test {

class Installation {
 public:
  // "xhtaba.dll" is model VX100, letter A. What was built beside the test program takes that name: the stub, which
  // only lends name and folder to the library linked into the test, or a library that is to be tested as delivered.
  explicit Installation(const WString& libraryName = L"xhtaba.dll",
                        const WString& builtName = L"orv_stub.dll");
  ~Installation();
  Installation(const Installation&) = delete;
  Installation& operator=(const Installation&) = delete;

  const WString& Folder() const { return folder_; }  // ends in a backslash
  WString Path(const WString& name) const { return folder_ + name; }

  void WriteTextFile(const WString& name, std::string_view text) const;
  // The catalogue of letter A.
  void WriteCatalogue(std::string_view text) const;
  HMODULE Library() const { return library_.Get(); }

  // Copies what was built beside the test program.
  void CopyIn(const WString& builtName, const WString& name) const;

 private:
  WString folder_;
  Module library_;
  HMODULE former_ = nullptr;
};

}  // namespace orv::test
