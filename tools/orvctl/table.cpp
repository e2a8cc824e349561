#include "tools/orvctl/table.h"

#include <algorithm>

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
  Receive(rows, Foreign(doing, [&] { return table->QueryRows(kRowsPerRead, 0, rows.Put()); }), doing);
  RequireReadable(rows, rows.Get(), CbSRowSet(rows.Get()), doing);
  return rows;
}

ValueView RowView(const SRow& row) {
  const bool lies = row.lpProps != nullptr && row.cValues != 0 &&
                    IsBadReadPtr(row.lpProps, size_t{row.cValues} * sizeof(SPropValue));
  return lies ? ValueView(nullptr, 0) : ValueView(row);
}

// The columns asked for in their places, whatever came of them.
bool HasShape(const ValueView& row, const SPropTagArray& columns) {
  if (static_cast<ULONG>(row.end() - row.begin()) != columns.cValues) return false;
  return std::equal(row.begin(), row.end(), columns.aulPropTag, [](const SPropValue& value, ULONG tag) {
    return PROP_ID(value.ulPropTag) == PROP_ID(tag);
  });
}

// No more rows than the table counts, however many it brings. A table may grow meanwhile, but not for ever.
class RowLimit {
 public:
  RowLimit(IMAPITable* table, const std::string& doing) : table_(table), doing_(doing) { Ask(); }

  void Count(ULONG rows) {
    seen_ += rows;
    for (int asked = 0; seen_ > most_ && asked < kAsks; ++asked) Ask();
    if (seen_ <= most_) return;
    throw CommandError(kFailed, "cannot " + doing_ + " beyond the " + std::to_string(most_) +
                                    " rows that the table counts: it does not end there");
  }

 private:
  static constexpr int kAsks = 3;
  // Of a table that does not count its rows.
  static constexpr ULONG kBelievable = 1000000;

  void Ask() {
    ULONG count = 0;
    const HRESULT result = Foreign(doing_, [&] { return table_->GetRowCount(0, &count); });
    most_ = FAILED(result) ? kBelievable : count;
  }

  IMAPITable* const table_;
  const std::string& doing_;
  ULONG most_ = 0;
  ULONG seen_ = 0;
};

}  // namespace

bool ForEachRow(const Library& library, IMAPITable* table, LPSPropTagArray columns, const std::string& doing,
                const std::function<bool(const ValueView&)>& use, RowsFrom from) {
  Check(Foreign(doing, [&] { return table->SetColumns(columns, 0); }), doing);
  if (from == RowsFrom::kBeginning)
    Check(Foreign(doing, [&] { return table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr); }), doing);
  RowLimit limit(table, doing);
  size_t oddRows = 0;
  for (;;) {
    const RowSet rows = ReadRows(library, table, doing);
    if (rows->cRows == 0) break;
    limit.Count(rows->cRows);
    for (ULONG i = 0; i < rows->cRows; ++i) {
      const ValueView row = RowView(rows->aRow[i]);
      oddRows += HasShape(row, *columns) ? 0 : 1;
      if (!use(row)) return false;
    }
  }
  if (oddRows == 0) return true;
  throw CommandError(kFailed, "cannot " + doing + " wholly: " + std::to_string(oddRows) +
                                  " rows have other columns than were asked for");
}

Properties::Properties(const Library& library, IMAPIProp* object, LPSPropTagArray tags,
                       const std::string& doing)
    : values_(library.allocator().Own<SPropValue>()) {
  const HRESULT result =
      Foreign(doing, [&] { return object->GetProps(tags, MAPI_UNICODE, &count_, values_.Put()); });
  if (result == MAPI_E_NO_SUPPORT) {
    static_cast<void>(values_.Detach());
    return;
  }
  Receive(values_, result, doing);
  RequireReadable(values_, values_.Get(), size_t{count_} * sizeof(SPropValue), doing);
}

}  // namespace orvctl
