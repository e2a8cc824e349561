// Gathers the hierarchy of all providers; see hierarchy_rows.h.
#include "addrbook/hierarchy_rows.h"

#include <algorithm>
#include <utility>

#include "orv/orvflags.h"
#include "orv/orvtags.h"
#include "platform/boundary.h"
#include "platform/com_ptr.h"
#include "props/base_table.h"
#include "props/prop_type.h"

namespace orv {
namespace {

enum Column : ULONG { kDisplayName, kEntryId, kObjectType, kFlags, kDepth, kColumnCount };

struct ColumnSet {
  ULONG cValues;
  ULONG aulPropTag[kColumnCount];
};
constexpr ColumnSet kColumns = {
    kColumnCount, {PR_DISPLAY_NAME_W, PR_ENTRYID, PR_OBJECT_TYPE, PR_CONTAINER_FLAGS, PR_DEPTH}};

// The interfaces take arrays that they may not write to without const.
SPropTagArray* Columns(ColumnSet& columns) { return reinterpret_cast<SPropTagArray*>(&columns); }

bool IsStorable(const SPropValue& value) {
  ULONG length = 0;
  return SUCCEEDED(PropDataLength(value, length));
}

}  // namespace

HRESULT HierarchyRows::AddProvider(IAddrBook& provider, ULONG flags) {
  PropValues own;
  const HRESULT answer = GuardedForeign([&] {
    ColumnSet columns = kColumns;
    return provider.GetProps(Columns(columns), flags & MAPI_UNICODE, &own.count, own.values.Put());
  });
  if (FAILED(answer) || own.count == 0 || !own.values) return answer;
  const bool hasContainers = own.count > kEntryId && own.values[kEntryId].ulPropTag == PR_ENTRYID;
  const SBinary root = hasContainers ? own.values[kEntryId].Value.bin : SBinary{};
  // The row keeps the identifier's bytes alive; one that no table can hold takes them with it.
  if (!Add(std::move(own)) || !hasContainers || !(flags & CONVENIENT_DEPTH)) return answer;
  (void)GuardedForeign([&] { return AddContainers(root); });
  return answer;
}

HRESULT HierarchyRows::AddContainers(const SBinary& providerRoot) {
  ULONG type = MAPI_ABCONT;
  ComPtr<IUnknown> root;
  auto* id = reinterpret_cast<ENTRYID*>(providerRoot.lpb);
  if (const HRESULT hr = book_.OpenEntry(providerRoot.cb, id, nullptr, 0, &type, root.Put()); FAILED(hr))
    return hr;
  // Opened without an interface, a provider's root comes as what it is: a container, or it is no root.
  if (!root || type != MAPI_ABCONT) return MAPI_E_INVALID_OBJECT;
  auto* container = static_cast<IABContainer*>(root.Get());
  ComPtr<IMAPITable> table;
  if (const HRESULT hr = container->GetHierarchyTable(MAPI_UNICODE | CONVENIENT_DEPTH, table.Put());
      FAILED(hr))
    return hr;
  if (!table) return MAPI_E_CALL_FAILED;
  ColumnSet columns = kColumns;
  if (const HRESULT hr = table->SetColumns(Columns(columns), 0); FAILED(hr)) return hr;
  if (const HRESULT hr = table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr); FAILED(hr)) return hr;
  return ReadRows(*table);
}

HRESULT HierarchyRows::ReadRows(IMAPITable& table) {
  for (;;) {
    RowSetPtr read;
    if (const HRESULT hr = table.QueryRows(1, 0, read.Put()); FAILED(hr)) return hr;
    if (!read || read->cRows == 0) return S_OK;
    SRow& row = read->aRow[0];
    PropValues values{row.cValues, MapiBuffer<SPropValue>(std::exchange(row.lpProps, nullptr))};
    if (values.count > kDepth && values.values && values.values[kDepth].ulPropTag == PR_DEPTH)
      ++values.values[kDepth].Value.l;
    if (!Add(std::move(values))) return MAPI_E_CALL_FAILED;
  }
}

// False for a row that a table cannot hold. Memory that is not there fails the table, unlike a provider
// that does.
bool HierarchyRows::Add(PropValues row) {
  if (row.count == 0 || !row.values) return false;
  const SPropValue* values = row.values.Get();
  if (!std::all_of(values, values + row.count, IsStorable)) return false;
  const HRESULT hr = Guarded([&] {
    rows_.push_back(std::move(row));
    return S_OK;
  });
  if (FAILED(hr)) failure_ = hr;
  return SUCCEEDED(hr);
}

HRESULT HierarchyRows::MakeTable(IMAPITable** table) const {
  if (FAILED(failure_)) return failure_;
  MapiBuffer<SRowSet> set;
  if (const HRESULT hr = set.Allocate(CbNewSRowSet(rows_.size())); FAILED(hr)) return hr;
  // A table presents its rows in the reverse of the order in which it gets them.
  for (auto row = rows_.rbegin(); row != rows_.rend(); ++row)
    set->aRow[set->cRows++] = {0, row->count, row->values.Get()};
  return CreateTable(set.Get(), table);
}

}  // namespace orv
