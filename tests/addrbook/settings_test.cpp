// The three settings: what is loaded, repaired, found, and what of it is written at the session's end.
#include "tests/addrbook/book_fixture.h"

namespace orv::test {
namespace {

constexpr ULONG kBoth = AB_RECIPIENTS | AB_MODIFIABLE;
const Bytes kGone(20, 'Z');

class Settings : public BookTest {
 protected:
  std::vector<Bytes> Path() {
    std::vector<Bytes> path;
    RowSetPtr rows;
    const HRESULT hr = book->GetSearchPath(0, rows.Put());
    EXPECT_EQ(hr, rows ? S_OK : MAPI_E_NOT_FOUND);
    for (ULONG i = 0; rows && i < rows->cRows; ++i) {
      const SRow& row = rows->aRow[i];
      EXPECT_EQ(row.cValues, 1u);
      EXPECT_EQ(row.lpProps->ulPropTag, PR_ENTRYID);
      path.emplace_back(row.lpProps->Value.bin.lpb, row.lpProps->Value.bin.lpb + row.lpProps->Value.bin.cb);
    }
    return path;
  }
  Bytes Pab(HRESULT expected = S_OK) { return Default(&CAddrBook::GetPAB, expected); }
  Bytes Dir(HRESULT expected = S_OK) { return Default(&CAddrBook::GetDefaultDir, expected); }
  HRESULT SetPab(Bytes id) { return book->SetPAB(Size(id), Id(id)); }
  HRESULT SetDir(Bytes id) { return book->SetDefaultDir(Size(id), Id(id)); }
  // Rows of an identifier each, or of none where it is empty; with a column before it that is no identifier.
  HRESULT SetPath(const std::vector<Bytes>& ids, ULONG tag = PR_ENTRYID) {
    MapiBuffer<SRowSet> rows;
    EXPECT_EQ(rows.Allocate(CbNewSRowSet(ids.size())), S_OK);
    std::vector<SPropValue> values;
    for (const Bytes& id : ids)
      values.push_back(Binary(values.empty() ? tag : PR_ENTRYID, id.data(), id.size()));
    for (SPropValue& value : values)
      rows->aRow[rows->cRows++] = {0, value.Value.bin.cb == 0 ? 0u : 1u, &value};
    return book->SetSearchPath(0, rows.Get());
  }
  // The next session over the same provider.
  void EndSession(FakeScript& script) {
    BookTest::EndSession();
    list = CABServiceList::Create();
    LoadObject(MakeFakeProvider(&script, kOwnBuffers), static_cast<BYTE>(script.name.front()));
  }
  using BookTest::EndSession;

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
  const Bytes one = a.EntryId("one"), two = a.EntryId("two"), mod = a.EntryId("mod");
  // The rebuilt path follows the hierarchy: the provider loaded last comes first.
  const std::vector<Bytes> rebuilt = {b.EntryId("three"), one, two};
  using Stored = std::map<ULONG, std::vector<Bytes>>;
  const struct {
    const char* what;
    Stored stored;
    std::vector<Bytes> expected;
    bool written;
  } cases[] = {{"all kept", {{PR_AB_SEARCH_PATH, {two, one}}}, {two, one}, false},
               {"some kept, order kept", {{PR_AB_SEARCH_PATH, {kGone, two, mod, one}}}, {two, one}, true},
               {"none kept", {{PR_AB_SEARCH_PATH, {kGone, mod}}}, rebuilt, false},
               {"empty", {{PR_AB_SEARCH_PATH, {}}}, rebuilt, false},
               {"missing", {}, rebuilt, false}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    profile = {};
    profile.settings = c.stored;
    Open();
    EXPECT_EQ(Path(), c.expected);
    book->Shutdown();
    EXPECT_EQ(profile.saves, 1);
    EXPECT_EQ(profile.savedTags, c.written ? std::vector<ULONG>{PR_AB_SEARCH_PATH} : std::vector<ULONG>());
    book.Reset();
  }
}

TEST_F(Settings, ARepairThatFailsIsNotTheLogonsFailure) {
  FakeScript& a = Load("A", {{"one", AB_RECIPIENTS, 0}});
  const std::vector<Bytes> stored = profile.settings[PR_AB_SEARCH_PATH] = {kGone};
  for (const FakeAnswer& answer :
       {FakeAnswer{MAPI_E_NETWORK_ERROR}, FakeAnswer{S_OK, Throws::kRuntimeError}}) {
    for (const char* operation : {"GetProps", "OpenEntry"}) {
      SCOPED_TRACE(operation);
      a.answers = {{operation, answer}};
      Open();
      // Without the provider's own row there is no table; without its containers an empty path is found.
      EXPECT_EQ(Path(), std::string(operation) == "GetProps" ? stored : std::vector<Bytes>());
      EndSession(a);
      EXPECT_TRUE(profile.savedTags.empty());
    }
  }
}

TEST_F(Settings, AStoredDefaultIsGivenWhileItOpens) {
  FakeScript& a = Load("A", {{"first", kBoth, 0}, {"mine", AB_MODIFIABLE, 0}});
  const Bytes first = a.EntryId("first"), mine = a.EntryId("mine");
  profile.settings = {{PR_AB_DEFAULT_PAB, {mine}}, {PR_AB_DEFAULT_DIR, {mine}}};
  Open();
  EXPECT_EQ(Pab(), mine);
  EXPECT_EQ(Dir(), first) << "the stored one has no recipients";
  // Found, but not to be opened and so not to be kept: the answer is the same.
  a.answers["Object:GetProps"].result = MAPI_E_NETWORK_ERROR;
  EXPECT_EQ(Dir(), first);
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
  EXPECT_FALSE(profile.isOpen);
  EXPECT_EQ(profile.savedTags, std::vector<ULONG>{PR_AB_DEFAULT_DIR});
}

TEST_F(Settings, SettingADefaultChecksTheContainer) {
  FakeScript& a = Load("A", {{"mod", AB_MODIFIABLE, 0}, {"dir", AB_RECIPIENTS, 0}});
  Open();
  Bytes mod = a.EntryId("mod"), dir = a.EntryId("dir");
  const HRESULT refused[] = {book->SetPAB(0, Id(mod)), book->SetPAB(20, nullptr), SetPab(dir), SetDir(mod),
                             SetPab(kGone)};
  for (const HRESULT hr : refused) EXPECT_EQ(hr, MAPI_E_CALL_FAILED);
  EXPECT_EQ(SetPab(mod), S_OK);
  EXPECT_EQ(SetDir(dir), S_OK);
  // Nowhere to be found any more: the hierarchy runs out of rows, or there is none.
  a.nodes["mod"].containerFlags = 0;
  EXPECT_EQ(Pab(MAPI_E_CALL_FAILED), Bytes());
  a.answers["GetProps"].result = MAPI_E_NETWORK_ERROR;
  EXPECT_EQ(Pab(MAPI_E_NETWORK_ERROR), Bytes());
  EndSession();
  EXPECT_EQ(profile.savedTags, (std::vector<ULONG>{PR_AB_DEFAULT_PAB, PR_AB_DEFAULT_DIR}));
}

TEST_F(Settings, SetSearchPathKeepsWhatIsGoodInRowOrder) {
  FakeScript& a =
      Load("A", {{"one", AB_RECIPIENTS, 0}, {"two", AB_RECIPIENTS, 0}, {"mod", AB_MODIFIABLE, 0}});
  FakeScript& b = Load("B", {{"bad", AB_RECIPIENTS, 0}});
  const Bytes one = a.EntryId("one"), two = a.EntryId("two"), mod = a.EntryId("mod"), bad = b.EntryId("bad");
  Open();
  const std::vector<Bytes> before = Path();
  EXPECT_EQ(book->SetSearchPath(0, nullptr), MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(SetPath({}), MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(SetPath({one, mod, {}}, PR_RECORD_KEY), MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(Path(), before);
  EXPECT_EQ(SetPath({one, two, mod, one}, PR_RECORD_KEY), S_OK);
  EXPECT_EQ(Path(), (std::vector<Bytes>{two, one}));
  // One that throws spoils neither a path that is set nor one that is repaired.
  for (const char* operation : {"OpenEntry", "Object:GetProps"}) {
    b.answers = {{operation, {S_OK, Throws::kBadAlloc}}};
    EXPECT_EQ(SetPath({bad, two}), S_OK);
    EXPECT_EQ(Path(), std::vector<Bytes>{two});
    book->Shutdown();
    profile.settings[PR_AB_SEARCH_PATH] = {bad, one};
    Open();
    EXPECT_EQ(Path(), std::vector<Bytes>{one});
  }
}

TEST_F(Settings, WithoutProvidersTheBookComesUnrepairedAndWithoutAReference) {
  profile.settings[PR_AB_SEARCH_PATH] = {kGone};
  CAddrBook* created = nullptr;
  ASSERT_EQ(CAddrBook::Create(profile.Open(), nullptr, &created), S_OK);
  EXPECT_EQ(created->AddRef(), 1u);
  book = ComPtr<CAddrBook>::Adopt(created);
  EXPECT_EQ(Path(), std::vector<Bytes>{kGone});
  ADRLIST none = {};
  EXPECT_EQ(book->PrepareRecips(0, nullptr, &none), S_OK);
  EXPECT_EQ(book.Detach()->Release(), 0u);
  EXPECT_FALSE(profile.isOpen) << "its only reference was the one added";
}

}  // namespace
}  // namespace orv::test
