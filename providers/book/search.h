// What finds rows, all in the order of an arrangement.
#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "providers/book/arrangement.h"
#include "providers/book/types.h"

namespace book {

// Those that are listed so stand before those whose name is written so.
std::vector<RowRef> RowsNamed(Database& database, const Arrangement& arrangement, std::string_view name,
                              std::size_t limit);
// Some of the rows cost little also where very many fit.
std::vector<RowRef> RowsWithWords(Database& database, const Arrangement& arrangement, std::string_view words,
                                  std::size_t limit);
std::vector<RowRef> RowsWithDigits(Database& database, const Arrangement& arrangement,
                                   std::string_view number, std::size_t limit);
// Quick for the beginning, or all, of a name or an e-mail address; anything else reads every row. Where nobody is listed
// so, names are found as they are in the other form, or in plain letters.
std::vector<RowRef> RowsWithText(Database& database, const Arrangement& arrangement, Column column,
                                 Match match, std::string_view text);

// The fax number of an entry that has the same digits.
bool FindNumber(Database& database, const EntryKey& entry, std::string_view number, RowRef* ref);

// All rows in another order, by at least one column; those that the columns do not tell apart are in the default one.
std::vector<RowRef> SortedRows(Database& database, const Arrangement& arrangement,
                               std::span<const SortColumn> columns);

}  // namespace book
