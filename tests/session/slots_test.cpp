// Every slot of every interface that refuses, and every slot that takes a pointer: the documented code, and nothing
// written. The objects are those of a real logon.
#include <array>
#include <functional>
#include <utility>

#include "tests/props/samples.h"
#include "tests/session/session_fixture.h"
#include "ui/address/advise_sink.h"

namespace orv::test {
namespace {

// Two pages, the second without access. Converts to a pointer into that one, whatever it is to point at.
class BadMemory {
 public:
  BadMemory() : pages_(static_cast<BYTE*>(VirtualAlloc(nullptr, 2 * kPage, MEM_COMMIT, PAGE_READWRITE))) {
    DWORD former = 0;
    EXPECT_TRUE(VirtualProtect(pages_ + kPage, kPage, PAGE_NOACCESS, &former));
  }
  ~BadMemory() { VirtualFree(pages_, 0, MEM_RELEASE); }
  BadMemory(const BadMemory&) = delete;
  BadMemory& operator=(const BadMemory&) = delete;

  template <class T>
  operator T*() const {
    return reinterpret_cast<T*>(pages_ + kPage);
  }
  // What begins well and ends where memory does: a count without its array, a string without its end.
  template <class T>
  T* Cut(std::initializer_list<ULONG> words) const {
    BYTE* const start = pages_ + kPage - words.size() * sizeof(ULONG);
    std::memcpy(start, words.begin(), words.size() * sizeof(ULONG));
    return reinterpret_cast<T*>(start);
  }

 private:
  static constexpr std::size_t kPage = 4096;
  BYTE* pages_;
};

// One call, named by its text.
#define SLOT(...) #__VA_ARGS__, [&] { return __VA_ARGS__; }

struct Slot {
  const char* name;
  std::function<HRESULT()> call;
  HRESULT result = MAPI_E_INVALID_PARAMETER;
  bool clears = false;  // the out pointer
};

class SlotsTest : public SessionTest {
 protected:
  void SetUp() override {
    Provider& provider = AddProvider();
    provider.script.keepsSupport = true;
    StoreProviders();
    ASSERT_EQ(LogOn(session_), S_OK);
    support_ = ComPtr<IOrvSupport>::Adopt(provider.script.keptSupport);
    id_ = provider.script.EntryId("");
    ULONG type = 0;
    ComPtr<IUnknown> root;
    ASSERT_EQ(session_->OpenAddressBook(0, book_.Put()), S_OK);
    ASSERT_EQ(book_->OpenEntry(0, nullptr, nullptr, 0, &type, root.Put()), S_OK);
    root_ = ComPtr<IABContainer>::Adopt(static_cast<IABContainer*>(root.Detach()));
    ASSERT_EQ(root_->GetHierarchyTable(MAPI_UNICODE, table_.Put()), S_OK);
    ASSERT_EQ(session_->AdminServices(0, services_.Put()), S_OK);
    ASSERT_EQ(services_->OpenProfileSection(&uid_, nullptr, 0, section_.Put()), S_OK);
    ASSERT_EQ(OrvAdminProfiles(MAPI_UNICODE, profiles_.Put(), 0), S_OK);
    ASSERT_EQ(OrvOpenUserInfo(nullptr, &type, user_.Put()), S_OK);
    sink_ = ComPtr<IMAPIAdviseSink>::Adopt(ui::CAdviseSink::Create(nullptr).Detach());
  }

  // Outs of a call: all pointers are one and all numbers are one, as no slot here may write to any.
  template <class T>
  T** Out() {
    return reinterpret_cast<T**>(&pointer_);
  }
  ULONG* Number() { return &number_; }

  void Expect(const std::vector<Slot>& slots) {
    for (const Slot& slot : slots) {
      pointer_ = this;
      number_ = kUntouched;
      EXPECT_EQ(slot.call(), slot.result) << slot.name;
      EXPECT_EQ(pointer_, slot.clears ? nullptr : this) << slot.name;
      EXPECT_EQ(number_, kUntouched) << slot.name;
    }
  }

  ENTRYID* Id() { return reinterpret_cast<ENTRYID*>(id_.data()); }
  ULONG IdSize() const { return static_cast<ULONG>(id_.size()); }

  static constexpr ULONG kUntouched = 0xABABABAB;
  const BadMemory bad_;
  const MAPIUID uid_ = FakeUid(1);
  std::vector<BYTE> id_;
  void* pointer_ = nullptr;
  ULONG number_ = 0;

  // Behind the fixture's members: they must go before the providers' libraries do.
  ComPtr<IOrvSession> session_;
  ComPtr<IOrvSupport> support_;
  ComPtr<IAddrBook> book_;
  ComPtr<IABContainer> root_;
  ComPtr<IMAPITable> table_;
  ComPtr<IABServiceAdmin> services_;
  ComPtr<IProfSect> section_;
  ComPtr<IOrvProfAdmin> profiles_;
  ComPtr<IMailUser> user_;
  ComPtr<IMAPIAdviseSink> sink_;
};

TEST_F(SlotsTest, ObjectsAnswerForTheirInterfacesOnly) {
  const struct {
    IUnknown* object;
    std::vector<IID> answered;
  } cases[] = {
      {session_.Get(), {IID_IOrvSession}},
      {support_.Get(), {IID_IOrvSupport}},
      {book_.Get(), {IID_IMAPIProp, IID_IAddrBook}},
      {root_.Get(), {IID_IMAPIProp, IID_IMAPIContainer, IID_IABContainer}},
      {table_.Get(), {IID_IMAPITable}},
      {services_.Get(), {IID_IABServiceAdmin}},
      {section_.Get(), {IID_IMAPIProp, IID_IProfSect}},
      {profiles_.Get(), {IID_IOrvProfAdmin}},
      {user_.Get(), {IID_IMAPIProp, IID_IMailUser}},
      {sink_.Get(), {IID_IMAPIAdviseSink}},
  };
  const IID all[] = {IID_IUnknown,      IID_IMAPITable,     IID_IMAPIAdviseSink, IID_IMAPIProp,
                     IID_IProfSect,     IID_IAddrBook,      IID_IMailUser,       IID_IMAPIContainer,
                     IID_IDistList,     IID_IABContainer,   IID_IOrvSession,     IID_IOrvSupport,
                     IID_IOrvProfAdmin, IID_IABServiceAdmin};
  for (const auto& c : cases) {
    for (const IID& iid : all) {
      bool answers = IsEqualGUID(iid, IID_IUnknown);
      for (const IID& one : c.answered) answers |= IsEqualGUID(iid, one) != 0;
      pointer_ = this;
      EXPECT_EQ(c.object->QueryInterface(iid, &pointer_), answers ? S_OK : MAPI_E_INTERFACE_NOT_SUPPORTED)
          << &c - cases << ", " << &iid - all;
      EXPECT_EQ(pointer_, answers ? c.object : nullptr) << &c - cases << ", " << &iid - all;
      if (answers) c.object->Release();
    }
    EXPECT_EQ(c.object->QueryInterface(IID_IUnknown, bad_), MAPI_E_INVALID_PARAMETER) << &c - cases;
  }
}

TEST_F(SlotsTest, PropertyMethodsThatAnObjectRefuses) {
  constexpr HRESULT kNo = MAPI_E_NO_SUPPORT;
  constexpr HRESULT kAnswers = S_FALSE;  // not refused, so not called
  SPropValue value = Long(PR_RESOURCE_FLAGS, 1);
  Tags tags{PR_DISPLAY_NAME_W};
  IMAPIProp* p = nullptr;
  const struct {
    const char* name;
    std::function<HRESULT()> call;
    std::array<HRESULT, 3> results;  // of the address book, the root container, user details and sections
  } slots[] = {
      {SLOT(p->GetLastError(S_OK, 0, Out<MAPIERROR>())), {S_OK, kNo, kNo}},
      {SLOT(p->SaveChanges(0)), {kNo, kNo, kAnswers}},
      {SLOT(p->GetProps(tags.Get(), MAPI_UNICODE, Number(), Out<SPropValue>())), {kNo, kNo, kAnswers}},
      {SLOT(p->GetPropList(MAPI_UNICODE, Out<SPropTagArray>())), {kNo, kNo, kAnswers}},
      {SLOT(p->OpenProperty(PR_CONTAINER_CONTENTS, &IID_IMAPITable, 0, 0, Out<IUnknown>())),
       {kNo, MAPI_E_INTERFACE_NOT_SUPPORTED, kNo}},
      {SLOT(p->SetProps(1, &value, Out<SPropProblemArray>())), {kNo, kNo, kAnswers}},
      {SLOT(p->DeleteProps(tags.Get(), Out<SPropProblemArray>())), {kNo, kNo, kAnswers}},
      {SLOT(p->CopyTo(0, nullptr, nullptr, 0, nullptr, &IID_IMailUser, user_.Get(), MAPI_UNICODE,
                      Out<SPropProblemArray>())),
       {kNo, kNo, kAnswers}},
      {SLOT(p->CopyProps(tags.Get(), 0, nullptr, &IID_IMailUser, user_.Get(), MAPI_UNICODE,
                         Out<SPropProblemArray>())),
       {kNo, kNo, kAnswers}},
      {SLOT(p->GetNamesFromIDs(Out<SPropTagArray>(), nullptr, 0, Number(), Out<LPMAPINAMEID>())),
       {kNo, kNo, kNo}},
      {SLOT(p->GetIDsFromNames(0, nullptr, 0, Out<SPropTagArray>())), {kNo, kNo, kNo}},
  };
  const std::pair<IMAPIProp*, std::size_t> objects[] = {
      {book_.Get(), 0}, {root_.Get(), 1}, {user_.Get(), 2}, {section_.Get(), 2}};
  for (const auto& [object, column] : objects) {
    p = object;
    for (const auto& slot : slots) {
      if (slot.results[column] != kAnswers) Expect({{slot.name, slot.call, slot.results[column]}});
    }
  }
}

TEST_F(SlotsTest, RefusedSlots) {
  constexpr HRESULT kNo = MAPI_E_NO_SUPPORT;
  BYTE byte = 0;
  SBinary entry = {IdSize(), id_.data()};
  ENTRYLIST one = {1, &entry}, none = {};
  ADRLIST recipients = {}, someone = {1, {{0, 0, nullptr}}};
  ADRLIST* lists[] = {nullptr, &recipients, &someone};
  const auto logOn = [](ULONG flags, std::array<void*, 3> reserved, IOrvSession** session) {
    return OrvOpen(0, L"P", flags, reserved[0], reserved[1], reserved[2], nullptr, session, kContext);
  };
  Expect({
      {SLOT(logOn(0, {}, nullptr)), MAPI_E_INVALID_PARAMETER},
      {SLOT(logOn(MAPI_USE_DEFAULT, {this}, Out<IOrvSession>())), MAPI_E_BAD_CHARWIDTH},
      {SLOT(logOn(MAPI_UNICODE, {this}, Out<IOrvSession>())), kNo},
      {SLOT(logOn(MAPI_UNICODE, {nullptr, this}, Out<IOrvSession>())), kNo},
      {SLOT(logOn(MAPI_UNICODE, {nullptr, nullptr, this}, Out<IOrvSession>())), kNo},
      {SLOT(OrvAdminProfiles(0, nullptr, kContext)), MAPI_E_INVALID_PARAMETER},
      {SLOT(OrvAdminProfiles(0, Out<IOrvProfAdmin>(), kContext)), MAPI_E_BAD_CHARWIDTH},
      {SLOT(session_->OpenAddressBook(MAPI_UNICODE, Out<IAddrBook>())), MAPI_E_UNKNOWN_FLAGS},
      {SLOT(session_->AdminServices(1, Out<IABServiceAdmin>())), MAPI_E_UNKNOWN_FLAGS},
      {SLOT(session_->ExpandRecipients(1, &lists[2])), MAPI_E_UNKNOWN_FLAGS},
      {SLOT(session_->ExpandRecipients(0, &lists[1]))},
      {SLOT(session_->ExpandRecipients(0, &lists[0]))},
      {SLOT(book_->PrepareRecips(MAPI_UNICODE, nullptr, &recipients))},
      {SLOT(book_->CompareEntryIDs(IdSize(), Id(), IdSize(), Id(), 0, Number())), MAPI_E_UNKNOWN_ENTRYID},
      {SLOT(book_->CreateOneOff(nullptr, nullptr, nullptr, 0, Number(), Out<ENTRYID>())), kNo},
      {SLOT(book_->NewEntry(0, 0, 0, nullptr, 0, nullptr, Number(), Out<ENTRYID>())), kNo},
      {SLOT(book_->ResolveName(0, MAPI_UNICODE, nullptr, &recipients)), kNo},
      {SLOT(book_->Address(nullptr, nullptr, Out<ADRLIST>())), kNo},
      {SLOT(book_->RecipOptions(0, 0, recipients.aEntries)), kNo},
      {SLOT(book_->QueryDefaultRecipOpt(nullptr, 0, Number(), Out<SPropValue>())), kNo},
      {SLOT(root_->GetContentsTable(MAPI_UNICODE, Out<IMAPITable>())), kNo},
      {SLOT(root_->SetSearchCriteria(nullptr, nullptr, 0)), kNo},
      {SLOT(root_->GetSearchCriteria(0, Out<SRestriction>(), Out<ENTRYLIST>(), Number())), kNo},
      {SLOT(root_->CreateEntry(IdSize(), Id(), 0, Out<IMAPIProp>())), kNo},
      {SLOT(root_->CreateEntry(0, Id(), 0, Out<IMAPIProp>()))},
      {SLOT(root_->CopyEntries(&one, 0, nullptr, 0)), kNo},
      {SLOT(root_->CopyEntries(&none, 0, nullptr, 0)), S_OK},
      {SLOT(root_->DeleteEntries(&none, 0)), S_OK},
      {SLOT(root_->ResolveNames(nullptr, MAPI_UNICODE, &recipients, nullptr)), kNo},
      {SLOT(table_->GetLastError(S_OK, 0, Out<MAPIERROR>())), kNo},
      {SLOT(table_->Advise(0, sink_.Get(), Number())), kNo},
      {SLOT(table_->Unadvise(1)), kNo},
      {SLOT(table_->FindRow(nullptr, BOOKMARK_BEGINNING, 0)), kNo},
      {SLOT(table_->Restrict(nullptr, 0)), kNo},
      {SLOT(table_->CreateBookmark(Number())), kNo},
      {SLOT(table_->FreeBookmark(3)), kNo},
      {SLOT(table_->SortTable(nullptr, 0)), kNo},
      {SLOT(table_->QuerySortOrder(Out<SSortOrderSet>())), kNo},
      {SLOT(table_->ExpandRow(1, &byte, 1, 0, Out<SRowSet>(), Number())), kNo},
      {SLOT(table_->CollapseRow(1, &byte, 0, Number())), kNo},
      {SLOT(table_->WaitForCompletion(0, 0, Number())), kNo},
      {SLOT(table_->GetCollapseState(0, 1, &byte, Number(), Out<BYTE>())), kNo},
      {SLOT(table_->SetCollapseState(0, 1, &byte, Number())), kNo},
      {SLOT(session_->GetLastError(S_OK, 0, Out<MAPIERROR>())), S_OK},
      {SLOT(support_->GetLastError(S_OK, 0, Out<MAPIERROR>())), S_OK},
      {SLOT(support_->Reserved7()), kNo},
      {SLOT(support_->Reserved10()), kNo},
      {SLOT(profiles_->GetLastError(S_OK, 0, Out<MAPIERROR>())), S_OK},
      {SLOT(services_->GetLastError(S_OK, 0, Out<MAPIERROR>())), S_OK},
  });
}

TEST_F(SlotsTest, PropertyObjectsTestTheirPointers) {
  SPropValue value = Long(PR_RESOURCE_FLAGS, 1);
  Tags tags{PR_DISPLAY_NAME_W};
  const auto cutTags = [&] { return bad_.Cut<SPropTagArray>({2, PR_DISPLAY_NAME_W}); };
  for (IMAPIProp* p : {static_cast<IMAPIProp*>(user_.Get()), static_cast<IMAPIProp*>(section_.Get())}) {
    IMAPIProp* const other = p == user_.Get() ? static_cast<IMAPIProp*>(section_.Get()) : user_.Get();
    const auto copyTo = [=, this](SPropTagArray* exclude, LPCIID iid, void* to,
                                  SPropProblemArray** problems) {
      return p->CopyTo(0, nullptr, exclude, 0, nullptr, iid, to, MAPI_UNICODE, problems);
    };
    const auto copyProps = [=, this](SPropTagArray* include, LPCIID iid, void* to,
                                     SPropProblemArray** problems) {
      return p->CopyProps(include, 0, nullptr, iid, to, MAPI_UNICODE, problems);
    };
    const IID* const iid = &IID_IMAPIProp;
    Expect({
        {SLOT(p->GetProps(bad_, MAPI_UNICODE, Number(), Out<SPropValue>()))},
        {SLOT(p->GetProps(cutTags(), MAPI_UNICODE, Number(), Out<SPropValue>()))},
        {SLOT(p->GetProps(tags.Get(), MAPI_UNICODE, bad_, Out<SPropValue>()))},
        {SLOT(p->GetProps(tags.Get(), MAPI_UNICODE, Number(), bad_))},
        {SLOT(p->GetPropList(MAPI_UNICODE, bad_))},
        {SLOT(p->SetProps(1, bad_, nullptr))},
        {SLOT(p->SetProps(2, bad_.Cut<SPropValue>({PR_RESOURCE_FLAGS, 0, 0, 0, 0, 0}), nullptr))},
        {SLOT(p->SetProps(1, &value, bad_))},
        {SLOT(p->DeleteProps(bad_, nullptr))},
        {SLOT(p->DeleteProps(cutTags(), nullptr))},
        {SLOT(p->DeleteProps(tags.Get(), bad_))},
        {SLOT(copyTo(bad_, iid, other, nullptr))},
        {SLOT(copyTo(cutTags(), iid, other, nullptr))},
        {SLOT(copyTo(nullptr, bad_, other, nullptr))},
        {SLOT(copyTo(nullptr, iid, bad_, nullptr))},
        {SLOT(copyTo(nullptr, iid, other, bad_))},
        {SLOT(copyProps(bad_, iid, other, nullptr))},
        {SLOT(copyProps(cutTags(), iid, other, nullptr))},
        {SLOT(copyProps(tags.Get(), bad_, other, nullptr))},
        {SLOT(copyProps(tags.Get(), iid, bad_, nullptr))},
        {SLOT(copyProps(tags.Get(), iid, other, bad_))},
    });
  }
}

TEST_F(SlotsTest, TablesAndContainersTestTheirPointers) {
  SBinary entry = {IdSize(), bad_};
  ENTRYLIST noArray = {1, bad_};
  ENTRYLIST noBytes = {1, &entry};
  ADRLIST nobody = {};
  Expect({
      {SLOT(table_->GetStatus(bad_, Number()))},
      {SLOT(table_->GetStatus(Number(), bad_))},
      {SLOT(table_->SetColumns(bad_, 0))},
      {SLOT(table_->SetColumns(bad_.Cut<SPropTagArray>({2, PR_DISPLAY_NAME_W}), 0))},
      {SLOT(table_->QueryColumns(0, bad_))},
      {SLOT(table_->GetRowCount(0, bad_))},
      {SLOT(table_->SeekRow(BOOKMARK_BEGINNING, 0, bad_))},
      {SLOT(table_->QueryPosition(bad_, Number(), Number()))},
      {SLOT(table_->QueryPosition(Number(), bad_, Number()))},
      {SLOT(table_->QueryPosition(Number(), Number(), bad_))},
      {SLOT(table_->QueryRows(1, 0, bad_))},
      {SLOT(root_->OpenProperty(PR_CONTAINER_HIERARCHY, bad_, 0, 0, Out<IUnknown>()))},
      {SLOT(root_->OpenProperty(PR_CONTAINER_HIERARCHY, &IID_IMAPITable, 0, 0, bad_))},
      {SLOT(root_->GetContentsTable(MAPI_UNICODE, bad_))},
      {SLOT(root_->GetHierarchyTable(MAPI_UNICODE, bad_))},
      {SLOT(root_->OpenEntry(0, nullptr, nullptr, 0, bad_, Out<IUnknown>()))},
      {SLOT(root_->OpenEntry(0, nullptr, nullptr, 0, Number(), bad_))},
      {SLOT(root_->CreateEntry(IdSize(), bad_, 0, Out<IMAPIProp>()))},
      {SLOT(root_->CopyEntries(bad_, 0, nullptr, 0))},
      {SLOT(root_->CopyEntries(&noArray, 0, nullptr, 0))},
      {SLOT(root_->CopyEntries(&noBytes, 0, nullptr, 0))},
      {SLOT(root_->DeleteEntries(bad_, 0))},
      {SLOT(root_->DeleteEntries(&noArray, 0))},
      {SLOT(root_->DeleteEntries(&noBytes, 0))},
      {SLOT(root_->ResolveNames(nullptr, MAPI_UNICODE, bad_, nullptr))},
      {SLOT(root_->ResolveNames(bad_, MAPI_UNICODE, &nobody, nullptr))},
  });
}

TEST_F(SlotsTest, TheAddressBookTestsItsPointers) {
  const ULONG size = IdSize();
  ULONG_PTR window = 0;
  SPropValue noBytes = Binary(PR_ENTRYID, bad_, size);
  SRowSet path = {1, {{0, 1, bad_}}}, pathWithoutBytes = {1, {{0, 1, &noBytes}}};
  ADRLIST nobody = {}, noArray = {1, {{0, 1, nullptr}}}, badArray = {1, {{0, 1, bad_}}};
  ADRLIST badIdentifier = {1, {{0, 1, &noBytes}}};
  ADRLIST* lists[] = {&noArray, &badArray, &badIdentifier};
  log_.lines.clear();
  Expect({
      {SLOT(book_->OpenEntry(size, bad_, nullptr, 0, Number(), Out<IUnknown>()))},
      {SLOT(book_->OpenEntry(size, Id(), bad_, 0, Number(), Out<IUnknown>()))},
      {SLOT(book_->OpenEntry(0, nullptr, nullptr, 0, bad_, Out<IUnknown>()))},
      {SLOT(book_->OpenEntry(0, nullptr, nullptr, 0, Number(), bad_))},
      {SLOT(book_->Advise(size, Id(), 0, sink_.Get(), bad_))},
      {SLOT(book_->NewEntry(0, 0, size, bad_, 0, nullptr, Number(), Out<ENTRYID>()))},
      {SLOT(book_->NewEntry(0, 0, 0, nullptr, size, bad_, Number(), Out<ENTRYID>()))},
      {SLOT(book_->NewEntry(0, 0, size, Id(), size, bad_, Number(), Out<ENTRYID>()))},
      {SLOT(book_->NewEntry(0, 0, size, Id(), 0, nullptr, bad_, Out<ENTRYID>()))},
      {SLOT(book_->NewEntry(0, 0, size, Id(), 0, nullptr, Number(), bad_))},
      {SLOT(book_->Details(bad_, nullptr, nullptr, size, Id(), nullptr, nullptr, nullptr, 0))},
      {SLOT(book_->Details(&window, nullptr, nullptr, size, bad_, nullptr, nullptr, nullptr, 0))},
      {SLOT(book_->Details(&window, nullptr, nullptr, size, Id(), nullptr, nullptr, bad_, 0))},
      {SLOT(book_->GetPAB(bad_, Out<ENTRYID>()))},
      {SLOT(book_->GetPAB(Number(), bad_))},
      {SLOT(book_->SetPAB(size, bad_))},
      {SLOT(book_->GetDefaultDir(bad_, Out<ENTRYID>()))},
      {SLOT(book_->GetDefaultDir(Number(), bad_))},
      {SLOT(book_->SetDefaultDir(size, bad_))},
      {SLOT(book_->GetSearchPath(0, bad_))},
      {SLOT(book_->SetSearchPath(0, bad_))},
      {SLOT(book_->SetSearchPath(0, bad_.Cut<SRowSet>({1, 0})))},
      {SLOT(book_->SetSearchPath(0, &path))},
      {SLOT(book_->SetSearchPath(0, &pathWithoutBytes))},
      {SLOT(book_->PrepareRecips(0, bad_, &nobody))},
      {SLOT(book_->PrepareRecips(0, bad_.Cut<SPropTagArray>({2, PR_DISPLAY_NAME_W}), &nobody))},
      {SLOT(book_->PrepareRecips(0, nullptr, bad_))},
      {SLOT(book_->PrepareRecips(0, nullptr, bad_.Cut<ADRLIST>({1, 0})))},
  });
  for (ADRLIST*& recipients : lists) {
    Expect({
        {SLOT(book_->PrepareRecips(0, nullptr, recipients))},
        {SLOT(session_->ExpandRecipients(0, &recipients))},
    });
  }
  ULONG connection = 7;
  EXPECT_EQ(book_->Advise(size, bad_, 0, sink_.Get(), &connection), MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(connection, 0u);
  EXPECT_EQ(book_->Advise(size, Id(), 0, bad_, &connection), MAPI_E_INVALID_PARAMETER);
  EXPECT_TRUE(log_.lines.empty()) << "no provider is reached";
}

TEST_F(SlotsTest, SessionAndSupportTestTheirPointers) {
  Tags tags{PR_DISPLAY_NAME_W};
  ADRLIST* list = bad_;
  ADRLIST* cut = bad_.Cut<ADRLIST>({1, 0});
  LPALLOCATEBUFFER allocate = nullptr;
  LPALLOCATEMORE allocateMore = nullptr;
  LPFREEBUFFER free = nullptr;
  const auto copyTo = [&](LPCIID from, void* source, SPropTagArray* exclude, LPCIID to, void* destination,
                          SPropProblemArray** problems) {
    return support_->DoCopyTo(from, source, 0, nullptr, exclude, 0, nullptr, to, destination, MAPI_UNICODE,
                              problems);
  };
  const auto copyProps = [&](LPCIID from, void* source, SPropTagArray* include, LPCIID to, void* destination,
                             SPropProblemArray** problems) {
    return support_->DoCopyProps(from, source, include, 0, nullptr, to, destination, MAPI_UNICODE, problems);
  };
  const IID* const iid = &IID_IMAPIProp;
  void* const from = user_.Get();
  void* const to = section_.Get();
  Expect({
      {SLOT(OrvOpen(0, L"P", MAPI_UNICODE, nullptr, nullptr, nullptr, nullptr, bad_, kContext))},
      {SLOT(OrvAdminProfiles(MAPI_UNICODE, bad_, kContext))},
      {SLOT(OrvOpenUserInfo(nullptr, bad_, Out<IMailUser>()))},
      {SLOT(OrvOpenUserInfo(nullptr, Number(), bad_))},
      {SLOT(OrvOpenUserInfo(bad_, Number(), Out<IMailUser>()))},
      {SLOT(session_->OpenAddressBook(0, bad_))},
      {SLOT(session_->ExpandRecipients(0, bad_))},
      {SLOT(session_->ExpandRecipients(0, &list))},
      {SLOT(session_->ExpandRecipients(0, &cut))},
      {SLOT(session_->GetSessionEntryID(bad_, Out<ENTRYID>()))},
      {SLOT(session_->GetSessionEntryID(Number(), bad_))},
      {SLOT(session_->AdminServices(0, bad_))},
      {SLOT(support_->GetMemAllocRoutines(bad_, &allocateMore, &free))},
      {SLOT(support_->GetMemAllocRoutines(&allocate, bad_, &free))},
      {SLOT(support_->GetMemAllocRoutines(&allocate, &allocateMore, bad_))},
      {SLOT(support_->SetProviderUID(bad_))},
      {SLOT(copyTo(bad_, from, nullptr, iid, to, nullptr))},
      {SLOT(copyTo(iid, bad_, nullptr, iid, to, nullptr))},
      {SLOT(copyTo(iid, from, bad_, iid, to, nullptr))},
      {SLOT(copyTo(iid, from, nullptr, bad_, to, nullptr))},
      {SLOT(copyTo(iid, from, nullptr, iid, bad_, nullptr))},
      {SLOT(copyTo(iid, from, nullptr, iid, to, bad_))},
      {SLOT(copyProps(bad_, from, tags.Get(), iid, to, nullptr))},
      {SLOT(copyProps(iid, bad_, tags.Get(), iid, to, nullptr))},
      {SLOT(copyProps(iid, from, bad_, iid, to, nullptr))},
      {SLOT(copyProps(iid, from, tags.Get(), bad_, to, nullptr))},
      {SLOT(copyProps(iid, from, tags.Get(), iid, bad_, nullptr))},
      {SLOT(copyProps(iid, from, tags.Get(), iid, to, bad_))},
  });
  EXPECT_TRUE(allocate == nullptr && allocateMore == nullptr && free == nullptr);
}

TEST_F(SlotsTest, ProfilesAndServicesTestTheirPointers) {
  const MAPIUID* const uid = &uid_;
  IProfSect* none = nullptr;
  IProfSect* section = bad_;
  const ULONG ask = MAPI_UNICODE | SERVICE_UI_ALLOWED;
  const auto before = DumpKey(L"Software");
  // A name that cannot be read, and one that cannot be read to its end.
  for (const WCHAR* name : {static_cast<const WCHAR*>(bad_), bad_.Cut<const WCHAR>({L'P' << 16 | L'P'})}) {
    Expect({
        {SLOT(profiles_->CreateProfile(name, 0, MAPI_UNICODE))},
        {SLOT(profiles_->DeleteProfile(name, MAPI_UNICODE))},
        {SLOT(profiles_->ConfigureProfile(name, 0, MAPI_UNICODE))},
        {SLOT(profiles_->CopyProfile(name, L"Q", MAPI_UNICODE))},
        {SLOT(profiles_->CopyProfile(L"P", name, MAPI_UNICODE))},
        {SLOT(profiles_->RenameProfile(name, L"Q", MAPI_UNICODE))},
        {SLOT(profiles_->RenameProfile(L"P", name, MAPI_UNICODE))},
        {SLOT(profiles_->SetDefaultProfile(name, MAPI_UNICODE))},
        {SLOT(profiles_->AdminServices(name, MAPI_UNICODE, Out<IABServiceAdmin>())), MAPI_E_INVALID_PARAMETER,
         true},
        {SLOT(services_->CreateMsgService(name, L"", nullptr, 0, 0, MAPI_UNICODE))},
        {SLOT(services_->CreateMsgService(L"S", name, nullptr, 0, 0, MAPI_UNICODE))},
        {SLOT(services_->CreateMsgService(L"S", L"", name, 0, 0, MAPI_UNICODE))},
    });
  }
  Expect({
      {SLOT(profiles_->AdminServices(L"P", MAPI_UNICODE, bad_))},
      {SLOT(services_->GetMsgServiceTable(MAPI_UNICODE, bad_))},
      {SLOT(services_->DeleteMsgService(bad_))},
      {SLOT(services_->ConfigureMsgService(bad_, 0, ask, 0, nullptr, Out<IProfSect>()))},
      {SLOT(services_->ConfigureMsgService(uid, 0, MAPI_UNICODE, 1, bad_, &none))},
      {SLOT(services_->ConfigureMsgService(uid, 0, ask, 1, bad_, &none))},
      {SLOT(services_->ConfigureMsgService(uid, 0, ask, 0, nullptr, bad_))},
      {SLOT(services_->ConfigureMsgService(uid, 0, ask, 0, nullptr, &section))},
      {SLOT(services_->OpenProfileSection(bad_, nullptr, 0, Out<IProfSect>()))},
      {SLOT(services_->OpenProfileSection(uid, nullptr, 0, bad_))},
  });
  EXPECT_EQ(none, nullptr);
  EXPECT_EQ(DumpKey(L"Software"), before);
}

}  // namespace
}  // namespace orv::test
