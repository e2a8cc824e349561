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

// The five columns in their places, whatever their types.
bool HasOurShape(const PropValues& row) {
  if (ForeignValues(row).Count() != kColumns.cValues) return false;
  const SPropValue* values = row.values.Get();
  return std::equal(values, values + row.count, kColumns.aulPropTag, [](const SPropValue& value, ULONG tag) {
    return PROP_ID(value.ulPropTag) == PROP_ID(tag);
  });
}

// More containers than any provider has. A table that never ends would keep whoever asks waiting until memory does; what
// it says of its own count is not asked, since it is read to its end whatever that is.
constexpr ULONG kMostContainers = 100'000;

}  // namespace

HRESULT HierarchyRows::AddProvider(IAddrBook& provider, ULONG flags, Shortage& shortage) {
  PropValues own;
  const HRESULT answer = HandedOut(own.values, [&] {
    auto columns = kColumns;
    return provider.GetProps(columns.Get(), flags & MAPI_UNICODE, &own.count, own.values.Put());
  });
  if (FAILED(answer)) {
    shortage = {answer,
                ORV_W("It does not tell its name and its identifier, and is left out of the hierarchy.")};
    return answer;
  }
  const SBinary* bytes = BinaryOf(ForeignValues(own).At(kEntryId, PR_ENTRYID));
  const EntryId root = bytes == nullptr ? EntryId() : EntryId(*bytes);
  if (!Add(std::move(own), shortage) || root.IsEmpty() || !(flags & CONVENIENT_DEPTH)) return answer;
  const HRESULT below = AddContainers(root, shortage);
  // A provider that is one container has none below it.
  if (FAILED(below) && below != MAPI_E_NO_SUPPORT && shortage.text == nullptr)
    shortage = {below, ORV_W("The containers below its own cannot be listed, or not all of them.")};
  return answer;
}

// A provider's root is a container, or it is no root.
HRESULT HierarchyRows::AddContainers(const EntryId& providerRoot, Shortage& shortage) {
  static constexpr ULONG kContainer[] = {MAPI_ABCONT};
  ComPtr<IMAPIContainer> root;
  HRESULT hr = OpenEntryAs(book_, providerRoot.Binary(), kContainer, root);
  if (FAILED(hr)) return hr;
  ComPtr<IMAPITable> table;
  hr =
      HandedOut(table, [&] { return root->GetHierarchyTable(MAPI_UNICODE | CONVENIENT_DEPTH, table.Put()); });
  return FAILED(hr) ? hr : AddRows(std::move(table), shortage);
}

HRESULT HierarchyRows::AddRows(ComPtr<IMAPITable> table, Shortage& shortage) {
  TableReader reader;
  HRESULT hr = reader.Open(std::move(table), kColumns);
  ULONG left = kMostContainers;
  while (SUCCEEDED(hr) && (hr = reader.Next()) == S_OK) {
    if (left-- == 0) {
      shortage = {MAPI_E_TABLE_TOO_BIG,
                  ORV_W("Its hierarchy does not end; what comes behind 100,000 rows is left out.")};
      return MAPI_E_TABLE_TOO_BIG;
    }
    PropValues row = reader.TakeRow();
    if (ForeignValues(row).At(kDepth, PR_DEPTH) != nullptr) ++row.values[kDepth].Value.l;
    if (!Add(std::move(row), shortage)) return MAPI_E_CALL_FAILED;
  }
  return hr;
}

// False for a row that a table cannot hold, one without readable values among them. Memory that is not there fails the
// table, unlike a provider that does.
bool HierarchyRows::Add(PropValues row, Shortage& shortage) {
  if (!HasOurShape(row))
    shortage = {MAPI_E_CORRUPT_DATA, ORV_W("A row of its hierarchy has other columns than were asked for.")};
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
