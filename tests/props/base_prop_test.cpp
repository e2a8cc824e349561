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
    ASSERT_EQ(object_->LoadLocked(values), S_OK);
  }

  std::vector<ULONG> StoredTags() {
    MapiBuffer<SPropTagArray> tags;
    EXPECT_EQ(object_->GetPropList(MAPI_UNICODE, tags.Put()), S_OK);
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
  EXPECT_EQ(object_->SetProps(6, values, problems.Put()), S_OK);
  const std::pair<ULONG, HRESULT> expected[] = {
      {0, MAPI_E_COMPUTED}, {3, MAPI_E_NO_ACCESS}, {4, MAPI_E_NO_SUPPORT}};
  ASSERT_EQ(problems->cProblem, std::size(expected));
  for (ULONG i = 0; i < problems->cProblem; ++i) {
    EXPECT_EQ(problems->aProblem[i].ulIndex, expected[i].first);
    EXPECT_EQ(problems->aProblem[i].ulPropTag, values[expected[i].first].ulPropTag);
    EXPECT_EQ(problems->aProblem[i].scode, expected[i].second);
  }
  EXPECT_EQ(StoredTags(), (std::vector<ULONG>{kText, PR_ENTRYID, kNumber, kAbsent}));
}

TEST_F(BaseProp, EverySetMarksAndSaveClears) {
  LPSPropProblemArray problems = reinterpret_cast<LPSPropProblemArray>(this);
  EXPECT_EQ(object_->SetProps(0, nullptr, &problems), S_OK);
  EXPECT_EQ(problems, nullptr);
  EXPECT_EQ(object_->SaveChanges(0), S_OK);
  EXPECT_FALSE(object_->IsModified());
  EXPECT_EQ(object_->DeleteProps(Tags{kAbsent}.Get(), nullptr), S_OK);
  EXPECT_TRUE(object_->IsModified());
}

TEST_F(BaseProp, DeleteTellsAbsentAndReadOnlyAlike) {
  ASSERT_EQ(object_->SetNodeFlagsLocked(kNumber, PROPNODE_READONLY, true), S_OK);
  MapiBuffer<SPropProblemArray> problems;
  EXPECT_EQ(object_->DeleteProps(Tags{kAbsent, PR_ENTRYID, kNumber}.Get(), problems.Put()), S_OK);
  ASSERT_EQ(problems->cProblem, 2u);
  for (const ULONG i : {0u, 1u}) {
    EXPECT_EQ(problems->aProblem[i].ulIndex, i == 0 ? 0u : 2u);
    EXPECT_EQ(problems->aProblem[i].scode, MAPI_E_NOT_FOUND);
  }
  EXPECT_EQ(StoredTags(), (std::vector<ULONG>{kText, kNumber}));
  SPropValue value = Long(kNumber, 2);
  EXPECT_EQ(object_->SetProps(1, &value, problems.Put()), S_OK);
  EXPECT_EQ(problems->aProblem[0].scode, MAPI_E_NO_ACCESS);
}

TEST_F(BaseProp, CharacterWidthAndPointersAreTestedBeforeAnythingIsDone) {
  ULONG count = 0;
  SPropValue* values = nullptr;
  SPropValue value = Long(kAbsent, 1);
  const HRESULT refused[] = {object_->GetProps(Unreadable(), MAPI_UNICODE, &count, &values),
                             object_->GetProps(Tags{kText}.Get(), MAPI_UNICODE, Unreadable(), &values),
                             object_->GetProps(Tags{kText}.Get(), MAPI_UNICODE, &count, Unreadable()),
                             object_->GetProps(nullptr, MAPI_UNICODE, nullptr, &values),
                             object_->GetProps(Tags{}.Get(), MAPI_UNICODE, &count, &values),
                             object_->GetPropList(MAPI_UNICODE, Unreadable()),
                             object_->SetProps(1, Unreadable(), nullptr),
                             object_->SetProps(1, nullptr, nullptr),
                             object_->SetProps(1, &value, Unreadable()),
                             object_->DeleteProps(Unreadable(), nullptr),
                             object_->DeleteProps(nullptr, nullptr),
                             object_->DeleteProps(Tags{kText}.Get(), Unreadable()),
                             object_->QueryInterface(IID_IMAPIProp, Unreadable())};
  for (const HRESULT& hr : refused) EXPECT_EQ(hr, MAPI_E_INVALID_PARAMETER) << "call " << (&hr - refused);
  // The character width comes first.
  EXPECT_EQ(object_->GetProps(Tags{kText}.Get(), 0, &count, &values), MAPI_E_BAD_CHARWIDTH);
  EXPECT_EQ(object_->GetProps(Unreadable(), 0, nullptr, nullptr), MAPI_E_BAD_CHARWIDTH);
  EXPECT_EQ(object_->GetPropList(0, nullptr), MAPI_E_BAD_CHARWIDTH);
  EXPECT_EQ(values, nullptr);
  EXPECT_FALSE(object_->IsModified());
  EXPECT_EQ(StoredTags(), (std::vector<ULONG>{kText, PR_ENTRYID, kNumber}));
}

TEST_F(BaseProp, ExhaustionLeavesOutsAndPropertiesAlone) {
  SPropValue value = Long(kNumber, 2);
  LPSPropProblemArray problems = nullptr;
  faults::Arm(faults::Site::kTaskAllocation, 1);
  EXPECT_EQ(object_->SetProps(1, &value, &problems), MAPI_E_NOT_ENOUGH_MEMORY);
  EXPECT_FALSE(object_->IsModified());
  faults::Arm(faults::Site::kOperatorNew, 1);
  EXPECT_EQ(object_->SetProps(1, &value, &problems), S_OK);
  const MapiBuffer<SPropProblemArray> reported(problems);
  ASSERT_TRUE(reported);
  EXPECT_EQ(reported->aProblem[0].scode, MAPI_E_NOT_ENOUGH_MEMORY);

  ULONG count = 99;
  SPropValue* values = &value;
  for (std::size_t nth = 1; nth <= 3; ++nth) {
    faults::Arm(faults::Site::kTaskAllocation, nth);
    EXPECT_EQ(object_->GetProps(nullptr, MAPI_UNICODE, &count, &values), MAPI_E_NOT_ENOUGH_MEMORY);
    EXPECT_TRUE(faults::Fired(faults::Site::kTaskAllocation));
  }
  EXPECT_EQ(count, 99u);
  EXPECT_EQ(values, &value);
  EXPECT_EQ(object_->Properties().FindAndCompare(Long(kNumber, 1)), S_OK);
}

}  // namespace
}  // namespace orv::test
