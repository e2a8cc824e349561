// Who answers for an entry identifier, with which arguments, and what is left after the session's end.
#include <functional>
#include <tuple>

#include "addrbook/entry_id.h"
#include "tests/addrbook/book_fixture.h"

namespace orv::test {
namespace {

Bytes UserInfoId(BYTE flags, std::size_t size) {
  Bytes id(kUserInfoEntryId.begin(), kUserInfoEntryId.end());
  id[0] = flags;
  id.resize(size);
  return id;
}

TEST(EntryId, OnlyTwentyBytesWithOurUidAreTheUserInformation) {
  const struct {
    BYTE flags;
    ULONG size;
    bool expected;
  } cases[] = {{0, 20, true},  {0xFF, 20, true}, {0, 19, false},
               {0, 21, false}, {0, 24, false},   {0, 0, false}};
  for (const auto& c : cases) {
    Bytes id = UserInfoId(c.flags, 24);
    EXPECT_EQ(c.expected, IsUserInfoEntryId(c.size, Id(id))) << c.size;
  }
  EXPECT_FALSE(IsUserInfoEntryId(20, nullptr));
  Bytes other = UserInfoId(0, 20);
  other[19] ^= 1;
  EXPECT_FALSE(IsUserInfoEntryId(20, Id(other)));
}

// Keeps the arguments of the calls that the address book forwards.
class RecordingSlots {
 public:
  using OpenArguments = std::tuple<ULONG, ENTRYID*, LPCIID, ULONG, ULONG*, IUnknown**>;
  using NewArguments = std::tuple<ULONG_PTR, ULONG, ULONG, ENTRYID*, ULONG, ENTRYID*, ULONG*, ENTRYID**>;
  using DetailsArguments =
      std::tuple<ULONG_PTR*, LPFNDISMISS, void*, ULONG, ENTRYID*, LPFNBUTTON, void*, WCHAR*, ULONG>;
  using AdviseArguments = std::tuple<ULONG, ENTRYID*, ULONG, IMAPIAdviseSink*>;
  OpenArguments open;
  NewArguments created;
  DetailsArguments details;
  AdviseArguments advise;
};

constexpr HRESULT kOddResult = static_cast<HRESULT>(0x00040999);

// A provider that answers nothing but what is routed to it.
class RecordingProvider final : public PropObject<IAddrBook>, public RecordingSlots {
 public:
  HRESULT STDMETHODCALLTYPE OpenEntry(ULONG size, LPENTRYID id, LPCIID iid, ULONG flags, ULONG* type,
                                      LPUNKNOWN* out) override {
    open = {size, id, iid, flags, type, out};
    return kOddResult;
  }
  HRESULT STDMETHODCALLTYPE NewEntry(ULONG_PTR ui, ULONG flags, ULONG containerSize, LPENTRYID container,
                                     ULONG templateSize, LPENTRYID templateId, ULONG* size,
                                     LPENTRYID* out) override {
    created = {ui, flags, containerSize, container, templateSize, templateId, size, out};
    return kOddResult;
  }
  HRESULT STDMETHODCALLTYPE Details(ULONG_PTR* ui, LPFNDISMISS dismiss, LPVOID dismissContext, ULONG size,
                                    LPENTRYID id, LPFNBUTTON button, LPVOID buttonContext, LPWSTR text,
                                    ULONG flags) override {
    details = {ui, dismiss, dismissContext, size, id, button, buttonContext, text, flags};
    return kOddResult;
  }
  HRESULT STDMETHODCALLTYPE Advise(ULONG size, LPENTRYID id, ULONG events, LPMAPIADVISESINK sink,
                                   ULONG* connection) override {
    advise = {size, id, events, sink};
    *connection = 99;
    return kOddResult;
  }
  HRESULT STDMETHODCALLTYPE Unadvise(ULONG) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE CompareEntryIDs(ULONG, LPENTRYID, ULONG, LPENTRYID, ULONG, ULONG*) override {
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE CreateOneOff(LPWSTR, LPWSTR, LPWSTR, ULONG, ULONG*, LPENTRYID*) override {
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE ResolveName(ULONG_PTR, ULONG, LPWSTR, LPADRLIST) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE Address(ULONG_PTR*, LPADRPARM, LPADRLIST*) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE RecipOptions(ULONG_PTR, ULONG, LPADRENTRY) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE QueryDefaultRecipOpt(LPWSTR, ULONG, ULONG*, LPSPropValue*) override {
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetPAB(ULONG*, LPENTRYID*) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE SetPAB(ULONG, LPENTRYID) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE GetDefaultDir(ULONG*, LPENTRYID*) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE SetDefaultDir(ULONG, LPENTRYID) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE GetSearchPath(ULONG, LPSRowSet*) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE SetSearchPath(ULONG, LPSRowSet) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE PrepareRecips(ULONG, LPSPropTagArray, LPADRLIST) override { return S_OK; }

 private:
  bool Supports(REFIID) const override { return false; }
};

class Routing : public BookTest {
 protected:
  HRESULT OpenId(Bytes& id, ULONG size) {
    ULONG type = 0;
    ComPtr<IUnknown> object;
    return book->OpenEntry(size, Id(id), nullptr, 0, &type, object.Put());
  }
};

TEST_F(Routing, IdentifiersOfNobodyAreRefused) {
  Load("A");
  LoadObject(nullptr, 'N');
  Open();
  Bytes own = UserInfoId(0xFF, 24);
  Bytes unknown(20, 'Z');
  Bytes noObject(20, 'N');
  Bytes loaded(20, 'A');
  const struct {
    Bytes* id;
    ULONG size;
    HRESULT expected;
  } cases[] = {{&own, 20, MAPI_E_INVALID_ENTRYID},   {&own, 24, MAPI_E_NOT_FOUND},
               {&unknown, 20, MAPI_E_NOT_FOUND},     {&unknown, 19, MAPI_E_INVALID_ENTRYID},
               {&loaded, 0, MAPI_E_INVALID_ENTRYID}, {&loaded, 19, MAPI_E_INVALID_ENTRYID},
               {&noObject, 20, MAPI_E_NO_ACCESS},    {&loaded, 20, S_OK}};
  for (const auto& c : cases) {
    EXPECT_EQ(c.expected, OpenId(*c.id, c.size)) << c.size;
    ULONG_PTR ui = 0;
    EXPECT_EQ(c.expected,
              book->Details(&ui, nullptr, nullptr, c.size, Id(*c.id), nullptr, nullptr, nullptr, 0));
  }
  EXPECT_EQ(1u, log.Count("A.OpenEntry"));
}

TEST_F(Routing, ArgumentsAndResultGoThroughUnchanged) {
  auto* provider = new RecordingProvider;
  LoadObject(provider, 'R');
  Open();
  Bytes id(21, 'R');
  Bytes other(20, 'Z');
  ULONG number = 0;
  ULONG_PTR ui = 5;
  IUnknown* object = nullptr;
  ENTRYID* made = nullptr;
  EXPECT_EQ(kOddResult, book->OpenEntry(21, Id(id), &IID_IMailUser, 77, &number, &object));
  EXPECT_EQ((RecordingSlots::OpenArguments{21, Id(id), &IID_IMailUser, 77, &number, &object}),
            provider->open);
  EXPECT_EQ(kOddResult, book->NewEntry(1, 2, 21, Id(id), 20, Id(other), &number, &made));
  EXPECT_EQ((RecordingSlots::NewArguments{1, 2, 21, Id(id), 20, Id(other), &number, &made}),
            provider->created);
  WCHAR text[] = {0};
  EXPECT_EQ(kOddResult, book->Details(&ui, nullptr, &id, 21, Id(id), nullptr, &other, text, 9));
  EXPECT_EQ((RecordingSlots::DetailsArguments{&ui, nullptr, &id, 21, Id(id), nullptr, &other, text, 9}),
            provider->details);
  FakeSink sink;
  EXPECT_EQ(S_OK, book->Advise(21, Id(id), 3, &sink, &number));
  EXPECT_EQ((RecordingSlots::AdviseArguments{21, Id(id), 3, &sink}), provider->advise);
  EXPECT_EQ(1u, number) << "the book's number, not the provider's";
}

TEST_F(Routing, TheProviderLoadedLaterWinsASharedUid) {
  FakeScript& first = Load("A");
  FakeScript& second = Load("A");
  second.name = "B";
  Open();
  Bytes id = first.EntryId("user");
  EXPECT_EQ(S_OK, OpenId(id, Size(id)));
  EXPECT_EQ(1u, log.Count("B.OpenEntry"));
  EXPECT_EQ(0u, log.Count("A.OpenEntry"));
}

TEST_F(Routing, NewEntryTakesTheContainerElseTheTemplate) {
  Load("C");
  Load("T");
  Open();
  Bytes container(20, 'C');
  Bytes form(20, 'T');
  const struct {
    ULONG containerSize;
    ENTRYID* container;
    ULONG formSize;
    ENTRYID* form;
    HRESULT expected;
    const char* called;
  } cases[] = {{20, Id(container), 20, Id(form), S_OK, "C.NewEntry"},
               {0, Id(container), 20, Id(form), S_OK, "T.NewEntry"},
               {20, nullptr, 20, Id(form), S_OK, "T.NewEntry"},
               {20, nullptr, 20, nullptr, MAPI_E_NO_SUPPORT, nullptr},
               {0, Id(container), 0, nullptr, MAPI_E_INVALID_PARAMETER, nullptr},
               {0, nullptr, 0, Id(form), MAPI_E_INVALID_PARAMETER, nullptr},
               {19, Id(container), 20, Id(form), MAPI_E_INVALID_ENTRYID, nullptr}};
  for (const auto& c : cases) {
    log.lines.clear();
    ULONG size = 0;
    ENTRYID* made = nullptr;
    EXPECT_EQ(c.expected,
              book->NewEntry(0, 0, c.containerSize, c.container, c.formSize, c.form, &size, &made));
    MapiBuffer<ENTRYID> owned(made);
    if (c.called != nullptr) {
      EXPECT_EQ(1u, log.Count(c.called));
    } else {
      EXPECT_TRUE(log.lines.empty());
    }
  }
}

TEST_F(Routing, AThrowingProviderIsACodeAndNothingStays) {
  FakeScript& script = Load("A");
  Open();
  Bytes id(20, 'A');
  using Throws = FakeAnswer::Throws;
  const std::pair<Throws, HRESULT> cases[] = {{Throws::kInteger, MAPI_E_CALL_FAILED},
                                              {Throws::kRuntimeError, MAPI_E_CALL_FAILED},
                                              {Throws::kBadAlloc, MAPI_E_NOT_ENOUGH_MEMORY}};
  for (const auto& [thrown, expected] : cases) {
    for (const char* operation : {"OpenEntry", "NewEntry", "Details", "Advise"})
      script.answers[operation] = {S_OK, thrown};
    ULONG number = 5;
    ULONG_PTR ui = 0;
    ENTRYID* made = nullptr;
    FakeSink sink;
    EXPECT_EQ(expected, OpenId(id, 20));
    EXPECT_EQ(expected, book->NewEntry(0, 0, 20, Id(id), 0, nullptr, &number, &made));
    EXPECT_EQ(expected, book->Details(&ui, nullptr, nullptr, 20, Id(id), nullptr, nullptr, nullptr, 0));
    EXPECT_EQ(expected, book->Advise(20, Id(id), 1, &sink, &number));
    EXPECT_EQ(0u, number);
    EXPECT_EQ(1u, sink.references);
  }
}

TEST_F(Routing, NullOpensTheRootWhateverTheSize) {
  Open();
  for (const ULONG size : {ULONG{0}, ULONG{20}, ULONG{999}}) {
    ULONG type = 0;
    ComPtr<IUnknown> root;
    ASSERT_EQ(S_OK, book->OpenEntry(size, nullptr, &IID_IMailUser, 0, &type, root.Put()));
    EXPECT_EQ(MAPI_ABCONT, type);
    ComPtr<IUnknown> asContainer;
    EXPECT_EQ(S_OK, root->QueryInterface(IID_IABContainer, reinterpret_cast<void**>(asContainer.Put())));
  }
  ULONG type = 5;
  EXPECT_EQ(MAPI_E_INVALID_PARAMETER, book->OpenEntry(0, nullptr, nullptr, 0, &type, nullptr));
  EXPECT_EQ(5u, type);
}

TEST_F(Routing, TheSettingsAreNobodysToReadOrWrite) {
  Open();
  MAPIERROR* error = reinterpret_cast<MAPIERROR*>(this);
  EXPECT_EQ(S_OK, book->GetLastError(MAPI_E_NO_SUPPORT, 0, &error));
  EXPECT_EQ(reinterpret_cast<MAPIERROR*>(this), error);
  SPropTagArray tags = {1, {PR_AB_DEFAULT_PAB}};
  ULONG count = 0;
  SPropValue* values = nullptr;
  EXPECT_EQ(MAPI_E_NO_SUPPORT, book->GetProps(&tags, MAPI_UNICODE, &count, &values));
  EXPECT_EQ(MAPI_E_NO_SUPPORT, book->DeleteProps(&tags, nullptr));
  EXPECT_EQ(MAPI_E_NO_SUPPORT, book->SetProps(0, nullptr, nullptr));
  EXPECT_EQ(MAPI_E_NO_SUPPORT,
            book->CopyTo(0, nullptr, nullptr, 0, nullptr, &IID_IMAPIProp, this, 0, nullptr));
  EXPECT_EQ(MAPI_E_NO_SUPPORT, book->SaveChanges(0));
  Bytes id(20, 'A');
  ULONG same = 9;
  EXPECT_EQ(MAPI_E_UNKNOWN_ENTRYID, book->CompareEntryIDs(20, Id(id), 20, Id(id), 0, &same));
  EXPECT_EQ(9u, same);
}

TEST_F(Routing, InterfacesAndTheSessionsEnd) {
  Load("A", {{"box", AB_MODIFIABLE | AB_RECIPIENTS, 0}});
  const ComPtr<CAddrBook> held(ComPtr<CAddrBook>::Share(&Open()));
  for (const IID& iid : {IID_IUnknown, IID_IMAPIProp, IID_IAddrBook}) {
    ComPtr<IUnknown> object;
    EXPECT_EQ(S_OK, held->QueryInterface(iid, reinterpret_cast<void**>(object.Put())));
    EXPECT_EQ(static_cast<IUnknown*>(held.Get()), object.Get());
  }
  void* out = this;
  EXPECT_EQ(MAPI_E_INTERFACE_NOT_SUPPORTED, held->QueryInterface(IID_IMailUser, &out));
  EXPECT_EQ(nullptr, out);
  EXPECT_EQ(MAPI_E_INVALID_PARAMETER, held->QueryInterface(IID_IUnknown, nullptr));
  ULONG type = 0;
  ComPtr<IUnknown> root;
  ASSERT_EQ(S_OK, held->OpenEntry(0, nullptr, nullptr, 0, &type, root.Put()));

  EndSession();
  EXPECT_EQ("closed", profile.state);
  Bytes id(20, 'A');
  ULONG number = 5;
  ULONG_PTR ui = 0;
  ENTRYID* made = nullptr;
  ADRLIST recipients = {};
  ComPtr<IUnknown> object;
  FakeSink sink;
  const HRESULT ended[] = {held->QueryInterface(IID_IUnknown, &out),
                           held->OpenEntry(20, Id(id), nullptr, 0, &type, object.Put()),
                           held->OpenEntry(0, nullptr, nullptr, 0, &type, object.Put()),
                           held->Advise(20, Id(id), 1, &sink, &number),
                           held->NewEntry(0, 0, 20, Id(id), 0, nullptr, &number, &made),
                           held->Details(&ui, nullptr, nullptr, 20, Id(id), nullptr, nullptr, nullptr, 0),
                           held->PrepareRecips(0, nullptr, &recipients)};
  for (const HRESULT hr : ended) EXPECT_EQ(MAPI_E_END_OF_SESSION, hr);
  EXPECT_EQ(nullptr, out);
  EXPECT_EQ(0u, number);

  // Everything else answers as ever, without the providers.
  EXPECT_EQ(MAPI_E_NOT_FOUND, held->Unadvise(1));
  EXPECT_EQ(MAPI_E_CALL_FAILED, held->SetPAB(20, Id(id)));
  RowSetPtr path;
  EXPECT_EQ(S_OK, held->GetSearchPath(0, path.Put()));
  EXPECT_EQ(1u, path->cRows);
  EXPECT_TRUE(FAILED(held->GetPAB(&number, &made)));
  ComPtr<IMAPITable> table;
  auto* container = static_cast<IABContainer*>(root.Get());
  EXPECT_EQ(S_OK, container->GetHierarchyTable(CONVENIENT_DEPTH, table.Put()));
  EXPECT_EQ(S_OK, table->GetRowCount(0, &number));
  EXPECT_EQ(0u, number);
}

}  // namespace
}  // namespace orv::test
