// What finds rows, all in the default order.
#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "providers/book/database.h"
#include "providers/book/text.h"
#include "providers/book/types.h"

namespace book {

std::vector<RowRef> RowsNamed(Database& database, std::string_view sortKey, std::size_t limit);
std::vector<RowRef> RowsWithWords(Database& database, std::string_view words, std::size_t limit);
std::vector<RowRef> RowsWithDigits(Database& database, std::string_view number, std::size_t limit);
// Quick for the beginning, or all, of a name or an e-mail address; anything else reads every row.
std::vector<RowRef> RowsWithText(Database& database, const SortKeys& keys, Column column, Match match,
                                 std::string_view text);

// The fax number of an entry that has the same digits.
bool FindNumber(Database& database, const EntryKey& entry, std::string_view number, RowRef* ref);

// All rows in another order, by at least one column; those that the columns do not tell apart are in the default one.
std::vector<RowRef> SortedRows(Database& database, const SortKeys& keys, std::span<const SortColumn> columns);

}  // namespace book
