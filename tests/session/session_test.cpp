// The session object and its end.
#include <servprov.h>

#include <functional>
#include <thread>

#include "platform/faults.h"
#include "props/foreign_values.h"
#include "tests/addrbook/book_fixture.h"
#include "tests/session/session_fixture.h"

namespace orv::test {
namespace {

using Texts = std::vector<std::string>;

const WString kProfileKey = L"Software\\Tovan\\Velmora\\VX100 series\\Orv Profiles\\P";

class Session : public SessionTest {
 protected:
  void Begin(int providers = 0) {
    for (int i = 0; i < providers; ++i) AddProvider();
    StoreProviders();
    Enter();
  }
  void Enter() {
    ASSERT_EQ(LogOn(session_), S_OK);
    ASSERT_EQ(session_->OpenAddressBook(0, book_.Put()), S_OK);
  }

  // Declared behind the fixture's members: they must go before the providers' libraries do.
  ComPtr<IOrvSession> session_;
  ComPtr<IAddrBook> book_;
};

// What a client holds of the session's making stays valid, whatever order it lets go in.
TEST_F(Session, HandsOutWhatItOwnsAndLeavesItUsable) {
  Begin(1);
  ComPtr<IAddrBook> again;
  ComPtr<IABServiceAdmin> admin;
  EXPECT_EQ(session_->OpenAddressBook(0, again.Put()), S_OK);
  EXPECT_EQ(again.Get(), book_.Get());
  ASSERT_EQ(session_->AdminServices(0, admin.Put()), S_OK);
  ULONG number = 0;
  ComPtr<IUnknown> root;
  ASSERT_EQ(book_->OpenEntry(0, nullptr, nullptr, 0, &number, root.Put()), S_OK);
  again.Reset();
  book_.Reset();
  session_.Reset();
  ComPtr<IMAPITable> table;
  EXPECT_EQ(static_cast<IABContainer*>(root.Get())->GetHierarchyTable(MAPI_UNICODE, table.Put()), S_OK);
  EXPECT_EQ(table->GetRowCount(0, &number), S_OK);
  EXPECT_EQ(number, 0u);
  EXPECT_EQ(admin->GetMsgServiceTable(MAPI_UNICODE, table.Put()), S_OK);
  ExpectAllGone();
}

TEST_F(Session, LendsTheBufferFunctions) {
  Begin();
  const long before = faults::LiveTaskBlocks();
  const auto make = [&](std::size_t size) {
    void* buffer = nullptr;
    EXPECT_EQ(session_->AllocateBuffer(static_cast<ULONG>(size), &buffer), S_OK);
    return buffer;
  };
  void* more = this;
  EXPECT_EQ(session_->AllocateMore(8, nullptr, &more), MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(more, nullptr);
  void* const root = make(16);
  EXPECT_EQ(session_->AllocateMore(8, root, &more), S_OK);
  EXPECT_EQ(faults::LiveTaskBlocks(), before + 2);
  EXPECT_EQ(session_->FreeBuffer(root), static_cast<ULONG>(S_OK));
  EXPECT_EQ(session_->FreeBuffer(nullptr), static_cast<ULONG>(MAPI_E_INVALID_PARAMETER));
  // Two arrays and behind them a null one; a row set and an address list are laid out alike.
  static_assert(CbNewSRowSet(3) == CbNewADRLIST(3));
  for (const bool rows : {true, false}) {
    auto* const set = static_cast<SRowSet*>(make(CbNewSRowSet(3)));
    set->cRows = 3;
    for (SRow* row = set->aRow; row != set->aRow + 2; ++row)
      row->lpProps = static_cast<SPropValue*>(make(24));
    rows ? session_->FreeProws(set) : session_->FreePadrlist(reinterpret_cast<ADRLIST*>(set));
  }
  session_->FreeProws(nullptr);
  session_->FreePadrlist(nullptr);
  EXPECT_EQ(faults::LiveTaskBlocks(), before);
}

TEST_F(Session, HasOneFixedEntryIdentifier) {
  Begin();
  const BYTE kExpected[20] = {0,    0,    0,    0,    0x80, 0xF5, 0x2B, 0x3F, 0x1B, 0xE9,
                              0xD2, 0x11, 0x91, 0x68, 0x00, 0xC0, 0x4F, 0x8C, 0xAA, 0x0E};
  ULONG size = 0;
  MapiBuffer<ENTRYID> id;
  ASSERT_EQ(session_->GetSessionEntryID(&size, id.Put()), S_OK);
  ASSERT_EQ(size, sizeof kExpected);
  EXPECT_EQ(std::memcmp(id.Get(), kExpected, size), 0);
}

TEST_F(Session, ExpandsRecipientsThroughItsProviders) {
  Begin(2);
  FakeScript& first = providers_[0]->script;
  FakeScript& second = providers_[1]->script;
  first.nodes["list"] = {MAPI_DISTLIST, {}, {}, 0, {"m", "n"}, 0, {}, {}};
  second.nodes["listb"] = {MAPI_DISTLIST, {}, {}, 0, {"x"}, 0, {}, {}};
  ADRLIST* list = MakeList(first, {"list/2", "listb/3", "m/1"});
  OrvFreeBuffer(std::exchange(list->aEntries[1], MakeEntry(second, "listb", 3)).rgPropVals);
  EXPECT_EQ(session_->ExpandRecipients(0, &list), S_OK);
  EXPECT_EQ(Read(AdrListPtr(list).Get()), (Texts{"m/1", "n/2", "x/3"}));
}

// Damaged values and those of other types are no settings, and stay; what is only loaded or found is not written.
TEST_F(Session, StoresWhatWasSetAlone) {
  AddProvider();
  StoreProviders();
  std::vector<BYTE> root = providers_[0]->script.EntryId("");
  ENTRYID* const entry = reinterpret_cast<ENTRYID*>(root.data());
  const ULONG size = static_cast<ULONG>(root.size());
  const std::byte torn[] = {std::byte{40}, std::byte{0}};
  WriteRegValue(kProfileKey, std::to_wstring(PR_AB_DEFAULT_DIR), REG_BINARY, torn);
  const SPropValue number = Long(CHANGE_PROP_TYPE(PR_AB_SEARCH_PATH, PT_LONG), 0);
  WriteRegValue(kProfileKey, std::to_wstring(number.ulPropTag), REG_BINARY, CellOf(*Node(number)));
  const auto before = DumpKey(kProfileKey);
  const auto use = [&](HRESULT (STDMETHODCALLTYPE IAddrBook::*get)(ULONG*, ENTRYID**)) {
    Enter();
    ULONG found = 0;
    MapiBuffer<ENTRYID> id;
    EXPECT_EQ((book_.Get()->*get)(&found, id.Put()), S_OK);
    EXPECT_EQ(std::vector<BYTE>(id->abFlags, id->abFlags + found), root);
  };
  const auto end = [&] {
    book_.Reset();
    session_.Reset();
    return DumpKey(kProfileKey);
  };
  use(&IAddrBook::GetDefaultDir);
  EXPECT_EQ(end(), before);
  providers_[0]->script.nodes[""].containerFlags |= AB_MODIFIABLE;
  Enter();
  EXPECT_EQ(book_->SetPAB(size, entry), S_OK);
  const auto stored = end();
  EXPECT_EQ(stored.size(), before.size() + 1);
  use(&IAddrBook::GetPAB);
  EXPECT_EQ(end(), stored);
}

// Settings and registrations need the providers, so both come before the first of them goes; a client that still
// holds the address book is told that the session has ended, and reaches no provider.
TEST_F(Session, EndsWhileItsProvidersAreLoaded) {
  Begin(2);
  std::vector<BYTE> id = providers_[0]->script.EntryId(""), other = providers_[1]->script.EntryId("");
  ENTRYID* const entry = reinterpret_cast<ENTRYID*>(id.data());
  const ULONG size = static_cast<ULONG>(id.size());
  FakeSink sink;
  ULONG number = 0;
  ASSERT_EQ(book_->Advise(size, entry, fnevObjectModified, &sink, &number), S_OK);
  ASSERT_EQ(book_->Advise(size, reinterpret_cast<ENTRYID*>(other.data()), 1, &sink, &number), S_OK);
  ASSERT_EQ(book_->SetDefaultDir(size, entry), S_OK);
  log_.lines.clear();
  session_.Reset();
  EXPECT_EQ(log_.lines, (Texts{"b.Unadvise", "a.Unadvise", "b.Released", "a.Released"}));
  EXPECT_EQ(sink.References(), 1u);
  EXPECT_EQ(ReadRegValue(kProfileKey, std::to_wstring(PR_AB_DEFAULT_DIR)).type, DWORD{REG_BINARY});

  void* out = this;
  ULONG_PTR ui = 0;
  ENTRYID* made = nullptr;
  ADRLIST recipients = {};
  ComPtr<IUnknown> object;
  const HRESULT ended[] = {book_->QueryInterface(IID_IUnknown, &out),
                           book_->OpenEntry(size, entry, nullptr, 0, &number, object.Put()),
                           book_->OpenEntry(0, nullptr, nullptr, 0, &number, object.Put()),
                           book_->NewEntry(0, 0, size, entry, 0, nullptr, &number, &made),
                           book_->Details(&ui, nullptr, nullptr, size, entry, nullptr, nullptr, nullptr, 0),
                           book_->PrepareRecips(0, nullptr, &recipients),
                           book_->Advise(size, entry, 1, &sink, &number)};
  for (const HRESULT hr : ended) EXPECT_EQ(hr, MAPI_E_END_OF_SESSION);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(number, 0u);
  // Everything else answers as ever, without the providers.
  EXPECT_EQ(book_->Unadvise(1), MAPI_E_NOT_FOUND);
  EXPECT_EQ(book_->SetPAB(size, entry), MAPI_E_CALL_FAILED);
  EXPECT_EQ(book_->CompareEntryIDs(size, entry, size, entry, 0, &number), MAPI_E_UNKNOWN_ENTRYID);
  EXPECT_TRUE(FAILED(book_->GetPAB(&number, &made)));
  RowSetPtr path;
  EXPECT_EQ(book_->GetSearchPath(0, path.Put()), S_OK);
  EXPECT_EQ(path->cRows, 2u);
  ExpectAllGone();
  book_.Reset();
}

// A provider's callback or a dialog's command lets the session go: the way back leads through the provider, so it stays
// until the call is over; calls inside go on as ever, those of other threads are refused.
TEST_F(Session, ReleasedFromWithinACallEndsWithThatCall) {
  Begin(1);
  FakeScript& script = providers_[0]->script;
  script.nodes["list"] = {MAPI_DISTLIST, {}, {}, 0, {"m", "n"}, 0, {}, {}};
  std::vector<BYTE> id = script.EntryId("");
  ADRLIST* recipients = nullptr;
  const auto open = [&] {
    ULONG type = 0;
    ComPtr<IUnknown> opened;
    auto* const entry = reinterpret_cast<ENTRYID*>(id.data());
    return book_->OpenEntry(static_cast<ULONG>(id.size()), entry, nullptr, 0, &type, opened.Put());
  };
  const std::pair<const char*, std::function<HRESULT()>> calls[] = {
      {"OpenEntry", open},
      {"PrepareRecips", [&] { return book_->PrepareRecips(0, nullptr, recipients); }},
      {"Object:GetContentsTable", [&] { return session_->ExpandRecipients(0, &recipients); }}};
  for (const auto& [operation, call] : calls) {
    script.during[operation] = [&, inner = operation] {
      const auto running = std::exchange(script.during, {});
      session_.Reset();
      HRESULT elsewhere = S_OK;
      std::thread([&] { elsewhere = open(); }).join();
      EXPECT_EQ(elsewhere, MAPI_E_END_OF_SESSION) << inner;
      EXPECT_EQ(open(), S_OK) << inner;
      EXPECT_EQ(log_.Count("a.Released"), 0u) << inner;
    };
    log_.lines.clear();
    recipients = MakeList(script, {"list/2", "x/1"});
    EXPECT_EQ(call(), S_OK) << operation;
    AdrListPtr(std::exchange(recipients, nullptr));
    EXPECT_EQ(log_.Count("a.Released"), 1u) << operation;
    EXPECT_EQ(open(), MAPI_E_END_OF_SESSION) << operation;
    book_.Reset();
    ASSERT_EQ(LogOn(session_), S_OK);
    ASSERT_EQ(session_->OpenAddressBook(0, book_.Put()), S_OK);
  }
  session_.Reset();
  book_.Reset();
  ExpectAllGone();
}

// A provider's support object leads into the session from any thread, as long as there is one, and brings problems out.
class SupportInSession : public Session {
 protected:
  static ComPtr<IOrvSupport2> Ask(IOrvSupport* support) {
    ComPtr<IOrvSupport2> asked;
    EXPECT_EQ(support->QueryInterface(IID_IOrvSupport2, reinterpret_cast<void**>(asked.Put())), S_OK);
    return asked;
  }
  // The address book, as the support object finds services.
  static HRESULT FindBook(IOrvSupport2& support, ComPtr<IAddrBook>& book, REFGUID service = IID_IAddrBook) {
    constexpr GUID kServices = {0x6D5140C1, 0x7436, 0x11CE, {0x80, 0x34, 0x00, 0xAA, 0x00, 0x60, 0x09, 0xFA}};
    ComPtr<IServiceProvider> services;
    ComPtr<IUnknown> one, other;
    EXPECT_EQ(support.QueryInterface(kServices, reinterpret_cast<void**>(services.Put())), S_OK);
    EXPECT_EQ(support.QueryInterface(IID_IUnknown, reinterpret_cast<void**>(one.Put())), S_OK);
    EXPECT_EQ(services->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(other.Put())), S_OK);
    EXPECT_EQ(one.Get(), other.Get()) << "it is one object";
    return services->QueryService(service, IID_IAddrBook, reinterpret_cast<void**>(book.Put()));
  }
  HRESULT OpenThrough(IOrvSupport2& support, const std::string& key = "") {
    std::vector<BYTE> id = providers_[1]->script.EntryId(key);
    ULONG type = 0;
    ComPtr<IUnknown> opened;
    return support.OpenEntry(static_cast<ULONG>(id.size()), reinterpret_cast<ENTRYID*>(id.data()), nullptr, 0,
                             &type, opened.Put());
  }
  // "code service text" of each problem.
  Texts Problems() {
    ComPtr<IOrvSession2> session;
    RowSetPtr rows;
    EXPECT_EQ(session_->QueryInterface(IID_IOrvSession2, reinterpret_cast<void**>(session.Put())), S_OK);
    EXPECT_EQ(session->GetProblems(0, rows.Put()), S_OK);
    Texts texts;
    for (ULONG i = 0; rows && i < rows->cRows; ++i) {
      const ForeignValues row(rows->aRow[i]);
      const WString text = TextOf(row.At(1, PR_ORV_PROBLEM_TEXT_W));
      const SBinary* uid = BinaryOf(row.At(2, PR_SERVICE_UID));
      EXPECT_NE(TextOf(row.At(4, PR_SERVICE_DLL_NAME_W)), nullptr);
      texts.push_back(std::to_string(NumberOf(row.At(0, PR_ORV_PROBLEM_CODE))) + " " +
                      std::to_string(uid->lpb[0]) + " " + std::string(text.begin(), text.end()));
    }
    return texts;
  }
};

TEST_F(SupportInSession, OpensAnyEntryAndReportsProblemsWhileThereIsASession) {
  AddProvider();
  FakeScript& script = providers_[0]->script;
  script.keepsSupport = true;
  AddProvider();
  providers_[1]->script.during["ABProviderOpen"] = [&] {
    const auto early = Ask(script.keptSupport);
    ComPtr<IAddrBook> book;
    EXPECT_EQ(OpenThrough(*early), MAPI_E_END_OF_SESSION);
    EXPECT_EQ(FindBook(*early, book), MAPI_E_END_OF_SESSION);
    EXPECT_EQ(early->ReportProblem(1, L"early"), MAPI_E_END_OF_SESSION);
  };
  StoreProviders();
  Enter();
  const auto support = Ask(ComPtr<IOrvSupport>::Adopt(script.keptSupport).Get());
  std::thread([&] {
    EXPECT_EQ(OpenThrough(*support), S_OK);
    EXPECT_EQ(support->ReportProblem(MAPI_E_NOT_FOUND, L"lost"), S_OK);
  }).join();
  {
    ComPtr<IAddrBook> book;
    EXPECT_EQ(FindBook(*support, book, IID_IOrvSession), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(FindBook(*support, book), S_OK);
    EXPECT_EQ(book.Get(), book_.Get());
  }
  EXPECT_EQ(Problems(), (Texts{std::to_string(static_cast<ULONG>(MAPI_E_NOT_FOUND)) + " 1 lost"}));
  EXPECT_EQ(Problems().size(), 1u) << "reading takes none away";
  for (int i = 0; i < ORV_MAX_PROBLEMS; ++i) {
    const WString text = std::to_wstring(i) + WString(2 * ORV_MAX_PROBLEM_TEXT, L'x');
    EXPECT_EQ(support->ReportProblem(2, text.c_str()), S_OK);
  }
  const Texts kept = Problems();
  ASSERT_EQ(kept.size(), std::size_t{ORV_MAX_PROBLEMS});
  EXPECT_EQ(kept[0].substr(0, 5), "2 1 0");
  EXPECT_EQ(kept[0].size(), ORV_MAX_PROBLEM_TEXT + std::strlen("2 1 "));
  session_.Reset();
  EXPECT_EQ(OpenThrough(*support), MAPI_E_END_OF_SESSION);
  EXPECT_EQ(support->ReportProblem(1, L"late"), MAPI_E_END_OF_SESSION);
  book_.Reset();
}

// What the hierarchy lacks of a provider stands in no row of it.
TEST_F(SupportInSession, TellsWhatTheHierarchyLacks) {
  Begin(2);
  FakeScript& script = providers_[1]->script;
  script.nodes["b1"] = {MAPI_ABCONT, L"b1", {}, AB_RECIPIENTS, {}, 0, {}, {}};
  script.hierarchy = {"b1"};
  const auto list = [&] {
    ULONG type = 0;
    ComPtr<IUnknown> root;
    ComPtr<IMAPITable> table;
    EXPECT_EQ(book_->OpenEntry(0, nullptr, nullptr, 0, &type, root.Put()), S_OK);
    EXPECT_EQ(static_cast<IABContainer*>(root.Get())
                  ->GetHierarchyTable(MAPI_UNICODE | CONVENIENT_DEPTH, table.Put()),
              S_OK);
    ULONG count = 0;
    EXPECT_EQ(table->GetRowCount(0, &count), S_OK);
    return count;
  };
  EXPECT_EQ(list(), 3u);
  EXPECT_EQ(Problems(), Texts{});
  std::size_t known = 0;
  const struct {
    const char* operation;
    FakeAnswer answer;
    FakeLie lie;
    ULONG rows;
  } cases[] = {{"GetProps", {MAPI_E_NO_ACCESS}, FakeLie::kNone, 1},
               {"Object:GetHierarchyTable", {MAPI_E_DISK_ERROR}, FakeLie::kNone, 2},
               {"Table:SetColumns", {S_OK, Throws::kInteger}, FakeLie::kNone, 2},
               {"Table:QueryRows", {}, FakeLie::kShort, 3}};
  for (const auto& c : cases) {
    script.answers = {{c.operation, c.answer}};
    script.lies = {{c.operation, c.lie}};
    EXPECT_EQ(list(), c.rows) << c.operation;
    EXPECT_EQ(list(), c.rows) << c.operation;
    ASSERT_EQ(Problems().size(), ++known) << c.operation;
    EXPECT_EQ(Problems().back().find(" 2 "), Problems().back().find(' ')) << Problems().back();
  }
  script.answers = {{"Object:GetHierarchyTable", {MAPI_E_NO_SUPPORT}}};
  script.lies.clear();
  EXPECT_EQ(list(), 2u);
  EXPECT_EQ(Problems().size(), known) << "a provider may have no containers below its own";
}

}  // namespace
}  // namespace orv::test
