// Objects with properties through IMAPIProp: every answer of every method.
#include "orv/kit/prop_object.hpp"

#include <functional>
#include <string>

#include "orv/orvtags.h"
#include "platform/faults.h"
#include "tests/kit/kit_values.h"

namespace orv::test {
namespace {

using kit::Access;
using kit::Changes;
using kit::PropList;

constexpr ULONG kAge = PROP_TAG(PT_LONG, 0x6701), kSecret = PROP_TAG(PT_UNICODE, 0x6702);
using Results = std::vector<HRESULT>;

class Person final : public kit::PropObject<IMailUser> {
 public:
  using PropObject::PropObject;

  std::vector<ULONG> saved, removed;
  bool forced = false;
  int told = 0;
  HRESULT answer = S_OK;
  std::function<void()> whileSaving;

 protected:
  std::vector<ULONG> ComputedTags() const override { return {kAge, kSecret}; }
  HRESULT Compute(ULONG tag, PropList& values) override {
    if (tag == kSecret) return MAPI_E_NO_ACCESS;
    values.Set(tag, 7);
    return S_OK;
  }
  HRESULT CheckSet(const SPropValue& value) override {
    return value.ulPropTag == PR_SURNAME ? MAPI_E_BAD_VALUE : S_OK;
  }
  HRESULT Save(Changes& changes) override {
    saved = changes.set;
    removed = changes.removed;
    forced = changes.force;
    if (whileSaving) whileSaving();
    if (SUCCEEDED(answer)) changes.values.Set(PR_ENTRYID, std::vector<BYTE>{1});
    return answer;
  }
  void Saved() override { ++told; }
};

sdk::ComPtr<Person> Make(Access access) {
  PropList values;
  values.Set(PR_DISPLAY_NAME, L"Ada");
  values.Set(PR_OBJECT_TYPE, MAPI_MAILUSER);
  return sdk::ComPtr<Person>::Adopt(
      new Person(std::make_shared<kit::Host>(kit::Host{Buffers(), {}}), values, access));
}

// Tags of the values and the texts among them.
std::string Get(IMAPIProp& object, LPSPropTagArray tags, HRESULT expected) {
  ULONG count = 77;
  auto values = Buffers().Own<SPropValue>();
  EXPECT_EQ(object.GetProps(tags, MAPI_UNICODE, &count, values.Put()), expected);
  std::string shown;
  for (ULONG i = 0; i < count; ++i) {
    const SPropValue& value = values.Get()[i];
    const ULONG type = PROP_TYPE(value.ulPropTag);
    if (type == PT_UNICODE) {
      for (LPCWSTR c = value.Value.lpszW; *c != 0; ++c) shown += static_cast<char>(*c);
    } else if (type == PT_ERROR) {
      shown += value.Value.err == MAPI_E_NOT_FOUND ? "missing" : "failed";
    } else if (type == PT_LONG) {
      shown += std::to_string(value.Value.l);
    }
    shown += ' ';
  }
  return shown;
}

Results Problems(const sdk::Buffer<SPropProblemArray>& problems, size_t size) {
  Results results(size, S_OK);
  for (ULONG i = 0; problems && i < problems->cProblem; ++i)
    results.at(problems->aProblem[i].ulIndex) = problems->aProblem[i].scode;
  return results;
}

Results Set(IMAPIProp& object, std::vector<SPropValue> values) {
  auto problems = Buffers().Own<SPropProblemArray>();
  EXPECT_EQ(object.SetProps(static_cast<ULONG>(values.size()), values.data(), problems.Put()), S_OK);
  return Problems(problems, values.size());
}

Results Delete(IMAPIProp& object, Tags tags) {
  auto problems = Buffers().Own<SPropProblemArray>();
  EXPECT_EQ(object.DeleteProps(tags.Get(), problems.Put()), S_OK);
  return Problems(problems, tags.words[0]);
}

TEST(KitPropObjectTest, GetPropsAnswersWhatIsAskedInItsOrder) {
  const auto person = Make(Access::kRead);
  const struct {
    std::vector<ULONG> tags;  // none: all
    const char* shown;
    HRESULT result;
  } cases[] = {
      {{PR_OBJECT_TYPE, PR_DISPLAY_NAME}, "6 Ada ", S_OK},
      {{PROP_TAG(PT_UNSPECIFIED, PROP_ID(PR_DISPLAY_NAME)), PR_NULL, kAge}, "Ada  7 ", S_OK},
      {{PR_TITLE, PR_DISPLAY_NAME_A}, "missing Ada ", MAPI_W_ERRORS_RETURNED},
      {{kSecret, PR_DISPLAY_NAME}, "failed Ada ", MAPI_W_ERRORS_RETURNED},
      {{}, "Ada 6 7 failed ", MAPI_W_ERRORS_RETURNED},
  };
  for (const auto& c : cases) {
    Tags tags{};
    tags.words[0] = static_cast<ULONG>(c.tags.size());
    tags.words.insert(tags.words.end(), c.tags.begin(), c.tags.end());
    EXPECT_EQ(Get(*person, c.tags.empty() ? nullptr : tags.Get(), c.result), c.shown);
  }
  auto list = Buffers().Own<SPropTagArray>();
  ASSERT_EQ(person->GetPropList(MAPI_UNICODE, list.Put()), S_OK);
  EXPECT_EQ(List(list.Get()), (std::vector<ULONG>{PR_DISPLAY_NAME, PR_OBJECT_TYPE, kAge, kSecret}));
}

TEST(KitPropObjectTest, BadArgumentsChangeNothing) {
  const auto person = Make(Access::kModify), readOnly = Make(Access::kRead);
  ULONG count = 77;
  auto* values = reinterpret_cast<LPSPropValue>(8);
  auto* tags = reinterpret_cast<LPSPropTagArray>(8);
  auto* problems = reinterpret_cast<LPSPropProblemArray>(8);
  SPropValue value = Long(PR_DEPTH, 1);
  Tags none{}, name{PR_DISPLAY_NAME};
  const std::pair<HRESULT, HRESULT> answers[] = {
      {person->GetProps(nullptr, 0, &count, &values), MAPI_E_BAD_CHARWIDTH},
      {person->GetProps(nullptr, MAPI_UNICODE, nullptr, &values), MAPI_E_INVALID_PARAMETER},
      {person->GetProps(nullptr, MAPI_UNICODE, &count, nullptr), MAPI_E_INVALID_PARAMETER},
      {person->GetProps(none.Get(), MAPI_UNICODE, &count, &values), MAPI_E_INVALID_PARAMETER},
      {person->GetPropList(0, &tags), MAPI_E_BAD_CHARWIDTH},
      {person->GetPropList(MAPI_UNICODE, nullptr), MAPI_E_INVALID_PARAMETER},
      {person->SetProps(1, nullptr, &problems), MAPI_E_INVALID_PARAMETER},
      {person->DeleteProps(nullptr, &problems), MAPI_E_INVALID_PARAMETER},
      {person->CopyProps(nullptr, 0, nullptr, &IID_IMAPIProp, readOnly.Get(), 0, nullptr),
       MAPI_E_INVALID_PARAMETER},
      {person->CopyTo(0, nullptr, nullptr, 0, nullptr, &IID_IMAPIProp, nullptr, 0, nullptr),
       MAPI_E_INVALID_PARAMETER},
      {person->GetIDsFromNames(0, nullptr, 0, &tags), MAPI_E_NO_SUPPORT},
      {person->OpenProperty(PR_SEARCH, &IID_IMAPIContainer, 0, 0, nullptr), MAPI_E_NO_SUPPORT},
      {readOnly->SetProps(1, &value, &problems), MAPI_E_NO_ACCESS},
      {readOnly->DeleteProps(name.Get(), &problems), MAPI_E_NO_ACCESS},
      {readOnly->SaveChanges(KEEP_OPEN_READWRITE), MAPI_E_NO_ACCESS},
  };
  for (const auto& [answer, expected] : answers) EXPECT_EQ(answer, expected) << &answer - &answers[0].first;
  EXPECT_EQ(count, 77u);
  EXPECT_EQ(values, reinterpret_cast<LPSPropValue>(8));
  EXPECT_EQ(tags, reinterpret_cast<LPSPropTagArray>(8));
  EXPECT_EQ(problems, reinterpret_cast<LPSPropProblemArray>(8));
}

TEST(KitPropObjectTest, RefusedValuesAreListedAndTheOthersSet) {
  const auto person = Make(Access::kModify);
  EXPECT_EQ(Set(*person, {Unicode(PR_TITLE, L"Dr"), Long(PR_OBJECT_TYPE, 1), Unicode(PR_SURNAME, L"B"),
                          Value(PR_NULL), Long(kAge, 3), Binary(PR_RECORD_KEY, nullptr, 4),
                          Value(PROP_TAG(PT_OBJECT, 0x6705)), Unicode(PR_DISPLAY_NAME, L"Eve")}),
            (Results{S_OK, MAPI_E_COMPUTED, MAPI_E_BAD_VALUE, S_OK, MAPI_E_COMPUTED, MAPI_E_INVALID_PARAMETER,
                     MAPI_E_NO_ACCESS, S_OK}));
  EXPECT_EQ(Delete(*person, {PR_TITLE, PR_TITLE, PR_OBJECT_TYPE, PR_COMMENT}),
            (Results{S_OK, MAPI_E_NOT_FOUND, MAPI_E_NOT_FOUND, MAPI_E_NOT_FOUND}));
  EXPECT_EQ(Get(*person, Tags{PR_DISPLAY_NAME, PR_TITLE}.Get(), MAPI_W_ERRORS_RETURNED), "Eve missing ");
  EXPECT_EQ(person->SetProps(0, nullptr, nullptr), S_OK);
}

TEST(KitPropObjectTest, SaveGetsWhatWasChangedAndKeepsItAfterAFailure) {
  const auto person = Make(Access::kModify);
  Set(*person, {Unicode(PR_TITLE, L"Dr"), Unicode(PR_COMMENT, L"c")});
  Delete(*person, {PR_COMMENT, PR_DISPLAY_NAME});
  person->answer = MAPI_E_OBJECT_CHANGED;
  EXPECT_EQ(person->SaveChanges(KEEP_OPEN_READWRITE), MAPI_E_OBJECT_CHANGED);
  EXPECT_EQ(person->told, 0);
  person->answer = S_OK;
  person->saved.clear();
  // What is set while it is being saved belongs to the next time.
  person->whileSaving = [&] { Set(*person, {Unicode(PR_TITLE, L"Prof")}); };
  EXPECT_EQ(person->SaveChanges(KEEP_OPEN_READWRITE | FORCE_SAVE), S_OK);
  EXPECT_EQ(person->saved, std::vector<ULONG>{PR_TITLE});
  EXPECT_EQ(person->removed, (std::vector<ULONG>{PR_COMMENT, PR_DISPLAY_NAME}));
  EXPECT_TRUE(person->forced);
  EXPECT_EQ(person->told, 1);
  EXPECT_EQ(Get(*person, Tags{PR_TITLE, PR_ENTRYID, PR_COMMENT}.Get(), MAPI_W_ERRORS_RETURNED),
            "Prof  missing ");
  person->whileSaving = nullptr;
  EXPECT_EQ(person->SaveChanges(KEEP_OPEN_READONLY), S_OK);
  EXPECT_EQ(person->saved, std::vector<ULONG>{PR_TITLE});
  EXPECT_EQ(person->SaveChanges(0), MAPI_E_NO_ACCESS);
}

TEST(KitPropObjectTest, CopiesAreMadeWithoutTheLibraryToo) {
  const auto from = Make(Access::kModify), to = Make(Access::kModify);
  Set(*from, {Unicode(PR_TITLE, L"Dr"), Unicode(PR_DISPLAY_NAME, L"Bo"), Binary(PR_RECORD_KEY, "x")});
  EXPECT_EQ(
      from->CopyTo(0, nullptr, Tags{PR_DISPLAY_NAME}.Get(), 0, nullptr, &IID_IMailUser, to.Get(), 0, nullptr),
      S_OK);
  EXPECT_EQ(Get(*to, nullptr, MAPI_W_ERRORS_RETURNED), "Ada 6 Dr 7 failed ");
  Set(*from, {Unicode(PR_TITLE, L"Prof")});
  EXPECT_EQ(from->CopyProps(Tags{PR_TITLE, PR_DISPLAY_NAME}.Get(), 0, nullptr, &IID_IMailUser, to.Get(),
                            MAPI_NOREPLACE, nullptr),
            S_OK);
  EXPECT_EQ(Get(*to, Tags{PR_TITLE, PR_DISPLAY_NAME}.Get(), S_OK), "Dr Ada ");
  EXPECT_EQ(from->CopyProps(Tags{PR_DISPLAY_NAME}.Get(), 0, nullptr, &IID_IMailUser, to.Get(), 0, nullptr),
            S_OK);
  EXPECT_EQ(Get(*to, Tags{PR_DISPLAY_NAME}.Get(), S_OK), "Bo ");
}

TEST(KitPropObjectTest, EveryFailingAllocationIsReportedAndLeaksNothing) {
  const auto person = Make(Access::kModify);
  const long blocks = faults::LiveTaskBlocks();
  const auto all = [&] {
    ULONG count = 0;
    auto values = Buffers().Own<SPropValue>();
    auto tags = Buffers().Own<SPropTagArray>();
    auto problems = Buffers().Own<SPropProblemArray>();
    SPropValue refused = Long(PR_OBJECT_TYPE, 1);
    const HRESULT hr = person->GetProps(nullptr, MAPI_UNICODE, &count, values.Put());
    const HRESULT listed = SUCCEEDED(hr) ? person->GetPropList(MAPI_UNICODE, tags.Put()) : hr;
    const HRESULT set = SUCCEEDED(listed) ? person->SetProps(1, &refused, problems.Put()) : listed;
    return FAILED(set) ? set : hr;
  };
  size_t nth = 0;
  do {
    faults::Arm(faults::Site::kTaskAllocation, ++nth);
    const HRESULT hr = all();
    EXPECT_EQ(
        hr, faults::Fired(faults::Site::kTaskAllocation) ? MAPI_E_NOT_ENOUGH_MEMORY : MAPI_W_ERRORS_RETURNED);
    EXPECT_EQ(faults::LiveTaskBlocks(), blocks);
  } while (faults::Fired(faults::Site::kTaskAllocation));
  EXPECT_EQ(nth, 4u);
  faults::Arm(faults::Site::kTaskAllocation, 0);
}

}  // namespace
}  // namespace orv::test
