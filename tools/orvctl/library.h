// The address book library, loaded at run time from this program's own folder, and what every command needs of it.
#pragma once

#include <string>
#include <vector>

#include "orv/orv.h"
#include "tools/orvctl/com.h"
#include "tools/orvctl/values.h"

namespace orvctl {

// The file name that is used when none is given: the first row of the model table.
std::string DefaultLibraryName();
// The letter of the model that the file name stands for, 0 when it is none of ours; letter case does not matter.
WCHAR ModelLetter(const std::string& fileName);
// The folder of this program, with a backslash at its end.
WideString OwnFolder();

// Must outlive everything that it hands out.
class Library {
 public:
  explicit Library(const std::string& fileName);
  ~Library();
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  ComPtr<IOrvProfAdmin> AdminProfiles() const;
  // "-" logs on to the default profile.
  ComPtr<IOrvSession> LogOn(const std::string& profile) const;
  ComPtr<IABServiceAdmin> AdminServices(const std::string& profile) const;
  // Null in a library without the dialog.
  LPORVADDRESS addressDialog() const { return addressDialog_; }

  template <class T>
  BufferPtr<T> Own(T* buffer) const {
    return BufferPtr<T>(buffer, {freeBuffer_});
  }
  RowsPtr Own(SRowSet* rows) const { return RowsPtr(rows, {freeRows_}); }
  RecipientsPtr Own(ADRLIST* list) const { return RecipientsPtr(list, {freeRecipients_}); }
  // Zero-filled buffers; memory exhaustion throws.
  void* Allocate(size_t size) const;
  void* AllocateMore(size_t size, void* root) const;

  // Calls `use` with every row of the table from its beginning; false from it ends the walk.
  template <class Use>
  void ForEachRow(IMAPITable* table, const std::vector<ULONG>& columns, Use use) const {
    PrepareTable(table, columns);
    for (bool more = true; more;) {
      const RowsPtr rows = ReadRows(table);
      more = rows->cRows > 0;
      for (ULONG i = 0; more && i < rows->cRows; ++i) more = use(rows->aRow[i]);
    }
  }

 private:
  template <class Function>
  Function* Find(const char* name) const;
  std::string DefaultProfile() const;
  void PrepareTable(IMAPITable* table, const std::vector<ULONG>& columns) const;
  RowsPtr ReadRows(IMAPITable* table) const;

  std::string fileName_;
  HMODULE module_ = nullptr;
  LPORVOPEN open_ = nullptr;
  LPORVADMINPROFILES adminProfiles_ = nullptr;
  LPALLOCATEBUFFER allocateBuffer_ = nullptr;
  LPALLOCATEMORE allocateMore_ = nullptr;
  LPFREEBUFFER freeBuffer_ = nullptr;
  LPFREEPROWS freeRows_ = nullptr;
  LPFREEPADRLIST freeRecipients_ = nullptr;
  LPORVADDRESS addressDialog_ = nullptr;
};

}  // namespace orvctl
