// A provider over the kit's Book, through the interfaces that the library and its clients call: a book in memory
// that can be changed, opened as at logon.
#include <algorithm>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>

#include "hosting/orv_support.h"
#include "hosting/provider_list.h"
#include "orv/kit/provider.hpp"
#include "orv/orvtags.h"
#include "platform/faults.h"
#include "tests/kit/kit_values.h"
#include "tests/kit/recording_sink.h"

namespace orv::test {
namespace {

using kit::Access;
using kit::Changes;
using kit::EntryRef;
using kit::PropList;
using sdk::ComPtr;

constexpr ULONG kUnicode = MAPI_UNICODE;

// People by number, in one container below another.
class Book final : public kit::Book {
 public:
  enum Kind : ULONG { kFolder = 1, kPeople, kPerson, kThrows, kRowThrows };

  explicit Book(const kit::Logon& logon)
      : kit::Book(logon, {kit::kNoKey, kit::kNoKey, kit::kNoKey, kit::kNumberKey, kit::kNoKey, kit::kNoKey}) {
    people_ = {{1, L"Ada"}, {2, L"Adam"}, {3, L"Bo"}};
    lists_ = {3};
  }

  std::vector<EntryRef> Containers(const EntryRef& parent) override {
    if (parent == Root()) return {EntryRef(kFolder)};
    return parent.kind == kFolder ? std::vector{EntryRef(kPeople), EntryRef(9)} : std::vector<EntryRef>();
  }
  kit::RowsPtr Contents(const EntryRef& container) override {
    if (container.kind == kThrows) throw std::bad_alloc();
    if (container.kind == kRowThrows) return RowsOf({EntryRef(kThrows)});
    if (container.kind == kPerson) return RowsOf([this, container] { return MembersOf(container); });
    return container.kind == kPeople ? RowsOf(Everybody()) : nullptr;
  }
  HRESULT Read(const EntryRef& entry, std::span<const ULONG>, PropList& values) override {
    if (entry.kind == kFolder || entry.kind == kPeople)
      DescribeContainer(values, entry.kind == kFolder ? L"Folder" : L"People", AB_RECIPIENTS);
    if (entry.kind == kRowThrows) return DescribeContainer(values, L"Rows", AB_RECIPIENTS), S_OK;
    if (entry.kind == kThrows) throw std::runtime_error("of a provider's own");
    if (entry.kind != kPerson) return entry.kind < kPerson ? S_OK : MAPI_E_NOT_FOUND;
    const std::lock_guard guard(lock_);
    const auto found = people_.find(entry.Number());
    if (found == people_.end()) return MAPI_E_NOT_FOUND;
    values.Set(PR_DISPLAY_NAME, found->second);
    if (lists_.count(entry.Number()) != 0) values.Set(PR_OBJECT_TYPE, MAPI_DISTLIST);
    return S_OK;
  }

  bool TellsOfChanges() const override { return true; }
  bool Creates(ULONG) const override { return true; }
  HRESULT CheckSet(const SPropValue& value) override {
    return value.ulPropTag == PR_SURNAME ? MAPI_E_COMPUTED : S_OK;
  }
  Access AccessTo(const EntryRef& entry) override {
    const bool isOpen = entry.kind == kPeople || (entry.kind == kPerson && !isClosed);
    return isOpen ? Access::kModify : Access::kRead;
  }
  EntryRef ParentOf(const EntryRef& entry) override {
    return entry.kind == kPerson ? EntryRef(kPeople) : Root();
  }
  HRESULT Create(const EntryRef&, ULONG type, ULONG flags, Changes& changes, EntryRef* made) override {
    if ((flags & CREATE_CHECK_DUP_STRICT) != 0) return MAPI_E_COLLISION;
    const std::lock_guard guard(lock_);
    const ULONGLONG number = people_.rbegin()->first + 1;
    people_[number] = changes.values.Text(PR_DISPLAY_NAME);
    if (type == MAPI_DISTLIST) lists_.insert(number);
    *made = EntryRef(kPerson, number);
    return S_OK;
  }
  HRESULT Change(const EntryRef& entry, Changes& changes) override {
    const std::lock_guard guard(lock_);
    const auto found = people_.find(entry.Number());
    if (found == people_.end()) return MAPI_E_OBJECT_DELETED;
    found->second = changes.values.Text(PR_DISPLAY_NAME);
    return S_OK;
  }
  HRESULT Delete(const EntryRef& entry) override {
    const std::lock_guard guard(lock_);
    return people_.erase(entry.Number()) != 0 ? S_OK : MAPI_E_NOT_FOUND;
  }
  HRESULT AddMember(const EntryRef& list, std::span<const BYTE> id) override {
    const std::lock_guard guard(lock_);
    members_[list.Number()].insert(Bytes(id.begin(), id.end()));
    return S_OK;
  }
  HRESULT RemoveMember(const EntryRef& list, std::span<const BYTE> id) override {
    const std::lock_guard guard(lock_);
    return members_[list.Number()].erase(Bytes(id.begin(), id.end())) != 0 ? S_OK : MAPI_E_NOT_FOUND;
  }
  kit::TableSet* TablesOf(const EntryRef& container) override {
    return container.kind == kPerson ? &listTables_ : nullptr;
  }

  bool HasMember(ULONGLONG list, const Bytes& id) {
    const std::lock_guard guard(lock_);
    return members_[list].contains(id);
  }
  std::atomic<bool> isClosed = false;  // whether its people cannot be changed

 private:
  // Those that are of this book.
  std::vector<EntryRef> MembersOf(const EntryRef& list) {
    const std::lock_guard guard(lock_);
    std::vector<EntryRef> all;
    for (const Bytes& id : members_[list.Number()]) {
      EntryRef member;
      if (SUCCEEDED(Ids().Read(id.size(), id.data(), &member))) all.push_back(member);
    }
    return all;
  }
  std::vector<EntryRef> Everybody() {
    const std::lock_guard guard(lock_);
    std::vector<EntryRef> all;
    for (const auto& [number, name] : people_) all.emplace_back(kPerson, number);
    return all;
  }

  sdk::Lock lock_;
  std::map<ULONGLONG, std::wstring> people_;
  std::set<ULONGLONG> lists_;
  std::map<ULONGLONG, std::set<Bytes>> members_;
  kit::TableSet listTables_;
};

class Section final : public sdk::RefusingProp<IProfSect, IMAPIProp> {
 public:
  HRESULT STDMETHODCALLTYPE GetProps(LPSPropTagArray tags, ULONG, ULONG* count,
                                     LPSPropValue* values) override {
    PropList held;
    held.Set(PR_DISPLAY_NAME, L"Mine");
    held.Set(PR_SERVICE_UID, Bytes(16, 0x5A));
    HRESULT hr = S_OK;
    *count = tags->cValues;
    *values = kit::CopyProps(Buffers(), held.View(), tags->aulPropTag, tags->cValues, &hr).Detach();
    return hr;
  }
};

class KitBookTest : public testing::Test {
 protected:
  KitBookTest() {
    EXPECT_EQ(CreateSupport(list_.Get(), record_.get(), support_.Put()), S_OK);
    EXPECT_EQ(Open(&OrvFreeBuffer), S_OK);
  }

  HRESULT Open(LPFREEBUFFER free) {
    return kit::OpenProvider(
        {support_.Get(), section_.Get(), 0, &OrvAllocateBuffer, &OrvAllocateMore, free, provider_.Put()},
        kit::Settings(), [this](const kit::Logon& logon) {
          auto book = std::make_shared<Book>(logon);
          book_ = book;
          return book;
        });
  }

  static Bytes Id(ULONG kind) { return Codec().Make(kind); }
  static Bytes Id(ULONG kind, ULONGLONG number) { return Codec().Make(EntryRef(kind, number)); }
  static kit::EntryIdCodec Codec() {
    MAPIUID uid;
    memset(&uid, 0x5A, sizeof uid);
    return {uid, {}};
  }

  template <class Interface = IMAPIProp>
  ComPtr<Interface> OpenEntry(Bytes id, ULONG flags = 0, HRESULT expected = S_OK) {
    ComPtr<Interface> entry;
    ULONG type = 0;
    EXPECT_EQ(provider_->OpenEntry(static_cast<ULONG>(id.size()), reinterpret_cast<LPENTRYID>(id.data()),
                                   &sdk::kIidOf<Interface>, flags, &type, entry.PutUnknown()),
              expected);
    EXPECT_EQ(type != 0, SUCCEEDED(expected));
    EXPECT_EQ(static_cast<bool>(entry), SUCCEEDED(expected));
    return entry;
  }
  ComPtr<IABContainer> People() { return OpenEntry<IABContainer>(Id(Book::kPeople)); }

  static PropList Read(IMAPIProp& object) {
    ULONG count = 0;
    auto values = Buffers().Own<SPropValue>();
    EXPECT_EQ(object.GetProps(nullptr, kUnicode, &count, values.Put()), S_OK);
    return PropList({values.Get(), count});
  }
  static std::wstring Name(IMAPIProp& object) { return std::wstring(Read(object).Text(PR_DISPLAY_NAME)); }
  static Bytes IdOf(IMAPIProp& object) {
    const PropList values = Read(object);
    const SBinary id = values.Bytes(PR_ENTRYID);
    return {id.lpb, id.lpb + id.cb};
  }
  static HRESULT SetName(IMAPIProp& object, const WCHAR* name) {
    SPropValue value = Unicode(PR_DISPLAY_NAME, name);
    const HRESULT hr = object.SetProps(1, &value, nullptr);
    return FAILED(hr) ? hr : object.SaveChanges(KEEP_OPEN_READWRITE);
  }
  ComPtr<IMAPIProp> Create(Bytes templateId = {}, ULONG flags = 0, HRESULT expected = S_OK) {
    return CreateIn(*People(), std::move(templateId), flags, expected);
  }
  template <class Container>
  static ComPtr<IMAPIProp> CreateIn(Container& container, Bytes templateId, ULONG flags = 0,
                                    HRESULT expected = S_OK) {
    ComPtr<IMAPIProp> made;
    EXPECT_EQ(container.CreateEntry(static_cast<ULONG>(templateId.size()),
                                    reinterpret_cast<LPENTRYID>(templateId.data()), flags, made.Put()),
              expected);
    return made;
  }
  ComPtr<IDistList> NewList(const WCHAR* name) {
    const PropList people = Read(*People());
    const SBinary listTemplate = people.Bytes(PR_DEF_CREATE_DL);
    const auto list = Create({listTemplate.lpb, listTemplate.lpb + listTemplate.cb});
    EXPECT_EQ(SetName(*list, name), S_OK);
    return list.As<IDistList>(IID_IDistList);
  }
  // Names, with their depths where they have one.
  static std::wstring Names(IMAPITable& table) {
    auto rows = Buffers().Own<SRowSet>();
    EXPECT_EQ(table.QueryRows(100, 0, rows.Put()), S_OK);
    std::wstring names;
    for (ULONG i = 0; rows && i < rows->cRows; ++i) {
      const PropList row{sdk::ValueView(rows->aRow[i])};
      names += row.Text(PR_DISPLAY_NAME);
      if (row.Number(PR_DEPTH, -1) >= 0) names += std::to_wstring(row.Number(PR_DEPTH));
      names += L' ';
    }
    return names;
  }
  template <class Container>
  static std::wstring ContentsOf(Container& container) {
    ComPtr<IMAPITable> table;
    EXPECT_EQ(container.GetContentsTable(kUnicode, table.Put()), S_OK);
    return Names(*table);
  }
  std::wstring Contents() { return ContentsOf(*People()); }
  HRESULT WithEntries(std::vector<Bytes> ids, const std::function<HRESULT(LPENTRYLIST)>& call) {
    std::vector<SBinary> sized;
    for (Bytes& id : ids) sized.push_back({static_cast<ULONG>(id.size()), id.data()});
    ENTRYLIST list{static_cast<ULONG>(sized.size()), sized.data()};
    return call(&list);
  }

  std::wstring Problems() {
    RowSetPtr rows;
    EXPECT_EQ(list_->Link().MakeRows(rows), S_OK);
    std::wstring texts;
    for (ULONG i = 0; rows && i < rows->cRows; ++i)
      texts.append(PropList(sdk::ValueView(rows->aRow[i])).Text(PR_ORV_PROBLEM_TEXT_W)).append(L"\n");
    return texts;
  }

  orv::ComPtr<CABServiceList> list_ = CABServiceList::Create();
  std::unique_ptr<ProviderRecord> record_ = std::make_unique<ProviderRecord>(Module(), MAPIUID());
  ComPtr<IOrvSupport> support_;
  ComPtr<Section> section_ = ComPtr<Section>::Adopt(new Section);
  ComPtr<IAddrBook> provider_;
  std::weak_ptr<Book> book_;
};

TEST_F(KitBookTest, LogonRegistersAndFailsWhole) {
  const PropList row = Read(*provider_);
  EXPECT_EQ(row.Text(PR_DISPLAY_NAME), L"Mine");
  EXPECT_EQ(row.Number(PR_OBJECT_TYPE), MAPI_ABCONT);
  EXPECT_EQ(row.Number(PR_CONTAINER_FLAGS), AB_SUBCONTAINERS | AB_UNMODIFIABLE);
  EXPECT_EQ(row.Number(PR_DEPTH, 7), 0);
  EXPECT_EQ(IdOf(*provider_), Id(Book::kRootKind));
  EXPECT_EQ(IdOf(*OpenEntry({})), Id(Book::kRootKind));
  EXPECT_EQ(Open(nullptr), MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(Open(&OrvFreeBuffer), MAPI_E_COLLISION);
  EXPECT_FALSE(provider_);
}

TEST_F(KitBookTest, EntriesAreOpenedAsWhatTheyAre) {
  EXPECT_EQ(Name(*OpenEntry<IMailUser>(Id(Book::kPerson, 1))), L"Ada");
  EXPECT_EQ(Name(*OpenEntry<IDistList>(Id(Book::kPerson, 3))), L"Bo");
  EXPECT_EQ(Read(*OpenEntry(Id(Book::kPerson, 3))).Number(PR_DISPLAY_TYPE), DT_DISTLIST);
  EXPECT_EQ(Read(*NewList(L"All")).Number(PR_DISPLAY_TYPE), DT_DISTLIST);
  OpenEntry<IMailUser>(Id(Book::kPeople), 0, MAPI_E_INTERFACE_NOT_SUPPORTED);
  OpenEntry<IMAPIProp>(Id(Book::kPerson, 77), 0, MAPI_E_NOT_FOUND);
  OpenEntry<IMAPIProp>(Id(9), 0, MAPI_E_NOT_FOUND);
  OpenEntry<IMAPIProp>(Bytes(24), 0, MAPI_E_INVALID_ENTRYID);
  OpenEntry<IMAPIProp>(Id(Book::kFolder), MAPI_MODIFY, MAPI_E_NO_ACCESS);
  OpenEntry<IMAPIProp>(Id(Book::kThrows), 0, MAPI_E_CALL_FAILED);
  EXPECT_EQ(SetName(*OpenEntry(Id(Book::kFolder), MAPI_BEST_ACCESS), L"x"), MAPI_E_NO_ACCESS);
  EXPECT_EQ(SetName(*OpenEntry(Id(Book::kPerson, 1)), L"x"), MAPI_E_NO_ACCESS);
}

// By whatever method and through whatever else of the kit it comes.
TEST_F(KitBookTest, WhatAHookThrowsIsToldOnce) {
  const auto people = People(), rowThrows = OpenEntry<IABContainer>(Id(Book::kRowThrows));
  ComPtr<IMAPITable> table;
  ASSERT_EQ(rowThrows->GetContentsTable(kUnicode, table.Put()), S_OK);
  list_->Link().Open(*provider_.Get());
  const std::wstring problem = L"exception in Read: of a provider's own\n";
  OpenEntry<IMAPIProp>(Id(Book::kThrows), 0, MAPI_E_CALL_FAILED);
  EXPECT_EQ(Problems(), problem);
  WithEntries({Id(Book::kThrows)},
              [&](LPENTRYLIST list) { return people->CopyEntries(list, 0, nullptr, 0); });
  EXPECT_EQ(Problems(), problem + problem);
  auto rows = Buffers().Own<SRowSet>();
  EXPECT_EQ(table->QueryRows(1, 0, rows.Put()), MAPI_E_CALL_FAILED);
  EXPECT_EQ(Problems(), problem + problem + problem);
  list_->Link().Close();
}

TEST_F(KitBookTest, HierarchiesShowOneLevelOrAll) {
  const auto root = OpenEntry<IABContainer>({});
  ComPtr<IMAPITable> table;
  ASSERT_EQ(root->GetHierarchyTable(kUnicode, table.Put()), S_OK);
  EXPECT_EQ(Names(*table), L"Folder0 ");
  ASSERT_EQ(root->GetHierarchyTable(kUnicode | CONVENIENT_DEPTH, table.Put()), S_OK);
  EXPECT_EQ(Names(*table), L"Folder0 People1 ");
  ASSERT_EQ(root->OpenProperty(PR_CONTAINER_HIERARCHY, &IID_IMAPITable, 0, 0, table.PutUnknown()), S_OK);
  EXPECT_EQ(root->OpenProperty(PR_CONTAINER_HIERARCHY, nullptr, 0, 0, nullptr),
            MAPI_E_INTERFACE_NOT_SUPPORTED);
  EXPECT_EQ(root->GetContentsTable(kUnicode, table.Put()), MAPI_E_NO_SUPPORT);
  EXPECT_EQ(root->GetContentsTable(0, table.Put()), MAPI_E_BAD_CHARWIDTH);
  EXPECT_EQ(root->GetContentsTable(kUnicode, nullptr), MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(Contents(), L"Ada Adam Bo ");
  // A table outlives what it was opened from.
  ASSERT_EQ(People()->GetContentsTable(kUnicode, table.Put()), S_OK);
  provider_.Reset();
  EXPECT_EQ(Names(*table), L"Ada Adam Bo ");
}

TEST_F(KitBookTest, EntriesAreThereOnceTheyAreSaved) {
  const PropList people = Read(*People());
  const auto user = Create(), twin = Create({}, CREATE_CHECK_DUP_STRICT);
  const SBinary listTemplate = people.Bytes(PR_DEF_CREATE_DL),
                userTemplate = people.Bytes(PR_DEF_CREATE_MAILUSER);
  const auto list = Create({listTemplate.lpb, listTemplate.lpb + listTemplate.cb});
  Create({userTemplate.lpb, userTemplate.lpb + userTemplate.cb});  // abandoned
  EXPECT_EQ(Contents(), L"Ada Adam Bo ");
  EXPECT_EQ(SetName(*user, L"Cy"), S_OK);
  EXPECT_EQ(SetName(*list, L"All"), S_OK);
  EXPECT_EQ(SetName(*twin, L"Cy"), MAPI_E_COLLISION);
  EXPECT_EQ(Contents(), L"Ada Adam Bo Cy All ");
  EXPECT_EQ(SetName(*user, L"Cyd"), S_OK);  // the same entry
  EXPECT_EQ(Name(*OpenEntry<IMailUser>(IdOf(*user))), L"Cyd");
  EXPECT_EQ(Name(*OpenEntry<IDistList>(IdOf(*list))), L"All");
  // As an entry is; unknown and foreign ones say nothing.
  EXPECT_EQ(Read(*Create(IdOf(*list))).Number(PR_OBJECT_TYPE), MAPI_DISTLIST);
  Create(Id(Book::kPeople), 0, MAPI_E_NO_SUPPORT);
  Create(Id(Book::kPerson, 99), 0, MAPI_E_NOT_FOUND);
  ComPtr<IMAPIProp> made;
  EXPECT_EQ(OpenEntry<IABContainer>({})->CreateEntry(0, nullptr, 0, made.Put()), MAPI_E_NO_ACCESS);
  SPropValue refused = Unicode(PR_SURNAME, L"x");
  auto problems = Buffers().Own<SPropProblemArray>();
  EXPECT_EQ(user->SetProps(1, &refused, problems.Put()), S_OK);
  EXPECT_EQ(problems->aProblem[0].scode, MAPI_E_COMPUTED);
}

TEST_F(KitBookTest, ListsOfEntriesAreDoneOneByOne) {
  const auto root = OpenEntry<IABContainer>({});
  const auto erase = [&](LPENTRYLIST list) { return root->DeleteEntries(list, 0); };
  const auto copy = [&](LPENTRYLIST list) { return People()->CopyEntries(list, 0, nullptr, 0); };
  EXPECT_EQ(WithEntries({Id(Book::kPerson, 1), Id(Book::kPerson, 3)}, copy), S_OK);
  EXPECT_EQ(Contents(), L"Ada Adam Bo Ada Bo ");
  EXPECT_EQ(Name(*OpenEntry<IDistList>(Id(Book::kPerson, 5))), L"Bo");
  EXPECT_EQ(WithEntries({Id(Book::kPerson, 2), Id(Book::kPerson, 77)}, copy), MAPI_W_PARTIAL_COMPLETION);
  EXPECT_EQ(WithEntries({Id(Book::kPerson, 77)}, copy), MAPI_E_NOT_FOUND);
  EXPECT_EQ(WithEntries({Id(Book::kPerson, 1), Id(Book::kPerson, 4), Id(Book::kFolder)}, erase),
            MAPI_W_PARTIAL_COMPLETION);
  EXPECT_EQ(WithEntries({Id(Book::kFolder)}, erase), MAPI_E_NO_ACCESS);
  EXPECT_EQ(WithEntries({Bytes(30)}, erase), MAPI_E_INVALID_ENTRYID);
  EXPECT_EQ(WithEntries({}, erase), S_OK);
  EXPECT_EQ(erase(nullptr), MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(Contents(), L"Adam Bo Bo Adam ");
  EXPECT_EQ(WithEntries({Id(Book::kPerson, 2)},
                        [&](LPENTRYLIST list) { return root->CopyEntries(list, 0, nullptr, 0); }),
            MAPI_E_NO_ACCESS);
}

TEST_F(KitBookTest, MembersComeAndGoAndEntriesStay) {
  const auto list = OpenEntry<IDistList>(Id(Book::kPerson, 3));
  const auto add = [&](LPENTRYLIST ids) { return list->CopyEntries(ids, 0, nullptr, 0); };
  const auto remove = [&](LPENTRYLIST ids) { return list->DeleteEntries(ids, 0); };
  const Bytes ada = Id(Book::kPerson, 1), adam = Id(Book::kPerson, 2), foreign(30, 7);
  const auto book = book_.lock();
  ComPtr<IMAPITable> table;
  ASSERT_EQ(list->GetContentsTable(kUnicode, table.Put()), S_OK);
  const auto shown = [&] {
    EXPECT_EQ(table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr), S_OK);
    return Names(*table);
  };
  const struct {
    std::vector<Bytes> ids;
    bool isAdded;
    HRESULT expected;
    const WCHAR* members;  // of the table that was open before
  } cases[] = {{{ada, adam, foreign}, true, S_OK, L"Ada Adam "},
               {{Bytes()}, true, MAPI_E_INVALID_ENTRYID, L"Ada Adam "},
               {{ada}, false, S_OK, L"Adam "},
               {{ada}, false, MAPI_E_NOT_FOUND, L"Adam "},
               {{ada, adam}, false, MAPI_W_PARTIAL_COMPLETION, L""}};
  for (const auto& c : cases) {
    EXPECT_EQ(c.isAdded ? WithEntries(c.ids, add) : WithEntries(c.ids, remove), c.expected);
    EXPECT_EQ(shown(), c.members);
    EXPECT_EQ(Contents(), L"Ada Adam Bo ");
  }
  EXPECT_TRUE(book->HasMember(3, foreign));
  book->isClosed = true;
  EXPECT_EQ(WithEntries({foreign}, remove), MAPI_E_NO_ACCESS);
  EXPECT_EQ(WithEntries({ada}, add), MAPI_E_NO_ACCESS);
  CreateIn(*list, ada, 0, MAPI_E_NO_ACCESS);
  EXPECT_TRUE(book->HasMember(3, foreign));
}

TEST_F(KitBookTest, AnEntryAsTemplateInAListBecomesAMember) {
  const auto list = OpenEntry<IDistList>(Id(Book::kPerson, 3));
  const auto member = CreateIn(*list, Id(Book::kPerson, 1));
  EXPECT_EQ(IdOf(*member), Id(Book::kPerson, 1));
  EXPECT_EQ(ContentsOf(*list), L"");
  const auto sink = RecordingSink::Make();
  ULONG connection = 0;
  ASSERT_EQ(provider_->Advise(0, nullptr, fnevObjectModified, sink.Get(), &connection), S_OK);
  EXPECT_EQ(SetName(*member, L"another"), S_OK);  // of the entry, which keeps its own
  EXPECT_EQ(member->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
  EXPECT_EQ(sink->Take().size(), 1u);
  EXPECT_EQ(provider_->Unadvise(connection), S_OK);
  EXPECT_EQ(ContentsOf(*list), L"Ada ");
  // A list among the members stays one list, and a copy of what holds it changes neither.
  const auto outer = NewList(L"Outer"), copy = NewList(L"Copy");
  EXPECT_EQ(CreateIn(*outer, Id(Book::kPerson, 3))->SaveChanges(0), S_OK);
  EXPECT_EQ(outer->CopyProps(Tags{PR_CONTAINER_CONTENTS}.Get(), 0, nullptr, &IID_IDistList, copy.Get(),
                             kUnicode, nullptr),
            S_OK);
  EXPECT_EQ(ContentsOf(*copy), L"Bo ");
  EXPECT_EQ(ContentsOf(*list), L"Ada ");
  EXPECT_EQ(Contents(), L"Ada Adam Bo Outer Copy ");
  // Without one a new entry is made in it, which the author may store; the list's tables are told.
  EXPECT_EQ(SetName(*CreateIn(*list, {}), L"Cy"), S_OK);
  EXPECT_EQ(Contents(), L"Ada Adam Bo Outer Copy Cy ");
}

TEST_F(KitBookTest, NamesAreResolvedWhereTheyFitOne) {
  const struct {
    const WCHAR* name;
    ULONG before, after;
    const WCHAR* shown;
  } cases[] = {
      {L"ada", MAPI_UNRESOLVED, MAPI_RESOLVED, L"Ada"},   {L"Ad", MAPI_UNRESOLVED, MAPI_AMBIGUOUS, L"Ad"},
      {L"adam", MAPI_UNRESOLVED, MAPI_RESOLVED, L"Adam"}, {L"B", MAPI_UNRESOLVED, MAPI_RESOLVED, L"Bo"},
      {L"X", MAPI_UNRESOLVED, MAPI_UNRESOLVED, L"X"},     {L"", MAPI_UNRESOLVED, MAPI_UNRESOLVED, L""},
      {L"Bo", MAPI_RESOLVED, MAPI_RESOLVED, L"Bo"}};
  const auto people = People();
  for (const auto& c : cases) {
    const SPropValue name = Unicode(PR_DISPLAY_NAME, c.name);
    ADRLIST list{1, {{0, 1, kit::CopyAll(Buffers(), {&name, 1}).Detach()}}};
    FlagList flags{1, {c.before}};
    EXPECT_EQ(people->ResolveNames(nullptr, 0, &list, &flags), S_OK);
    const auto owner = Buffers().Own(list.aEntries[0].rgPropVals);
    const PropList shown{sdk::ValueView(list.aEntries[0])};
    EXPECT_EQ(flags.ulFlag[0], c.after) << c.name;
    EXPECT_EQ(shown.Text(PR_DISPLAY_NAME), c.shown);
    EXPECT_EQ(shown.Has(PR_ENTRYID), c.before != c.after && c.after == MAPI_RESOLVED);
  }
  EXPECT_EQ(people->ResolveNames(nullptr, 0, nullptr, nullptr), MAPI_E_INVALID_PARAMETER);
}

TEST_F(KitBookTest, WhoHasAdvisedHearsOfWhatIsCreatedSavedAndDeleted) {
  const auto sink = RecordingSink::Make();
  ULONG connection = 0;
  const ULONG all = fnevObjectCreated | fnevObjectModified | fnevObjectDeleted;
  ASSERT_EQ(provider_->Advise(0, nullptr, all, sink.Get(), &connection), S_OK);
  const auto made = Create();
  EXPECT_EQ(SetName(*made, L"Cy"), S_OK);
  EXPECT_EQ(SetName(*made, L"Cyd"), S_OK);
  EXPECT_EQ(WithEntries({IdOf(*made)}, [&](LPENTRYLIST list) { return People()->DeleteEntries(list, 0); }),
            S_OK);
  std::wstring kinds;
  for (const std::wstring& told : sink->Take()) kinds += told.substr(0, told.find(L' ') + 1);
  EXPECT_EQ(kinds, L"created modified deleted ");
  EXPECT_EQ(provider_->Unadvise(connection), S_OK);
  EXPECT_EQ(provider_->Unadvise(connection), MAPI_E_NOT_FOUND);
}

TEST_F(KitBookTest, RecipientsArePreparedAndIdentifiersCompared) {
  Bytes id = Id(Book::kPerson, 1), other = Id(Book::kPerson, 2);
  const SPropValue given = Binary(PR_ENTRYID, id.data(), id.size());
  ADRLIST list{1, {{0, 1, kit::CopyAll(Buffers(), {&given, 1}).Detach()}}};
  EXPECT_EQ(provider_->PrepareRecips(0, Tags{PR_DISPLAY_NAME}.Get(), &list), S_OK);
  const auto owner = Buffers().Own(list.aEntries[0].rgPropVals);
  EXPECT_EQ(PropList{sdk::ValueView(list.aEntries[0])}.Tags(),
            (std::vector<ULONG>{PR_DISPLAY_NAME, PR_ENTRYID}));
  const auto compare = [&](Bytes& one, Bytes& two, ULONG* same) {
    return provider_->CompareEntryIDs(static_cast<ULONG>(one.size()), reinterpret_cast<LPENTRYID>(one.data()),
                                      static_cast<ULONG>(two.size()), reinterpret_cast<LPENTRYID>(two.data()),
                                      0, same);
  };
  ULONG same = 9;
  EXPECT_EQ(compare(id, id, &same), S_OK);
  EXPECT_EQ(same, 1u);
  EXPECT_EQ(compare(id, other, &same), S_OK);
  EXPECT_EQ(same, 0u);
  Bytes foreign(32);
  EXPECT_EQ(compare(id, foreign, &same), MAPI_E_UNKNOWN_ENTRYID);
  EXPECT_EQ(compare(id, id, nullptr), MAPI_E_INVALID_PARAMETER);
}

}  // namespace
}  // namespace orv::test
