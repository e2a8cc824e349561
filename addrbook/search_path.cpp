// Walks over the root's hierarchy table.
#include "addrbook/search_path.h"

#include <utility>

#include "hosting/open_entry.h"
#include "orv/orvflags.h"
#include "orv/orvtags.h"
#include "props/table_reader.h"

namespace orv {
namespace {

enum Column : ULONG { kEntryId, kFlags };
constexpr TagArray kColumns{PR_ENTRYID, PR_CONTAINER_FLAGS};

HRESULT OpenContainers(IAddrBook& book, TableReader& reader) {
  ComPtr<IMAPITable> table;
  if (const HRESULT hr = OpenHierarchy(book, CONVENIENT_DEPTH, table); FAILED(hr)) return hr;
  return reader.Open(std::move(table), kColumns);
}

// Reads on to the next container with the flags, if its row tells the identifier. S_FALSE at the table's end.
HRESULT NextContainer(TableReader& reader, ULONG flags, EntryId& id) {
  for (;;) {
    if (const HRESULT hr = reader.Next(); hr != S_OK) return hr;
    const ForeignValues row = reader.Row();
    const SBinary* bytes = BinaryOf(row.At(kEntryId, PR_ENTRYID));
    const SPropValue* has = row.At(kFlags, PR_CONTAINER_FLAGS);
    if (bytes == nullptr || has == nullptr || (NumberOf(has) & flags) != flags) continue;
    id = EntryId(*bytes);
    return S_OK;
  }
}

}  // namespace

HRESULT FindContainer(IAddrBook& book, ULONG flags, EntryId& found) {
  TableReader reader;
  if (const HRESULT hr = OpenContainers(book, reader); FAILED(hr)) return hr;
  const HRESULT hr = NextContainer(reader, flags, found);
  return hr == S_FALSE ? MAPI_E_CALL_FAILED : hr;
}

HRESULT CollectContainers(IAddrBook& book, ULONG flags, std::vector<EntryId>& found) {
  TableReader reader;
  HRESULT hr = OpenContainers(book, reader);
  if (FAILED(hr)) return hr;
  std::vector<EntryId> containers;
  EntryId id;
  while ((hr = NextContainer(reader, flags, id)) == S_OK) containers.push_back(std::move(id));
  if (FAILED(hr)) return hr;
  found = std::move(containers);
  return S_OK;
}

}  // namespace orv
