// Reading tables and properties, whoever answers: the one place that knows what may come.
#pragma once

#include <functional>
#include <string>

#include "tools/orvctl/library.h"

namespace orvctl {

// Calls `use` with every row of the table from its beginning; false from it ends the walk, and the answer is then
// false. `doing` completes "cannot ...". Rows of another shape are handed out too, as far as they can be read, and make
// it fail at the end; so does, at the row where the table's own count ends, one that goes on.
// Where the table stands already the walk may begin there.
enum class RowsFrom { kBeginning, kHere };
bool ForEachRow(const Library& library, IMAPITable* table, LPSPropTagArray columns, const std::string& doing,
                const std::function<bool(const ValueView&)>& use, RowsFrom from = RowsFrom::kBeginning);

// An answer to GetProps; empty where the object has no properties to read (MAPI_E_NO_SUPPORT).
class Properties {
 public:
  // Null tags: all properties.
  Properties(const Library& library, IMAPIProp* object, LPSPropTagArray tags, const std::string& doing);

  ValueView view() const { return ValueView(values_.Get(), count_); }

 private:
  Buffer<SPropValue> values_;
  ULONG count_ = 0;
};

}  // namespace orvctl
