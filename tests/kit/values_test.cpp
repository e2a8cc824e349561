// Lists of values, copies for callers, and the order of values.
#include "orv/kit/values.hpp"

#include <limits>
#include <string>

#include "orv/orvtags.h"
#include "platform/faults.h"
#include "tests/kit/kit_values.h"

namespace orv::test {
namespace {

using kit::CompareValues;
using kit::CopyProps;
using kit::PropList;

constexpr ULONG kTexts = PROP_TAG(PT_MV_UNICODE, 0x6701), kNumber = PROP_TAG(PT_I8, 0x6702);

// A value of every kind.
PropList Everything() {
  PropList list;
  list.Set(PR_DISPLAY_NAME, L"Ada");
  list.Set(PR_COMMENT, u"ü");
  list.Set(PR_OBJECT_TYPE, MAPI_MAILUSER);
  list.Set(PR_SELECTABLE, 7);
  list.Set(kNumber, -1);
  list.Set(PR_ENTRYID, std::vector<BYTE>{1, 2, 3});
  list.Set(PR_CREATION_TIME, FILETIME{1, 2});
  list.Set(PROP_TAG(PT_UNSPECIFIED, 0x6703), IID_IMAPIProp);
  list.Set(PROP_TAG(PT_R4, 0x6704), 1.5);
  list.SetTexts(kTexts, std::vector<std::wstring>{L"one", L"", L"three"});
  const LONG numbers[] = {5, 6};
  EXPECT_EQ(list.Set(Array(PROP_TAG(PT_MV_LONG, 0x6705), 2, numbers)), S_OK);
  EXPECT_EQ(list.Set(String8(PROP_TAG(PT_STRING8, 0x6706), "narrow")), S_OK);
  BYTE raw[] = {1, 2};
  SBinary bytes[] = {{2, raw}, {0, nullptr}};
  EXPECT_EQ(list.Set(Array(PROP_TAG(PT_MV_BINARY, 0x6707), 2, bytes)), S_OK);
  return list;
}

void ExpectSame(sdk::ValueView one, sdk::ValueView other) {
  ASSERT_EQ(one.end() - one.begin(), other.end() - other.begin());
  for (const SPropValue *a = one.begin(), *b = other.begin(); a != one.end(); ++a, ++b) {
    EXPECT_EQ(a->ulPropTag, b->ulPropTag);
    EXPECT_EQ(CompareValues(*a, *b), 0) << std::hex << a->ulPropTag;
  }
}

TEST(KitValuesTest, ListsOwnWhatTheyHold) {
  PropList list = Everything(), copy = list, moved = std::move(list);
  ExpectSame(copy.View(), Everything().View());
  ExpectSame(moved.View(), copy.View());
  list = moved;  // what was moved from can be used again
  list.Set(PR_TITLE, list.Text(PR_DISPLAY_NAME));
  EXPECT_EQ(list.Text(PR_TITLE), L"Ada");
  EXPECT_EQ(list.Number(PR_SELECTABLE), 1);
  EXPECT_EQ(list.Number(kNumber), -1);
  EXPECT_EQ(list.Bytes(PR_ENTRYID).cb, 3u);
  // One identifier, one value, in its place; the value decides the type.
  const size_t size = list.size();
  list.Set(CHANGE_PROP_TYPE(PR_DISPLAY_NAME, PT_LONG), L"Bo");
  EXPECT_EQ(list.size(), size);
  EXPECT_EQ(list.View().begin()->ulPropTag, PR_DISPLAY_NAME);
  EXPECT_TRUE(list.Remove(CHANGE_PROP_TYPE(PR_DISPLAY_NAME, PT_UNSPECIFIED)));
  EXPECT_FALSE(list.Remove(PR_DISPLAY_NAME));
  EXPECT_EQ(list.Tags().front(), PR_COMMENT);
  list.Clear();
  EXPECT_TRUE(list.empty());
  // Set again and again, a value costs no more memory than once.
  const std::wstring text(1000, L'x');
  for (int i = 0; i < 10000; ++i) list.Set(PR_COMMENT, text + std::to_wstring(i));
  EXPECT_EQ(list.Text(PR_COMMENT), text + L"9999");
  ExpectSame(copy.View(), Everything().View());
}

TEST(KitValuesTest, ValuesThatCannotBeCopiedAreRefused) {
  const SBinary lying[] = {{1, nullptr}};
  const std::pair<SPropValue, HRESULT> cases[] = {
      {Value(PROP_TAG(PT_UNSPECIFIED, 1)), MAPI_E_INVALID_TYPE},
      {Value(PROP_TAG(0x0FFF, 1)), MAPI_E_INVALID_TYPE},
      {Value(PROP_TAG(MV_FLAG | PT_OBJECT, 1)), MAPI_E_INVALID_TYPE},
      {Value(PROP_TAG(PT_MV_LONG | MV_INSTANCE, 1)), MAPI_E_INVALID_TYPE},
      {Binary(PR_ENTRYID, nullptr, 1), MAPI_E_INVALID_PARAMETER},
      {Value(PROP_TAG(PT_CLSID, 1)), MAPI_E_INVALID_PARAMETER},
      {Array(PROP_TAG(PT_MV_LONG, 1), 1, nullptr), MAPI_E_INVALID_PARAMETER},
      {Array(PROP_TAG(PT_MV_BINARY, 1), 1, lying), MAPI_E_INVALID_PARAMETER},
      {Binary(PR_ENTRYID, nullptr, 0), S_OK},
      {Array(PROP_TAG(PT_MV_UNICODE, 1), 0, nullptr), S_OK},
      {Unicode(PR_TITLE, nullptr), S_OK},
      {Value(PROP_TAG(PT_OBJECT, 1)), S_OK},
  };
  for (const auto& [value, result] : cases) {
    PropList list;
    EXPECT_EQ(list.Set(value), result) << std::hex << value.ulPropTag;
    EXPECT_EQ(list.empty(), FAILED(result));
    HRESULT copied = 1;
    const auto copy = CopyProps(Buffers(), {&value, 1}, &value.ulPropTag, 1, &copied);
    EXPECT_EQ(copied, FAILED(result) ? MAPI_W_ERRORS_RETURNED : S_OK);
    EXPECT_EQ(PROP_TYPE(copy->ulPropTag) == PT_ERROR, FAILED(result));
  }
}

TEST(KitValuesTest, CopiesAnswerTheTagsInTheirOrderFromOneBlock) {
  const PropList list = Everything();
  const ULONG tags[] = {PROP_TAG(PT_UNSPECIFIED, PROP_ID(kTexts)), PR_NULL, PR_TITLE, PR_DISPLAY_NAME_A,
                        PR_DISPLAY_NAME};
  const long blocks = faults::LiveTaskBlocks();
  HRESULT result = S_OK;
  const auto copy = CopyProps(Buffers(), list.View(), tags, std::size(tags), &result);
  EXPECT_EQ(faults::LiveTaskBlocks(), blocks + 1);
  EXPECT_EQ(result, MAPI_W_ERRORS_RETURNED);
  EXPECT_EQ(copy->ulPropTag, kTexts);
  EXPECT_STREQ(copy->Value.MVszW.lppszW[2], L"three");
  EXPECT_EQ(copy.Get()[1].ulPropTag, PR_NULL);
  EXPECT_EQ(copy.Get()[2].ulPropTag, CHANGE_PROP_TYPE(PR_TITLE, PT_ERROR));
  EXPECT_EQ(copy.Get()[2].Value.err, MAPI_E_NOT_FOUND);
  EXPECT_EQ(copy.Get()[3].ulPropTag, PR_DISPLAY_NAME);
  EXPECT_STREQ(copy.Get()[4].Value.lpszW, L"Ada");
  // Any number of tags, none included.
  const std::vector<ULONG> many(500, PR_DISPLAY_NAME);
  const auto row = kit::CopyRow(Buffers(), list.View(), many.data(), many.size());
  EXPECT_STREQ(row.Get()[499].Value.lpszW, L"Ada");
  EXPECT_TRUE(kit::CopyRow(Buffers(), list.View(), nullptr, 0));
  ExpectSame({kit::CopyAll(Buffers(), list.View()).Get(), static_cast<ULONG>(list.size())}, list.View());
  EXPECT_EQ(faults::LiveTaskBlocks(), blocks + 1 + 1);
}

TEST(KitValuesTest, ValuesOfEveryTypeHaveAnOrder) {
  const double none = std::numeric_limits<double>::quiet_NaN();
  const auto of = [](ULONG type, auto value) {
    PropList list;
    list.Set(PROP_TAG(type, 1), value);
    return list;
  };
  const auto texts = [](const std::vector<std::wstring>& values) {
    PropList list;
    list.SetTexts(kTexts, values);
    return list;
  };
  using Bytes = std::vector<BYTE>;
  const std::vector<PropList> ascending[] = {
      {of(PT_LONG, -5), of(PT_LONG, 3)},
      {of(PT_I8, -5000000000), of(PT_I8, 3)},
      {of(PT_BOOLEAN, 0), of(PT_BOOLEAN, 2)},
      {of(PT_DOUBLE, -1.5), of(PT_DOUBLE, 2.5), of(PT_DOUBLE, none)},
      {of(PT_UNICODE, L""), of(PT_UNICODE, L"ada"), of(PT_UNICODE, L"Äda"), of(PT_UNICODE, L"Bo"),
       of(PT_UNICODE, L"Zoë")},
      {of(PT_BINARY, Bytes{}), of(PT_BINARY, Bytes{1}), of(PT_BINARY, Bytes{1, 0}), of(PT_BINARY, Bytes{2})},
      {of(PT_SYSTIME, FILETIME{9, 1}), of(PT_SYSTIME, FILETIME{1, 2})},
      {of(PT_CLSID, IID_IMAPITable), of(PT_CLSID, IID_IMAPIProp)},
      {texts({}), texts({L"a"}), texts({L"A", L"b"}), texts({L"b"})},
      {of(PT_LONG, 9), of(PT_UNICODE, L"")},  // by type
  };
  for (const std::vector<PropList>& lists : ascending) {
    for (size_t i = 0; i < lists.size(); ++i) {
      for (size_t j = 0; j < lists.size(); ++j) {
        const int order = CompareValues(*lists[i].View().begin(), *lists[j].View().begin());
        EXPECT_EQ((order > 0) - (order < 0), (i > j) - (i < j)) << &lists - ascending << ' ' << i << ' ' << j;
      }
    }
  }
  EXPECT_EQ(CompareValues(Unicode(PR_TITLE, L"ADA"), Unicode(PR_TITLE, L"ada")), 0);
}

TEST(KitValuesTest, ACopyWithoutMemoryIsAnExceptionAndNoLeak) {
  const PropList list = Everything();
  const long blocks = faults::LiveTaskBlocks();
  faults::Arm(faults::Site::kTaskAllocation, 1);
  EXPECT_THROW(kit::CopyAll(Buffers(), list.View()), std::bad_alloc);
  EXPECT_EQ(faults::LiveTaskBlocks(), blocks);
}

}  // namespace
}  // namespace orv::test
