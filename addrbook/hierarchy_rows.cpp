// Gathers the hierarchy of all providers.
#include "addrbook/hierarchy_rows.h"

#include <algorithm>
#include <utility>

#include "hosting/open_entry.h"
#include "orv/orvflags.h"
#include "orv/orvtags.h"
#include "platform/boundary.h"
#include "props/base_table.h"
#include "props/entry_id.h"
#include "props/prop_type.h"
#include "props/table_reader.h"

namespace orv {
namespace {

enum Column : ULONG { kDisplayName, kEntryId, kObjectType, kFlags, kDepth };
constexpr TagArray kColumns{PR_DISPLAY_NAME_W, PR_ENTRYID, PR_OBJECT_TYPE, PR_CONTAINER_FLAGS, PR_DEPTH};

bool IsStorable(const SPropValue& value) {
  ULONG length = 0;
  return SUCCEEDED(PropDataLength(value, length));
}

}  // namespace

HRESULT HierarchyRows::AddProvider(IAddrBook& provider, ULONG flags) {
  PropValues own;
  const HRESULT answer = HandedOut(own.values, [&] {
    auto columns = kColumns;
    return provider.GetProps(columns.Get(), flags & MAPI_UNICODE, &own.count, own.values.Put());
  });
  if (FAILED(answer)) return answer;
  const SBinary* bytes = BinaryOf(ForeignValues(own).At(kEntryId, PR_ENTRYID));
  const EntryId root = bytes == nullptr ? EntryId() : EntryId(*bytes);
  if (Add(std::move(own)) && !root.IsEmpty() && (flags & CONVENIENT_DEPTH)) (void)AddContainers(root);
  return answer;
}

// A provider's root is a container, or it is no root.
HRESULT HierarchyRows::AddContainers(const EntryId& providerRoot) {
  static constexpr ULONG kContainer[] = {MAPI_ABCONT};
  ComPtr<IMAPIContainer> root;
  HRESULT hr = OpenEntryAs(book_, providerRoot.Binary(), kContainer, root);
  if (FAILED(hr)) return hr;
  ComPtr<IMAPITable> table;
  hr =
      HandedOut(table, [&] { return root->GetHierarchyTable(MAPI_UNICODE | CONVENIENT_DEPTH, table.Put()); });
  if (FAILED(hr)) return hr;
  TableReader reader;
  hr = reader.Open(std::move(table), kColumns);
  while (SUCCEEDED(hr) && (hr = reader.Next()) == S_OK) {
    PropValues row = reader.TakeRow();
    if (ForeignValues(row).At(kDepth, PR_DEPTH) != nullptr) ++row.values[kDepth].Value.l;
    if (!Add(std::move(row))) return MAPI_E_CALL_FAILED;
  }
  return hr;
}

// False for a row that a table cannot hold, one without readable values among them. Memory that is not there fails the
// table, unlike a provider that does.
bool HierarchyRows::Add(PropValues row) {
  if (ForeignValues(row).Count() == 0) return false;
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
