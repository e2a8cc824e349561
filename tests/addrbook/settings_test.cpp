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
    EXPECT_EQ(S_OK, hr);
    return PathOf(rows.Get());
  }
  Bytes Pab(HRESULT expected = S_OK) { return Default(&CAddrBook::GetPAB, expected); }
  Bytes Dir(HRESULT expected = S_OK) { return Default(&CAddrBook::GetDefaultDir, expected); }
  HRESULT SetPab(Bytes id) { return book->SetPAB(Size(id), Id(id)); }
  HRESULT SetDir(Bytes id) { return book->SetDefaultDir(Size(id), Id(id)); }
  HRESULT SetPath(std::vector<SPropValue> firsts) {
    MapiBuffer<SRowSet> rows;
    EXPECT_EQ(S_OK, rows.Allocate(CbNewSRowSet(firsts.size())));
    for (SPropValue& first : firsts) rows->aRow[rows->cRows++] = {0, first.ulPropTag == 0 ? 0u : 1u, &first};
    return book->SetSearchPath(0, rows.Get());
  }
  static SPropValue First(ULONG tag, Bytes& id) {
    SPropValue value = {};
    value.ulPropTag = tag;
    value.Value.bin = Binary(id);
    return value;
  }

 private:
  Bytes Default(HRESULT (STDMETHODCALLTYPE CAddrBook::*get)(ULONG*, ENTRYID**), HRESULT expected) {
    ULONG size = 5;
    MapiBuffer<ENTRYID> id;
    EXPECT_EQ(expected, (book.Get()->*get)(&size, id.Put()));
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
    EXPECT_EQ(c.expected, Path());
    book->Shutdown();
    EXPECT_EQ(1, profile.saves);
    EXPECT_EQ(c.written ? std::vector<ULONG>{PR_AB_SEARCH_PATH} : std::vector<ULONG>(), profile.savedTags);
    EXPECT_EQ(c.written ? c.expected : std::vector<Bytes>(), profile.savedPath);
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
      EXPECT_EQ(noTable ? profile.searchPath : std::vector<Bytes>(), Path());
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
  EXPECT_EQ(a.EntryId("mine"), Pab());
  EXPECT_EQ(a.EntryId("first"), Dir()) << "the stored one has no recipients";
  EXPECT_EQ(a.EntryId("first"), Dir());
  EndSession();
  EXPECT_TRUE(profile.savedTags.empty()) << "a fallback is not written";
}

TEST_F(Settings, AFallbackClearsTheMarkOfWhatItReplaces) {
  FakeScript& a = Load("A", {{"mine", kBoth, 0}, {"other", kBoth, 0}});
  profile.saveResult = MAPI_E_CALL_FAILED;
  Open();
  ASSERT_EQ(S_OK, SetPab(a.EntryId("other")));
  a.nodes["other"].containerFlags = 0;
  EXPECT_EQ(a.EntryId("mine"), Pab());
  ASSERT_EQ(S_OK, SetDir(a.EntryId("mine")));
  book->Shutdown();
  EndSession();
  EXPECT_EQ(1, profile.saves) << "settings are written once, and forgotten if that fails";
  EXPECT_EQ("closed", profile.state);
  EXPECT_EQ(std::vector<ULONG>{PR_AB_DEFAULT_DIR}, profile.savedTags);
}

TEST_F(Settings, DefaultsThatAreNowhereFailWithClearedOuts) {
  FakeScript& a = Load("A", {{"dir", AB_RECIPIENTS, 0}});
  Open();
  EXPECT_EQ(Bytes(), Pab(MAPI_E_CALL_FAILED)) << "the hierarchy ran out of rows";
  a.answers["GetProps"].result = MAPI_E_NETWORK_ERROR;
  EXPECT_EQ(Bytes(), Pab(MAPI_E_NETWORK_ERROR));
}

TEST_F(Settings, SettingADefaultChecksTheContainer) {
  FakeScript& a = Load("A", {{"mod", AB_MODIFIABLE, 0}, {"dir", AB_RECIPIENTS, 0}});
  Open();
  Bytes mod = a.EntryId("mod");
  const HRESULT refused[] = {book->SetPAB(0, Id(mod)), book->SetPAB(20, nullptr), SetPab(a.EntryId("dir")),
                             SetDir(mod), SetPab(Bytes(20, 'Z'))};
  for (const HRESULT hr : refused) EXPECT_EQ(MAPI_E_CALL_FAILED, hr);
  EXPECT_EQ(S_OK, SetPab(mod));
  EXPECT_EQ(S_OK, SetDir(a.EntryId("dir")));
  EndSession();
  EXPECT_EQ((std::vector<ULONG>{PR_AB_DEFAULT_PAB, PR_AB_DEFAULT_DIR}), profile.savedTags);
}

TEST_F(Settings, SetSearchPathKeepsWhatIsGoodInRowOrder) {
  FakeScript& a =
      Load("A", {{"one", AB_RECIPIENTS, 0}, {"two", AB_RECIPIENTS, 0}, {"mod", AB_MODIFIABLE, 0}});
  Open();
  Bytes one = a.EntryId("one"), two = a.EntryId("two"), mod = a.EntryId("mod");
  const std::vector<Bytes> before = Path();
  EXPECT_EQ(MAPI_E_INVALID_PARAMETER, book->SetSearchPath(0, nullptr));
  EXPECT_EQ(MAPI_E_INVALID_PARAMETER, SetPath({}));
  EXPECT_EQ(MAPI_E_INVALID_PARAMETER,
            SetPath({First(PR_RECORD_KEY, one), First(PR_ENTRYID, mod), SPropValue{}}));
  EXPECT_EQ(before, Path());
  EXPECT_EQ(S_OK, SetPath({First(PR_ENTRYID, two), First(PR_RECORD_KEY, one), First(PR_ENTRYID, one)}));
  EXPECT_EQ((std::vector<Bytes>{two, one}), Path());
  EndSession();
  EXPECT_EQ((std::vector<Bytes>{two, one}), profile.savedPath);
}

TEST_F(Settings, WithoutProvidersTheBookComesUnrepairedAndWithoutAReference) {
  profile.searchPath = {Bytes(20, 'Z')};
  CAddrBook* created = nullptr;
  ASSERT_EQ(S_OK, CAddrBook::Create(profile.Open(), nullptr, &created));
  EXPECT_EQ(1u, created->AddRef());
  book = ComPtr<CAddrBook>::Adopt(created);
  EXPECT_EQ(profile.searchPath, Path());
  ADRLIST none = {};
  EXPECT_EQ(S_OK, book->PrepareRecips(0, nullptr, &none));
  EXPECT_EQ(0u, book.Detach()->Release());
  EXPECT_EQ("closed", profile.state) << "its only reference was the one added";
}

}  // namespace
}  // namespace orv::test
