// Recipients grouped by provider, completed, and written back; what is left of a list when a provider fails.
#include <deque>

#include "props/foreign_values.h"
#include "props/tag_array.h"
#include "tests/addrbook/book_fixture.h"

namespace orv::test {
namespace {

using Numbers = std::vector<LONG>;
using Tags = std::vector<ULONG>;

// What a provider does with its recipients.
class PreparingScript final : public FakeScript {
 public:
  using FakeScript::FakeScript;

  void OnPrepare(ADRLIST* given) override {
    FakeScript::OnPrepare(given);
    for (ULONG i = 0; i < given->cEntries && (replaces || empties); ++i) {
      ADRENTRY& entry = given->aEntries[i];
      MapiBuffer<SPropValue> values;
      if (replaces) {
        ASSERT_EQ(values.AllocateArray(1), S_OK);
        values[0] = Long(PR_ROWID, entry.rgPropVals[1].Value.l + 1000);
        entry.cValues = 1;
      }
      OrvFreeBuffer(std::exchange(entry.rgPropVals, values.Detach()));
    }
    while (given->cEntries > 0 && drops-- > 0) OrvFreeBuffer(given->aEntries[--given->cEntries].rgPropVals);
    if (claims != 0) given->cEntries = claims;
  }

  bool replaces = false;
  bool empties = false;  // takes the values away and leaves their count
  int drops = 0;
  ULONG claims = 0;
};

class PrepareRecips : public BookTest {
 protected:
  // What the values point at must outlive them.
  ADRENTRY& Add(const std::vector<SPropValue>& values) {
    MapiBuffer<SPropValue> copy;
    EXPECT_EQ(copy.AllocateArray(values.size()), S_OK);
    std::copy(values.begin(), values.end(), copy.Get());
    ADRENTRY& entry = recipients->aEntries[recipients->cEntries++];
    entry = {0, static_cast<ULONG>(values.size()), copy.Detach()};
    return entry;
  }

  // One recipient a letter of `owners`, numbered from 0; '-' has no identifier. There is room for one more.
  void Recipients(const std::string& owners) {
    EXPECT_EQ(AllocateRoot(CbNewADRLIST(owners.size() + 1), reinterpret_cast<void**>(recipients.Put())),
              S_OK);
    for (const char owner : owners) {
      const std::string& id = ids_.emplace_back(20, owner);
      const LONG number = static_cast<LONG>(recipients->cEntries);
      Add({Binary(owner == '-' ? PR_RECORD_KEY : PR_ENTRYID, id), Long(PR_ROWID, number),
           Long(PR_RECIPIENT_TYPE, MAPI_TO)});
    }
  }

  HRESULT Prepare(SPropTagArray* tags = nullptr) { return book->PrepareRecips(0, tags, recipients.Get()); }

  Numbers Found() const {
    Numbers numbers;
    for (ULONG i = 0; i < recipients->cEntries; ++i) {
      const SPropValue* number = ForeignValues(recipients->aEntries[i]).Find(PR_ROWID);
      numbers.push_back(number == nullptr ? -1 : number->Value.l);
    }
    return numbers;
  }

  AdrListPtr recipients;

 private:
  std::deque<std::string> ids_;
};

TEST_F(PrepareRecips, GroupsByProviderInListOrderWithTheUnclaimedLast) {
  Load("A");
  Load("B");
  Open();
  const struct {
    const char* owners;
    Numbers expected;
  } cases[] = {{"ABABA", {1, 3, 0, 2, 4}},  // B was loaded last and comes first
               {"-AZB-B", {3, 5, 1, 0, 2, 4}},
               {"---", {0, 1, 2}},
               {"", {}}};
  for (const auto& c : cases) {
    log.lines.clear();
    Recipients(c.owners);
    EXPECT_EQ(Prepare(), S_OK);
    EXPECT_EQ(Found(), c.expected);
    EXPECT_EQ(log.lines, (std::vector<std::string>{"B.PrepareRecips", "A.PrepareRecips"}))
        << c.owners << ": each provider once, with an empty list too";
  }
}

constexpr bool IsArray(ULONG tag) { return (PROP_TYPE(tag) & MV_FLAG) != 0; }
constexpr ULONG ErrorOf(ULONG tag) { return CHANGE_PROP_TYPE(tag, PT_ERROR); }

// Asked for again, everything is as it was.
TEST_F(PrepareRecips, TheUnclaimedGetWhatWasAskedForFirst) {
  constexpr ULONG kDoubles = PROP_TAG(PT_MV_DOUBLE, 0x6601);
  constexpr ULONG kTimes = PROP_TAG(PT_MV_APPTIME, 0x6602);
  static const double doubles[] = {1.5, 2.5};
  const struct {
    Tags own, asked, expected;
  } cases[] = {
      {{PR_RECORD_KEY, PR_ROWID, PR_RECIPIENT_TYPE},
       {PR_RECIPIENT_TYPE, PR_DISPLAY_NAME_W, PR_ROWID},
       {PR_RECIPIENT_TYPE, ErrorOf(PR_DISPLAY_NAME_W), PR_ROWID, PR_RECORD_KEY}},
      {{PR_ROWID, PR_RECORD_KEY}, {}, {PR_ROWID, PR_RECORD_KEY}},
      {{}, {PR_ROWID}, {ErrorOf(PR_ROWID)}},
      {{PR_RECORD_KEY, PR_ROWID}, {PR_ROWID, PR_ROWID}, {PR_ROWID, PR_ROWID, PR_RECORD_KEY}},
      {{PR_RECORD_KEY}, {PR_ROWID, PR_ROWID}, {ErrorOf(PR_ROWID), ErrorOf(PR_ROWID), PR_RECORD_KEY}},
      {{PR_ROWID, PR_RECORD_KEY, PR_ROWID}, {PR_ROWID}, {PR_ROWID, PR_RECORD_KEY}},
      {{PR_ROWID, PR_RECORD_KEY, PR_ROWID}, {PR_RECORD_KEY}, {PR_RECORD_KEY, PR_ROWID, PR_ROWID}},
      {{PR_RECORD_KEY, PR_ROWID}, {PROP_TAG(PT_UNSPECIFIED, PROP_ID(PR_ROWID))}, {PR_ROWID, PR_RECORD_KEY}},
      {{PR_DISPLAY_NAME_A}, {PR_DISPLAY_NAME_W}, {ErrorOf(PR_DISPLAY_NAME_W), PR_DISPLAY_NAME_A}},
      {{kDoubles, kTimes}, {kTimes, PR_ROWID}, {kTimes, ErrorOf(PR_ROWID), kDoubles}},
  };
  Open();
  for (const auto& c : cases) {
    Tags request = c.asked;
    request.insert(request.begin(), static_cast<ULONG>(c.asked.size()));
    Recipients("");
    std::vector<SPropValue> own;
    for (const ULONG tag : c.own) {
      own.push_back(IsArray(tag) ? Array(tag, std::size(doubles), doubles)
                                 : Long(tag, tag == PR_ROWID ? 7 : 0));
    }
    const ADRENTRY& entry = Add(own);
    for (int call = 0; call < 2; ++call) {
      ASSERT_EQ(Prepare(reinterpret_cast<SPropTagArray*>(request.data())), S_OK);
      Tags tags;
      for (ULONG i = 0; i < entry.cValues; ++i) {
        const SPropValue& value = entry.rgPropVals[i];
        tags.push_back(value.ulPropTag);
        EXPECT_TRUE(PROP_TYPE(value.ulPropTag) != PT_ERROR || value.Value.err == MAPI_E_NOT_FOUND);
        EXPECT_TRUE(value.ulPropTag != PR_ROWID || value.Value.l == 7);
        if (!IsArray(value.ulPropTag)) continue;
        EXPECT_NE(value.Value.MVdbl.lpdbl, doubles);
        ASSERT_EQ(value.Value.MVdbl.cValues, std::size(doubles));
        EXPECT_EQ(std::memcmp(value.Value.MVdbl.lpdbl, doubles, sizeof doubles), 0);
      }
      EXPECT_EQ(tags, c.expected) << "case " << &c - cases << ", call " << call;
    }
  }
}

TEST_F(PrepareRecips, ProvidersMayReplaceAndDropButNotInvent) {
  auto& a = Load<PreparingScript>("A");
  auto& b = Load<PreparingScript>("B");
  Open();
  a.replaces = true;
  b.drops = 1;
  Recipients("ABAB-");
  EXPECT_EQ(Prepare(), S_OK);
  EXPECT_EQ(Found(), (Numbers{1, 1000, 1002, 4}));
  b.drops = 0;
  b.claims = 1000;
  b.answers["PrepareRecips"].result = MAPI_W_ERRORS_RETURNED;
  a.replaces = false;
  a.empties = true;
  Recipients("AB");
  EXPECT_EQ(Prepare(), MAPI_W_ERRORS_RETURNED);
  EXPECT_EQ(Found(), (Numbers{1, -1}));
}

// The list keeps its order, but holds the arrays that the providers left behind and none that they freed.
TEST_F(PrepareRecips, TheFirstFailureEndsItAndTheListStaysUsable) {
  Load("A");
  auto& b = Load<PreparingScript>("B");
  auto& c = Load<PreparingScript>("C");
  Open();
  b.replaces = c.replaces = true;
  const std::pair<FakeAnswer, HRESULT> cases[] = {{{MAPI_E_NETWORK_ERROR}, MAPI_E_NETWORK_ERROR},
                                                  {{S_OK, Throws::kRuntimeError}, MAPI_E_CALL_FAILED}};
  for (const auto& [answer, expected] : cases) {
    b.answers["PrepareRecips"] = answer;
    b.drops = 1;
    Recipients("ABC-CBA");
    EXPECT_EQ(Prepare(), expected);
    EXPECT_EQ(Found(), (Numbers{0, 1001, 1002, 3, 1004, -1, 6}));
    EXPECT_EQ(log.Count("A.PrepareRecips"), 0u);
  }
}

}  // namespace
}  // namespace orv::test
