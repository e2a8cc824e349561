// Windows of entries.
#include "formats/contact_properties.h"
#include "providers/book/members.h"
#include "providers/book/provider/local_book.h"
#include "providers/book/provider/session_directory.h"
#include "providers/book/windows/contact_window.h"
#include "providers/book/windows/list_window.h"

namespace book {

// With the UID that its entry has, which another book knows it by too.
HRESULT LocalBook::ContactMemberOf(std::span<const BYTE> id, formats::ContactMember* member) {
  return WithView([&](View& view) {
    Member found;
    if (const HRESULT hr = MemberOf(id, view, &found); FAILED(hr)) return hr;
    *member = book::ContactMemberOf(found);
    Entry entry;
    if (!found.isOurs) return S_OK;
    if (const HRESULT hr = view.Read(found.key.entry, &entry); FAILED(hr)) return hr;
    const formats::ContactNumber* number =
        found.key.number != 0 ? formats::FindNumber(entry.contact, found.key.number) : nullptr;
    member->uid = entry.contact.uid;
    member->number = number != nullptr ? number->text : std::string();
    return S_OK;
  });
}

HRESULT LocalBook::ShowDetails(HWND owner, const kit::EntryRef& entry, ULONG) {
  const std::optional<RowKey> key = RowKeyOf(entry);
  if (!key) return MAPI_E_NO_SUPPORT;
  std::shared_ptr<Store> store;
  Entry shown;
  if (const HRESULT hr = OpenStore(&store); FAILED(hr)) return hr;
  if (const HRESULT hr = store->Read(key->entry, &shown); FAILED(hr)) return hr;
  if (!shown.contact.isList) return ShowContact(owner, language_, store, key->entry, key->number);
  SessionDirectory directory(GetHost(), [this](const EntryId& id, formats::ContactMember* member) {
    return ContactMemberOf(id, member);
  });
  return ShowList(owner, language_, store, directory, key->entry);
}

HRESULT LocalBook::ShowNew(HWND owner, const kit::EntryRef& container, ULONG objectType,
                           kit::EntryRef* made) {
  if (container.kind != kContainer) return MAPI_E_NO_SUPPORT;
  std::shared_ptr<Store> store;
  EntryKey key{};
  if (const HRESULT hr = OpenStore(&store); FAILED(hr)) return hr;
  NewEntry what = objectType == MAPI_DISTLIST ? NewEntry::kList : NewEntry::kContact;
  if (objectType == 0) what = AskWhatIsNew(owner, language_);
  if (what == NewEntry::kNone) return MAPI_E_USER_CANCEL;
  SessionDirectory directory(GetHost(), [this](const EntryId& id, formats::ContactMember* member) {
    return ContactMemberOf(id, member);
  });
  const HRESULT hr = what == NewEntry::kList ? ShowNewList(owner, language_, store, directory, &key)
                                             : ShowNewContact(owner, language_, store, &key);
  if (SUCCEEDED(hr)) *made = RefOfEntry(key);
  return hr;
}

}  // namespace book
