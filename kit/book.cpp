// What a book's hooks add up to: entries with identifiers, rows, and telling of changes.
#include "orv/kit/book.hpp"

#include <algorithm>

#include "book_objects.hpp"
#include "orv/orvtags.h"
#include "telling.hpp"

namespace orv::kit {
namespace {

constexpr KeyForm FormOf(const std::vector<KeyForm>& forms, ULONG kind) {
  return kind < forms.size() ? forms[kind] : kNoKey;
}

class MadeRows final : public RowSource {
 public:
  MadeRows(size_t count, MakeRow make, std::vector<ULONG> all)
      : count_(count), make_(std::move(make)), all_(std::move(all)) {}

  size_t Count() override { return count_; }
  HRESULT RowAt(size_t row, std::span<const ULONG> columns, sdk::ValueView* values) override {
    row_.Clear();
    const HRESULT hr = make_(row, columns, row_);
    if (SUCCEEDED(hr)) *values = row_.View();
    return hr;
  }
  std::vector<ULONG> Columns() override { return all_; }

 private:
  const size_t count_;
  const MakeRow make_;
  const std::vector<ULONG> all_;
  PropList row_;
};

// Each row is an entry that is read when it is asked for. Who shows the rows keeps the book alive.
class EntryRows final : public RowSource {
 public:
  EntryRows(Book& book, std::vector<EntryRef> entries, Book::ListEntries list)
      : book_(book), entries_(std::move(entries)), list_(std::move(list)) {}

  size_t Count() override { return entries_.size(); }
  HRESULT RowAt(size_t row, std::span<const ULONG> columns, sdk::ValueView* values) override {
    row_.Clear();
    const HRESULT hr = book_.ReadEntry(entries_[row], columns, row_);
    if (FAILED(hr) && hr != MAPI_E_NOT_FOUND) return hr;
    if (FAILED(hr)) book_.Ids().Identify(entries_[row], row_);
    *values = row_.View();
    return S_OK;
  }
  std::vector<ULONG> Columns() override { return ContentsColumns(); }
  // How many changes there were is not known; one is the least, and who is told hears of a changed table.
  ULONG Refresh() override {
    if (!list_) return 0;
    entries_ = list_();
    return 1;
  }

 private:
  Book& book_;
  std::vector<EntryRef> entries_;
  const Book::ListEntries list_;
  PropList row_;
};

// What a caller gives CreateEntry of a container that can be changed.
void AddTemplates(const Book& book, PropList& values) {
  if (book.Creates(MAPI_MAILUSER)) values.Set(PR_DEF_CREATE_MAILUSER, book.Ids().Make(kUserTemplateKind));
  if (book.Creates(MAPI_DISTLIST)) values.Set(PR_DEF_CREATE_DL, book.Ids().Make(kListTemplateKind));
}

}  // namespace

ULONG DisplayTypeOf(ULONG objectType) noexcept {
  if (objectType == MAPI_ABCONT) return DT_LOCAL;
  return objectType == MAPI_DISTLIST ? DT_DISTLIST : DT_MAILUSER;
}

void TellOfMembers(Book& book, const EntryRef& list) noexcept {
  if (book.TellsByItself()) return;
  sdk::Guarded([&] {
    if (TableSet* tables = book.TablesOf(list)) tables->Changed();
    return S_OK;
  });
  book.Tell(fnevObjectModified, list, MAPI_DISTLIST);
}

std::vector<ULONG> ContentsColumns() {
  return {PR_DISPLAY_NAME, PR_ENTRYID,  PR_OBJECT_TYPE,  PR_DISPLAY_TYPE,
          PR_INSTANCE_KEY, PR_ADDRTYPE, PR_EMAIL_ADDRESS};
}
std::vector<ULONG> HierarchyColumns() {
  return {PR_DISPLAY_NAME, PR_ENTRYID,         PR_OBJECT_TYPE, PR_DISPLAY_TYPE,
          PR_INSTANCE_KEY, PR_CONTAINER_FLAGS, PR_DEPTH};
}

RowsPtr RowsMadeBy(size_t count, MakeRow make, std::vector<ULONG> all) {
  return std::make_unique<MadeRows>(count, std::move(make), std::move(all));
}

Book::Book(const Logon& logon, std::vector<KeyForm> forms, std::shared_ptr<Worker> worker)
    : host_(logon.host),
      ids_(logon.uid, forms),
      root_(kRootKind, std::vector<BYTE>(FormOf(forms, kRootKind).least)),
      name_(logon.settings.Text(PR_DISPLAY_NAME)),
      worker_(worker),
      advised_(std::move(worker)) {}

std::vector<EntryRef> Book::Containers(const EntryRef&) { return {}; }
RowsPtr Book::Contents(const EntryRef&) { return nullptr; }
Access Book::AccessTo(const EntryRef&) { return Access::kRead; }
HRESULT Book::Create(const EntryRef&, ULONG, ULONG, Changes&, EntryRef*) { return MAPI_E_NO_ACCESS; }
HRESULT Book::Change(const EntryRef&, Changes&) { return MAPI_E_NO_ACCESS; }
HRESULT Book::DeleteAll(std::span<const EntryRef>, std::span<HRESULT>) { return MAPI_E_NO_SUPPORT; }

HRESULT Book::Delete(const EntryRef&) { return MAPI_E_NO_ACCESS; }
HRESULT Book::AddMember(const EntryRef&, std::span<const BYTE>) { return MAPI_E_NO_SUPPORT; }
HRESULT Book::RemoveMember(const EntryRef&, std::span<const BYTE>) { return MAPI_E_NO_ACCESS; }
HRESULT Book::OpenProperty(const EntryRef&, ULONG, const IID&, ULONG, sdk::ComPtr<IUnknown>*) {
  return MAPI_E_NO_SUPPORT;
}
HRESULT Book::Resolve(const EntryRef&, LPCWSTR, std::vector<EntryRef>*) { return MAPI_E_NO_SUPPORT; }
HRESULT Book::ShowDetails(HWND, const EntryRef&, ULONG) { return MAPI_E_NO_SUPPORT; }
HRESULT Book::ShowNew(HWND, const EntryRef&, ULONG, EntryRef*) { return MAPI_E_NO_SUPPORT; }
HRESULT Book::CheckSet(const SPropValue&) { return S_OK; }
HRESULT Book::CheckDelete(ULONG) { return S_OK; }
TableSet* Book::TablesOf(const EntryRef&) { return nullptr; }
EntryRef Book::ParentOf(const EntryRef&) { return root_; }

void Book::ReadRoot(PropList& values) {
  DescribeContainer(values, name_, AB_SUBCONTAINERS | AB_UNMODIFIABLE);
}

void Book::DescribeContainer(PropList& values, std::wstring_view name, ULONG flags) {
  values.Set(PR_DISPLAY_NAME, name);
  values.Set(PR_OBJECT_TYPE, MAPI_ABCONT);
  values.Set(PR_DISPLAY_TYPE, DT_LOCAL);
  values.Set(PR_CONTAINER_FLAGS, flags);
  values.Set(PR_DEPTH, 0);
}

HRESULT Book::ReadEntry(const EntryRef& entry, std::span<const ULONG> columns, PropList& values) {
  const HRESULT hr = Telling(*host_, "Read", [&]() -> HRESULT {
    if (entry != root_) return Read(entry, columns, values);
    ReadRoot(values);
    return S_OK;
  });
  if (FAILED(hr)) return hr;
  const auto type = static_cast<ULONG>(values.Number(PR_OBJECT_TYPE, MAPI_MAILUSER));
  if (!values.Has(PR_OBJECT_TYPE)) values.Set(PR_OBJECT_TYPE, type);
  if (!values.Has(PR_DISPLAY_TYPE)) values.Set(PR_DISPLAY_TYPE, DisplayTypeOf(type));
  if (!values.Has(PR_ENTRYID)) ids_.Identify(entry, values);
  if (type == MAPI_ABCONT && AccessTo(entry) == Access::kModify) AddTemplates(*this, values);
  return S_OK;
}

RowsPtr Book::RowsOf(std::vector<EntryRef> entries) {
  return std::make_unique<EntryRows>(*this, std::move(entries), nullptr);
}
RowsPtr Book::RowsOf(ListEntries list) {
  std::vector<EntryRef> entries = list();
  return std::make_unique<EntryRows>(*this, std::move(entries), std::move(list));
}

void Book::Tell(ULONG event, const EntryRef& entry, ULONG objectType) noexcept {
  sdk::Guarded([&] {
    const EntryRef parent = ParentOf(entry);
    if (TableSet* tables = TablesOf(parent)) tables->Changed();
    std::vector<BYTE> id = ids_.Make(entry), parentId = ids_.Make(parent);
    const auto sized = [](std::vector<BYTE>& bytes) {
      return SBinary{static_cast<ULONG>(bytes.size()), bytes.data()};
    };
    advised_.Notify(ObjectEvent(event, objectType, sized(id), sized(parentId)));
    return S_OK;
  });
}

HRESULT Book::OpenEntry(ULONG size, const ENTRYID* id, LPCIID iid, ULONG flags, ULONG* type,
                        LPUNKNOWN* object) {
  if (type == nullptr || object == nullptr) return MAPI_E_INVALID_PARAMETER;
  return sdk::Guarded([&]() -> HRESULT {
    EntryRef entry = root_;
    const HRESULT known = size == 0 && id == nullptr ? S_OK : ids_.Read(size, id, &entry);
    if (FAILED(known)) return known;
    const bool mayModify = (flags & (MAPI_MODIFY | MAPI_BEST_ACCESS)) != 0;
    const Access access =
        mayModify ? Telling(*host_, "AccessTo", [&] { return AccessTo(entry); }) : Access::kRead;
    if ((flags & MAPI_MODIFY) != 0 && access == Access::kRead) return MAPI_E_NO_ACCESS;
    PropList values;
    if (const HRESULT hr = ReadEntry(entry, {}, values); FAILED(hr)) return hr;
    const auto objectType = static_cast<ULONG>(values.Number(PR_OBJECT_TYPE));
    const sdk::ComPtr<IMAPIProp> made =
        MakeEntry({shared_from_this(), std::move(entry), objectType}, std::move(values), access);
    const HRESULT hr = HandOut(made, iid, object);
    if (SUCCEEDED(hr)) *type = objectType;
    return hr;
  });
}

}  // namespace orv::kit
