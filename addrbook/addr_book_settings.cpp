// The three settings that the address book keeps in the profile: default personal address book, default
// directory, search path. Whatever is read is checked against the providers of today; what was only found
// is not written. What asks providers is inside for all of it; after the session's end it finds none that answers.
#include <cstring>
#include <vector>

#include "addrbook/addr_book.h"
#include "addrbook/container_test.h"
#include "addrbook/search_path.h"
#include "orv/orvflags.h"
#include "orv/orvtags.h"
#include "platform/array_check.h"
#include "platform/boundary.h"
#include "props/entry_id.h"
#include "props/foreign_values.h"

namespace orv {

HRESULT CAddrBook::ReadSetting(ULONG tag, MapiBuffer<SPropValue>& value) const {
  LockGuard guard(ObjectLock());
  if (const HRESULT hr = GetOneLocked(tag, value); FAILED(hr)) return hr;
  // The registry may hold anything under our identifier.
  return value->ulPropTag == tag ? S_OK : MAPI_E_NOT_FOUND;
}

// A value that is not persistent loses its changed mark: a fallback serves this session and never replaces
// what the user chose, even while that cannot be opened.
HRESULT CAddrBook::WriteSetting(const SPropValue& value, bool persistent) {
  LockGuard guard(ObjectLock());
  if (const HRESULT hr = Properties().Set(value); FAILED(hr)) return hr;
  return persistent ? S_OK : SetNodeFlagsLocked(value.ulPropTag, PROPNODE_MODIFIED, false);
}

HRESULT CAddrBook::FindDefault(ULONG tag, ULONG flags, EntryId& found) {
  MapiBuffer<SPropValue> stored;
  const HRESULT read = ReadSetting(tag, stored);
  if (read == MAPI_E_NOT_ENOUGH_MEMORY) return read;
  if (SUCCEEDED(read) && ContainerHasFlags(*this, flags, stored->Value.bin)) {
    found = EntryId(stored->Value.bin);
    return S_OK;
  }
  if (const HRESULT hr = FindContainer(*this, flags, found); FAILED(hr)) return hr;
  // What was found is the answer, whether or not it can be kept for the next time.
  (void)SetDefault(tag, flags, found.Binary(), false);
  return S_OK;
}

HRESULT CAddrBook::GetDefault(ULONG tag, ULONG flags, ULONG* size, LPENTRYID* entryId) {
  if (!IsWritableOut(size) || !IsWritableOut(entryId)) return MAPI_E_INVALID_PARAMETER;
  *size = 0;
  *entryId = nullptr;
  const Rundown::Call inside(calls_.get());
  return GuardedForeign([&]() -> HRESULT {
    EntryId found;
    const HRESULT hr = FindDefault(tag, flags, found);
    return FAILED(hr) ? hr : found.CopyTo(size, entryId);
  });
}

HRESULT CAddrBook::SetDefault(ULONG tag, ULONG flags, const SBinary& entryId, bool persistent) {
  if (!IsReadableEntryId(entryId.cb, entryId.lpb)) return MAPI_E_INVALID_PARAMETER;
  const Rundown::Call inside(calls_.get());
  return GuardedForeign([&]() -> HRESULT {
    if (!ContainerHasFlags(*this, flags, entryId)) return MAPI_E_CALL_FAILED;
    SPropValue value = {};
    value.ulPropTag = tag;
    value.Value.bin = entryId;
    return WriteSetting(value, persistent);
  });
}

HRESULT CAddrBook::GetPAB(ULONG* size, LPENTRYID* entryId) {
  return GetDefault(PR_AB_DEFAULT_PAB, AB_MODIFIABLE, size, entryId);
}

HRESULT CAddrBook::SetPAB(ULONG size, LPENTRYID entryId) {
  return SetDefault(PR_AB_DEFAULT_PAB, AB_MODIFIABLE, {size, reinterpret_cast<LPBYTE>(entryId)}, true);
}

HRESULT CAddrBook::GetDefaultDir(ULONG* size, LPENTRYID* entryId) {
  return GetDefault(PR_AB_DEFAULT_DIR, AB_RECIPIENTS, size, entryId);
}

HRESULT CAddrBook::SetDefaultDir(ULONG size, LPENTRYID entryId) {
  return SetDefault(PR_AB_DEFAULT_DIR, AB_RECIPIENTS, {size, reinterpret_cast<LPBYTE>(entryId)}, true);
}

namespace {

// One row with the identifier, its bytes behind the property in the same block.
HRESULT MakePathRow(const SBinary& id, SRow& row) {
  MapiBuffer<SPropValue> value;
  if (const HRESULT hr = value.Allocate(sizeof(SPropValue) + id.cb); FAILED(hr)) return hr;
  value->ulPropTag = PR_ENTRYID;
  value->Value.bin = {id.cb, reinterpret_cast<LPBYTE>(value.Get() + 1)};
  if (id.cb != 0) std::memcpy(value->Value.bin.lpb, id.lpb, id.cb);
  row = {0, 1, value.Detach()};
  return S_OK;
}

// Only the first property counts: rows of a table with other columns first are passed over, and null with them.
const SBinary* PathEntry(const SRow& row) { return BinaryOf(ForeignValues(row).At(0, PR_ENTRYID)); }

}  // namespace

// The stored path as it is: callers find out by opening which of its containers are there today.
HRESULT CAddrBook::GetSearchPath(ULONG, LPSRowSet* path) {
  if (!IsWritableOut(path)) return MAPI_E_INVALID_PARAMETER;
  return Guarded([&]() -> HRESULT {
    MapiBuffer<SPropValue> stored;
    if (const HRESULT hr = ReadSetting(PR_AB_SEARCH_PATH, stored); FAILED(hr)) return hr;
    const SBinaryArray& ids = stored->Value.MVbin;
    if (ids.cValues == 0) return MAPI_E_NOT_FOUND;
    MapiBuffer<SRowSet> block;
    if (const HRESULT hr = block.Allocate(CbNewSRowSet(ids.cValues)); FAILED(hr)) return hr;
    RowSetPtr rows(block.Detach());
    for (ULONG i = 0; i < ids.cValues; ++i, ++rows->cRows) {
      if (const HRESULT hr = MakePathRow(ids.lpbin[i], rows->aRow[i]); FAILED(hr)) return hr;
    }
    *path = rows.Detach();
    return S_OK;
  });
}

HRESULT CAddrBook::SetSearchPath(ULONG, LPSRowSet path) {
  if (!IsReadableRowSet(path) || path->cRows == 0) return MAPI_E_INVALID_PARAMETER;
  const Rundown::Call inside(calls_.get());
  return GuardedForeign([&]() -> HRESULT {
    std::vector<SBinary> kept;
    for (ULONG i = 0; i < path->cRows; ++i) {
      const SBinary* id = PathEntry(path->aRow[i]);
      if (id == nullptr) continue;
      if (!IsReadableEntryId(id->cb, id->lpb)) return MAPI_E_INVALID_PARAMETER;
      if (ContainerHasFlags(*this, AB_RECIPIENTS, *id)) kept.push_back(*id);
    }
    return kept.empty() ? MAPI_E_INVALID_PARAMETER : StoreSearchPath(kept, true);
  });
}

HRESULT CAddrBook::StoreSearchPath(std::span<SBinary> path, bool persistent) {
  SPropValue value = {};
  value.ulPropTag = PR_AB_SEARCH_PATH;
  value.Value.MVbin = {static_cast<ULONG>(path.size()), path.data()};
  return WriteSetting(value, persistent);
}

std::vector<SBinary> CAddrBook::UsablePath(const SBinaryArray& path) {
  std::vector<SBinary> usable;
  for (ULONG i = 0; i < path.cValues; ++i) {
    if (ContainerHasFlags(*this, AB_RECIPIENTS, path.lpbin[i])) usable.push_back(path.lpbin[i]);
  }
  return usable;
}

// A path that shrank is the user's path without what is gone, and is kept so. One of which nothing is left is
// replaced for this session only: the providers may be back tomorrow.
void CAddrBook::RepairSearchPath() {
  (void)GuardedForeign([&]() -> HRESULT {
    MapiBuffer<SPropValue> stored;
    if (SUCCEEDED(ReadSetting(PR_AB_SEARCH_PATH, stored))) {
      std::vector<SBinary> kept = UsablePath(stored->Value.MVbin);
      const bool shrank = kept.size() < stored->Value.MVbin.cValues;
      if (!kept.empty()) return shrank ? StoreSearchPath(kept, true) : S_OK;
    }
    std::vector<EntryId> containers;
    if (const HRESULT hr = CollectContainers(*this, AB_RECIPIENTS, containers); FAILED(hr)) return hr;
    std::vector<SBinary> rebuilt;
    for (const EntryId& id : containers) rebuilt.push_back(id.Binary());
    return StoreSearchPath(rebuilt, false);
  });
}

}  // namespace orv
