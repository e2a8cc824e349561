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

TEST(PropList, TheIdentifierDecidesAndTheStoredTypeWins) {
  const ULONG narrow = CHANGE_PROP_TYPE(kB, PT_STRING8);
  const ULONG wide = CHANGE_PROP_TYPE(kB, PT_UNICODE);
  PropList list;
  ASSERT_EQ(list.Set(Long(kA, 1)), S_OK);
  ASSERT_EQ(list.Set(String8(narrow, "old")), S_OK);
  ASSERT_EQ(list.Set(Long(kC, 3)), S_OK);
  ASSERT_EQ(list.Set(Unicode(wide, ORV_W("new"))), S_OK);
  EXPECT_EQ(TagsOf(list), (std::vector<ULONG>{kA, wide, kC}));

  PropValues found;
  ASSERT_EQ(list.GetValues(Tags{narrow}.Get(), found), S_OK);
  EXPECT_EQ(found.values[0].ulPropTag, wide);
  EXPECT_EQ(found.values[0].Value.lpszW, WStringView(ORV_W("new")));
}

TEST(PropList, ReadOnlyPropertiesStay) {
  PropList list;
  ASSERT_EQ(list.Set(Long(kA, 1)), S_OK);
  ASSERT_EQ(list.Set(Long(kB, 2)), S_OK);
  list.SetFlags(PROPNODE_MODIFIED, false);
  list.Find(kA)->flags |= PROPNODE_READONLY;

  PropNodePtr removed;
  EXPECT_EQ(list.Set(Unicode(CHANGE_PROP_TYPE(kA, PT_UNICODE), ORV_W("x"))), MAPI_E_NO_ACCESS);
  EXPECT_EQ(list.SetRecord(Node(Long(kA, 9))->record), MAPI_E_NO_ACCESS);
  EXPECT_EQ(list.Remove(kA, removed), MAPI_E_NO_ACCESS);
  EXPECT_FALSE(removed);
  EXPECT_EQ(list.FindAndCompare(Long(kA, 1)), S_OK);
  EXPECT_EQ(list.Find(kA)->flags, PROPNODE_READONLY);

  // A loader asks nobody, and the mark carries over.
  list.Link(Node(Long(kA, 9)));
  EXPECT_EQ(list.Find(kA)->flags, PROPNODE_READONLY | PROPNODE_MODIFIED);
  EXPECT_EQ(list.Find(kB)->flags, 0u);
}

TEST(PropList, OnlyTheLastTagDecidesTheResult) {
  PropList list;
  ASSERT_EQ(list.Set(Long(kA, 1)), S_OK);
  std::pair<Tags, HRESULT> cases[] = {
      {{kA}, S_OK},
      {{kB, kA}, S_OK},
      {{kA, kB}, MAPI_W_ERRORS_RETURNED},
      {{kA, kB, PR_NULL}, MAPI_W_ERRORS_RETURNED},
      {{kB, kA, PR_NULL}, S_OK},
      {{}, MAPI_E_INVALID_PARAMETER},
  };
  for (auto& [tags, expected] : cases) {
    PropValues found;
    EXPECT_EQ(list.GetValues(tags.Get(), found), expected);
    for (ULONG i = 0; i < found.count; ++i) {
      const ULONG tag = tags.Get()->aulPropTag[i];
      const SPropValue& value = found.values[i];
      EXPECT_EQ(value.ulPropTag, tag == kB ? CHANGE_PROP_TYPE(kB, PT_ERROR) : tag);
      EXPECT_TRUE(tag != kB || value.Value.err == MAPI_E_NOT_FOUND);
    }
  }
}

TEST(PropList, OfARepeatedIdentifierTheFirstOneCounts) {
  // Small and large: with and without an index.
  for (const ULONG others : {2u, 200u}) {
    PropList list;
    list.Append(Node(Long(kA, 1)));
    for (ULONG i = 0; i < others; ++i) list.Append(Node(Long(PROP_TAG(PT_LONG, 0x1000 + i), 0)));
    list.Append(Node(Long(kA, 2)));
    EXPECT_EQ(list.Count(), others + 2);
    EXPECT_EQ(list.Find(kA)->flags, 0u);

    PropValues found;
    ASSERT_EQ(list.GetValues(Tags{PROP_TAG(PT_LONG, 0x1001), kA}.Get(), found), S_OK);
    EXPECT_EQ(found.values[1].Value.l, 1);
    PropNodePtr removed;
    ASSERT_EQ(list.Remove(kA, removed), S_OK);
    ASSERT_TRUE(removed);
    EXPECT_EQ(list.FindAndCompare(Long(kA, 2)), S_OK);
  }
}

TEST(PropList, ExhaustionLeavesTheListAsItWas) {
  // With the value after these the list gets its index.
  constexpr ULONG kCount = 48;
  PropList list;
  for (ULONG i = 0; i < kCount; ++i) ASSERT_EQ(list.Set(Long(PROP_TAG(PT_LONG, 0x1000 + i), 0)), S_OK);
  std::size_t failures = 0;
  for (;; ++failures) {
    faults::Arm(faults::Site::kOperatorNew, failures + 1);
    const HRESULT hr = Guarded([&] { return list.Set(Long(kA, 1)); });
    if (!faults::Fired(faults::Site::kOperatorNew)) break;
    ASSERT_EQ(hr, MAPI_E_NOT_ENOUGH_MEMORY);
    ASSERT_EQ(TagsOf(list).size(), kCount);
    ASSERT_EQ(list.Find(kA), nullptr);
  }
  faults::Arm(faults::Site::kOperatorNew, 0);
  EXPECT_GT(failures, 2u);
  EXPECT_EQ(list.FindAndCompare(Long(kA, 1)), S_OK);
}

TEST(PropList, AgreesWithAPlainVector) {
  constexpr LONG kSteps = 4000;
  std::mt19937 random(20);
  auto list = std::make_unique<PropList>();
  std::vector<std::pair<ULONG, LONG>> model;
  for (LONG step = 0; step < kSteps; ++step) {
    const ULONG tag = PROP_TAG(PT_LONG, 0x1000 + static_cast<ULONG>(random()) % 200);
    const auto found =
        std::find_if(model.begin(), model.end(), [tag](const auto& entry) { return entry.first == tag; });
    const bool known = found != model.end();
    // Growing at first, shrinking at the end, over the sizes at which the list changes how it searches.
    if (random() % kSteps > static_cast<ULONG>(step)) {
      ASSERT_EQ(list->Set(Long(tag, step)), S_OK);
      if (known) {
        found->second = step;
      } else {
        model.emplace_back(tag, step);
      }
    } else {
      PropNodePtr removed;
      ASSERT_EQ(list->Remove(tag, removed), S_OK);
      ASSERT_EQ(removed != nullptr, known);
      if (known) model.erase(found);
    }
    if (step % 97 == 0) list = std::make_unique<PropList>(std::move(*list));
    if (step % 50 != 0 || model.empty()) continue;

    EXPECT_TRUE(
        std::equal(model.begin(), model.end(), list->begin(), list->end(),
                   [](const auto& entry, const PropNode& node) { return entry.first == node.Tag(); }));
    auto shuffled = model;
    std::reverse(shuffled.begin(), shuffled.end());
    if (step % 100 != 0) std::shuffle(shuffled.begin(), shuffled.end(), random);
    Tags tags{};
    for (const auto& entry : shuffled) tags.words.push_back(entry.first);
    tags.words[0] = static_cast<ULONG>(shuffled.size());
    PropValues values;
    ASSERT_EQ(list->GetValues(tags.Get(), values), S_OK);
    for (std::size_t i = 0; i < shuffled.size(); ++i) {
      ASSERT_EQ(values.values[i].Value.l, shuffled[i].second);
    }
  }
}

}  // namespace
}  // namespace orv::test
