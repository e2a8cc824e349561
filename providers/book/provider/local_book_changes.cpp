// Creating, changing, deleting, and telling of it.
#include <algorithm>

#include "formats/contact_properties.h"
#include "providers/book/provider/local_book.h"
#include "providers/book/provider/row_values.h"

namespace book {

namespace sdk = orv::sdk;

namespace {

constexpr size_t kMostTold = 256;  // changes; of more the container is told

std::string MainNumber(const formats::Contact& contact) {
  const formats::ContactNumber* number = formats::MainFax(contact);
  return number != nullptr ? formats::CanonicalNumber(number->text) : std::string();
}

SBinary Sized(std::vector<BYTE>& bytes) { return {static_cast<ULONG>(bytes.size()), bytes.data()}; }

// The entry, and each of its numbers where these have identifiers of their own.
std::vector<kit::EntryRef> RefsOf(const EntryKey& key, const Entry* entry) {
  std::vector<kit::EntryRef> refs{RefOfEntry(key)};
  if (entry == nullptr) return refs;
  for (const formats::ContactNumber& each : entry->contact.numbers) {
    if (formats::IsFaxNumber(each)) refs.push_back(RefOfKey({key, formats::KeyOf(each)}));
  }
  if (refs.size() == 2) refs.pop_back();
  return refs;
}

HRESULT ReadStored(Store& store, const RowKey& key, Entry* entry, Row* row) {
  std::unique_ptr<View> view;
  HRESULT hr = store.OpenView(&view);
  if (SUCCEEDED(hr)) hr = view->RowOf(key, row);
  return SUCCEEDED(hr) ? view->Read(key.entry, entry) : hr;
}

ULONG EventOf(What what) {
  if (what == What::kAdded) return fnevObjectCreated;
  return what == What::kRemoved ? fnevObjectDeleted : fnevObjectModified;
}

}  // namespace

HRESULT LocalBook::CheckSet(const SPropValue& value) { return CheckSetValue(value); }
HRESULT LocalBook::CheckDelete(ULONG tag) { return CheckDeleteTag(tag); }

// Of the same name and main number.
HRESULT LocalBook::CheckTwin(const formats::Contact& contact, Store& store) {
  std::unique_ptr<View> view;
  std::vector<Row> rows;
  if (const HRESULT hr = store.OpenView(&view); FAILED(hr)) return hr;
  if (const HRESULT hr = view->Namesakes(contact.name, &rows); FAILED(hr)) return hr;
  const std::string number = MainNumber(contact);
  const bool isThere = std::any_of(rows.begin(), rows.end(), [&](const Row& each) {
    return each.isList == contact.isList && formats::CanonicalNumber(each.number) == number;
  });
  return isThere ? MAPI_E_COLLISION : S_OK;
}

HRESULT LocalBook::Create(const kit::EntryRef& container, ULONG objectType, ULONG flags,
                          kit::Changes& changes, kit::EntryRef* made) {
  formats::Contact contact;
  std::shared_ptr<Store> store;
  contact.isList = objectType == MAPI_DISTLIST;
  if (const HRESULT hr = ApplyChanges(words_, changes, nullptr, 0, &contact); FAILED(hr)) return hr;
  if (const HRESULT hr = OpenToChange(&store); FAILED(hr)) return hr;
  const HRESULT twin = (flags & CREATE_CHECK_DUP_STRICT) != 0 ? CheckTwin(contact, *store) : S_OK;
  if (FAILED(twin)) return twin;
  Member member;
  member.isOurs = true;
  member.name = contact.name;
  HRESULT added = store->Add(contact, &member.key.entry, nullptr);
  // A copy in the same book, or the second one in another, is an entry of its own.
  if (added == MAPI_E_COLLISION && (flags & CREATE_CHECK_DUP_STRICT) == 0) {
    contact.uid.clear();
    added = store->Add(contact, &member.key.entry, nullptr);
  }
  if (FAILED(added)) return added;
  *made = RefOfEntry(member.key.entry);
  kit::PropList stored;
  if (SUCCEEDED(Read(*made, {}, stored))) changes.values = std::move(stored);
  return container.kind == kEntry ? store->AddMembers(PartsOf(container).entry, {&member, 1}) : S_OK;
}

// What was set is set in the entry as it is now: others may have changed something else of it.
HRESULT LocalBook::Change(const kit::EntryRef& ref, kit::Changes& changes) {
  const std::optional<RowKey> key = RowKeyOf(ref);
  std::shared_ptr<Store> store;
  Entry entry;
  Row row;
  if (!key) return MAPI_E_NO_ACCESS;
  if (const HRESULT hr = OpenToChange(&store); FAILED(hr)) return hr;
  HRESULT hr = ReadStored(*store, *key, &entry, &row);
  if (FAILED(hr)) return hr == MAPI_E_NOT_FOUND ? MAPI_E_OBJECT_DELETED : hr;
  if (!changes.force && entry.version != VersionOf(changes.values)) return MAPI_E_OBJECT_CHANGED;
  if (changes.set.empty() && changes.removed.empty()) return S_OK;
  hr = ApplyChanges(words_, changes, &row, key->number, &entry.contact);
  const uint32_t expected = changes.force ? kAnyVersion : entry.version;
  if (SUCCEEDED(hr)) hr = store->Change(key->entry, entry.contact, expected, nullptr);
  kit::PropList stored;
  if (SUCCEEDED(hr) && SUCCEEDED(Read(ref, {}, stored))) changes.values = std::move(stored);
  return hr;
}

HRESULT LocalBook::Delete(const kit::EntryRef& ref) {
  HRESULT result = S_OK;
  const HRESULT hr = DeleteAll({&ref, 1}, {&result, 1});
  return FAILED(hr) ? hr : result;
}

HRESULT LocalBook::DeleteAll(std::span<const kit::EntryRef> entries, std::span<HRESULT> results) {
  std::vector<RowKey> keys;
  std::vector<size_t> places, missing;
  std::shared_ptr<Store> store;
  for (size_t i = 0; i < entries.size(); ++i) {
    const std::optional<RowKey> key = RowKeyOf(entries[i]);
    if (key) keys.push_back(*key);
    if (key) places.push_back(i);
    if (!key) results[i] = MAPI_E_NO_ACCESS;
  }
  if (const HRESULT hr = OpenToChange(&store); FAILED(hr)) return hr;
  if (const HRESULT hr = store->Remove(keys, &missing); FAILED(hr)) return hr;
  for (const size_t each : missing) results[places[each]] = MAPI_E_NOT_FOUND;
  return S_OK;
}

void LocalBook::TellChanges(const Changes& changes) {
  constexpr ULONG kEvents = fnevObjectCreated | fnevObjectModified | fnevObjectDeleted;
  std::shared_ptr<Store> store;
  if (!Advised().IsWanted(kEvents) || FAILED(file_->Open(&store))) return;
  if (!changes.isEverything && changes.entries.size() <= kMostTold) {
    for (const book::Change& each : changes.entries) TellOf(each, *store);
    return;
  }
  std::vector<BYTE> container = Ids().Make(kContainer), root = Ids().Make(Root());
  Advised().Notify(kit::ObjectEvent(fnevObjectModified, MAPI_ABCONT, Sized(container), Sized(root)));
}

void LocalBook::TellOf(const book::Change& change, Store& store) {
  Entry entry;
  const bool isThere = change.what != What::kRemoved && SUCCEEDED(store.Read(change.key, &entry));
  const ULONG type = change.isList ? MAPI_DISTLIST : MAPI_MAILUSER;
  std::vector<BYTE> container = Ids().Make(kContainer);
  for (const kit::EntryRef& each : RefsOf(change.key, isThere ? &entry : nullptr)) {
    std::vector<BYTE> id = Ids().Make(each);
    Advised().Notify(kit::ObjectEvent(EventOf(change.what), type, Sized(id), Sized(container)));
  }
}

}  // namespace book
