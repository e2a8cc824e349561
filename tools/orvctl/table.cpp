#include "tools/orvctl/table.h"

#include "tools/orvctl/errors.h"

namespace orvctl {
namespace {

constexpr LONG kRowsPerRead = 256;

// Counts that lie would lead behind the end of an array. What such an array holds cannot be freed either.
template <class Owner>
void RequireReadable(Owner& owner, const void* array, size_t size, const std::string& doing) {
  if (size == 0 || !IsBadReadPtr(array, size)) return;
  static_cast<void>(owner.Detach());
  throw CommandError(kFailed, "cannot " + doing + ": what was handed out is shorter than its count says");
}

RowSet ReadRows(const Library& library, IMAPITable* table, const std::string& doing) {
  auto rows = library.allocator().Own<SRowSet>();
  Receive(rows, table->QueryRows(kRowsPerRead, 0, rows.Put()), doing);
  RequireReadable(rows, rows.Get(), CbSRowSet(rows.Get()), doing);
  return rows;
}

ValueView RowView(const SRow& row) {
  const bool lies = row.lpProps != nullptr && row.cValues != 0 &&
                    IsBadReadPtr(row.lpProps, size_t{row.cValues} * sizeof(SPropValue));
  return lies ? ValueView(nullptr, 0) : ValueView(row);
}

}  // namespace

bool ForEachRow(const Library& library, IMAPITable* table, LPSPropTagArray columns, const std::string& doing,
                const std::function<bool(const ValueView&)>& use) {
  Check(table->SetColumns(columns, 0), doing);
  Check(table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr), doing);
  for (;;) {
    const RowSet rows = ReadRows(library, table, doing);
    if (rows->cRows == 0) return true;
    for (ULONG i = 0; i < rows->cRows; ++i) {
      if (!use(RowView(rows->aRow[i]))) return false;
    }
  }
}

Properties::Properties(const Library& library, IMAPIProp* object, LPSPropTagArray tags,
                       const std::string& doing)
    : values_(library.allocator().Own<SPropValue>()) {
  const HRESULT result = object->GetProps(tags, MAPI_UNICODE, &count_, values_.Put());
  if (result == MAPI_E_NO_SUPPORT) {
    static_cast<void>(values_.Detach());
    return;
  }
  Receive(values_, result, doing);
  RequireReadable(values_, values_.Get(), size_t{count_} * sizeof(SPropValue), doing);
}

}  // namespace orvctl
