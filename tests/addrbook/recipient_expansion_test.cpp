// Expansion of recipients over a fake provider: nesting, repetition, cycles, size, failures.
#include "addrbook/recipient_expansion.h"

#include <gtest/gtest.h>

#include <map>

#include "orv/orvbase.hpp"
#include "platform/com_ptr.h"
#include "tests/addrbook/address_lists.h"
#include "tests/props/samples.h"

namespace orv::test {
namespace {

using Texts = std::vector<std::string>;

class RecipientExpansion : public testing::Test {
 protected:
  // Lists and their members.
  void SetLists(const std::map<std::string, Texts>& lists) {
    for (const auto& [key, members] : lists) {
      FakeNode& node = script_.nodes[key];
      node.type = MAPI_DISTLIST;
      node.contents = members;
    }
  }

  HRESULT Expand(AdrListPtr& list) {
    ADRLIST* raw = list.Detach();
    const HRESULT hr = ExpandRecipientLists(book_.Get(), &raw);
    list.Reset(raw);
    return hr;
  }

  FakeLog log_;
  FakeScript script_{"p", FakeUid(1), &log_};
  ComPtr<IAddrBook> book_ = ComPtr<IAddrBook>::Adopt(MakeFakeProvider(&script_, kOwnBuffers));
};

struct Case {
  const char* name;
  Texts given;
  std::map<std::string, Texts> lists;
  Texts expected;
};

class ExpansionCases : public RecipientExpansion, public testing::WithParamInterface<Case> {};

TEST_P(ExpansionCases, GiveTheMembers) {
  SetLists(GetParam().lists);
  AdrListPtr list(MakeList(script_, GetParam().given));
  EXPECT_EQ(Expand(list), S_OK);
  EXPECT_EQ(Read(list.Get()), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    All, ExpansionCases,
    testing::Values(
        Case{"NothingToExpand", {"a/1", "b/2"}, {}, {"a/1", "b/2"}},
        Case{"MembersTakeTheListsType", {"list/2"}, {{"list", {"a", "b"}}}, {"a/2", "b/2"}},
        Case{"RecipientsBeforeMembers", {"list/2", "c/1"}, {{"list", {"a"}}}, {"c/1", "a/2"}},
        Case{"MemberTwice", {"list/1"}, {{"list", {"a", "b", "a"}}}, {"a/1", "b/1"}},
        Case{"GivenTwice", {"a/1", "a/2", "b/1"}, {}, {"a/1", "b/1"}},
        Case{"DirectWinsOverMember", {"list/2", "a/1"}, {{"list", {"a", "b"}}}, {"a/1", "b/2"}},
        Case{"ListTwiceIsOpenedOnce", {"list/2", "list/3"}, {{"list", {"a"}}}, {"a/2"}},
        Case{"NestedListsComeLast", {"list/1"}, {{"list", {"list2", "a"}}, {"list2", {"b"}}}, {"a/1", "b/1"}},
        Case{"NestedListTakesTheOuterType",
             {"list/3", "list2/1"},
             {{"list", {"list4"}}, {"list2", {}}, {"list4", {"a"}}},
             {"a/3"}},
        Case{"ListInItself", {"list/1"}, {{"list", {"list", "a"}}}, {"a/1"}},
        Case{"Circle", {"list1/1"}, {{"list1", {"list2", "a"}}, {"list2", {"list1", "b"}}}, {"a/1", "b/1"}},
        Case{"MoreThanTheGivenListHolds",
             {"list/1", "d/1"},
             {{"list", {"a", "b", "c"}}},
             {"d/1", "a/1", "b/1", "c/1"}},
        Case{"EmptyList", {"list/1"}, {{"list", {}}}, {}}),
    [](const auto& instance) { return instance.param.name; });

TEST_F(RecipientExpansion, ReadsEachRowOnceHoweverLargeTheListIs) {
  constexpr std::size_t kMembers = 100'000;
  Texts members;
  for (std::size_t i = 0; i < kMembers; ++i) members.push_back(std::to_string(i));
  // Everyone a second time, through another list.
  SetLists({{"list", members}, {"listagain", members}});
  script_.log = nullptr;
  AdrListPtr list(MakeList(script_, {"list/1", "listagain/2"}));
  EXPECT_EQ(Expand(list), S_OK);
  ASSERT_EQ(list->cEntries, kMembers);
  EXPECT_EQ(Read(list.Get()).back(), members.back() + "/1");
}

TEST_F(RecipientExpansion, WalksAChainOfListsToItsEnd) {
  constexpr int kDepth = 5'000;
  for (int i = 0; i < kDepth; ++i) {
    SetLists({{"list" + std::to_string(i), {std::to_string(i), "list" + std::to_string((i + 1) % kDepth)}}});
  }
  AdrListPtr list(MakeList(script_, {"list0/1"}));
  EXPECT_EQ(Expand(list), S_OK);
  EXPECT_EQ(list->cEntries, static_cast<ULONG>(kDepth));
  EXPECT_EQ(log_.Count("p.OpenEntry"), static_cast<std::size_t>(kDepth));
}

TEST_F(RecipientExpansion, RequiresColumnsAndKeepsWhatItHas) {
  const std::pair<const char*, ULONG> kMissing[] = {
      {"b", PR_OBJECT_TYPE}, {"b", PR_ENTRYID}, {"list", PR_ENTRYID}, {"list", PR_RECIPIENT_TYPE}};
  for (const auto& [key, column] : kMissing) {
    AdrListPtr list(MakeList(script_, {"a/1", "b/1", "c/1"}));
    ADRENTRY& second = *(list->aEntries + 1);
    OrvFreeBuffer(second.rgPropVals);
    second = MakeEntry(script_, key, MAPI_TO, column);
    EXPECT_EQ(Expand(list), MAPI_E_MISSING_REQUIRED_COLUMN);
    EXPECT_EQ(Read(list.Get()), Texts{"a/1"});
  }
}

TEST_F(RecipientExpansion, KeepsWhatItHasWhenAProviderFails) {
  SetLists({{"list", {"b"}}});
  const char* const kOperations[] = {"OpenEntry", "Object:GetContentsTable", "Table:SetColumns",
                                     "Table:SeekRow", "Table:QueryRows"};
  const std::pair<FakeAnswer, HRESULT> kAnswers[] = {
      {{MAPI_E_NETWORK_ERROR}, MAPI_E_NETWORK_ERROR},
      {{S_OK, FakeAnswer::Throws::kInteger}, MAPI_E_CALL_FAILED},
      {{S_OK, FakeAnswer::Throws::kBadAlloc}, MAPI_E_NOT_ENOUGH_MEMORY}};
  for (const char* operation : kOperations) {
    for (const auto& [answer, expected] : kAnswers) {
      script_.answers = {{operation, answer}};
      AdrListPtr list(MakeList(script_, {"a/1", "list/1", "c/1"}));
      EXPECT_EQ(Expand(list), expected) << operation;
      EXPECT_EQ(Read(list.Get()), (Texts{"a/1", "c/1"})) << operation;
      EXPECT_EQ(script_.liveObjects, 1) << operation;
    }
  }
}

TEST_F(RecipientExpansion, RefusesWhatCannotBeReadAndTouchesNothing) {
  AdrListPtr list(MakeList(script_, {"a/1", "b/1"}));
  ADRENTRY& last = list->aEntries[1];
  for (void* const bad : {static_cast<void*>(nullptr), reinterpret_cast<void*>(8)}) {
    SPropValue* const values = std::exchange(last.rgPropVals, static_cast<SPropValue*>(bad));
    EXPECT_EQ(Expand(list), MAPI_E_INVALID_PARAMETER);
    last.rgPropVals = values;
    BYTE* const bytes = std::exchange(values[0].Value.bin.lpb, static_cast<BYTE*>(bad));
    EXPECT_EQ(Expand(list), MAPI_E_INVALID_PARAMETER);
    values[0].Value.bin.lpb = bytes;
  }
  EXPECT_EQ(Read(list.Get()), (Texts{"a/1", "b/1"}));
}

// A list, its provider and its only row, each telling the lie when it is its turn.
enum class Lie { kUser, kNoObject, kNoTable, kNoRowSet, kNoArray, kNoValues, kShortRow, kNoBytes } g_lie;

struct LyingTable final : sdk::RefusingTable {
  HRESULT STDMETHODCALLTYPE SetColumns(LPSPropTagArray, ULONG) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE SeekRow(BOOKMARK, LONG, LONG*) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE QueryRows(LONG, ULONG, LPSRowSet* out) override {
    if (g_lie == Lie::kNoRowSet) return S_OK;
    AllocateRoot(CbNewSRowSet(1), reinterpret_cast<void**>(out));
    MapiBuffer<SPropValue> values;
    if (g_lie != Lie::kNoArray) values.AllocateArray(5);
    if (g_lie == Lie::kNoBytes) values[0] = Binary(PR_ENTRYID, nullptr, 20);
    const ULONG count = g_lie == Lie::kNoValues ? 0 : g_lie == Lie::kShortRow ? 1 : 5;
    (*out)->cRows = 1;
    (*out)->aRow[0] = {0, count, values.Detach()};
    return S_OK;
  }
};
struct LyingList final : sdk::RefusingContainer<sdk::RefusingProp<IABContainer, IMAPIContainer>> {
  HRESULT STDMETHODCALLTYPE GetContentsTable(ULONG, LPMAPITABLE* table) override {
    if (g_lie != Lie::kNoTable) *table = new LyingTable;
    return S_OK;
  }
};
struct LyingBook final : sdk::RefusingAddrBook<sdk::RefusingProp<IAddrBook>> {
  HRESULT STDMETHODCALLTYPE OpenEntry(ULONG, LPENTRYID, LPCIID, ULONG, ULONG* type, LPUNKNOWN* out) override {
    if (g_lie == Lie::kUser) *type = MAPI_MAILUSER;
    if (g_lie != Lie::kNoObject) *out = new LyingList;
    return S_OK;
  }
};

TEST_F(RecipientExpansion, BelievesNothingThatAProviderAnswers) {
  const std::pair<Lie, HRESULT> kLies[] = {{Lie::kUser, MAPI_E_INVALID_OBJECT},
                                           {Lie::kNoObject, MAPI_E_INVALID_OBJECT},
                                           {Lie::kNoTable, MAPI_E_CALL_FAILED},
                                           {Lie::kNoRowSet, S_OK},
                                           {Lie::kNoArray, MAPI_E_MISSING_REQUIRED_COLUMN},
                                           {Lie::kNoValues, MAPI_E_MISSING_REQUIRED_COLUMN},
                                           {Lie::kShortRow, MAPI_E_MISSING_REQUIRED_COLUMN},
                                           {Lie::kNoBytes, MAPI_E_MISSING_REQUIRED_COLUMN}};
  book_ = ComPtr<IAddrBook>::Adopt(new LyingBook);
  for (const auto& [lie, expected] : kLies) {
    g_lie = lie;
    AdrListPtr list(MakeList(script_, {"a/1", "list/1"}));
    EXPECT_EQ(Expand(list), expected) << static_cast<int>(lie);
    EXPECT_EQ(Read(list.Get()), Texts{"a/1"});
  }
}

}  // namespace
}  // namespace orv::test
