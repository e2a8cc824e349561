// Windows of entries.
#include "providers/book/provider/local_book.h"
#include "providers/book/windows/contact_window.h"

namespace book {
namespace {

HRESULT IsList(Store& store, const EntryKey& key, bool* isList) {
  Entry entry;
  const HRESULT hr = store.Read(key, &entry);
  *isList = entry.contact.isList;
  return hr;
}

}  // namespace

HRESULT LocalBook::ShowDetails(HWND owner, const kit::EntryRef& entry, ULONG) {
  const std::optional<RowKey> key = RowKeyOf(entry);
  if (!key) return MAPI_E_NO_SUPPORT;
  std::shared_ptr<Store> store;
  bool isList = false;
  if (const HRESULT hr = OpenStore(&store); FAILED(hr)) return hr;
  if (const HRESULT hr = IsList(*store, key->entry, &isList); FAILED(hr)) return hr;
  if (isList) return MAPI_E_NO_SUPPORT;
  return ShowContact(owner, language_, store, key->entry, key->number);
}

HRESULT LocalBook::ShowNew(HWND owner, const kit::EntryRef& container, ULONG objectType,
                           kit::EntryRef* made) {
  if (container.kind != kContainer || objectType == MAPI_DISTLIST) return MAPI_E_NO_SUPPORT;
  std::shared_ptr<Store> store;
  EntryKey key{};
  if (const HRESULT hr = OpenStore(&store); FAILED(hr)) return hr;
  const HRESULT hr = ShowNewContact(owner, language_, store, &key);
  if (SUCCEEDED(hr)) *made = RefOfEntry(key);
  return hr;
}

}  // namespace book
