// Walks over the root's hierarchy table; see search_path.h.
#include "addrbook/search_path.h"

#include <cstring>

#include "orv/orvflags.h"
#include "orv/orvtags.h"
#include "platform/com_ptr.h"

namespace orv {
namespace {

enum Column : ULONG { kEntryId, kFlags, kColumnCount };

HRESULT OpenHierarchy(IAddrBook& book, ComPtr<IMAPITable>& table) {
  ULONG type = 0;
  ComPtr<IUnknown> root;
  if (const HRESULT hr = book.OpenEntry(0, nullptr, nullptr, 0, &type, root.Put()); FAILED(hr)) return hr;
  // Opened without an interface, the root comes as what its type stands for.
  auto* container = static_cast<IABContainer*>(root.Get());
  if (const HRESULT hr = container->GetHierarchyTable(CONVENIENT_DEPTH | MAPI_UNICODE, table.Put());
      FAILED(hr))
    return hr;
  SizedSPropTagArray(kColumnCount, columns) = {kColumnCount, {PR_ENTRYID, PR_CONTAINER_FLAGS}};
  if (const HRESULT hr = table->SetColumns(reinterpret_cast<SPropTagArray*>(&columns), 0); FAILED(hr))
    return hr;
  return table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr);
}

// The row's identifier when the container it describes has the flags, else null.
const SBinary* MatchingId(const SRow& row, ULONG flags) {
  if (row.cValues < kColumnCount) return nullptr;
  const SPropValue& id = row.lpProps[kEntryId];
  const SPropValue& has = row.lpProps[kFlags];
  if (id.ulPropTag != PR_ENTRYID || has.ulPropTag != PR_CONTAINER_FLAGS) return nullptr;
  return (static_cast<ULONG>(has.Value.l) & flags) == flags ? &id.Value.bin : nullptr;
}

// Reads on to the next container with the flags; its identifier lies in `rows`. Null at the table's end.
HRESULT NextContainer(IMAPITable& table, ULONG flags, RowSetPtr& rows, const SBinary** id) {
  for (;;) {
    *id = nullptr;
    if (const HRESULT hr = table.QueryRows(1, 0, rows.Put()); FAILED(hr)) return hr;
    if (!rows || rows->cRows == 0) return S_OK;
    *id = MatchingId(rows->aRow[0], flags);
    if (*id != nullptr) return S_OK;
  }
}

}  // namespace

HRESULT CopyEntryId(const SBinary& source, OwnedEntryId& copy) {
  if (const HRESULT hr = copy.id.Allocate(source.cb); FAILED(hr)) return hr;
  if (source.cb != 0) std::memcpy(copy.id.Get(), source.lpb, source.cb);
  copy.size = source.cb;
  return S_OK;
}

HRESULT FindContainer(IAddrBook& book, ULONG flags, OwnedEntryId& found) {
  ComPtr<IMAPITable> table;
  if (const HRESULT hr = OpenHierarchy(book, table); FAILED(hr)) return hr;
  RowSetPtr rows;
  const SBinary* id = nullptr;
  if (const HRESULT hr = NextContainer(*table, flags, rows, &id); FAILED(hr)) return hr;
  return id != nullptr ? CopyEntryId(*id, found) : MAPI_E_CALL_FAILED;
}

HRESULT CollectContainers(IAddrBook& book, ULONG flags, std::vector<std::vector<BYTE>>& found) {
  ComPtr<IMAPITable> table;
  if (const HRESULT hr = OpenHierarchy(book, table); FAILED(hr)) return hr;
  std::vector<std::vector<BYTE>> containers;
  RowSetPtr rows;
  for (const SBinary* id = nullptr;;) {
    if (const HRESULT hr = NextContainer(*table, flags, rows, &id); FAILED(hr)) return hr;
    if (id == nullptr) break;
    containers.emplace_back(id->lpb, id->lpb + id->cb);
  }
  found = std::move(containers);
  return S_OK;
}

}  // namespace orv
