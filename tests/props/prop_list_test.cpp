#include "props/prop_list.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "platform/boundary.h"
#include "platform/faults.h"
#include "tests/props/samples.h"

namespace orv::test {
namespace {

constexpr ULONG kA = PROP_TAG(PT_LONG, 0x6601);
constexpr ULONG kB = PROP_TAG(PT_LONG, 0x6602);
constexpr ULONG kC = PROP_TAG(PT_LONG, 0x6603);

std::vector<ULONG> TagsOf(const PropList& list) {
  std::vector<ULONG> tags;
  for (const PropNode& node : list) tags.push_back(node.Tag());
  EXPECT_EQ(list.Count(), tags.size());
  return tags;
}

PropNodePtr Node(const SPropValue& value) {
  PropNodePtr node;
  EXPECT_EQ(S_OK, NodeFromValue(value, node));
  return node;
}

TEST(PropList, TheIdentifierDecidesAndTheStoredTypeWins) {
  const ULONG narrow = CHANGE_PROP_TYPE(kB, PT_STRING8);
  const ULONG wide = CHANGE_PROP_TYPE(kB, PT_UNICODE);
  PropList list;
  ASSERT_EQ(S_OK, list.Set(Long(kA, 1)));
  ASSERT_EQ(S_OK, list.Set(String8(narrow, "old")));
  ASSERT_EQ(S_OK, list.Set(Long(kC, 3)));
  ASSERT_EQ(S_OK, list.Set(Unicode(wide, ORV_W("new"))));
  EXPECT_EQ((std::vector<ULONG>{kA, wide, kC}), TagsOf(list));

  PropValues found;
  ASSERT_EQ(S_OK, list.GetValues(Tags{narrow}.Get(), found));
  EXPECT_EQ(wide, found.values[0].ulPropTag);
  EXPECT_EQ(WStringView(ORV_W("new")), found.values[0].Value.lpszW);
}

TEST(PropList, ReadOnlyPropertiesStay) {
  PropList list;
  ASSERT_EQ(S_OK, list.Set(Long(kA, 1)));
  ASSERT_EQ(S_OK, list.Set(Long(kB, 2)));
  list.SetFlags(PROPNODE_MODIFIED, false);
  list.Find(kA)->flags |= PROPNODE_READONLY;

  PropNodePtr removed;
  EXPECT_EQ(MAPI_E_NO_ACCESS, list.Set(Unicode(CHANGE_PROP_TYPE(kA, PT_UNICODE), ORV_W("x"))));
  EXPECT_EQ(MAPI_E_NO_ACCESS, list.SetRecord(Node(Long(kA, 9))->record));
  EXPECT_EQ(MAPI_E_NO_ACCESS, list.Remove(kA, removed));
  EXPECT_FALSE(removed);
  EXPECT_EQ(S_OK, list.FindAndCompare(Long(kA, 1)));
  EXPECT_EQ(PROPNODE_READONLY, list.Find(kA)->flags);

  // A loader asks nobody, and the mark carries over.
  list.Link(Node(Long(kA, 9)));
  EXPECT_EQ(PROPNODE_READONLY | PROPNODE_MODIFIED, list.Find(kA)->flags);
  EXPECT_EQ(0u, list.Find(kB)->flags);
}

TEST(PropList, OnlyTheLastTagDecidesTheResult) {
  PropList list;
  ASSERT_EQ(S_OK, list.Set(Long(kA, 1)));
  struct Case {
    Tags tags;
    HRESULT expected;
  };
  Case cases[] = {
      {{kA}, S_OK},
      {{kB, kA}, S_OK},
      {{kA, kB}, MAPI_W_ERRORS_RETURNED},
      {{kA, kB, PR_NULL}, MAPI_W_ERRORS_RETURNED},
      {{kB, kA, PR_NULL}, S_OK},
      {{PR_NULL}, S_OK},
      {{}, MAPI_E_INVALID_PARAMETER},
  };
  for (Case& asked : cases) {
    PropValues found;
    EXPECT_EQ(asked.expected, list.GetValues(asked.tags.Get(), found)) << &asked - cases;
    for (ULONG i = 0; i < found.count; ++i) {
      const ULONG tag = asked.tags.Get()->aulPropTag[i];
      const SPropValue& value = found.values[i];
      EXPECT_EQ(tag == kB ? CHANGE_PROP_TYPE(kB, PT_ERROR) : tag, value.ulPropTag);
      EXPECT_TRUE(tag != kB || value.Value.err == MAPI_E_NOT_FOUND);
    }
  }
}

TEST(PropList, FailedRowLeavesTheOutAsItWas) {
  PropList list;
  SRow row = {0, 77, nullptr};
  EXPECT_EQ(MAPI_E_INVALID_PARAMETER, list.GetRow(Tags{}.Get(), row));
  EXPECT_EQ(77u, row.cValues);
}

TEST(PropList, OfARepeatedIdentifierTheFirstOneCounts) {
  // Small and large: with and without an index.
  for (const ULONG others : {2u, 200u}) {
    PropList list;
    list.Append(Node(Long(kA, 1)));
    for (ULONG i = 0; i < others; ++i) list.Append(Node(Long(PROP_TAG(PT_LONG, 0x1000 + i), 0)));
    list.Append(Node(Long(kA, 2)));
    EXPECT_EQ(others + 2, list.Count());
    EXPECT_EQ(0u, list.Find(kA)->flags);

    PropValues found;
    ASSERT_EQ(S_OK, list.GetValues(Tags{PROP_TAG(PT_LONG, 0x1001), kA}.Get(), found));
    EXPECT_EQ(1, found.values[1].Value.l);
    PropNodePtr removed;
    ASSERT_EQ(S_OK, list.Remove(kA, removed));
    ASSERT_TRUE(removed);
    EXPECT_EQ(S_OK, list.FindAndCompare(Long(kA, 2)));
  }
}

TEST(PropList, ExhaustionLeavesTheListAsItWas) {
  // With the value after these the list gets its index.
  constexpr ULONG kCount = 48;
  PropList list;
  for (ULONG i = 0; i < kCount; ++i) ASSERT_EQ(S_OK, list.Set(Long(PROP_TAG(PT_LONG, 0x1000 + i), 0)));
  std::size_t failures = 0;
  for (;; ++failures) {
    faults::Arm(faults::Site::kOperatorNew, failures + 1);
    const HRESULT hr = Guarded([&] { return list.Set(Long(kA, 1)); });
    if (!faults::Fired(faults::Site::kOperatorNew)) break;
    ASSERT_EQ(MAPI_E_NOT_ENOUGH_MEMORY, hr);
    ASSERT_EQ(kCount, TagsOf(list).size());
    ASSERT_EQ(nullptr, list.Find(kA));
  }
  faults::Arm(faults::Site::kOperatorNew, 0);
  EXPECT_GT(failures, 2u);
  EXPECT_EQ(S_OK, list.FindAndCompare(Long(kA, 1)));
}

// The list against a plain vector, over the sizes at which it changes how it searches.
class PropListModel {
 public:
  void Set(ULONG id, LONG number) {
    ASSERT_EQ(S_OK, list_->Set(Long(PROP_TAG(PT_LONG, id), number)));
    const auto found = Find(id);
    if (found == model_.end()) {
      model_.emplace_back(id, number);
    } else {
      found->second = number;
    }
  }
  void Remove(ULONG id) {
    PropNodePtr removed;
    ASSERT_EQ(S_OK, list_->Remove(PROP_TAG(PT_UNSPECIFIED, id), removed));
    const auto found = Find(id);
    ASSERT_EQ(found != model_.end(), removed != nullptr);
    if (found != model_.end()) model_.erase(found);
  }
  void Move() {
    auto moved = std::make_unique<PropList>(std::move(*list_));
    EXPECT_EQ(0u, list_->Count());
    list_ = std::move(moved);
  }
  void Check(std::mt19937& random) {
    std::vector<ULONG> order;
    for (const auto& [id, number] : model_) order.push_back(PROP_TAG(PT_LONG, id));
    ASSERT_EQ(order, TagsOf(*list_));
    std::shuffle(order.begin(), order.end(), random);
    order.push_back(PROP_TAG(PT_LONG, 0xFFF0));
    std::vector<ULONG> words = {static_cast<ULONG>(order.size())};
    words.insert(words.end(), order.begin(), order.end());
    PropValues found;
    ASSERT_EQ(MAPI_W_ERRORS_RETURNED,
              list_->GetValues(reinterpret_cast<SPropTagArray*>(words.data()), found));
    for (std::size_t i = 0; i + 1 < order.size(); ++i) {
      ASSERT_EQ(Find(PROP_ID(order[i]))->second, found.values[i].Value.l);
    }
  }

 private:
  std::vector<std::pair<ULONG, LONG>>::iterator Find(ULONG id) {
    return std::find_if(model_.begin(), model_.end(), [id](const auto& entry) { return entry.first == id; });
  }

  std::unique_ptr<PropList> list_ = std::make_unique<PropList>();
  std::vector<std::pair<ULONG, LONG>> model_;
};

TEST(PropList, AgreesWithAPlainVector) {
  std::mt19937 random(20);
  for (const ULONG identifiers : {6u, 60u, 200u}) {
    PropListModel model;
    for (LONG step = 0; step < 1500; ++step) {
      const ULONG id = 0x1000 + static_cast<ULONG>(random()) % identifiers;
      // Growing at first, shrinking at the end.
      if (random() % 1500 > static_cast<ULONG>(step)) {
        model.Set(id, step);
      } else {
        model.Remove(id);
      }
      if (step % 97 == 0) model.Move();
      if (step % 50 == 0) model.Check(random);
      if (HasFatalFailure()) return;
    }
    model.Check(random);
  }
}

}  // namespace
}  // namespace orv::test
