#include "props/prop_list.h"

#include <algorithm>
#include <random>

#include "platform/boundary.h"
#include "platform/faults.h"
#include "tests/props/samples.h"

namespace orv::test {
namespace {

constexpr ULONG kA = PROP_TAG(PT_LONG, 0x6601);

std::vector<ULONG> TagsOf(const PropList& list) {
  std::vector<ULONG> tags;
  for (const PropNode& node : list) tags.push_back(node.Tag());
  EXPECT_EQ(list.Count(), tags.size());
  return tags;
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

// Identifiers decide, whatever type is asked for; of repeated ones, should there be any, the first counts.
class PropListModel : public testing::TestWithParam<bool> {};

TEST_P(PropListModel, AgreesWithAPlainVector) {
  constexpr ULONG kSteps = 4000, kTypes[] = {PT_LONG, PT_BOOLEAN, PT_I8, PT_SYSTIME};
  std::mt19937 random(20);
  auto list = std::make_unique<PropList>();
  std::vector<SPropValue> model;
  const auto find = [&model](ULONG tag) {
    return std::find_if(model.begin(), model.end(),
                        [tag](const auto& value) { return PROP_ID(value.ulPropTag) == PROP_ID(tag); });
  };
  for (ULONG step = 0; step < kSteps; ++step) {
    const ULONG tag = PROP_TAG(kTypes[random() % 4], 0x1000 + static_cast<ULONG>(random()) % 200);
    const SPropValue value = Long(tag, static_cast<LONG>(step));
    const auto found = find(tag);
    const bool known = found != model.end();
    // Growing at first, shrinking at the end, over the sizes at which the list changes how it searches.
    if (random() % kSteps <= step) {
      PropNodePtr removed;
      ASSERT_EQ(list->Remove(tag, removed), S_OK);
      ASSERT_EQ(removed != nullptr, known);
      if (known) model.erase(found);
    } else if (known && (step % 8 != 0 || !GetParam())) {
      ASSERT_EQ(list->Set(value), S_OK);
      *found = value;
    } else {
      known ? list->Append(Node(value)) : static_cast<void>(list->Set(value));
      model.push_back(value);
    }
    if (step % 97 == 0) list = std::make_unique<PropList>(std::move(*list));
    if (step % 50 != 0 || model.empty()) continue;

    Tags tags{};
    for (const SPropValue& each : model) tags.words.push_back(each.ulPropTag);
    ASSERT_EQ(TagsOf(*list), std::vector(tags.words.begin() + 1, tags.words.end()));
    for (ULONG i = 1; i < tags.words.size(); i += 3) {
      tags.words[i] = CHANGE_PROP_TYPE(tags.words[i], PT_UNICODE);
    }
    tags.words.insert(tags.words.end(), {kA, PR_NULL});
    std::reverse(tags.words.begin() + 1, tags.words.end());
    if (step % 100 != 0) std::shuffle(tags.words.begin() + 1, tags.words.end(), random);
    tags.words[0] = static_cast<ULONG>(tags.words.size()) - 1;
    PropValues values;
    const HRESULT hr = list->GetValues(tags.Get(), values);
    HRESULT last = S_OK;  // the last tag but null decides the result
    for (ULONG i = 0; i < values.count; ++i) {
      const ULONG asked = tags.words[i + 1];
      const auto stored = find(asked);
      const SPropValue expected =
          stored != model.end() ? *stored : Long(CHANGE_PROP_TYPE(asked, PT_ERROR), MAPI_E_NOT_FOUND);
      ASSERT_EQ(values.values[i].ulPropTag, asked == PR_NULL ? PR_NULL : expected.ulPropTag);
      if (asked == PR_NULL) continue;
      ASSERT_EQ(values.values[i].Value.l, expected.Value.l);
      last = stored != model.end() ? S_OK : MAPI_W_ERRORS_RETURNED;
    }
    ASSERT_EQ(hr, last);
  }
}

INSTANTIATE_TEST_SUITE_P(UniqueAndRepeated, PropListModel, testing::Bool());

}  // namespace
}  // namespace orv::test
