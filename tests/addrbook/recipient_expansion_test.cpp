// Expansion of recipients over a fake provider: nesting, repetition, cycles, size, failures.
#include "addrbook/recipient_expansion.h"

#include "tests/addrbook/address_lists.h"

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

TEST_F(RecipientExpansion, GivesEveryoneOnceAndListsByTheirMembers) {
  const struct {
    const char* name;
    Texts given;
    std::map<std::string, Texts> lists;
    Texts expected;
  } cases[] = {
      {"nothing to expand", {"a/1", "b/2"}, {}, {"a/1", "b/2"}},
      {"members take the list's type", {"list/2"}, {{"list", {"a", "b"}}}, {"a/2", "b/2"}},
      {"recipients before members", {"list/2", "c/1"}, {{"list", {"a"}}}, {"c/1", "a/2"}},
      {"member twice", {"list/1"}, {{"list", {"a", "b", "a"}}}, {"a/1", "b/1"}},
      {"given twice", {"a/1", "a/2", "b/1"}, {}, {"a/1", "b/1"}},
      {"direct wins over member", {"list/2", "a/1"}, {{"list", {"a", "b"}}}, {"a/1", "b/2"}},
      {"list twice", {"list/2", "list/3"}, {{"list", {"a"}}}, {"a/2"}},
      {"nested lists come last", {"list/1"}, {{"list", {"list2", "a"}}, {"list2", {"b"}}}, {"a/1", "b/1"}},
      {"a nested list takes the outer type",
       {"list/3", "list2/1"},
       {{"list", {"list4"}}, {"list2", {}}, {"list4", {"a"}}},
       {"a/3"}},
      {"list in itself", {"list/1"}, {{"list", {"list", "a"}}}, {"a/1"}},
      {"circle", {"list1/1"}, {{"list1", {"list2", "a"}}, {"list2", {"list1", "b"}}}, {"a/1", "b/1"}},
      {"more than given", {"list/1", "d/1"}, {{"list", {"a", "b", "c"}}}, {"d/1", "a/1", "b/1", "c/1"}},
      {"empty list", {"list/1"}, {{"list", {}}}, {}},
  };
  for (const auto& c : cases) {
    script_.nodes.clear();
    SetLists(c.lists);
    AdrListPtr list(MakeList(script_, c.given));
    EXPECT_EQ(Expand(list), S_OK) << c.name;
    EXPECT_EQ(Read(list.Get()), c.expected) << c.name;
  }
}

TEST_F(RecipientExpansion, NeitherLengthNorDepthIsALimit) {
  constexpr std::size_t kMembers = 100'000;
  constexpr std::size_t kDepth = 5'000;
  Texts members = {"list1"};
  for (std::size_t i = 1; i < kMembers; ++i) members.push_back(std::to_string(i));
  // A chain that ends where it began, with everyone a second time in its second list.
  SetLists({{"list0", members}, {"list1", members}});
  script_.nodes["list1"].contents.push_back("list2");
  for (std::size_t i = 2; i < kDepth; ++i) {
    SetLists(
        {{"list" + std::to_string(i), {"x" + std::to_string(i), "list" + std::to_string((i + 1) % kDepth)}}});
  }
  AdrListPtr list(MakeList(script_, {"list0/1"}));
  EXPECT_EQ(Expand(list), S_OK);
  EXPECT_EQ(list->cEntries, kMembers - 1 + kDepth - 2);
  EXPECT_EQ(log_.Count("p.OpenEntry"), kDepth);
}

TEST_F(RecipientExpansion, RequiresColumnsAndKeepsWhatItHas) {
  const std::pair<const char*, ULONG> kMissing[] = {
      {"b", PR_OBJECT_TYPE}, {"b", PR_ENTRYID}, {"list", PR_ENTRYID}, {"list", PR_RECIPIENT_TYPE}};
  for (const auto& [key, column] : kMissing) {
    AdrListPtr list(MakeList(script_, {"a/1", "b/1", "c/1"}));
    OrvFreeBuffer(std::exchange(list->aEntries[1], MakeEntry(script_, key, MAPI_TO, column)).rgPropVals);
    EXPECT_EQ(Expand(list), MAPI_E_MISSING_REQUIRED_COLUMN);
    EXPECT_EQ(Read(list.Get()), Texts{"a/1"});
  }
}

TEST_F(RecipientExpansion, KeepsWhatItHasWhenAProviderFailsOrLies) {
  SetLists({{"list", {"b"}}});
  const auto expand = [&](HRESULT expected) {
    AdrListPtr list(MakeList(script_, {"a/1", "list/1", "c/1"}));
    EXPECT_EQ(Expand(list), expected);
    EXPECT_EQ(Read(list.Get()), (Texts{"a/1", "c/1"}));
    EXPECT_EQ(script_.liveObjects, 1);
  };
  const std::pair<FakeAnswer, HRESULT> answers[] = {{{MAPI_E_NETWORK_ERROR}, MAPI_E_NETWORK_ERROR},
                                                    {{S_OK, Throws::kInteger}, MAPI_E_CALL_FAILED},
                                                    {{S_OK, Throws::kBadAlloc}, MAPI_E_NOT_ENOUGH_MEMORY}};
  for (const char* operation :
       {"OpenEntry", "Object:GetContentsTable", "Table:SetColumns", "Table:SeekRow", "Table:QueryRows"}) {
    SCOPED_TRACE(operation);
    for (const auto& [answer, expected] : answers) {
      script_.answers = {{operation, answer}};
      expand(expected);
    }
  }
  script_.answers.clear();
  const struct {
    const char* operation;
    FakeLie lie;
    HRESULT expected;
  } lies[] = {{"OpenEntry", FakeLie::kNothing, MAPI_E_INVALID_OBJECT},
              {"Object:GetContentsTable", FakeLie::kNothing, MAPI_E_CALL_FAILED},
              {"Table:QueryRows", FakeLie::kNothing, S_OK},
              {"Table:QueryRows", FakeLie::kNoArray, MAPI_E_MISSING_REQUIRED_COLUMN},
              {"Table:QueryRows", FakeLie::kNoValues, MAPI_E_MISSING_REQUIRED_COLUMN},
              {"Table:QueryRows", FakeLie::kShort, MAPI_E_MISSING_REQUIRED_COLUMN},
              {"Table:QueryRows", FakeLie::kNulls, MAPI_E_MISSING_REQUIRED_COLUMN}};
  for (const auto& c : lies) {
    SCOPED_TRACE(&c - lies);
    script_.lies = {{c.operation, c.lie}};
    expand(c.expected);
  }
  script_.lies.clear();
  // Without a node, what is said to be a list opens as a user.
  script_.nodes.clear();
  expand(MAPI_E_INVALID_OBJECT);
}

}  // namespace
}  // namespace orv::test
