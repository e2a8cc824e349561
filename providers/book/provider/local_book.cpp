// Opening, reading, and what containers hold.
#include "providers/book/provider/local_book.h"

#include <algorithm>
#include <mutex>

#include "orv/orvbook.h"
#include "providers/book/members.h"
#include "providers/book/provider/member_rows.h"
#include "providers/book/provider/row_values.h"
#include "providers/book/provider/store_rows.h"
#include "providers/book/provider/whole_book.h"
#include "providers/book/text.h"

namespace book {

namespace sdk = orv::sdk;
using Guard = std::lock_guard<sdk::Lock>;

constexpr char kReplaced[] =
    "Another address book lies here than before. What was taken from the former one is not found until its "
    "file is back.";

// Something of the library that has the texts.
constexpr char kOwnLibrary = 0;

// Told by the store, which does not keep the book alive.
class LocalBook::Ear final : public Listener {
 public:
  explicit Ear(std::weak_ptr<kit::Book> book) : book_(std::move(book)) {}

  void BookChanged(const Changes& changes) override {
    const std::shared_ptr<kit::Book> kept = book_.lock();
    if (!kept) return;
    auto& book = static_cast<LocalBook&>(*kept);
    book.ShowChanges();
    book.TellChanges(changes);
  }

 private:
  const std::weak_ptr<kit::Book> book_;
};

LocalBook::LocalBook(const kit::Logon& logon, std::shared_ptr<BookFile> file, std::wstring name,
                     bool isReplaced)
    : Book(logon, KeyForms()),
      file_(std::move(file)),
      language_(kit::ModuleOf(&kOwnLibrary), logon.resource),
      words_(language_),
      containerName_(std::move(name)),
      isReplaced_(isReplaced) {}

HRESULT LocalBook::Open() {
  EntryKey uid;
  std::copy_n(Ids().Uid().ab, kKeySize, uid.begin());
  file_->Expect(uid);
  const std::weak_ptr<kit::Book> self = weak_from_this();
  ear_ = std::make_shared<Ear>(self);
  watch_ = std::make_unique<Watch>([self] {
    const std::shared_ptr<kit::Book> kept = self.lock();
    return kept && static_cast<LocalBook&>(*kept).Look();
  });
  return S_OK;
}

HRESULT LocalBook::OpenStore(std::shared_ptr<Store>* store) {
  const HRESULT hr = file_->Open(store);
  if (FAILED(hr)) Report(hr, BookFile::Sentence(hr));
  if (FAILED(hr)) return hr;
  if (isReplaced_) Report(MAPI_E_OBJECT_CHANGED, kReplaced);
  const Guard guard(lock_);
  if (!isHeard_) (*store)->Listen(ear_);
  isHeard_ = true;
  return S_OK;
}

// The copy of the day is made of the book as it is before the day's first change.
HRESULT LocalBook::OpenToChange(std::shared_ptr<Store>* store) {
  const HRESULT hr = OpenStore(store);
  if (SUCCEEDED(hr)) static_cast<void>((*store)->Tend());
  return hr;
}

HRESULT LocalBook::OpenView(std::shared_ptr<Store>* store, std::unique_ptr<View>* view) {
  if (const HRESULT hr = OpenStore(store); FAILED(hr)) return hr;
  const HRESULT hr = (*store)->OpenView(view);
  if (FAILED(hr)) Report(hr, BookFile::Sentence(hr));
  return hr;
}

// Once for each reason, as soon as the session listens: during the logon it does not yet.
void LocalBook::Report(HRESULT code, const char* sentence) {
  {
    const Guard guard(lock_);
    if (reported_ == code) return;
  }
  const auto session = GetHost().support.As<IOrvSupport2>(IID_IOrvSupport2);
  if (!session) return;
  const std::wstring text = containerName_ + L" (" + file_->Path() + L"): " + ToWide(sentence);
  const HRESULT told = kit::CallForeign([&] { return session->ReportProblem(code, text.c_str()); });
  const Guard guard(lock_);
  if (SUCCEEDED(told)) reported_ = code;
}

void LocalBook::ReadRoot(kit::PropList& values) {
  DescribeContainer(values, Name(), AB_SUBCONTAINERS | AB_UNMODIFIABLE);
}

std::vector<kit::EntryRef> LocalBook::Containers(const kit::EntryRef& parent) {
  if (parent != Root()) return {};
  return {kit::EntryRef(kContainer)};
}

void LocalBook::ReadContainer(kit::PropList& values) {
  std::shared_ptr<Store> store;
  std::unique_ptr<View> view;
  uint64_t count = 0;
  HRESULT hr = OpenView(&store, &view);
  if (SUCCEEDED(hr)) hr = view->Count(&count);
  const bool canChange = SUCCEEDED(hr) && !store->IsReadOnly();
  DescribeContainer(values, SUCCEEDED(hr) ? containerName_ : words_.NameOfUnreadable(containerName_, hr),
                    AB_RECIPIENTS | (canChange ? AB_MODIFIABLE : AB_UNMODIFIABLE));
  values.Set(PR_TRANSMITABLE_DISPLAY_NAME, containerName_);
  values.Set(PR_CONTENT_COUNT, count);
  values.Set(PR_ORV_BOOK_STATUS, SUCCEEDED(hr) ? S_OK : hr);
  values.Set(PR_ORV_BOOK_FILE_W, file_->Path());
}

HRESULT LocalBook::Read(const kit::EntryRef& entry, std::span<const ULONG> columns, kit::PropList& values) {
  if (entry.kind == kContainer) {
    ReadContainer(values);
    return S_OK;
  }
  return WithView([&](View& view) {
    const std::optional<RowKey> key = RowKeyOf(entry);
    if (!key) return ReadLoneMember(entry, view, values);
    Row row;
    const HRESULT hr = view.RowOf(*key, &row);
    return FAILED(hr) ? hr : DescribeRowAs(entry, view, row, columns, values);
  });
}

std::unique_ptr<View> LocalBook::TakeSpare() {
  const Guard guard(lock_);
  return std::move(spare_);
}

void LocalBook::KeepSpare(std::unique_ptr<View> view) {
  {
    const Guard guard(lock_);
    spare_.swap(view);
    spareSince_ = GetTickCount64();
  }
  watch_->Wake();
}

// A view that nobody uses would keep what it saw in the file. Whether there still is one.
bool LocalBook::DropIdleSpare() {
  constexpr ULONGLONG kIdle = 1000;  // milliseconds
  std::unique_ptr<View> idle;
  const Guard guard(lock_);
  if (spare_ && GetTickCount64() - spareSince_ > kIdle) idle = std::move(spare_);
  return spare_ != nullptr;
}

namespace {

// A copy of a list in another book is to know what its members are called, and what is known of their address.
void DescribeMembers(View& view, formats::Contact* list) {
  for (formats::ContactMember& each : list->members) {
    Row row;
    if (each.uid.empty() || FAILED(view.RowOf({KeyOfUid(each.uid), 0}, &row))) continue;
    // A name that only repeats the UID says nothing.
    if (each.name.empty() || each.name == each.uid) each.name = row.name;
    if (each.number.empty()) NoteAddress(row.number, &each.rest);
  }
}

}  // namespace

HRESULT LocalBook::DescribeRowAs(const kit::EntryRef& ref, View& view, const Row& row,
                                 std::span<const ULONG> columns, kit::PropList& values) {
  if (AreRowColumns(columns)) {
    DescribeRow(words_, row, values);
  } else {
    Entry entry;
    if (const HRESULT hr = view.Read(row.key.entry, &entry); FAILED(hr)) return hr;
    DescribeMembers(view, &entry.contact);
    DescribeEntry(words_, entry, row, columns, values);
    const std::vector<BYTE> whole = Ids().Make(RefOfEntry(row.key.entry));
    values.SetBytes(PR_ORV_CONTACT_ENTRYID, whole.data(), whole.size());
  }
  Ids().Identify(ref, values);
  return S_OK;
}

std::optional<kit::EntryRef> LocalBook::WantedBy(const SRestriction& restriction) const {
  const auto& property = restriction.res.resProperty;
  const bool isEqual = restriction.rt == RES_PROPERTY && property.relop == RELOP_EQ;
  if (!isEqual || (property.ulPropTag != PR_ENTRYID && property.ulPropTag != PR_INSTANCE_KEY))
    return std::nullopt;
  kit::EntryRef wanted;
  const SBinary& id = property.lpProp->Value.bin;
  if (PROP_TYPE(property.lpProp->ulPropTag) != PT_BINARY || FAILED(Ids().Read(id.cb, id.lpb, &wanted)))
    return std::nullopt;
  return wanted;
}

kit::RowsPtr LocalBook::Contents(const kit::EntryRef& container) {
  if (container.kind == kContainer) return std::make_unique<StoreRows>(*this);
  if (container.kind == kEntry) return std::make_unique<MemberRows>(*this, PartsOf(container).entry);
  return nullptr;
}

HRESULT LocalBook::OpenProperty(const kit::EntryRef& entry, ULONG tag, const IID& iid, ULONG flags,
                                sdk::ComPtr<IUnknown>* object) {
  if (entry.kind != kContainer || tag != PR_ORV_CONTACTS) return MAPI_E_NO_SUPPORT;
  if (!IsEqualGUID(iid, IID_IOrvContacts)) return MAPI_E_INTERFACE_NOT_SUPPORTED;
  *object = MakeWholeBook(shared_from_this(), file_, (flags & MAPI_MODIFY) != 0);
  return S_OK;
}

kit::Access LocalBook::AccessTo(const kit::EntryRef& entry) {
  std::shared_ptr<Store> store;
  const bool isFixed = entry == Root() || entry.kind == kMember;
  if (isFixed || FAILED(OpenStore(&store)) || store->IsReadOnly()) return kit::Access::kRead;
  return kit::Access::kModify;
}

kit::TableSet* LocalBook::TablesOf(const kit::EntryRef& container) {
  if (container.kind == kContainer) return &tables_;
  if (container.kind != kEntry) return nullptr;
  const Guard guard(lock_);
  std::unique_ptr<kit::TableSet>& tables = listTables_[PartsOf(container).entry];
  if (!tables) tables = std::make_unique<kit::TableSet>();
  return tables.get();
}

kit::EntryRef LocalBook::ParentOf(const kit::EntryRef& entry) {
  return entry.kind == kContainer ? Root() : kit::EntryRef(kContainer);
}

bool LocalBook::TellsOfChanges() const {
  watch_->Wake();
  return true;
}

void LocalBook::TableOpened() {
  ++openTables_;
  watch_->Wake();
}

bool LocalBook::Look() {
  constexpr ULONG kEvents = fnevObjectCreated | fnevObjectModified | fnevObjectDeleted;
  const bool hasSpare = DropIdleSpare();
  if (openTables_ == 0 && !Advised().IsWanted(kEvents)) return hasSpare;
  std::shared_ptr<Store> store;
  if (SUCCEEDED(OpenStore(&store))) static_cast<void>(store->Poll());
  return true;
}

// Of all tables: lists show what is told of their members.
void LocalBook::ShowChanges() noexcept {
  static_cast<void>(sdk::Guarded([&] {
    std::vector<kit::TableSet*> sets{&tables_};
    {
      const Guard guard(lock_);
      for (const auto& [key, tables] : listTables_) sets.push_back(tables.get());
    }
    for (kit::TableSet* each : sets) each->Changed();
    return S_OK;
  }));
}

}  // namespace book
