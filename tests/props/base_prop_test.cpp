#include "props/base_prop.h"

#include "platform/com_ptr.h"
#include "platform/faults.h"
#include "tests/props/samples.h"

namespace orv::test {
namespace {

constexpr ULONG kText = PROP_TAG(PT_UNICODE, 0x6601);
constexpr ULONG kNumber = PROP_TAG(PT_LONG, 0x6602);
constexpr ULONG kAbsent = PROP_TAG(PT_LONG, 0x6603);

// Index, tag and code of each.
using Problems = std::vector<std::tuple<ULONG, ULONG, HRESULT>>;

class Section final : public PropObject<IProfSect> {
 public:
  using CBaseProp::IsModified;
  using CBaseProp::LoadLocked;
  using CBaseProp::Properties;
  using CBaseProp::SetNodeFlagsLocked;

 private:
  bool Supports(REFIID iid) const override {
    return IsOneOf(iid, IID_IUnknown, IID_IMAPIProp, IID_IProfSect);
  }
};

class BaseProp : public testing::Test {
 protected:
  void SetUp() override {
    const SPropValue values[] = {Unicode(kText, ORV_W("text")), Binary(PR_ENTRYID, "id"), Long(kNumber, 1),
                                 Value(PR_NULL), Long(PROP_TAG(PT_ERROR, 0x6609), MAPI_E_NOT_FOUND)};
    ASSERT_EQ(object_->LoadLocked(values), S_OK);
  }

  // What a successful call told: nothing, or an array in place of whatever lay there.
  template <class Call>
  Problems ProblemsOf(Call call) {
    auto* told = reinterpret_cast<LPSPropProblemArray>(this);
    EXPECT_EQ(call(&told), S_OK);
    const MapiBuffer<SPropProblemArray> owner(told);
    Problems problems;
    for (ULONG i = 0; told != nullptr && i < told->cProblem; ++i) {
      problems.emplace_back(told->aProblem[i].ulIndex, told->aProblem[i].ulPropTag, told->aProblem[i].scode);
    }
    return problems;
  }
  Problems Set(std::vector<SPropValue> values) {
    const auto count = static_cast<ULONG>(values.size());
    return ProblemsOf([&](auto** told) { return object_->SetProps(count, values.data(), told); });
  }
  Problems Delete(Tags tags) {
    return ProblemsOf([&](auto** told) { return object_->DeleteProps(tags.Get(), told); });
  }
  std::vector<ULONG> StoredTags() {
    MapiBuffer<SPropTagArray> tags;
    EXPECT_EQ(object_->GetPropList(MAPI_UNICODE, tags.Put()), S_OK);
    return List(tags.Get());
  }

  ComPtr<Section> object_ = ComPtr<Section>::Adopt(new Section);
};

TEST_F(BaseProp, SingleFailuresAreProblemsAndEveryCallMarks) {
  const ULONG object = PROP_TAG(PT_OBJECT, 1), doubles = PROP_TAG(PT_MV_DOUBLE, 1);
  EXPECT_EQ(
      Set({Binary(PR_ENTRYID, "x"), Value(PR_NULL), Long(PROP_TAG(PT_ERROR, 0x6602), 1), Value(object),
           Array(doubles, 0, nullptr), Long(kAbsent, 3)}),
      (Problems{
          {0, PR_ENTRYID, MAPI_E_COMPUTED}, {3, object, MAPI_E_NO_ACCESS}, {4, doubles, MAPI_E_NO_SUPPORT}}));
  EXPECT_EQ(StoredTags(), (std::vector<ULONG>{kText, PR_ENTRYID, kNumber, kAbsent}));
  // Absent and read-only are told alike.
  ASSERT_EQ(object_->SetNodeFlagsLocked(kNumber, PROPNODE_READONLY, true), S_OK);
  EXPECT_EQ(Delete({kAbsent, kAbsent, PR_ENTRYID, kNumber}),
            (Problems{{1, kAbsent, MAPI_E_NOT_FOUND}, {3, kNumber, MAPI_E_NOT_FOUND}}));
  EXPECT_EQ(StoredTags(), (std::vector<ULONG>{kText, kNumber}));
  EXPECT_EQ(Set({Long(kNumber, 2)}), (Problems{{0, kNumber, MAPI_E_NO_ACCESS}}));

  for (const bool sets : {true, false}) {
    EXPECT_EQ(object_->SaveChanges(0), S_OK);
    EXPECT_FALSE(object_->IsModified());
    EXPECT_EQ(sets ? Set({}) : Delete({kText}), Problems{});
    EXPECT_TRUE(object_->IsModified());
  }
}

TEST_F(BaseProp, CharacterWidthIsTestedFirstAndEmptyRequestsAreRefused) {
  ULONG count = 0;
  SPropValue* values = nullptr;
  EXPECT_EQ(object_->GetProps(Unreadable(), 0, nullptr, nullptr), MAPI_E_BAD_CHARWIDTH);
  EXPECT_EQ(object_->GetPropList(0, nullptr), MAPI_E_BAD_CHARWIDTH);
  EXPECT_EQ(object_->GetProps(nullptr, MAPI_UNICODE, nullptr, &values), MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(object_->GetProps(Tags{}.Get(), MAPI_UNICODE, &count, &values), MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(values, nullptr);
}

TEST_F(BaseProp, ExhaustionLeavesOutsAndPropertiesAlone) {
  SPropValue value = Long(kNumber, 2);
  SPropValue* values = &value;
  ULONG count = 99;
  LPSPropProblemArray problems = nullptr;
  faults::Arm(faults::Site::kTaskAllocation, 1);
  EXPECT_EQ(object_->SetProps(1, &value, &problems), MAPI_E_NOT_ENOUGH_MEMORY);
  EXPECT_FALSE(object_->IsModified());
  faults::Arm(faults::Site::kTaskAllocation, 3);
  EXPECT_EQ(object_->GetProps(nullptr, MAPI_UNICODE, &count, &values), MAPI_E_NOT_ENOUGH_MEMORY);
  EXPECT_EQ(count, 99u);
  EXPECT_EQ(values, &value);
}

}  // namespace
}  // namespace orv::test
