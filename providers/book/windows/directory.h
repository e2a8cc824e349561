// Entries that may become members of a list: those of all containers of the session.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "formats/contact.h"

namespace book {

using EntryId = std::vector<BYTE>;

struct FoundEntry {
  std::wstring name, address;
  EntryId id;
  std::string
      sort{};  // what its name is sorted by, without what tells it from others; empty until it is made
  size_t container = 0;
};

class Directory {
 public:
  struct Container {
    std::wstring name;
    EntryId id;
  };

  virtual ~Directory() = default;

  // Those that have recipients, that of the list first, then in the order of the session's hierarchy; read once.
  virtual const std::vector<Container>& Containers() = 0;
  // The first entries of the container, at most so many, whose names, or what else it knows people by, begin so; an empty
  // text means every entry. A container that has no tables has none; a code, and none, where one cannot be read now.
  virtual HRESULT Find(size_t container, const std::wstring& text, size_t most,
                       std::vector<FoundEntry>* found) = 0;
  // Name and address of the entry as they are now; a code, and nothing changed, where it cannot be opened.
  virtual HRESULT Look(FoundEntry* entry) = 0;
  // As a list keeps it; a code where the entry has gone or lists take none of its kind.
  virtual HRESULT MemberOf(const EntryId& id, formats::ContactMember* member) = 0;
  // Shows the window of an entry of another book; MAPI_E_NO_SUPPORT where that has none.
  virtual HRESULT Show(HWND owner, const EntryId& id) = 0;
};

}  // namespace book
