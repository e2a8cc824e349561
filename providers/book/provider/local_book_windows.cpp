// Windows of entries.
#include <algorithm>

#include "formats/contact_properties.h"
#include "providers/book/members.h"
#include "providers/book/provider/local_book.h"
#include "providers/book/provider/row_search.h"
#include "providers/book/provider/session_directory.h"
#include "providers/book/text.h"
#include "providers/book/windows/contact_window.h"
#include "providers/book/windows/list_window.h"
#include "providers/book/windows/what_window.h"

namespace book {
namespace {

// A single letter begins a word of nearly everybody.
HRESULT FindBeginning(View& view, const std::wstring& text, size_t most, std::vector<Row>* rows) {
  uint64_t first = 0, end = most;
  const HRESULT hr = text.empty() ? S_OK : view.SeekName(ToUtf8(text), &first, &end);
  if (FAILED(hr) || first == end) return hr;
  return view.Window(first, std::min<size_t>(static_cast<size_t>(end - first), most), rows);
}

}  // namespace

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

HRESULT LocalBook::LookAtForeign(FoundEntry* entry) {
  Member member;
  kit::PropList values;
  const ULONG columns[] = {PR_DISPLAY_NAME, PR_EMAIL_ADDRESS};
  member.foreign.assign(entry->id.begin(), entry->id.end());
  if (const HRESULT hr = DescribeForeign(member, columns, values); FAILED(hr)) return hr;
  if (values.Has(PR_DISPLAY_NAME)) entry->name = values.Text(PR_DISPLAY_NAME);
  entry->address = values.Text(PR_EMAIL_ADDRESS);
  return S_OK;
}

// The first of them that are found in any way, in the order of the table.
HRESULT LocalBook::FindEntries(const std::wstring& text, size_t most, std::vector<FoundEntry>* found) {
  std::vector<Row> rows;
  const HRESULT hr = WithView([&](View& view) {
    if (text.size() < 2) return FindBeginning(view, text, most, &rows);
    std::vector<RowRef> refs;
    const HRESULT known = RowSearch(*this, view, most).FindKnown(text, &refs);
    return SUCCEEDED(known) ? view.Rows(refs, &rows) : known;
  });
  if (FAILED(hr)) return hr;
  const SortKeys keys = SortKeys::OfUser();
  for (const Row& each : rows) {
    if (each.isGone) continue;
    found->push_back({words_.DisplayNameOf(each), ToWide(each.number), Ids().Make(RefOfRow(each)),
                      keys.Key(each.Listed())});
  }
  return S_OK;
}

HRESULT LocalBook::ShowDetails(HWND owner, const kit::EntryRef& entry, ULONG) {
  const std::optional<RowKey> key = RowKeyOf(entry);
  if (!key) return MAPI_E_NO_SUPPORT;
  std::shared_ptr<Store> store;
  Entry shown;
  if (const HRESULT hr = OpenStore(&store); FAILED(hr)) return hr;
  if (const HRESULT hr = store->Read(key->entry, &shown); FAILED(hr)) return hr;
  if (!shown.contact.isList) return ShowContact(owner, language_, store, key->entry, key->number);
  SessionDirectory directory(*this);
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
  SessionDirectory directory(*this);
  const HRESULT hr = what == NewEntry::kList ? ShowNewList(owner, language_, store, directory, &key)
                                             : ShowNewContact(owner, language_, store, &key);
  if (SUCCEEDED(hr)) *made = RefOfEntry(key);
  return hr;
}

}  // namespace book
