// Rows in an order of the client's: each row gets a key whose bytes compare as its columns do.
#pragma once

#include <vector>

#include "orv/kit/rows.hpp"

namespace orv::kit {

using SortOrder = std::vector<SSortOrder>;

// Appends the key of a row, which holds the columns of the order: alike to CompareValues, missing values last.
void AppendSortKey(const SortOrder& order, sdk::ValueView row, std::vector<BYTE>& key);

// Columns that the keys are made of.
std::vector<ULONG> ColumnsOf(const SortOrder& order);

// Rows with equal keys stay in their order.
HRESULT SortRows(RowSource& source, const SortOrder& order, std::vector<ULONG>& rows);

}  // namespace orv::kit
