#include "props/base_prop.h"

#include <gtest/gtest.h>

#include "platform/com_ptr.h"
#include "platform/faults.h"
#include "tests/props/samples.h"

namespace orv::test {
namespace {

constexpr ULONG kText = PROP_TAG(PT_UNICODE, 0x6601);
constexpr ULONG kNumber = PROP_TAG(PT_LONG, 0x6602);
constexpr ULONG kAbsent = PROP_TAG(PT_LONG, 0x6603);

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
    ASSERT_EQ(S_OK, object_->LoadLocked(values));
  }

  std::vector<ULONG> StoredTags() {
    MapiBuffer<SPropTagArray> tags;
    EXPECT_EQ(S_OK, object_->GetPropList(MAPI_UNICODE, tags.Put()));
    return List(tags.Get());
  }

  ComPtr<Section> object_ = ComPtr<Section>::Adopt(new Section);
};

TEST_F(BaseProp, SetReportsSingleFailuresAsProblems) {
  SPropValue values[] = {Binary(PR_ENTRYID, "x"),
                         Value(PR_NULL),
                         Long(PROP_TAG(PT_ERROR, 0x6602), 1),
                         Value(PROP_TAG(PT_OBJECT, 1)),
                         Array(PROP_TAG(PT_MV_DOUBLE, 1), 0, nullptr),
                         Long(kAbsent, 3)};
  MapiBuffer<SPropProblemArray> problems;
  EXPECT_EQ(S_OK, object_->SetProps(6, values, problems.Put()));
  const std::pair<ULONG, HRESULT> expected[] = {
      {0, MAPI_E_COMPUTED}, {3, MAPI_E_NO_ACCESS}, {4, MAPI_E_NO_SUPPORT}};
  ASSERT_EQ(std::size(expected), problems->cProblem);
  for (ULONG i = 0; i < problems->cProblem; ++i) {
    EXPECT_EQ(expected[i].first, problems->aProblem[i].ulIndex);
    EXPECT_EQ(values[expected[i].first].ulPropTag, problems->aProblem[i].ulPropTag);
    EXPECT_EQ(expected[i].second, problems->aProblem[i].scode);
  }
  EXPECT_EQ((std::vector<ULONG>{kText, PR_ENTRYID, kNumber, kAbsent}), StoredTags());
}

TEST_F(BaseProp, EverySetMarksAndSaveClears) {
  LPSPropProblemArray problems = reinterpret_cast<LPSPropProblemArray>(this);
  EXPECT_EQ(S_OK, object_->SetProps(0, nullptr, &problems));
  EXPECT_EQ(nullptr, problems);
  EXPECT_EQ(S_OK, object_->SaveChanges(0));
  EXPECT_FALSE(object_->IsModified());
  EXPECT_EQ(S_OK, object_->DeleteProps(Tags{kAbsent}.Get(), nullptr));
  EXPECT_TRUE(object_->IsModified());
}

TEST_F(BaseProp, DeleteTellsAbsentAndReadOnlyAlike) {
  ASSERT_EQ(S_OK, object_->SetNodeFlagsLocked(kNumber, PROPNODE_READONLY, true));
  MapiBuffer<SPropProblemArray> problems;
  EXPECT_EQ(S_OK, object_->DeleteProps(Tags{kAbsent, PR_ENTRYID, kNumber}.Get(), problems.Put()));
  ASSERT_EQ(2u, problems->cProblem);
  for (const ULONG i : {0u, 1u}) {
    EXPECT_EQ(i == 0 ? 0u : 2u, problems->aProblem[i].ulIndex);
    EXPECT_EQ(MAPI_E_NOT_FOUND, problems->aProblem[i].scode);
  }
  EXPECT_EQ((std::vector<ULONG>{kText, kNumber}), StoredTags());
  SPropValue value = Long(kNumber, 2);
  EXPECT_EQ(S_OK, object_->SetProps(1, &value, problems.Put()));
  EXPECT_EQ(MAPI_E_NO_ACCESS, problems->aProblem[0].scode);
}

TEST_F(BaseProp, GetRequiresUnicodeBeforeAnythingElse) {
  PropValues found;
  EXPECT_EQ(MAPI_E_BAD_CHARWIDTH, object_->GetProps(Tags{kText}.Get(), 0, &found.count, found.values.Put()));
  EXPECT_EQ(MAPI_E_BAD_CHARWIDTH, object_->GetProps(nullptr, 0, nullptr, nullptr));
  EXPECT_EQ(MAPI_E_BAD_CHARWIDTH, object_->GetPropList(0, nullptr));
  EXPECT_EQ(MAPI_E_INVALID_PARAMETER,
            object_->GetProps(Tags{}.Get(), MAPI_UNICODE, &found.count, found.values.Put()));
}

TEST_F(BaseProp, ExhaustionLeavesOutsAndPropertiesAlone) {
  SPropValue value = Long(kNumber, 2);
  LPSPropProblemArray problems = nullptr;
  faults::Arm(faults::Site::kTaskAllocation, 1);
  EXPECT_EQ(MAPI_E_NOT_ENOUGH_MEMORY, object_->SetProps(1, &value, &problems));
  EXPECT_FALSE(object_->IsModified());
  faults::Arm(faults::Site::kOperatorNew, 1);
  EXPECT_EQ(S_OK, object_->SetProps(1, &value, &problems));
  const MapiBuffer<SPropProblemArray> reported(problems);
  ASSERT_TRUE(reported);
  EXPECT_EQ(MAPI_E_NOT_ENOUGH_MEMORY, reported->aProblem[0].scode);

  ULONG count = 99;
  SPropValue* values = &value;
  for (std::size_t nth = 1; nth <= 3; ++nth) {
    faults::Arm(faults::Site::kTaskAllocation, nth);
    EXPECT_EQ(MAPI_E_NOT_ENOUGH_MEMORY, object_->GetProps(nullptr, MAPI_UNICODE, &count, &values));
    EXPECT_TRUE(faults::Fired(faults::Site::kTaskAllocation));
  }
  EXPECT_EQ(99u, count);
  EXPECT_EQ(&value, values);
  EXPECT_EQ(S_OK, object_->Properties().FindAndCompare(Long(kNumber, 1)));
}

}  // namespace
}  // namespace orv::test
