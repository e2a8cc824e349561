// What containers and distribution lists do, over the book's hooks.
#include <algorithm>
#include <type_traits>

#include "book_objects.hpp"
#include "orv/kit/recipients.hpp"
#include "orv/orvtags.h"
#include "telling.hpp"

namespace orv::kit {
namespace {

// Keeps the book alive for as long as a table reads from it.
class KeptRows final : public RowSource {
 public:
  KeptRows(std::shared_ptr<Book> book, RowsPtr rows) : book_(std::move(book)), rows_(std::move(rows)) {}

  size_t Count() override {
    return Tell([&] { return rows_->Count(); });
  }
  HRESULT Status() override {
    return Tell([&] { return rows_->Status(); });
  }
  HRESULT RowAt(size_t row, std::span<const ULONG> columns, sdk::ValueView* values) override {
    return Tell([&] { return rows_->RowAt(row, columns, values); });
  }
  std::vector<ULONG> Columns() override {
    return Tell([&] { return rows_->Columns(); });
  }
  std::optional<size_t> Seek(ULONG column, const SPropValue& key, bool isPrefix) override {
    return Tell([&] { return rows_->Seek(column, key, isPrefix); });
  }
  std::optional<size_t> Find(const Restriction& restriction, size_t start, bool isBackward) override {
    return Tell([&] { return rows_->Find(restriction, start, isBackward); });
  }
  bool Sort(const std::vector<SSortOrder>& order) override {
    return Tell([&] { return rows_->Sort(order); });
  }
  bool Narrow(const Restriction& restriction) override {
    return Tell([&] { return rows_->Narrow(restriction); });
  }
  std::optional<std::vector<ULONG>> Select(const Restriction& restriction) override {
    return Tell([&] { return rows_->Select(restriction); });
  }
  ULONG Refresh() override {
    return Tell([&] { return rows_->Refresh(); });
  }
  std::optional<std::vector<FollowedRow>> Follow() override {
    return Tell([&] { return rows_->Follow(); });
  }

 private:
  template <class Body>
  std::invoke_result_t<Body> Tell(Body body) {
    return Telling(book_->GetHost(), "the rows of a table", body);
  }

  const std::shared_ptr<Book> book_;
  const RowsPtr rows_;
};

HRESULT CheckTableCall(ULONG flags, LPMAPITABLE* table) noexcept {
  if (table == nullptr) return MAPI_E_INVALID_PARAMETER;
  return (flags & MAPI_UNICODE) != 0 ? S_OK : MAPI_E_BAD_CHARWIDTH;
}

// Containers that lie below themselves must not keep a client reading for ever.
constexpr LONG kDeepest = 32;

HRESULT AddContainers(Book& book, const EntryRef& parent, LONG depth, bool isDeep,
                      std::vector<PropList>& rows) {
  for (const EntryRef& each : book.Containers(parent)) {
    PropList values;
    const HRESULT hr = book.ReadEntry(each, {}, values);
    if (hr == MAPI_E_NOT_FOUND) continue;
    if (FAILED(hr)) return hr;
    values.Set(PR_DEPTH, depth);
    rows.push_back(std::move(values));
    if (!isDeep || depth == kDeepest) continue;
    if (const HRESULT below = AddContainers(book, each, depth + 1, isDeep, rows); FAILED(below)) return below;
  }
  return S_OK;
}

bool CanChange(const Origin& origin) {
  return origin.IsStored() && origin.book->AccessTo(origin.entry) == Access::kModify;
}

// An object that makes an existing entry a member when it is saved, and shows the entry's properties. A list brings
// its members along: what is made a member in an object of that kind is there already.
HRESULT CreateMember(const Origin& list, const SBinary& id, ULONG objectType, IMAPIProp& entry,
                     LPMAPIPROP* made) {
  auto values = list.book->GetHost().buffers.Own<SPropValue>();
  ULONG count = 0;
  const HRESULT hr =
      CallForeign(values, [&] { return entry.GetProps(nullptr, MAPI_UNICODE, &count, values.Put()); });
  if (FAILED(hr)) return hr;
  Origin member{list.book, list.entry, objectType, list.IsStored(), 0, {id.lpb, id.lpb + id.cb}};
  *made = MakeEntry(std::move(member), PropList({values.Get(), count}), Access::kModify).Detach();
  return S_OK;
}

// Calls AddMember or RemoveMember with an identifier, which may be any provider's.
template <class Hook>
HRESULT WithMember(const Origin& list, Hook hook, const SBinary& id) {
  if (id.cb == 0 || id.lpb == nullptr) return MAPI_E_INVALID_ENTRYID;
  return ((*list.book).*hook)(list.entry, {id.lpb, id.cb});
}

HRESULT CopyOne(const Origin& origin, const SBinary& id) {
  sdk::ComPtr<IMAPIProp> source, target;
  ULONG type = 0;
  if (const HRESULT hr = OpenAnyEntry(*origin.book, id, source, &type); FAILED(hr)) return hr;
  if (const HRESULT hr = CreateEntryIn(origin, id, 0, target.Put()); FAILED(hr)) return hr;
  const HRESULT hr = CopyBetween(origin.book->GetHost().buffers, *source, nullptr, nullptr, &IID_IMAPIProp,
                                 target.Get(), 0, nullptr);
  return FAILED(hr) ? hr : target->SaveChanges(KEEP_OPEN_READONLY);
}

HRESULT DeleteOne(Book& book, const SBinary& id) {
  EntryRef entry;
  PropList values;
  if (const HRESULT hr = book.Ids().Read(id.cb, id.lpb, &entry); FAILED(hr)) return hr;
  if (book.AccessTo(entry) == Access::kRead) return MAPI_E_NO_ACCESS;
  const ULONG type = PR_OBJECT_TYPE;
  if (const HRESULT hr = book.ReadEntry(entry, {&type, 1}, values); FAILED(hr)) return hr;
  if (const HRESULT hr = book.Delete(entry); FAILED(hr)) return hr;
  if (!book.TellsByItself())
    book.Tell(fnevObjectDeleted, entry, static_cast<ULONG>(values.Number(PR_OBJECT_TYPE)));
  return S_OK;
}

HRESULT CheckEntries(const ENTRYLIST* entries) noexcept {
  const bool isComplete = entries != nullptr && (entries->cValues == 0 || entries->lpbin != nullptr);
  return isComplete ? S_OK : MAPI_E_INVALID_PARAMETER;
}

// Of what became of each: success when all were done, a failure when none was.
HRESULT ResultOf(std::span<const HRESULT> results) noexcept {
  HRESULT failure = S_OK;
  bool isDone = false;
  for (const HRESULT each : results) {
    isDone = isDone || SUCCEEDED(each);
    if (FAILED(each)) failure = each;
  }
  return SUCCEEDED(failure) || !isDone ? failure : MAPI_W_PARTIAL_COMPLETION;
}

HRESULT ReadDeletable(Book& book, const SBinary& id, EntryRef* entry) {
  if (const HRESULT hr = book.Ids().Read(id.cb, id.lpb, entry); FAILED(hr)) return hr;
  return book.AccessTo(*entry) == Access::kRead ? MAPI_E_NO_ACCESS : S_OK;
}

// MAPI_E_NO_SUPPORT: the book takes one entry out after the other.
HRESULT DeleteAtOnce(Book& book, const ENTRYLIST& entries) {
  std::vector<HRESULT> results(entries.cValues);
  std::vector<EntryRef> refs;
  for (ULONG i = 0; i < entries.cValues; ++i) {
    EntryRef ref;
    results[i] = ReadDeletable(book, entries.lpbin[i], &ref);
    if (SUCCEEDED(results[i])) refs.push_back(std::move(ref));
  }
  std::vector<HRESULT> done(refs.size(), S_OK);
  const HRESULT hr = refs.empty() ? S_OK : book.DeleteAll(refs, done);
  if (hr == MAPI_E_NO_SUPPORT) return hr;
  auto next = done.begin();
  for (HRESULT& each : results) {
    if (SUCCEEDED(each)) each = FAILED(hr) ? hr : *next++;
  }
  return ResultOf(results);
}

// Does it for each entry: success when all were done, a failure when none was.
template <class Action>
HRESULT ForEachEntry(const Book& book, const ENTRYLIST* entries, Action action) {
  if (const HRESULT hr = CheckEntries(entries); FAILED(hr)) return hr;
  std::vector<HRESULT> results(entries->cValues);
  for (ULONG i = 0; i < entries->cValues; ++i) {
    results[i] = CallForeign([&] {
      return Telling(book.GetHost(), "an entry of several", [&] { return action(entries->lpbin[i]); });
    });
  }
  return ResultOf(results);
}

// Told once, however many they are.
template <class Hook>
HRESULT ChangeMembers(const Origin& list, const ENTRYLIST* entries, Hook hook) {
  const HRESULT hr =
      ForEachEntry(*list.book, entries, [&](const SBinary& id) { return WithMember(list, hook, id); });
  if (SUCCEEDED(hr) && entries->cValues != 0) TellOfMembers(*list.book, list.entry);
  return hr;
}

enum class Matches { kNone, kOne, kSeveral };

// The first row that satisfies the restriction, and whether there are others.
Matches FindMatches(IMAPITable& table, SRestriction& restriction, sdk::RowSet& row) {
  if (FAILED(table.FindRow(&restriction, BOOKMARK_BEGINNING, 0))) return Matches::kNone;
  if (FAILED(table.QueryRows(1, 0, row.Put())) || row->cRows != 1) return Matches::kNone;
  return FAILED(table.FindRow(&restriction, BOOKMARK_CURRENT, 0)) ? Matches::kOne : Matches::kSeveral;
}

// Who is called exactly so; nobody: whose name begins so.
Matches FindName(IMAPITable& table, LPCWSTR name, sdk::RowSet& row) {
  SPropValue wanted{};
  wanted.ulPropTag = PR_DISPLAY_NAME;
  wanted.Value.lpszW = const_cast<LPWSTR>(name);
  SRestriction exact{}, begins{};
  exact.rt = RES_PROPERTY;
  exact.res.resProperty = {RELOP_EQ, PR_DISPLAY_NAME, &wanted};
  begins.rt = RES_CONTENT;
  begins.res.resContent = {FL_PREFIX | FL_IGNORECASE, PR_DISPLAY_NAME, &wanted};
  const Matches found = FindMatches(table, exact, row);
  return found != Matches::kNone ? found : FindMatches(table, begins, row);
}

// The one entry that the contents table shows under the name.
Matches SearchTable(Book& book, IMAPITable& table, LPCWSTR name, EntryRef* entry) {
  auto row = book.GetHost().buffers.Own<SRowSet>();
  const Matches found = FindName(table, name, row);
  if (found != Matches::kOne) return found;
  const SBinary id = sdk::ValueView(row->aRow[0]).Binary(PR_ENTRYID);
  return FAILED(book.Ids().Read(id.cb, id.lpb, entry)) ? Matches::kNone : Matches::kOne;
}

// Names that are looked up one after the other in a container; its table is opened when the book has no means of its
// own.
class NameSearch {
 public:
  explicit NameSearch(const Origin& origin) : origin_(origin) {}

  HRESULT Find(LPCWSTR name, Matches* found, EntryRef* entry) {
    std::vector<EntryRef> matches;
    const HRESULT hr = origin_.book->Resolve(origin_.entry, name, &matches);
    if (hr == MAPI_E_NO_SUPPORT) return FindInTable(name, found, entry);
    if (FAILED(hr)) return hr;
    *found = matches.empty() ? Matches::kNone : matches.size() == 1 ? Matches::kOne : Matches::kSeveral;
    if (*found == Matches::kOne) *entry = std::move(matches.front());
    return S_OK;
  }

 private:
  HRESULT FindInTable(LPCWSTR name, Matches* found, EntryRef* entry) {
    if (!table_) {
      if (const HRESULT hr = OpenContents(origin_, MAPI_UNICODE, table_.Put()); FAILED(hr)) return hr;
    }
    *found = SearchTable(*origin_.book, *table_.Get(), name, entry);
    return S_OK;
  }

  const Origin& origin_;
  sdk::ComPtr<IMAPITable> table_;
};

// The flag of the recipient; one that is found gets its properties.
HRESULT ResolveOne(Book& book, NameSearch& names, const SPropTagArray& tags, ADRENTRY& recipient,
                   ULONG* flag) {
  const LPCWSTR name = sdk::ValueView(recipient).Text(PR_DISPLAY_NAME);
  if (name == nullptr || *name == 0) return S_OK;
  Matches found = Matches::kNone;
  EntryRef entry;
  PropList values;
  if (const HRESULT hr = names.Find(name, &found, &entry); FAILED(hr)) return hr;
  if (found == Matches::kSeveral) *flag = MAPI_AMBIGUOUS;
  if (found != Matches::kOne) return S_OK;
  if (FAILED(book.ReadEntry(entry, {tags.aulPropTag, tags.cValues}, values))) return S_OK;
  MergeRecipient(book.GetHost().buffers, values.View(), tags, recipient);
  *flag = MAPI_RESOLVED;
  return S_OK;
}

}  // namespace

HRESULT OpenContents(const Origin& origin, ULONG flags, LPMAPITABLE* table) {
  if (const HRESULT hr = CheckTableCall(flags, table); FAILED(hr)) return hr;
  RowsPtr rows = origin.IsStored() ? origin.book->Contents(origin.entry) : nullptr;
  if (rows == nullptr) return MAPI_E_NO_SUPPORT;
  Book& book = *origin.book;
  *table = MakeTable(book.GetHost().buffers, std::make_unique<KeptRows>(origin.book, std::move(rows)),
                     book.TablesOf(origin.entry), book.GetWorker())
               .Detach();
  return S_OK;
}

HRESULT OpenPropertyOf(const Origin& origin, ULONG tag, LPCIID iid, ULONG flags, LPUNKNOWN* object) {
  if (iid == nullptr) return MAPI_E_INTERFACE_NOT_SUPPORTED;
  if (object == nullptr) return MAPI_E_INVALID_PARAMETER;
  if (!origin.IsStored()) return MAPI_E_NO_SUPPORT;
  if ((flags & MAPI_MODIFY) != 0 && !CanChange(origin)) return MAPI_E_NO_ACCESS;
  sdk::ComPtr<IUnknown> made;
  if (const HRESULT hr = origin.book->OpenProperty(origin.entry, tag, *iid, flags, &made); FAILED(hr))
    return hr;
  return HandOut(made, iid, object);
}

HRESULT OpenHierarchy(const Origin& origin, ULONG flags, LPMAPITABLE* table) {
  if (const HRESULT hr = CheckTableCall(flags, table); FAILED(hr)) return hr;
  std::vector<PropList> rows;
  const bool isDeep = (flags & CONVENIENT_DEPTH) != 0;
  if (origin.IsStored()) {
    if (const HRESULT hr = AddContainers(*origin.book, origin.entry, 0, isDeep, rows); FAILED(hr)) return hr;
  }
  *table = MakeTable(origin.book->GetHost().buffers, std::move(rows), HierarchyColumns()).Detach();
  return S_OK;
}

HRESULT ReadTemplate(Book& book, const SBinary& id, ULONG* objectType, sdk::ComPtr<IMAPIProp>& entry) {
  *objectType = MAPI_MAILUSER;
  if (id.cb == 0) return S_OK;
  const auto isTemplate = [&](ULONG kind) {
    const std::vector<BYTE> bytes = book.Ids().Make(kind);
    return id.lpb != nullptr && std::equal(bytes.begin(), bytes.end(), id.lpb, id.lpb + id.cb);
  };
  if (isTemplate(kUserTemplateKind)) return S_OK;
  if (isTemplate(kListTemplateKind)) {
    *objectType = MAPI_DISTLIST;
    return S_OK;
  }
  return OpenAnyEntry(book, id, entry, objectType);
}

HRESULT CreateEntryIn(const Origin& origin, const SBinary& templateId, ULONG flags, LPMAPIPROP* entry) {
  const bool isSavedMember = origin.IsMember() && !origin.isNew;
  if (!isSavedMember && !CanChange(origin)) return MAPI_E_NO_ACCESS;
  if (entry == nullptr) return MAPI_E_INVALID_PARAMETER;
  Origin made{origin.book, origin.entry, MAPI_MAILUSER, true, flags};
  sdk::ComPtr<IMAPIProp> like;
  if (const HRESULT hr = ReadTemplate(*origin.book, templateId, &made.objectType, like); FAILED(hr))
    return hr;
  if (made.objectType == MAPI_ABCONT) return MAPI_E_NO_SUPPORT;
  if (like && origin.objectType == MAPI_DISTLIST)
    return CreateMember(origin, templateId, made.objectType, *like, entry);
  if (isSavedMember) return MAPI_E_NO_ACCESS;
  if (!origin.book->Creates(made.objectType)) return MAPI_E_NO_SUPPORT;
  PropList values;
  values.Set(PR_OBJECT_TYPE, made.objectType);
  values.Set(PR_DISPLAY_TYPE, DisplayTypeOf(made.objectType));
  *entry = MakeEntry(std::move(made), std::move(values), Access::kModify).Detach();
  return S_OK;
}

HRESULT CopyEntriesInto(const Origin& origin, const ENTRYLIST* entries) {
  if (!CanChange(origin)) return MAPI_E_NO_ACCESS;
  if (origin.objectType == MAPI_DISTLIST) return ChangeMembers(origin, entries, &Book::AddMember);
  return ForEachEntry(*origin.book, entries, [&](const SBinary& id) { return CopyOne(origin, id); });
}

HRESULT DeleteEntriesOf(const Origin& origin, const ENTRYLIST* entries) {
  Book& book = *origin.book;
  if (origin.objectType != MAPI_DISTLIST) {
    if (const HRESULT hr = CheckEntries(entries); FAILED(hr)) return hr;
    const HRESULT hr = book.TellsByItself() ? DeleteAtOnce(book, *entries) : MAPI_E_NO_SUPPORT;
    if (hr != MAPI_E_NO_SUPPORT) return hr;
    return ForEachEntry(book, entries, [&](const SBinary& id) { return DeleteOne(book, id); });
  }
  if (!CanChange(origin)) return MAPI_E_NO_ACCESS;
  return ChangeMembers(origin, entries, &Book::RemoveMember);
}

HRESULT ResolveNamesIn(const Origin& origin, const SPropTagArray* tags, ADRLIST* list, FlagList* flags) {
  static constexpr ULONG kUsual[] = {
      6, PR_ENTRYID, PR_DISPLAY_NAME, PR_OBJECT_TYPE, PR_DISPLAY_TYPE, PR_ADDRTYPE, PR_EMAIL_ADDRESS};
  if (list == nullptr || flags == nullptr || flags->cFlags < list->cEntries) return MAPI_E_INVALID_PARAMETER;
  if (!origin.IsStored()) return MAPI_E_NO_SUPPORT;
  NameSearch names(origin);
  const auto& wanted = tags != nullptr ? *tags : *reinterpret_cast<const SPropTagArray*>(kUsual);
  for (ULONG i = 0; i < list->cEntries; ++i) {
    if (flags->ulFlag[i] != MAPI_UNRESOLVED) continue;
    const HRESULT hr = ResolveOne(*origin.book, names, wanted, list->aEntries[i], &flags->ulFlag[i]);
    if (FAILED(hr)) return hr;
  }
  return S_OK;
}

}  // namespace orv::kit
