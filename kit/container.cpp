// What containers and distribution lists do, over the book's hooks.
#include <algorithm>

#include "book_objects.hpp"
#include "orv/kit/recipients.hpp"
#include "orv/orvtags.h"

namespace orv::kit {
namespace {

// Keeps the book alive for as long as a table reads from it.
class KeptRows final : public RowSource {
 public:
  KeptRows(std::shared_ptr<Book> book, RowsPtr rows) : book_(std::move(book)), rows_(std::move(rows)) {}

  size_t Count() override { return rows_->Count(); }
  HRESULT RowAt(size_t row, std::span<const ULONG> columns, sdk::ValueView* values) override {
    return rows_->RowAt(row, columns, values);
  }
  std::vector<ULONG> Columns() override { return rows_->Columns(); }
  std::optional<size_t> Seek(ULONG column, const SPropValue& key, bool isPrefix) override {
    return rows_->Seek(column, key, isPrefix);
  }
  bool Sort(const std::vector<SSortOrder>& order) override { return rows_->Sort(order); }
  std::optional<std::vector<ULONG>> Select(const Restriction& restriction) override {
    return rows_->Select(restriction);
  }
  ULONG Refresh() override { return rows_->Refresh(); }

 private:
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

// What the template says: one of ours, or an entry that the new one is to be like.
HRESULT TypeOfTemplate(Book& book, const SBinary& id, ULONG* objectType) {
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
  sdk::ComPtr<IMAPIProp> entry;
  return OpenAnyEntry(book, id, entry, objectType);
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
  book.Tell(fnevObjectDeleted, entry, static_cast<ULONG>(values.Number(PR_OBJECT_TYPE)));
  return S_OK;
}

// Does it for each entry: success when all were done, a failure when none was.
template <class Action>
HRESULT ForEachEntry(const ENTRYLIST* entries, Action action) {
  if (entries == nullptr || (entries->cValues != 0 && entries->lpbin == nullptr))
    return MAPI_E_INVALID_PARAMETER;
  ULONG done = 0;
  HRESULT failure = S_OK;
  for (ULONG i = 0; i < entries->cValues; ++i) {
    const HRESULT hr = CallForeign([&] { return action(entries->lpbin[i]); });
    if (SUCCEEDED(hr)) ++done;
    if (FAILED(hr)) failure = hr;
  }
  return SUCCEEDED(failure) || done == 0 ? failure : MAPI_W_PARTIAL_COMPLETION;
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

// The flag of the recipient; one that is found gets its properties.
ULONG ResolveOne(Book& book, IMAPITable& table, const SPropTagArray& tags, ADRENTRY& recipient) {
  const LPCWSTR name = sdk::ValueView(recipient).Text(PR_DISPLAY_NAME);
  auto row = book.GetHost().buffers.Own<SRowSet>();
  if (name == nullptr || *name == 0) return MAPI_UNRESOLVED;
  const Matches matches = FindName(table, name, row);
  if (matches != Matches::kOne) return matches == Matches::kNone ? MAPI_UNRESOLVED : MAPI_AMBIGUOUS;
  const SBinary id = sdk::ValueView(row->aRow[0]).Binary(PR_ENTRYID);
  EntryRef entry;
  PropList values;
  if (FAILED(book.Ids().Read(id.cb, id.lpb, &entry))) return MAPI_UNRESOLVED;
  if (FAILED(book.ReadEntry(entry, {tags.aulPropTag, tags.cValues}, values))) return MAPI_UNRESOLVED;
  MergeRecipient(book.GetHost().buffers, values.View(), tags, recipient);
  return MAPI_RESOLVED;
}

}  // namespace

HRESULT OpenContents(const Origin& origin, ULONG flags, LPMAPITABLE* table) {
  if (const HRESULT hr = CheckTableCall(flags, table); FAILED(hr)) return hr;
  RowsPtr rows = origin.isNew ? nullptr : origin.book->Contents(origin.entry);
  if (rows == nullptr) return MAPI_E_NO_SUPPORT;
  Book& book = *origin.book;
  *table = MakeTable(book.GetHost().buffers, std::make_unique<KeptRows>(origin.book, std::move(rows)),
                     book.TablesOf(origin.entry), book.GetWorker())
               .Detach();
  return S_OK;
}

HRESULT OpenHierarchy(const Origin& origin, ULONG flags, LPMAPITABLE* table) {
  if (const HRESULT hr = CheckTableCall(flags, table); FAILED(hr)) return hr;
  std::vector<PropList> rows;
  const bool isDeep = (flags & CONVENIENT_DEPTH) != 0;
  if (!origin.isNew) {
    if (const HRESULT hr = AddContainers(*origin.book, origin.entry, 0, isDeep, rows); FAILED(hr)) return hr;
  }
  *table = MakeTable(origin.book->GetHost().buffers, std::move(rows), HierarchyColumns()).Detach();
  return S_OK;
}

HRESULT CreateEntryIn(const Origin& origin, const SBinary& templateId, ULONG flags, LPMAPIPROP* entry) {
  if (origin.isNew || origin.book->AccessTo(origin.entry) == Access::kRead) return MAPI_E_NO_ACCESS;
  if (entry == nullptr) return MAPI_E_INVALID_PARAMETER;
  Origin made{origin.book, origin.entry, MAPI_MAILUSER, true, flags};
  if (const HRESULT hr = TypeOfTemplate(*origin.book, templateId, &made.objectType); FAILED(hr)) return hr;
  if (made.objectType == MAPI_ABCONT || !origin.book->Creates(made.objectType)) return MAPI_E_NO_SUPPORT;
  PropList values;
  values.Set(PR_OBJECT_TYPE, made.objectType);
  values.Set(PR_DISPLAY_TYPE, made.objectType == MAPI_DISTLIST ? DT_PRIVATE_DISTLIST : DT_MAILUSER);
  *entry = MakeEntry(std::move(made), std::move(values), Access::kModify).Detach();
  return S_OK;
}

HRESULT CopyEntriesInto(const Origin& origin, const ENTRYLIST* entries) {
  if (origin.isNew || origin.book->AccessTo(origin.entry) == Access::kRead) return MAPI_E_NO_ACCESS;
  return ForEachEntry(entries, [&](const SBinary& id) { return CopyOne(origin, id); });
}

HRESULT DeleteEntriesOf(Book& book, const ENTRYLIST* entries) {
  return ForEachEntry(entries, [&](const SBinary& id) { return DeleteOne(book, id); });
}

HRESULT ResolveNamesIn(const Origin& origin, const SPropTagArray* tags, ADRLIST* list, FlagList* flags) {
  static constexpr ULONG kUsual[] = {
      6, PR_ENTRYID, PR_DISPLAY_NAME, PR_OBJECT_TYPE, PR_DISPLAY_TYPE, PR_ADDRTYPE, PR_EMAIL_ADDRESS};
  if (list == nullptr || flags == nullptr || flags->cFlags < list->cEntries) return MAPI_E_INVALID_PARAMETER;
  sdk::ComPtr<IMAPITable> table;
  if (const HRESULT hr = OpenContents(origin, MAPI_UNICODE, table.Put()); FAILED(hr)) return hr;
  const auto& wanted = tags != nullptr ? *tags : *reinterpret_cast<const SPropTagArray*>(kUsual);
  for (ULONG i = 0; i < list->cEntries; ++i) {
    if (flags->ulFlag[i] == MAPI_UNRESOLVED)
      flags->ulFlag[i] = ResolveOne(*origin.book, *table, wanted, list->aEntries[i]);
  }
  return S_OK;
}

}  // namespace orv::kit
