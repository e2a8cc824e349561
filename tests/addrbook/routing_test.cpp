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
    EXPECT_EQ((Results{expected, S_OK, expected}), CallAll(id, container))
        << id.size() << " of " << id.back();
  }
  EXPECT_EQ(1u, log.Count("A.OpenEntry"));
}

TEST_F(Routing, ResultsGoThroughUnchangedAndTheConnectionIsOurs) {
  constexpr HRESULT kOddResult = static_cast<HRESULT>(0x80040999);
  FakeScript& script = Load("A");
  Open();
  ULONG number = 0;
  FakeSink sink;
  Bytes id = script.EntryId("user");
  for (const ULONG connection : {1u, 2u}) {
    EXPECT_EQ(S_OK, book->Advise(Size(id), Id(id), 3, &sink, &number));
    EXPECT_EQ(connection, number);
    EXPECT_EQ("user", script.advises.back().key);
    EXPECT_EQ(3u, script.advises.back().events);
  }
  for (const char* operation : {"OpenEntry", "NewEntry", "Details"})
    script.answers[operation].result = kOddResult;
  EXPECT_EQ((Results{kOddResult, kOddResult, kOddResult}), CallAll(id, id));
  EndSession();
  EXPECT_EQ(1u, sink.references);
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
    EXPECT_EQ(c.expected,
              book->NewEntry(0, 0, c.containerSize, c.container, c.formSize, c.form, &size, made.Put()));
    EXPECT_EQ(c.calls, log.lines);
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
    EXPECT_EQ((Results{expected, expected, expected}), CallAll(id, id));
    EXPECT_EQ(expected, book->Advise(20, Id(id), 1, &sink, &number));
    EXPECT_EQ(0u, number);
    EXPECT_EQ(1u, sink.references);
  }
}

TEST_F(Routing, NullOpensTheRootWhateverTheSize) {
  Open();
  ULONG type = 5;
  EXPECT_EQ(MAPI_E_INVALID_PARAMETER, book->OpenEntry(0, nullptr, nullptr, 0, &type, nullptr));
  EXPECT_EQ(5u, type);
  for (const ULONG size : {ULONG{0}, ULONG{20}, ULONG{999}}) {
    ComPtr<IUnknown> root;
    EXPECT_EQ(S_OK, book->OpenEntry(size, nullptr, &IID_IMailUser, 0, &type, root.Put()));
    EXPECT_EQ(MAPI_ABCONT, type);
  }
}

TEST_F(Routing, TheSettingsAreNobodysToReadOrWrite) {
  Open();
  SPropTagArray tags = {1, {PR_AB_DEFAULT_PAB}};
  ULONG number = 9;
  SPropValue* values = nullptr;
  const HRESULT refused[] = {book->GetProps(&tags, MAPI_UNICODE, &number, &values),
                             book->DeleteProps(&tags, nullptr), book->SetProps(0, nullptr, nullptr),
                             book->SaveChanges(0)};
  for (const HRESULT hr : refused) EXPECT_EQ(MAPI_E_NO_SUPPORT, hr);
  Bytes id(20, 'A');
  EXPECT_EQ(MAPI_E_UNKNOWN_ENTRYID, book->CompareEntryIDs(20, Id(id), 20, Id(id), 0, &number));
  EXPECT_EQ(9u, number);
}

TEST_F(Routing, AfterTheSessionsEndNothingReachesAProvider) {
  Load("A", {{"box", AB_MODIFIABLE | AB_RECIPIENTS, 0}});
  const ComPtr<CAddrBook> held(ComPtr<CAddrBook>::Share(&Open()));
  ULONG type = 0;
  ComPtr<IUnknown> root;
  ASSERT_EQ(S_OK, held->OpenEntry(0, nullptr, nullptr, 0, &type, root.Put()));

  EndSession();
  EXPECT_EQ("closed", profile.state);
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
