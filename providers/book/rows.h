// Rows of a table of contents, and their order.
#pragma once

#include <memory>
#include <vector>

#include "providers/book/buckets.h"
#include "providers/book/database.h"
#include "providers/book/types.h"

namespace book {

Row ReadRow(Database& database, const Arrangement& arrangement, RowRef ref);
// Of a contact without a number named: the number that faxes go to unless another is. False where it is gone.
bool FindRow(Database& database, const Arrangement& arrangement, const RowKey& key, RowRef* ref);
// False where the row is not in the book.
bool FindPlace(Database& database, const Arrangement& arrangement, RowRef ref, RowPlace* place);

bool ReadEntry(Database& database, const EntryKey& key, Entry* entry);
std::vector<DeletedEntry> ReadDeleted(Database& database);  // the latest first
// Of an entry that is not deleted; 0 where there is none.
int64_t IdOf(Database& database, const EntryKey& key);
int64_t IdOfKey(Database& database, const EntryKey& key);  // of a deleted one too

struct PlacedRow {
  uint64_t position = 0;
  RowRef ref;
};

class RowOrder {
 public:
  virtual ~RowOrder() = default;
  virtual uint64_t Count() const = 0;
  virtual std::vector<Row> Rows(uint64_t first, std::size_t count) const = 0;
  virtual std::vector<RowRef> Refs(uint64_t first, std::size_t count) const = 0;
  // Rows that stand before `place`.
  virtual uint64_t Before(const RowPlace& place) const = 0;
  virtual std::vector<PlacedRow> OfEntry(int64_t entry) const = 0;
};

// Reads as it is asked; good as long as the connection's transaction.
std::unique_ptr<RowOrder> OrderInFile(Database& database, const Arrangement& arrangement);
// Holds all of it, for a file that must not be kept locked.
std::unique_ptr<RowOrder> OrderInMemory(Database& database, const Arrangement& arrangement);

}  // namespace book
