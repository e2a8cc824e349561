// What stands in the identifiers of a book's entries.
#pragma once

#include <optional>
#include <vector>

#include "orv/kit/entry_id.hpp"
#include "providers/book/types.h"

namespace book {

// Stored by clients for years: never renumber them.
enum Kind : ULONG {
  kRoot = 0,
  kContainer = 1,  // the one container
  kEntry = 2,      // a contact or list: its key
  kNumber = 3,     // a number of a contact: the contact's key, the number's
  kMember = 4,     // a member that is no entry: the list's key, the member's id
};
std::vector<orv::kit::KeyForm> KeyForms();

orv::kit::EntryRef RefOfEntry(const EntryKey& key);
// Of a number where the key names one.
orv::kit::EntryRef RefOfKey(const RowKey& key);
// A contact with one fax number is known by itself, whatever becomes of the number.
orv::kit::EntryRef RefOfRow(const Row& row);
orv::kit::EntryRef RefOfMember(const EntryKey& list, uint32_t id);

// Nothing for what is neither an entry nor a number.
std::optional<RowKey> RowKeyOf(const orv::kit::EntryRef& ref);
// The key and the number behind it, of a reference of any kind that has a key.
RowKey PartsOf(const orv::kit::EntryRef& ref);

}  // namespace book
