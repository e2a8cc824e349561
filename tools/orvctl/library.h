// The address book library, loaded at run time from this program's own folder.
#pragma once

#include <memory>
#include <string>
#include <type_traits>

#include "orv/orvbase.hpp"
#include "tools/orvctl/values.h"

namespace orvctl {

using orv::sdk::AddressList;
using orv::sdk::Allocator;
using orv::sdk::Buffer;
using orv::sdk::ComPtr;
using orv::sdk::RowSet;
using orv::sdk::TagArray;
using orv::sdk::ValueView;

// The file name that is used when none is given: the first row of the model table.
std::string DefaultLibraryName();
// The letter of the model that the file name stands for, 0 when it is none of ours; letter case does not matter.
WCHAR ModelLetter(const std::string& fileName);
// The folder of this program, with a backslash at its end.
WideString OwnFolder();
// Whether a file of that name lies in it.
bool IsInOwnFolder(const std::string& fileName);

// Must outlive everything that it hands out.
class Library {
 public:
  explicit Library(const std::string& fileName);

  const std::string& fileName() const { return fileName_; }
  const Allocator& allocator() const { return allocator_; }

  ComPtr<IOrvProfAdmin> AdminProfiles() const;
  LPORVOPEN open() const { return open_; }
  // Null in a library without them.
  LPORVADDRESS addressDialog() const { return addressDialog_; }
  LPORVSHOWHELP showHelp() const { return showHelp_; }

 private:
  struct Unload {
    void operator()(HMODULE module) const { FreeLibrary(module); }
  };

  template <class Function>
  Function* Find(const char* name) const;
  template <class Function>
  Function* Require(const char* name) const;

  std::string fileName_;
  std::unique_ptr<std::remove_pointer_t<HMODULE>, Unload> module_;
  LPORVOPEN open_;
  LPORVADMINPROFILES adminProfiles_;
  Allocator allocator_;
  LPORVADDRESS addressDialog_;
  LPORVSHOWHELP showHelp_;
};

}  // namespace orvctl
