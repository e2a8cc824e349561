#include "ui/address/entry_facts.h"

#include "hosting/open_entry.h"
#include "orv/orvtags.h"
#include "props/foreign_values.h"
#include "props/tag_array.h"

namespace orv::ui {
namespace {

template <class Interface>
HRESULT OpenUnlessEmpty(IAddrBook& book, const EntryId& entryId, ComPtr<Interface>& object, ULONG* type) {
  if (entryId.IsEmpty()) return MAPI_E_INVALID_ENTRYID;
  return OpenEntryAs(book, entryId.Binary(), {}, object, type);
}

}  // namespace

HRESULT OpenListed(IAddrBook& book, const EntryId& entryId, ComPtr<IMAPIProp>& entry, ULONG* type) {
  return OpenUnlessEmpty(book, entryId, entry, type);
}

HRESULT OpenListed(IAddrBook& book, const EntryId& entryId, ComPtr<IABContainer>& container) {
  return OpenUnlessEmpty(book, entryId, container, nullptr);
}

HRESULT ReadFacts(IAddrBook& book, const EntryId& entryId, EntryFacts& facts) {
  ComPtr<IMAPIProp> entry;
  if (const HRESULT hr = OpenListed(book, entryId, entry, &facts.type); FAILED(hr)) return hr;
  PropValues read;
  if (FAILED(ReadProps(*entry, TagArray{PR_DISPLAY_NAME_W, PR_OBJECT_TYPE}, read))) return S_OK;
  const ForeignValues values(read);
  if (const WCHAR* name = TextOf(values.Find(PR_DISPLAY_NAME_W))) facts.name = name;
  facts.type = NumberOf(values.Find(PR_OBJECT_TYPE), facts.type);
  return S_OK;
}

}  // namespace orv::ui
