// Reading what is left of a damaged book.
#pragma once

#include <algorithm>
#include <optional>
#include <string>

#include "providers/book/database.h"
#include "providers/book/store.h"

namespace book {

// What a damaged place holds is not there; only a failure of another kind ends what is done. True: it was read.
template <class Read>
bool Survives(Read&& read) {
  try {
    read();
    return true;
  } catch (const Failure& failure) {
    if (failure.code == MAPI_E_BUSY) throw;
    return false;
  }
}

// The greatest number of an entry that any of the tables tells; not sure where one of them cannot be read.
struct LastNumber {
  int64_t entry = 0;
  bool isSure = true;
};
LastNumber LastEntry(Database& database);

enum class EntryState { kNone, kReadable, kDamaged };
EntryState StateOfEntry(Database& database, int64_t id);

// By name as far as that can be read somewhere.
Finding FindingOfEntry(Database& database, int64_t id);

}  // namespace book
