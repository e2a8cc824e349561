// The three settings: what is loaded, repaired, found, and what of it is written at the session's end.
#include "tests/addrbook/book_fixture.h"

namespace orv::test {
namespace {

constexpr ULONG kBoth = AB_RECIPIENTS | AB_MODIFIABLE;

class Settings : public BookTest {
 protected:
  std::vector<Bytes> Path() {
    RowSetPtr rows;
    const HRESULT hr = book->GetSearchPath(0, rows.Put());
    if (hr == MAPI_E_NOT_FOUND) return {};
    EXPECT_EQ(hr, S_OK);
    return PathOf(rows.Get());
  }
  Bytes Pab(HRESULT expected = S_OK) { return Default(&CAddrBook::GetPAB, expected); }
  Bytes Dir(HRESULT expected = S_OK) { return Default(&CAddrBook::GetDefaultDir, expected); }
  HRESULT SetPab(Bytes id) { return book->SetPAB(Size(id), Id(id)); }
  HRESULT SetDir(Bytes id) { return book->SetDefaultDir(Size(id), Id(id)); }
  HRESULT SetPath(std::vector<SPropValue> firsts) {
    MapiBuffer<SRowSet> rows;
    EXPECT_EQ(rows.Allocate(CbNewSRowSet(firsts.size())), S_OK);
    for (SPropValue& first : firsts) rows->aRow[rows->cRows++] = {0, first.ulPropTag == 0 ? 0u : 1u, &first};
    return book->SetSearchPath(0, rows.Get());
  }

 private:
  Bytes Default(HRESULT (STDMETHODCALLTYPE CAddrBook::*get)(ULONG*, ENTRYID**), HRESULT expected) {
    ULONG size = 5;
    MapiBuffer<ENTRYID> id;
    EXPECT_EQ((book.Get()->*get)(&size, id.Put()), expected);
    EXPECT_TRUE(id || size == 0);
    const auto* bytes = reinterpret_cast<const BYTE*>(id.Get());
    return id ? Bytes(bytes, bytes + size) : Bytes();
  }
};

TEST_F(Settings, ASearchPathIsRepairedAtCreation) {
  FakeScript& a = Load("A", {{"one", AB_RECIPIENTS, 0}, {"two", kBoth, 1}, {"mod", AB_MODIFIABLE, 0}});
  FakeScript& b = Load("B", {{"three", AB_RECIPIENTS, 0}});
  const Bytes one = a.EntryId("one"), two = a.EntryId("two"), mod = a.EntryId("mod"), gone = Bytes(20, 'Z');
  const Bytes three = b.EntryId("three");
  // The rebuilt path follows the hierarchy: the provider loaded last comes first.
  const std::vector<Bytes> rebuilt = {three, one, two};
  const struct {
    const char* what;
    bool stored;
    std::vector<Bytes> path;
    std::vector<Bytes> expected;
    bool written;
  } cases[] = {{"all kept", true, {two, one}, {two, one}, false},
               {"some kept, order kept", true, {gone, two, mod, one}, {two, one}, true},
               {"none kept", true, {gone, mod}, rebuilt, false},
               {"empty", true, {}, rebuilt, false},
               {"missing", false, {}, rebuilt, false}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    profile = {};
    profile.hasSearchPath = c.stored;
    profile.searchPath = c.path;
    Open();
    EXPECT_EQ(Path(), c.expected);
    book->Shutdown();
    EXPECT_EQ(profile.saves, 1);
    EXPECT_EQ(profile.savedTags, c.written ? std::vector<ULONG>{PR_AB_SEARCH_PATH} : std::vector<ULONG>());
    EXPECT_EQ(profile.savedPath, c.written ? c.expected : std::vector<Bytes>());
    book.Reset();
  }
}

TEST_F(Settings, ARepairThatFailsIsNotTheLogonsFailure) {
  FakeScript& a = Load("A", {{"one", AB_RECIPIENTS, 0}});
  profile.searchPath = {Bytes(20, 'Z')};
  using Throws = FakeAnswer::Throws;
  for (const FakeAnswer& answer :
       {FakeAnswer{MAPI_E_NETWORK_ERROR, Throws::kNothing}, FakeAnswer{S_OK, Throws::kRuntimeError}}) {
    for (const char* operation : {"GetProps", "OpenEntry"}) {
      SCOPED_TRACE(operation);
      a.answers = {{operation, answer}};
      Open();
      // Without the provider's own row there is no table; without its containers an empty path is found.
      const bool noTable = std::string(operation) == "GetProps";
      EXPECT_EQ(Path(), noTable ? profile.searchPath : std::vector<Bytes>());
      EndSession();
      EXPECT_TRUE(profile.savedTags.empty());
      list = CABServiceList::Create();
      LoadObject(MakeFakeProvider(&a, kOwnBuffers), 'A');
    }
  }
}

TEST_F(Settings, AStoredDefaultIsGivenWhileItOpens) {
  FakeScript& a = Load("A", {{"first", kBoth, 0}, {"mine", AB_MODIFIABLE, 0}, {"dir", AB_RECIPIENTS, 0}});
  profile.pab = a.EntryId("mine");
  profile.defaultDir = a.EntryId("mine");
  Open();
  EXPECT_EQ(Pab(), a.EntryId("mine"));
  EXPECT_EQ(Dir(), a.EntryId("first")) << "the stored one has no recipients";
  // Found, but not to be opened and so not to be kept: the answer is the same.
  a.answers["Object:GetProps"].result = MAPI_E_NETWORK_ERROR;
  EXPECT_EQ(Dir(), a.EntryId("first"));
  EndSession();
  EXPECT_TRUE(profile.savedTags.empty()) << "a fallback is not written";
}

TEST_F(Settings, AFallbackClearsTheMarkOfWhatItReplaces) {
  FakeScript& a = Load("A", {{"mine", kBoth, 0}, {"other", kBoth, 0}});
  profile.saveResult = MAPI_E_CALL_FAILED;
  Open();
  ASSERT_EQ(SetPab(a.EntryId("other")), S_OK);
  a.nodes["other"].containerFlags = 0;
  EXPECT_EQ(Pab(), a.EntryId("mine"));
  ASSERT_EQ(SetDir(a.EntryId("mine")), S_OK);
  book->Shutdown();
  EndSession();
  EXPECT_EQ(profile.saves, 1) << "settings are written once, and forgotten if that fails";
  EXPECT_EQ(profile.state, "closed");
  EXPECT_EQ(profile.savedTags, std::vector<ULONG>{PR_AB_DEFAULT_DIR});
}

TEST_F(Settings, DefaultsThatAreNowhereFailWithClearedOuts) {
  FakeScript& a = Load("A", {{"dir", AB_RECIPIENTS, 0}});
  Open();
  EXPECT_EQ(Pab(MAPI_E_CALL_FAILED), Bytes()) << "the hierarchy ran out of rows";
  a.answers["GetProps"].result = MAPI_E_NETWORK_ERROR;
  EXPECT_EQ(Pab(MAPI_E_NETWORK_ERROR), Bytes());
}

TEST_F(Settings, SettingADefaultChecksTheContainer) {
  FakeScript& a = Load("A", {{"mod", AB_MODIFIABLE, 0}, {"dir", AB_RECIPIENTS, 0}});
  Open();
  Bytes mod = a.EntryId("mod");
  const HRESULT refused[] = {book->SetPAB(0, Id(mod)), book->SetPAB(20, nullptr), SetPab(a.EntryId("dir")),
                             SetDir(mod), SetPab(Bytes(20, 'Z'))};
  for (const HRESULT hr : refused) EXPECT_EQ(hr, MAPI_E_CALL_FAILED);
  EXPECT_EQ(SetPab(mod), S_OK);
  EXPECT_EQ(SetDir(a.EntryId("dir")), S_OK);
  EndSession();
  EXPECT_EQ(profile.savedTags, (std::vector<ULONG>{PR_AB_DEFAULT_PAB, PR_AB_DEFAULT_DIR}));
}

TEST_F(Settings, SetSearchPathKeepsWhatIsGoodInRowOrder) {
  FakeScript& a =
      Load("A", {{"one", AB_RECIPIENTS, 0}, {"two", AB_RECIPIENTS, 0}, {"mod", AB_MODIFIABLE, 0}});
  Open();
  Bytes one = a.EntryId("one"), two = a.EntryId("two"), mod = a.EntryId("mod");
  const std::vector<Bytes> before = Path();
  EXPECT_EQ(book->SetSearchPath(0, nullptr), MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(SetPath({}), MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(SetPath({Binary(PR_RECORD_KEY, one.data(), one.size()),
                     Binary(PR_ENTRYID, mod.data(), mod.size()), SPropValue{}}),
            MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(Path(), before);
  EXPECT_EQ(
      SetPath({Binary(PR_ENTRYID, two.data(), two.size()), Binary(PR_RECORD_KEY, one.data(), one.size()),
               Binary(PR_ENTRYID, one.data(), one.size())}),
      S_OK);
  EXPECT_EQ(Path(), (std::vector<Bytes>{two, one}));
  EndSession();
  EXPECT_EQ(profile.savedPath, (std::vector<Bytes>{two, one}));
}

TEST_F(Settings, OneBadContainerSpoilsNoSearchPath) {
  FakeScript& a = Load("A", {{"one", AB_RECIPIENTS, 0}, {"two", AB_RECIPIENTS, 0}});
  FakeScript& b = Load("B", {{"bad", AB_RECIPIENTS, 0}});
  Bytes bad = b.EntryId("bad"), one = a.EntryId("one"), two = a.EntryId("two");
  for (const char* operation : {"OpenEntry", "Object:GetProps"}) {
    b.answers = {{operation, {S_OK, FakeAnswer::Throws::kBadAlloc}}};
    profile.searchPath = {bad, one};
    Open();
    EXPECT_EQ(Path(), std::vector<Bytes>{one});
    EXPECT_EQ(
        SetPath({Binary(PR_ENTRYID, bad.data(), bad.size()), Binary(PR_ENTRYID, two.data(), two.size())}),
        S_OK);
    EXPECT_EQ(Path(), std::vector<Bytes>{two});
    book->Shutdown();
    book.Reset();
  }
}

TEST_F(Settings, WithoutProvidersTheBookComesUnrepairedAndWithoutAReference) {
  profile.searchPath = {Bytes(20, 'Z')};
  CAddrBook* created = nullptr;
  ASSERT_EQ(CAddrBook::Create(profile.Open(), nullptr, &created), S_OK);
  EXPECT_EQ(created->AddRef(), 1u);
  book = ComPtr<CAddrBook>::Adopt(created);
  EXPECT_EQ(Path(), profile.searchPath);
  ADRLIST none = {};
  EXPECT_EQ(book->PrepareRecips(0, nullptr, &none), S_OK);
  EXPECT_EQ(book.Detach()->Release(), 0u);
  EXPECT_EQ(profile.state, "closed") << "its only reference was the one added";
}

}  // namespace
}  // namespace orv::test
