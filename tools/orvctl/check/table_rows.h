// Rows of a table as something that can be compared.
#pragma once

#include "tools/orvctl/check/tour.h"

namespace orvctl::check {

struct RowKey {
  Bytes id;
  WideString name;
  bool operator==(const RowKey&) const = default;
};

inline RowKey KeyOf(const SRow& row) {
  const ValueView values(row);
  const LPCWSTR name = values.Text(PR_DISPLAY_NAME_W);
  return {BytesOf(values.Binary(PR_ENTRYID)), name != nullptr ? name : L""};
}

std::vector<RowKey> KeysOf(const RowSet& rows);
// Rows from where the table stands, in blocks, until a read gives none or `most` have come.
std::vector<RowKey> ReadOn(Probe& probe, IMAPITable* table, size_t most);
// A read from the row on gives the rows of `keys` that begin there; "row 5 of 20".
void RequireRows(const std::vector<RowKey>& read, const std::vector<RowKey>& keys, size_t first, size_t count,
                 const std::string& when);

}  // namespace orvctl::check
