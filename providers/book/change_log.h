// What one process tells the others: the last some thousand changes, with who made them.
#pragma once

#include "providers/book/database.h"
#include "providers/book/types.h"

namespace book {

// Within the transaction of the changes.
void WriteChanges(Database& database, const Changes& changes);

// More than is told one by one.
void WriteUntold(Database& database);

int64_t LastChange(Database& database);
// Those after `*last`, which moves to the newest; of other processes or of all. What has been forgotten is everything.
Changes ReadChanges(Database& database, int64_t* last, bool ofOthers);

}  // namespace book
