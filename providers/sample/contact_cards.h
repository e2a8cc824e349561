// The contacts of one file, whatever its format: read once and held as cards, which are taken apart again when they are
// asked for.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "formats/contact_io.h"
#include "orv/orv.h"

namespace sample {

class ContactCards {
 public:
  // MAPI_E_NOT_FOUND, MAPI_E_DISK_ERROR, MAPI_E_TOO_BIG; MAPI_E_CORRUPT_DATA for what is no contact file. `cards`
  // changes only when it succeeds.
  static HRESULT Read(const std::wstring& path, ContactCards* cards);
  static HRESULT Read(formats::ByteSource& source, ContactCards* cards);
  // Whether Read would find a contact file: looks no further than the first contact.
  static HRESULT Check(const std::wstring& path);

  size_t size() const { return ends_.size(); }
  size_t rejected() const { return rejected_; }
  // `index` must be below size().
  std::string_view Card(size_t index) const;
  const std::string& Name(size_t index) const { return names_[index]; }
  formats::Contact Contact(size_t index) const;

 private:
  std::string text_;
  std::vector<size_t> ends_;
  std::vector<std::string> names_;
  size_t rejected_ = 0;
};

}  // namespace sample
