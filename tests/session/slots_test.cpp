// Every slot of every interface that refuses, and every slot that takes a pointer: the documented code, and nothing
// written. The objects are those of a real logon.
#include <array>
#include <functional>
#include <tuple>
#include <type_traits>

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

#define EACH(object, method, ...) \
  Each(#method, object, &std::remove_pointer_t<decltype(object)>::method, __VA_ARGS__)

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

  // A method with arguments that are good, but for each pointer among them in turn.
  template <class Object, class Interface, class... Parameters>
  void Each(const char* name, Object* object, HRESULT (STDMETHODCALLTYPE Interface::*method)(Parameters...),
            std::type_identity_t<Parameters>... good) {
    std::tuple<Parameters...> arguments(good...);
    const auto call = [&] {
      return std::apply([&](Parameters... actual) { return (object->*method)(actual...); }, arguments);
    };
    int position = 0;
    std::apply([&](Parameters&... each) { (Spoil(name, ++position, call, each), ...); }, arguments);
  }
  template <class T>
  void Spoil(const char* name, int position, const std::function<HRESULT()>& call, T& argument) {
    if constexpr (std::is_pointer_v<T>) {
      SCOPED_TRACE(position);
      const T good = argument;
      if (good == nullptr) return;
      for (const T bad : BadOnes<T>()) {
        argument = bad;
        Expect({{name, call}});
      }
      argument = good;
    }
  }

  // One that leads nowhere; of what tells its own length also one that ends before that.
  template <class Pointer>
  std::vector<Pointer> BadOnes() const {
    using T = std::remove_const_t<std::remove_pointer_t<Pointer>>;
    std::vector<Pointer> bad = {bad_};
    if constexpr (std::is_same_v<T, WCHAR>) bad.push_back(bad_.Cut<T>({L'P' << 16 | L'P'}));
    if constexpr (std::is_same_v<T, SPropTagArray>) bad.push_back(bad_.Cut<T>({2, PR_DISPLAY_NAME_W}));
    if constexpr (std::is_same_v<T, SRowSet>) bad.push_back(bad_.Cut<T>({1, 0}));
    if constexpr (std::is_same_v<T, ADRLIST>) bad.push_back(bad_.Cut<T>({1, 0}));
    return bad;
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
      {session_.Get(), {IID_IOrvSession, IID_IOrvSession2}},
      {support_.Get(), {IID_IOrvSupport, IID_IOrvSupport2}},
      {book_.Get(), {IID_IMAPIProp, IID_IAddrBook}},
      {root_.Get(), {IID_IMAPIProp, IID_IMAPIContainer, IID_IABContainer}},
      {table_.Get(), {IID_IMAPITable}},
      {services_.Get(), {IID_IABServiceAdmin}},
      {section_.Get(), {IID_IMAPIProp, IID_IProfSect}},
      {profiles_.Get(), {IID_IOrvProfAdmin, IID_IOrvProfAdmin2, IID_IOrvProfAdmin3}},
      {user_.Get(), {IID_IMAPIProp, IID_IMailUser}},
      {sink_.Get(), {IID_IMAPIAdviseSink}},
  };
  const IID all[] = {IID_IUnknown,       IID_IMAPITable,     IID_IMAPIAdviseSink, IID_IMAPIProp,
                     IID_IProfSect,      IID_IAddrBook,      IID_IMailUser,       IID_IMAPIContainer,
                     IID_IDistList,      IID_IABContainer,   IID_IOrvSession,     IID_IOrvSupport,
                     IID_IOrvProfAdmin,  IID_IOrvProfAdmin2, IID_IABServiceAdmin, IID_IOrvSession2,
                     IID_IOrvProfAdmin3, IID_IOrvSupport2};
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
  SPropValue value = Long(PR_RESOURCE_FLAGS, 1);
  Tags tags{PR_DISPLAY_NAME_W};
  const IID* const iid = &IID_IMailUser;
  auto* const problems = Out<SPropProblemArray>();
  for (IMAPIProp* p :
       std::initializer_list<IMAPIProp*>{book_.Get(), root_.Get(), user_.Get(), section_.Get()}) {
    Expect({{SLOT(p->GetLastError(S_OK, 0, Out<MAPIERROR>())), p == book_.Get() ? S_OK : kNo},
            {SLOT(p->OpenProperty(PR_CONTAINER_CONTENTS, &IID_IMAPITable, 0, 0, Out<IUnknown>())),
             p == root_.Get() ? MAPI_E_INTERFACE_NOT_SUPPORTED : kNo},
            {SLOT(p->GetNamesFromIDs(Out<SPropTagArray>(), nullptr, 0, Number(), Out<LPMAPINAMEID>())), kNo},
            {SLOT(p->GetIDsFromNames(0, nullptr, 0, Out<SPropTagArray>())), kNo}});
  }
  // What keeps no properties refuses these too.
  for (IMAPIProp* p : std::initializer_list<IMAPIProp*>{book_.Get(), root_.Get()}) {
    Expect({{SLOT(p->SaveChanges(0)), kNo},
            {SLOT(p->GetProps(tags.Get(), MAPI_UNICODE, Number(), Out<SPropValue>())), kNo},
            {SLOT(p->GetPropList(MAPI_UNICODE, Out<SPropTagArray>())), kNo},
            {SLOT(p->SetProps(1, &value, problems)), kNo},
            {SLOT(p->DeleteProps(tags.Get(), problems)), kNo},
            {SLOT(p->CopyTo(0, nullptr, nullptr, 0, nullptr, iid, user_.Get(), MAPI_UNICODE, problems)), kNo},
            {SLOT(p->CopyProps(tags.Get(), 0, nullptr, iid, user_.Get(), MAPI_UNICODE, problems)), kNo}});
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
  const IID* const iid = &IID_IMAPIProp;
  for (IMAPIProp* p : {static_cast<IMAPIProp*>(user_.Get()), static_cast<IMAPIProp*>(section_.Get())}) {
    IMAPIProp* const other = p == user_.Get() ? static_cast<IMAPIProp*>(section_.Get()) : user_.Get();
    auto* const problems = Out<SPropProblemArray>();
    EACH(p, GetProps, tags.Get(), MAPI_UNICODE, Number(), Out<SPropValue>());
    EACH(p, GetPropList, MAPI_UNICODE, Out<SPropTagArray>());
    EACH(p, SetProps, 1, &value, problems);
    EACH(p, DeleteProps, tags.Get(), problems);
    EACH(p, CopyTo, 0, nullptr, tags.Get(), 0, nullptr, iid, other, MAPI_UNICODE, problems);
    EACH(p, CopyProps, tags.Get(), 0, nullptr, iid, other, MAPI_UNICODE, problems);
    Expect({{SLOT(p->SetProps(2, bad_.Cut<SPropValue>({PR_RESOURCE_FLAGS, 0, 0, 0, 0, 0}), nullptr))}});
  }
}

TEST_F(SlotsTest, TablesAndContainersTestTheirPointers) {
  Tags tags{PR_DISPLAY_NAME_W};
  LONG sought = 0;
  ULONG denominator = 0;
  SBinary entry = {IdSize(), bad_};
  ENTRYLIST noArray = {1, bad_}, noBytes = {1, &entry}, nothing = {};
  ADRLIST nobody = {};
  EACH(table_.Get(), GetStatus, Number(), &denominator);
  EACH(table_.Get(), SetColumns, tags.Get(), 0);
  EACH(table_.Get(), QueryColumns, 0, Out<SPropTagArray>());
  EACH(table_.Get(), GetRowCount, 0, Number());
  EACH(table_.Get(), SeekRow, BOOKMARK_BEGINNING, 0, &sought);
  EACH(table_.Get(), QueryPosition, Number(), Number(), Number());
  EACH(table_.Get(), QueryRows, 1, 0, Out<SRowSet>());
  EACH(root_.Get(), OpenProperty, PR_CONTAINER_HIERARCHY, &IID_IMAPITable, 0, 0, Out<IUnknown>());
  EACH(root_.Get(), GetContentsTable, MAPI_UNICODE, Out<IMAPITable>());
  EACH(root_.Get(), GetHierarchyTable, MAPI_UNICODE, Out<IMAPITable>());
  EACH(root_.Get(), OpenEntry, 0, nullptr, nullptr, 0, Number(), Out<IUnknown>());
  EACH(root_.Get(), CopyEntries, &nothing, 0, nullptr, 0);
  EACH(root_.Get(), DeleteEntries, &nothing, 0);
  EACH(root_.Get(), ResolveNames, tags.Get(), MAPI_UNICODE, &nobody, nullptr);
  Expect({{SLOT(root_->CreateEntry(IdSize(), bad_, 0, Out<IMAPIProp>()))},
          {SLOT(root_->CopyEntries(&noArray, 0, nullptr, 0))},
          {SLOT(root_->CopyEntries(&noBytes, 0, nullptr, 0))},
          {SLOT(root_->DeleteEntries(&noArray, 0))},
          {SLOT(root_->DeleteEntries(&noBytes, 0))}});
}

TEST_F(SlotsTest, TheAddressBookTestsItsPointers) {
  const ULONG size = IdSize();
  ULONG_PTR window = 0;
  Tags tags{PR_DISPLAY_NAME_W};
  WCHAR text[] = L"text";
  SPropValue noBytes = Binary(PR_ENTRYID, bad_, size), bytes = Binary(PR_ENTRYID, Id(), size);
  SRowSet path = {1, {{0, 1, &bytes}}}, noValues = {1, {{0, 1, bad_}}},
          pathWithoutBytes = {1, {{0, 1, &noBytes}}};
  ADRLIST nobody = {}, noArray = {1, {{0, 1, nullptr}}}, badArray = {1, {{0, 1, bad_}}};
  ADRLIST badIdentifier = {1, {{0, 1, &noBytes}}};
  ADRLIST* lists[] = {&noArray, &badArray, &badIdentifier};
  log_.lines.clear();
  EACH(book_.Get(), OpenEntry, size, Id(), &IID_IABContainer, 0, Number(), Out<IUnknown>());
  EACH(book_.Get(), OpenEntry, 0, nullptr, nullptr, 0, Number(), Out<IUnknown>());
  EACH(book_.Get(), NewEntry, 0, 0, size, Id(), size, Id(), Number(), Out<ENTRYID>());
  EACH(book_.Get(), NewEntry, 0, 0, 0, nullptr, size, Id(), Number(), Out<ENTRYID>());
  EACH(book_.Get(), Details, &window, nullptr, nullptr, size, Id(), nullptr, nullptr, text, 0);
  EACH(book_.Get(), GetPAB, Number(), Out<ENTRYID>());
  EACH(book_.Get(), SetPAB, size, Id());
  EACH(book_.Get(), GetDefaultDir, Number(), Out<ENTRYID>());
  EACH(book_.Get(), SetDefaultDir, size, Id());
  EACH(book_.Get(), GetSearchPath, 0, Out<SRowSet>());
  EACH(book_.Get(), SetSearchPath, 0, &path);
  EACH(book_.Get(), PrepareRecips, 0, tags.Get(), &nobody);
  Expect({{SLOT(book_->SetSearchPath(0, &noValues))},
          {SLOT(book_->SetSearchPath(0, &pathWithoutBytes))},
          {SLOT(book_->Advise(size, Id(), 0, sink_.Get(), bad_))}});
  for (ADRLIST*& recipients : lists) {
    Expect({{SLOT(book_->PrepareRecips(0, nullptr, recipients))},
            {SLOT(session_->ExpandRecipients(0, &recipients))}});
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
  const IID* const iid = &IID_IMAPIProp;
  void* const from = user_.Get();
  void* const to = section_.Get();
  auto* const problems = Out<SPropProblemArray>();
  EACH(session_.Get(), OpenAddressBook, 0, Out<IAddrBook>());
  EACH(session_.Get(), GetSessionEntryID, Number(), Out<ENTRYID>());
  EACH(session_.Get(), AdminServices, 0, Out<IABServiceAdmin>());
  ComPtr<IOrvSession2> session;
  ComPtr<IOrvSupport2> support;
  ASSERT_EQ(session_->QueryInterface(IID_IOrvSession2, reinterpret_cast<void**>(session.Put())), S_OK);
  ASSERT_EQ(support_->QueryInterface(IID_IOrvSupport2, reinterpret_cast<void**>(support.Put())), S_OK);
  EACH(session.Get(), GetProblems, 0, Out<SRowSet>());
  EACH(support.Get(), OpenEntry, IdSize(), Id(), &IID_IABContainer, 0, Number(), Out<IUnknown>());
  EACH(support.Get(), ReportProblem, E_FAIL, L"text");
  EACH(support_.Get(), GetMemAllocRoutines, &allocate, &allocateMore, &free);
  EACH(support_.Get(), SetProviderUID, &uid_);
  EACH(support_.Get(), DoCopyTo, iid, from, 0, nullptr, tags.Get(), 0, nullptr, iid, to, MAPI_UNICODE,
       problems);
  EACH(support_.Get(), DoCopyProps, iid, from, tags.Get(), 0, nullptr, iid, to, MAPI_UNICODE, problems);
  EXPECT_TRUE(allocate == nullptr && allocateMore == nullptr && free == nullptr);
  Expect({
      {SLOT(OrvOpen(0, L"P", MAPI_UNICODE, nullptr, nullptr, nullptr, nullptr, bad_, kContext))},
      {SLOT(OrvAdminProfiles(MAPI_UNICODE, bad_, kContext))},
      {SLOT(session->GetProblems(MAPI_UNICODE, Out<SRowSet>())), MAPI_E_UNKNOWN_FLAGS},
      {SLOT(support->ReportProblem(E_FAIL, nullptr))},
      {SLOT(OrvOpenCatalogue(bad_, MAPI_UNICODE, Out<WCHAR>(), Out<SRowSet>(), Out<SRowSet>()))},
      {SLOT(OrvOpenCatalogue(nullptr, MAPI_UNICODE, bad_, Out<SRowSet>(), Out<SRowSet>()))},
      {SLOT(OrvOpenCatalogue(nullptr, MAPI_UNICODE, Out<WCHAR>(), bad_, Out<SRowSet>()))},
      {SLOT(OrvOpenCatalogue(nullptr, MAPI_UNICODE, Out<WCHAR>(), Out<SRowSet>(), bad_))},
      {SLOT(OrvOpenCatalogue(nullptr, 0, Out<WCHAR>(), Out<SRowSet>(), Out<SRowSet>())),
       MAPI_E_BAD_CHARWIDTH},
      {SLOT(OrvOpenUserInfo(nullptr, bad_, Out<IMailUser>()))},
      {SLOT(OrvOpenUserInfo(nullptr, Number(), bad_))},
      {SLOT(OrvOpenUserInfo(bad_, Number(), Out<IMailUser>()))},
      {SLOT(session_->ExpandRecipients(0, bad_))},
      {SLOT(session_->ExpandRecipients(0, &list))},
      {SLOT(session_->ExpandRecipients(0, &cut))},
  });
}

TEST_F(SlotsTest, ProfilesAndServicesTestTheirPointers) {
  const WCHAR* const name = L"P";
  IProfSect* none = nullptr;
  IProfSect* section = bad_;
  SPropValue value = Long(PR_RESOURCE_FLAGS, 1);
  const ULONG ask = MAPI_UNICODE | SERVICE_UI_ALLOWED;
  const auto before = DumpKey(L"Software");
  ComPtr<IOrvProfAdmin3> stored;
  ASSERT_EQ(profiles_->QueryInterface(IID_IOrvProfAdmin3, reinterpret_cast<void**>(stored.Put())), S_OK);
  EACH(profiles_.Get(), CreateProfile, name, 0, MAPI_UNICODE);
  EACH(profiles_.Get(), DeleteProfile, name, MAPI_UNICODE);
  EACH(profiles_.Get(), ConfigureProfile, name, 0, MAPI_UNICODE);
  EACH(profiles_.Get(), CopyProfile, name, name, MAPI_UNICODE);
  EACH(profiles_.Get(), RenameProfile, name, name, MAPI_UNICODE);
  EACH(profiles_.Get(), SetDefaultProfile, name, MAPI_UNICODE);
  EACH(stored.Get(), DeleteStoredService, name, name, MAPI_UNICODE);
  EACH(stored.Get(), SetAsideStoredService, name, name, MAPI_UNICODE);
  EACH(services_.Get(), CreateMsgService, name, name, name, 0, 0, MAPI_UNICODE);
  EACH(services_.Get(), GetMsgServiceTable, MAPI_UNICODE, Out<IMAPITable>());
  EACH(services_.Get(), DeleteMsgService, &uid_);
  EACH(services_.Get(), ConfigureMsgService, &uid_, 0, MAPI_UNICODE, 1, &value, &none);
  EACH(services_.Get(), ConfigureMsgService, &uid_, 0, ask, 1, &value, &none);
  EACH(services_.Get(), OpenProfileSection, &uid_, nullptr, 0, Out<IProfSect>());
  Expect({
      {SLOT(profiles_->AdminServices(bad_, MAPI_UNICODE, Out<IABServiceAdmin>())), MAPI_E_INVALID_PARAMETER,
       true},
      {SLOT(profiles_->AdminServices(name, MAPI_UNICODE, bad_))},
      {SLOT(stored->GetStoredServiceTable(bad_, MAPI_UNICODE, Out<IMAPITable>())), MAPI_E_INVALID_PARAMETER,
       true},
      {SLOT(stored->GetStoredServiceTable(name, MAPI_UNICODE, bad_))},
      {SLOT(stored->GetStoredProfileTable(MAPI_UNICODE, bad_))},
      {SLOT(stored->GetStoredProfileTable(0, Out<IMAPITable>())), MAPI_E_BAD_CHARWIDTH, true},
      {SLOT(stored->SetAsideStoredService(L"WAB", name, MAPI_UNICODE)), MAPI_E_NO_ACCESS},
      {SLOT(stored->SetAsideStoredService(name, L"..\\x", MAPI_UNICODE)), MAPI_E_NOT_FOUND},
      {SLOT(services_->ConfigureMsgService(&uid_, 0, ask, 0, nullptr, &section))},
  });
  EXPECT_EQ(none, nullptr);
  EXPECT_EQ(DumpKey(L"Software"), before);
}

}  // namespace
}  // namespace orv::test
