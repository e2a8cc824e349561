// The address book library, loaded at run time from this program's own folder.
#pragma once

#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "orv/orvbase.hpp"
#include "tools/orvctl/listing.h"
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
// The model's own name; empty when it is none of ours.
WideString ModelName(const std::string& fileName);
// The folder of this program, with a backslash at its end.
WideString OwnFolder();
// Counted from the current folder; an address, and a path that begins with a variable, stay as they are.
WideString FullPath(const WideString& path);
// The same with its variables replaced.
WideString ExpandedPath(const std::string& file);
// Whether a file of that name lies in the program's folder.
bool IsInOwnFolder(const std::string& fileName);

// Must outlive everything that it hands out.
class Library {
 public:
  // Problems that sessions tell of are added to those given, which may be none.
  explicit Library(const std::string& fileName, std::vector<Message>* problems = nullptr);

  const std::string& fileName() const { return fileName_; }
  const Allocator& allocator() const { return allocator_; }
  // The functions themselves, for whoever is handed them.
  struct Buffers {
    LPALLOCATEBUFFER root;
    LPALLOCATEMORE more;
    LPFREEBUFFER free;
  };
  const Buffers& buffers() const { return buffers_; }

  ComPtr<IOrvProfAdmin> AdminProfiles() const;
  LPORVOPEN open() const { return open_; }
  // Null in a library without them.
  LPORVADDRESS addressDialog() const { return addressDialog_; }
  LPORVSHOWHELP showHelp() const { return showHelp_; }
  LPORVOPENCATALOGUE openCatalogue() const { return openCatalogue_; }
  LPORVOPENUSERINFO openUserInfo() const { return openUserInfo_; }

  std::vector<Message>* problems() const { return problems_; }

 private:
  struct Unload {
    void operator()(HMODULE module) const { FreeLibrary(module); }
  };

  template <class Function>
  Function* Find(const char* name) const;
  template <class Function>
  Function* Require(const char* name) const;

  std::string fileName_;
  std::vector<Message>* problems_;
  std::unique_ptr<std::remove_pointer_t<HMODULE>, Unload> module_;
  LPORVOPEN open_;
  LPORVADMINPROFILES adminProfiles_;
  Buffers buffers_;
  Allocator allocator_;
  LPORVADDRESS addressDialog_;
  LPORVSHOWHELP showHelp_;
  LPORVOPENCATALOGUE openCatalogue_;
  LPORVOPENUSERINFO openUserInfo_;
};

}  // namespace orvctl
