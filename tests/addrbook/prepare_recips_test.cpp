// Recipients grouped by provider, completed, and written back; what is left of a list when a provider fails.
#include "props/prop_value.h"
#include "tests/addrbook/book_fixture.h"

namespace orv::test {
namespace {

// What a provider does with its recipients.
class PreparingScript final : public FakeScript {
 public:
  using FakeScript::FakeScript;

  void OnPrepare(ADRLIST* given) override {
    FakeScript::OnPrepare(given);
    for (ULONG i = 0; i < given->cEntries && replaces; ++i) {
      ADRENTRY& entry = given->aEntries[i];
      SPropValue* values = nullptr;
      ASSERT_EQ(S_OK, OrvAllocateBuffer(sizeof(SPropValue), reinterpret_cast<void**>(&values)));
      values->ulPropTag = PR_ROWID;
      values->Value.l = entry.rgPropVals[1].Value.l + 1000;
      OrvFreeBuffer(entry.rgPropVals);
      entry.cValues = 1;
      entry.rgPropVals = values;
    }
    while (given->cEntries > 0 && drops-- > 0) OrvFreeBuffer(given->aEntries[--given->cEntries].rgPropVals);
    if (claims != 0) given->cEntries = claims;
  }

  bool replaces = false;
  int drops = 0;
  ULONG claims = 0;
};

class PrepareRecips : public BookTest {
 protected:
  void TearDown() override { EndSession(); }

  PreparingScript& LoadPreparing(const std::string& name) {
    const auto fill = static_cast<BYTE>(name.front());
    preparing_.push_back(std::make_unique<PreparingScript>(name, FakeUid(fill), &log));
    LoadObject(MakeFakeProvider(preparing_.back().get(), kOwnBuffers), fill);
    return *preparing_.back();
  }

  // One recipient a letter of `owners`, numbered from 0; '-' has no identifier.
  void Recipients(const std::string& owners) {
    void* block = nullptr;
    ASSERT_EQ(S_OK, AllocateRoot(CbNewADRLIST(owners.size()), &block));
    recipients.Reset(static_cast<ADRLIST*>(block));
    for (const char owner : owners) {
      ADRENTRY& entry = recipients->aEntries[recipients->cEntries];
      MapiBuffer<SPropValue> values;
      ASSERT_EQ(S_OK, values.AllocateArray(3));
      values[0].ulPropTag = owner == '-' ? PR_RECORD_KEY : PR_ENTRYID;
      values[0].Value.bin.cb = 20;
      ASSERT_EQ(S_OK, values.More(20, &values[0].Value.bin.lpb));
      std::memset(values[0].Value.bin.lpb, owner, 20);
      values[1].ulPropTag = PR_ROWID;
      values[1].Value.l = static_cast<LONG>(recipients->cEntries++);
      values[2].ulPropTag = PR_RECIPIENT_TYPE;
      values[2].Value.l = MAPI_TO;
      entry.cValues = 3;
      entry.rgPropVals = values.Detach();
    }
  }

  std::vector<LONG> Numbers() const {
    std::vector<LONG> numbers;
    for (ULONG i = 0; i < recipients->cEntries; ++i) {
      const ADRENTRY& entry = recipients->aEntries[i];
      const SPropValue* number = FindValue(entry.rgPropVals, entry.cValues, PR_ROWID);
      numbers.push_back(number == nullptr ? -1 : number->Value.l);
    }
    return numbers;
  }

  AdrListPtr recipients;

 private:
  std::vector<std::unique_ptr<PreparingScript>> preparing_;
};

TEST_F(PrepareRecips, GroupsByProviderInListOrderWithTheUnclaimedLast) {
  Load("A");
  Load("B");
  Open();
  const struct {
    const char* owners;
    std::vector<LONG> expected;
  } cases[] = {{"ABABA", {1, 3, 0, 2, 4}},  // B was loaded last and comes first
               {"-AZB-B", {3, 5, 1, 0, 2, 4}},
               {"---", {0, 1, 2}},
               {"", {}}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.owners);
    log.lines.clear();
    Recipients(c.owners);
    EXPECT_EQ(S_OK, book->PrepareRecips(0, nullptr, recipients.Get()));
    EXPECT_EQ(c.expected, Numbers());
    EXPECT_EQ((std::vector<std::string>{"B.PrepareRecips", "A.PrepareRecips"}), log.lines)
        << "each provider once, with an empty list too";
  }
}

TEST_F(PrepareRecips, TheUnclaimedGetWhatWasAskedForFirst) {
  Open();
  ADRLIST none = {};
  EXPECT_EQ(MAPI_E_INVALID_PARAMETER, book->PrepareRecips(MAPI_UNICODE, nullptr, &none));
  EXPECT_EQ(MAPI_E_INVALID_PARAMETER, book->PrepareRecips(0, nullptr, nullptr));
  Recipients("-");
  SizedSPropTagArray(3, tags) = {3, {PR_RECIPIENT_TYPE, PR_DISPLAY_NAME_W, PR_ROWID}};
  ASSERT_EQ(S_OK, book->PrepareRecips(0, reinterpret_cast<SPropTagArray*>(&tags), recipients.Get()));
  const ADRENTRY& entry = recipients->aEntries[0];
  ASSERT_EQ(4u, entry.cValues);
  const ULONG expected[] = {PR_RECIPIENT_TYPE, CHANGE_PROP_TYPE(PR_DISPLAY_NAME_W, PT_ERROR), PR_ROWID,
                            PR_RECORD_KEY};
  for (ULONG i = 0; i < 4; ++i) EXPECT_EQ(expected[i], entry.rgPropVals[i].ulPropTag);
  EXPECT_EQ(MAPI_E_NOT_FOUND, entry.rgPropVals[1].Value.err);
  EXPECT_EQ(20u, entry.rgPropVals[3].Value.bin.cb);
}

TEST_F(PrepareRecips, ProvidersMayReplaceAndDropButNotInvent) {
  PreparingScript& a = LoadPreparing("A");
  PreparingScript& b = LoadPreparing("B");
  Open();
  a.replaces = true;
  b.drops = 1;
  Recipients("ABAB-");
  EXPECT_EQ(S_OK, book->PrepareRecips(0, nullptr, recipients.Get()));
  EXPECT_EQ((std::vector<LONG>{1, 1000, 1002, 4}), Numbers());
  b.drops = 0;
  b.claims = 1000;
  b.answers["PrepareRecips"].result = MAPI_W_ERRORS_RETURNED;
  a.replaces = false;
  Recipients("AB");
  EXPECT_EQ(MAPI_W_ERRORS_RETURNED, book->PrepareRecips(0, nullptr, recipients.Get()));
  EXPECT_EQ((std::vector<LONG>{1, 0}), Numbers());
}

// The list keeps its order, but holds the arrays that the providers left behind and none that they freed.
TEST_F(PrepareRecips, TheFirstFailureEndsItAndTheListStaysUsable) {
  Load("A");
  PreparingScript& b = LoadPreparing("B");
  PreparingScript& c = LoadPreparing("C");
  Open();
  c.replaces = true;
  b.replaces = true;
  using Throws = FakeAnswer::Throws;
  const std::pair<FakeAnswer, HRESULT> cases[] = {
      {{MAPI_E_NETWORK_ERROR, Throws::kNothing}, MAPI_E_NETWORK_ERROR},
      {{S_OK, Throws::kRuntimeError}, MAPI_E_CALL_FAILED}};
  for (const auto& [answer, expected] : cases) {
    b.answers["PrepareRecips"] = answer;
    b.drops = 1;
    Recipients("ABC-CBA");
    EXPECT_EQ(expected, book->PrepareRecips(0, nullptr, recipients.Get()));
    EXPECT_EQ((std::vector<LONG>{0, 1001, 1002, 3, 1004, -1, 6}), Numbers());
    EXPECT_EQ(0u, log.Count("A.PrepareRecips"));
  }
}

}  // namespace
}  // namespace orv::test
