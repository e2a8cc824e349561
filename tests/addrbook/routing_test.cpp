// Who answers for an entry identifier, with which arguments, and what is left after the session's end.
#include "props/entry_id.h"
#include "tests/addrbook/book_fixture.h"

namespace orv::test {
namespace {

Bytes UserInfoId(BYTE flags, std::size_t size) {
  Bytes id(kUserInfoEntryId.begin(), kUserInfoEntryId.end());
  id[0] = flags;
  id.resize(size);
  return id;
}

using Results = std::vector<HRESULT>;

class Routing : public BookTest {
 protected:
  // OpenEntry, NewEntry and Details.
  Results CallAll(Bytes& id, Bytes& container) {
    ULONG_PTR ui = 0;
    ULONG size = 0;
    MapiBuffer<ENTRYID> made;
    return {OpenId(id, Size(id)),
            book->NewEntry(0, 0, Size(container), Id(container), 0, nullptr, &size, made.Put()),
            book->Details(&ui, nullptr, nullptr, Size(id), Id(id), nullptr, nullptr, nullptr, 0)};
  }
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
  const std::pair<Bytes, HRESULT> cases[] = {{UserInfoId(0xFF, 20), MAPI_E_INVALID_ENTRYID},
                                             {UserInfoId(0xFF, 24), MAPI_E_NOT_FOUND},
                                             {Bytes(20, 'Z'), MAPI_E_NOT_FOUND},
                                             {Bytes(19, 'Z'), MAPI_E_INVALID_ENTRYID},
                                             {Bytes(19, 'A'), MAPI_E_INVALID_ENTRYID},
                                             {Bytes(20, 'N'), MAPI_E_NO_ACCESS},
                                             {Bytes(20, 'A'), S_OK}};
  for (const auto& [bytes, expected] : cases) {
    Bytes id = bytes;
    Bytes container(20, 'A');
    EXPECT_EQ(CallAll(id, container), (Results{expected, S_OK, expected}))
        << id.size() << " of " << id.back();
  }
  EXPECT_EQ(log.Count("A.OpenEntry"), 1u);
}

TEST_F(Routing, PointersThatLeadNowhereReachNoProvider) {
  Load("A");
  Open();
  Bytes id(20, 'A');
  ENTRYID* const good = Id(id);
  ENTRYID* const bad = Nowhere<ENTRYID>();
  ULONG number = 0;
  ULONG_PTR ui = 0;
  IUnknown* object = nullptr;
  ENTRYID* made = nullptr;
  FakeSink sink;
  SPropValue value = Binary(PR_ENTRYID, Nowhere<BYTE>(), 20);
  SRowSet path = {1, {{0, 1, &value}}};
  const HRESULT refused[] = {
      book->OpenEntry(20, bad, nullptr, 0, &number, &object),
      book->OpenEntry(20, good, Nowhere<IID>(), 0, &number, &object),
      book->OpenEntry(20, good, nullptr, 0, nullptr, &object),
      book->OpenEntry(20, good, nullptr, 0, &number, Nowhere<IUnknown*>()),
      book->Advise(20, bad, 1, &sink, &number),
      book->Advise(20, good, 1, Nowhere<IMAPIAdviseSink>(), &number),
      book->NewEntry(0, 0, 20, bad, 0, nullptr, &number, &made),
      book->NewEntry(0, 0, 20, good, 20, bad, &number, &made),
      book->NewEntry(0, 0, 20, good, 0, nullptr, Nowhere<ULONG>(), &made),
      book->NewEntry(0, 0, 20, good, 0, nullptr, &number, nullptr),
      book->Details(&ui, nullptr, nullptr, 20, bad, nullptr, nullptr, nullptr, 0),
      book->Details(&ui, nullptr, nullptr, 20, good, nullptr, nullptr, Nowhere<WCHAR>(), 0),
      book->SetPAB(20, bad),
      book->SetDefaultDir(20, bad),
      book->SetSearchPath(0, &path)};
  for (const HRESULT& hr : refused) EXPECT_EQ(hr, MAPI_E_INVALID_PARAMETER) << &hr - refused;
  EXPECT_EQ(log.lines, std::vector<std::string>());
}

TEST_F(Routing, ResultsGoThroughUnchangedAndTheConnectionIsOurs) {
  constexpr HRESULT kOddResult = static_cast<HRESULT>(0x80040999);
  FakeScript& script = Load("A");
  Open();
  ULONG number = 0;
  FakeSink sink;
  Bytes id = script.EntryId("user");
  for (const ULONG connection : {1u, 2u}) {
    EXPECT_EQ(book->Advise(Size(id), Id(id), 3, &sink, &number), S_OK);
    EXPECT_EQ(number, connection);
    EXPECT_EQ(script.advises.back().key, "user");
    EXPECT_EQ(script.advises.back().events, 3u);
  }
  for (const char* operation : {"OpenEntry", "NewEntry", "Details"})
    script.answers[operation].result = kOddResult;
  EXPECT_EQ(CallAll(id, id), (Results{kOddResult, kOddResult, kOddResult}));
  EndSession();
  EXPECT_EQ(sink.references, 1u);
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
    std::vector<std::string> calls;
  } cases[] = {{20, Id(container), 20, Id(form), S_OK, {"C.NewEntry"}},
               {0, Id(container), 20, Id(form), S_OK, {"T.NewEntry"}},
               {20, nullptr, 20, Id(form), S_OK, {"T.NewEntry"}},
               {20, nullptr, 20, nullptr, MAPI_E_NO_SUPPORT, {}},
               {0, Id(container), 0, nullptr, MAPI_E_INVALID_PARAMETER, {}},
               {0, nullptr, 0, Id(form), MAPI_E_INVALID_PARAMETER, {}},
               {19, Id(container), 20, Id(form), MAPI_E_INVALID_ENTRYID, {}}};
  for (const auto& c : cases) {
    log.lines.clear();
    ULONG size = 0;
    MapiBuffer<ENTRYID> made;
    EXPECT_EQ(book->NewEntry(0, 0, c.containerSize, c.container, c.formSize, c.form, &size, made.Put()),
              c.expected);
    EXPECT_EQ(log.lines, c.calls);
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
    FakeSink sink;
    EXPECT_EQ(CallAll(id, id), (Results{expected, expected, expected}));
    EXPECT_EQ(book->Advise(20, Id(id), 1, &sink, &number), expected);
    EXPECT_EQ(number, 0u);
    EXPECT_EQ(sink.references, 1u);
  }
}

TEST_F(Routing, NullOpensTheRootWhateverTheSize) {
  Open();
  ULONG type = 5;
  EXPECT_EQ(book->OpenEntry(0, nullptr, nullptr, 0, &type, nullptr), MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(type, 5u);
  for (const ULONG size : {ULONG{0}, ULONG{20}, ULONG{999}}) {
    ComPtr<IUnknown> root;
    EXPECT_EQ(book->OpenEntry(size, nullptr, &IID_IMailUser, 0, &type, root.Put()), S_OK);
    EXPECT_EQ(type, MAPI_ABCONT);
  }
}

TEST_F(Routing, AfterTheSessionsEndNothingReachesAProvider) {
  Load("A", {{"box", AB_MODIFIABLE | AB_RECIPIENTS, 0}});
  const ComPtr<CAddrBook> held(ComPtr<CAddrBook>::Share(&Open()));
  ULONG type = 0;
  ComPtr<IUnknown> root;
  ASSERT_EQ(held->OpenEntry(0, nullptr, nullptr, 0, &type, root.Put()), S_OK);

  EndSession();
  EXPECT_EQ(profile.state, "closed");
  Bytes id(20, 'A');
  ULONG number = 5;
  void* out = this;
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
  for (const HRESULT hr : ended) EXPECT_EQ(hr, MAPI_E_END_OF_SESSION);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(number, 0u);

  // Everything else answers as ever, without the providers.
  EXPECT_EQ(held->Unadvise(1), MAPI_E_NOT_FOUND);
  EXPECT_EQ(held->SetPAB(20, Id(id)), MAPI_E_CALL_FAILED);
  RowSetPtr path;
  EXPECT_EQ(held->GetSearchPath(0, path.Put()), S_OK);
  EXPECT_EQ(path->cRows, 1u);
  EXPECT_TRUE(FAILED(held->GetPAB(&number, &made)));
  ComPtr<IMAPITable> table;
  auto* container = static_cast<IABContainer*>(root.Get());
  EXPECT_EQ(container->GetHierarchyTable(CONVENIENT_DEPTH, table.Put()), S_OK);
  EXPECT_EQ(table->GetRowCount(0, &number), S_OK);
  EXPECT_EQ(number, 0u);
}

}  // namespace
}  // namespace orv::test
