#include "hosting/open_entry.h"

#include <algorithm>

#include "orv/orvflags.h"
#include "platform/boundary.h"
#include "platform/buffer.h"

namespace orv {

namespace {

HRESULT QueryFirst(IUnknown& entry, std::span<const IID* const> interfaces, void** object) {
  HRESULT hr = MAPI_E_INTERFACE_NOT_SUPPORTED;
  for (const IID* candidate : interfaces) {
    hr = GuardedForeign([&] { return entry.QueryInterface(*candidate, object); });
    if (SUCCEEDED(hr)) return *object != nullptr ? hr : MAPI_E_INVALID_OBJECT;
    *object = nullptr;
  }
  return hr;
}

}  // namespace

HRESULT open_entry::OpenAs(IAddrBook& book, const SBinary& entryId, std::span<const ULONG> types,
                           std::span<const IID* const> interfaces, ULONG* type, void** object) {
  ULONG opened = types.empty() ? 0 : types.front();
  ComPtr<IUnknown> entry;
  auto* id = reinterpret_cast<ENTRYID*>(entryId.lpb);
  const HRESULT hr =
      HandedOut(entry, [&] { return book.OpenEntry(entryId.cb, id, nullptr, 0, &opened, entry.Put()); });
  if (FAILED(hr)) return hr;
  const bool wanted = types.empty() || std::find(types.begin(), types.end(), opened) != types.end();
  if (!entry || !wanted) return MAPI_E_INVALID_OBJECT;
  const HRESULT queried = QueryFirst(*entry, interfaces, object);
  if (SUCCEEDED(queried) && type != nullptr) *type = opened;
  return queried;
}

HRESULT ReadProps(IMAPIProp& object, LPSPropTagArray tags, PropValues& values) {
  return HandedOut(values.values,
                   [&] { return object.GetProps(tags, MAPI_UNICODE, &values.count, values.values.Put()); });
}

HRESULT OpenHierarchy(IAddrBook& book, ULONG flags, ComPtr<IMAPITable>& table) {
  ComPtr<IMAPIContainer> root;
  static constexpr ULONG kContainer[] = {MAPI_ABCONT};
  if (const HRESULT hr = OpenEntryAs(book, {}, kContainer, root); FAILED(hr)) return hr;
  return HandedOut(table, [&] { return root->GetHierarchyTable(MAPI_UNICODE | flags, table.Put()); });
}

}  // namespace orv
