// Restrictions: what rows answer, what is refused, and that a copy stands alone.
#include "orv/kit/restriction.hpp"

#include <deque>
#include <limits>

#include "tests/kit/kit_values.h"

namespace orv::test {
namespace {

using kit::PropList;
using kit::Restriction;

constexpr ULONG kNumber = PROP_TAG(PT_LONG, 0x6701), kOther = PROP_TAG(PT_LONG, 0x6702),
                kTexts = PROP_TAG(PT_MV_UNICODE, 0x6703), kBytes = PROP_TAG(PT_BINARY, 0x6704),
                kLongs = PROP_TAG(PT_MV_LONG, 0x6705), kNarrow = PROP_TAG(PT_STRING8, 0x6706),
                kAbsent = PROP_TAG(PT_LONG, 0x6799), kAbsentText = PROP_TAG(PT_UNICODE, 0x6799);

// Restrictions are trees of plain structures; this keeps their parts.
class Maker {
 public:
  SRestriction Content(ULONG fuzzy, SPropValue value) {
    return Make(RES_CONTENT, [&](auto& res) { res.resContent = {fuzzy, value.ulPropTag, Keep(value)}; });
  }
  SRestriction Property(ULONG relop, ULONG tag, SPropValue value) {
    return Make(RES_PROPERTY, [&](auto& res) { res.resProperty = {relop, tag, Keep(value)}; });
  }
  SRestriction Property(ULONG relop, SPropValue value) { return Property(relop, value.ulPropTag, value); }
  SRestriction Compare(ULONG relop, ULONG one, ULONG other) {
    return Make(RES_COMPAREPROPS, [&](auto& res) { res.resCompareProps = {relop, one, other}; });
  }
  SRestriction Bits(ULONG how, ULONG tag, ULONG mask) {
    return Make(RES_BITMASK, [&](auto& res) { res.resBitMask = {how, tag, mask}; });
  }
  SRestriction Size(ULONG relop, ULONG tag, ULONG size) {
    return Make(RES_SIZE, [&](auto& res) { res.resSize = {relop, tag, size}; });
  }
  SRestriction Exist(ULONG tag) {
    return Make(RES_EXIST, [&](auto& res) { res.resExist = {0, tag, 0}; });
  }
  SRestriction And(std::vector<SRestriction> each) { return Many(RES_AND, std::move(each)); }
  SRestriction Or(std::vector<SRestriction> each) { return Many(RES_OR, std::move(each)); }
  SRestriction Not(SRestriction one) {
    return Make(RES_NOT, [&](auto& res) { res.resNot = {0, Keep(one)}; });
  }
  SRestriction Sub(ULONG object, SRestriction one) {
    return Make(RES_SUBRESTRICTION, [&](auto& res) { res.resSub = {object, Keep(one)}; });
  }
  SRestriction Comment(SRestriction one, SPropValue value) {
    return Make(RES_COMMENT, [&](auto& res) { res.resComment = {1, Keep(one), Keep(value)}; });
  }
  template <class Fill>
  SRestriction Make(ULONG kind, const Fill& fill) {
    SRestriction made{};
    made.rt = kind;
    fill(made.res);
    return made;
  }
  // What every pointer of what was made so far points to becomes rubbish.
  void Spoil() {
    for (SPropValue& value : values_) value = Value(0xDEAD0005);
    for (auto& many : restrictions_) {
      for (SRestriction& each : many) each.rt = 0xDEAD;
    }
  }

 private:
  SRestriction Many(ULONG kind, std::vector<SRestriction> each) {
    restrictions_.push_back(std::move(each));
    auto& kept = restrictions_.back();
    return Make(kind, [&](auto& res) { res.resAnd = {static_cast<ULONG>(kept.size()), kept.data()}; });
  }
  SPropValue* Keep(SPropValue value) { return &values_.emplace_back(value); }
  SRestriction* Keep(SRestriction one) { return restrictions_.emplace_back(1, one).data(); }

  std::deque<SPropValue> values_;
  std::deque<std::vector<SRestriction>> restrictions_;
};

PropList Row() {
  PropList row;
  row.Set(PR_DISPLAY_NAME, L"Jürgen van der Berg");
  row.Set(PR_EMAIL_ADDRESS, L"jb@example.invalid");
  row.Set(kNumber, 12);
  row.Set(kOther, -3);
  row.SetTexts(kTexts, std::vector<std::wstring>{L"red", L"Green"});
  row.Set(kBytes, std::vector<BYTE>{1, 0, 2});
  const LONG longs[] = {5, 9};
  EXPECT_EQ(row.Set(Array(kLongs, 2, longs)), S_OK);
  EXPECT_EQ(row.Set(String8(kNarrow, "Narrow")), S_OK);
  EXPECT_EQ(row.Set(Value(PROP_TAG(PT_ERROR, 0x67F0))), S_OK);
  return row;
}

SPropValue Name(const WCHAR* text) { return Unicode(PR_DISPLAY_NAME_W, text); }

TEST(KitRestrictionTest, RowsAnswerEveryKind) {
  Maker make;
  const auto anr = [&](const WCHAR* text) { return make.Property(RELOP_EQ, Unicode(PR_ANR_W, text)); };
  const SRestriction yes = make.Exist(kNumber), no = make.Exist(kAbsent);
  constexpr LONG kGreatest = std::numeric_limits<LONG>::max();
  const LONG same[] = {5, 9}, less[] = {5, 8};
  const struct {
    SRestriction restriction;
    bool holds;
  } cases[] = {
      {make.Content(FL_FULLSTRING, Name(L"Jürgen van der Berg")), true},
      {make.Content(FL_FULLSTRING, Name(L"Jürgen")), false},
      {make.Content(FL_PREFIX, Name(L"Jürgen v")), true},
      {make.Content(FL_PREFIX, Name(L"jürgen v")), false},
      {make.Content(FL_PREFIX | FL_IGNORECASE, Name(L"JÜRGEN v")), true},
      {make.Content(FL_PREFIX | FL_IGNORECASE, Name(L"Jurgen")), false},
      {make.Content(FL_PREFIX | FL_IGNORENONSPACE, Name(L"Jurgen")), true},
      {make.Content(FL_PREFIX | FL_IGNORENONSPACE, Name(L"jurgen")), false},
      {make.Content(FL_PREFIX | FL_LOOSE, Name(L"jurgen")), true},
      {make.Content(FL_SUBSTRING | FL_LOOSE, Name(L"DER BERG")), true},
      {make.Content(FL_SUBSTRING | FL_IGNORECASE, Name(L"VAN")), true},
      {make.Content(FL_FULLSTRING | FL_LOOSE, Name(L"jurgen van der berg")), true},
      {make.Content(FL_FULLSTRING | FL_LOOSE, Name(L"jurgen van der ber")), false},
      {make.Content(FL_SUBSTRING, Name(L"van  ")), false},
      {make.Content(FL_PREFIX, Name(L"")), true},
      {make.Content(FL_FULLSTRING, Name(L"")), false},
      {make.Content(FL_SUBSTRING, Unicode(kAbsentText, L"")), false},
      {make.Content(FL_FULLSTRING, Binary(kBytes, std::string_view("\1\0\2", 3))), true},
      {make.Content(FL_PREFIX, Binary(kBytes, std::string_view("\1\0", 2))), true},
      {make.Content(FL_SUBSTRING, Binary(kBytes, std::string_view("\2", 1))), true},
      {make.Content(FL_PREFIX, Binary(kBytes, std::string_view("\2", 1))), false},
      {make.Content(FL_PREFIX, String8(CHANGE_PROP_TYPE(PR_DISPLAY_NAME_W, PT_STRING8), "J")), true},
      {make.Content(FL_PREFIX, Unicode(CHANGE_PROP_TYPE(kNarrow, PT_UNICODE), L"Narr")), true},
      {make.Make(RES_CONTENT,
                 [](auto& res) {
                   static SPropValue green = Unicode(CHANGE_PROP_TYPE(kTexts, PT_UNICODE), L"Gr");
                   res.resContent = {FL_PREFIX, kTexts, &green};
                 }),
       true},
      {make.Property(RELOP_EQ, Long(kNumber, 12)), true},
      {make.Property(RELOP_NE, Long(kNumber, 12)), false},
      {make.Property(RELOP_LT, Long(kNumber, kGreatest)), true},
      {make.Property(RELOP_LE, Long(kOther, -3)), true},
      {make.Property(RELOP_GT, Long(kOther, -3)), false},
      {make.Property(RELOP_GE, Long(kOther, -4)), true},
      {make.Property(RELOP_EQ, Name(L"JÜRGEN VAN DER BERG")), true},
      {make.Property(RELOP_EQ, String8(CHANGE_PROP_TYPE(kNarrow, PT_STRING8), "narrow")), true},
      {make.Property(RELOP_EQ, kLongs, Long(CHANGE_PROP_TYPE(kLongs, PT_LONG), 9)), true},
      {make.Property(RELOP_EQ, kLongs, Long(CHANGE_PROP_TYPE(kLongs, PT_LONG), 7)), false},
      {make.Property(RELOP_EQ, Array(kLongs, 2, same)), true},
      {make.Property(RELOP_GT, Array(kLongs, 2, less)), true},
      {make.Property(RELOP_NE, Long(kAbsent, 1)), false},
      {make.Not(make.Property(RELOP_EQ, Long(kAbsent, 1))), true},
      {make.Property(RELOP_EQ, PROP_TAG(PT_UNSPECIFIED, PROP_ID(kNumber)), Unicode(kAbsentText, L"12")),
       false},
      {make.Compare(RELOP_GT, kNumber, kOther), true},
      {make.Compare(RELOP_EQ, kNumber, kAbsent), false},
      {make.Bits(BMR_NEZ, kNumber, 8), true},
      {make.Bits(BMR_EQZ, kNumber, 8), false},
      {make.Bits(BMR_EQZ, kNumber, 1), true},
      {make.Bits(BMR_EQZ, kAbsent, 1), false},
      {make.Size(RELOP_EQ, kBytes, 3), true},
      {make.Size(RELOP_EQ, kNumber, 4), true},
      {make.Size(RELOP_EQ, PR_EMAIL_ADDRESS_W, 38), true},
      {make.Size(RELOP_EQ, kTexts, 20), true},
      {make.Size(RELOP_GE, kAbsent, 0), false},
      {make.Exist(PROP_TAG(PT_LONG, 0x67F0)), false},  // there as an error
      {make.And({yes, yes}), true},
      {make.And({yes, no}), false},
      {make.And({}), true},
      {make.Or({no, yes}), true},
      {make.Or({no, no}), false},
      {make.Or({}), false},
      {make.Comment(no, Long(kOther, 1)), false},
      {make.Make(RES_COMMENT, [](auto& res) { res.resComment = {}; }), true},
      {make.Sub(PR_CONTAINER_CONTENTS, yes), false},
      {anr(L"jurgen"), true},
      {anr(L"ber, jür"), true},
      {anr(L"JB@"), true},
      {anr(L"erg"), false},
      {anr(L"jurgen x"), false},
      {anr(L" "), false}};
  const PropList row = Row();
  for (size_t i = 0; i < std::size(cases); ++i) {
    Restriction copy;
    ASSERT_EQ(Restriction::Copy(&cases[i].restriction, &copy), S_OK) << i;
    EXPECT_EQ(copy.Holds(row.View()), cases[i].holds) << i;
  }
  EXPECT_TRUE(Restriction().Holds(row.View()));
}

TEST(KitRestrictionTest, SubObjectsAreAskedWhereThereAreAny) {
  Maker make;
  const SRestriction members = make.Sub(PR_CONTAINER_CONTENTS, make.Property(RELOP_EQ, Long(kNumber, 2)));
  Restriction copy;
  ASSERT_EQ(Restriction::Copy(&members, &copy), S_OK);
  EXPECT_TRUE(copy.LooksBelow());
  EXPECT_TRUE(copy.Tags().empty());
  const auto below = [](LONG number) {
    return [number](ULONG object, const std::function<bool(sdk::ValueView)>& holds) {
      const SPropValue value = Long(kNumber, number);
      return object == PR_CONTAINER_CONTENTS && holds(sdk::ValueView(&value, 1));
    };
  };
  EXPECT_TRUE(copy.Holds(Row().View(), below(2)));
  EXPECT_FALSE(copy.Holds(Row().View(), below(3)));
}

TEST(KitRestrictionTest, HostileOnesAreRefused) {
  Maker make;
  const SRestriction one = make.Exist(kNumber);
  SRestriction deep = one, deepest = one;
  for (ULONG i = 1; i < Restriction::kDeepest; ++i) deepest = make.Not(deepest);
  deep = make.Not(deepest);
  SRestriction itself = make.And({one});
  itself.res.resAnd = {1, &itself};
  SRestriction wide[2] = {};
  for (auto& each : wide) each = make.Make(RES_OR, [&](auto& res) { res.resOr = {2, wide}; });
  const auto null = [&](ULONG kind) { return make.Make(kind, [](auto&) {}); };
  const auto counted = [&](ULONG kind, ULONG count, SRestriction* each) {
    return make.Make(kind, [&](auto& res) { res.resAnd = {count, each}; });
  };
  SRestriction some = one;
  SPropValue unsound = Value(kBytes);
  unsound.Value.bin.cb = 5;
  SRestriction badComment = make.Comment(one, Long(kOther, 1));
  badComment.res.resComment.cValues = ULONG_MAX;
  const struct {
    SRestriction restriction;
    HRESULT result;
  } cases[] = {{deepest, S_OK},
               {deep, MAPI_E_TOO_COMPLEX},
               {itself, MAPI_E_TOO_COMPLEX},
               {wide[0], MAPI_E_TOO_COMPLEX},
               {counted(RES_AND, ULONG_MAX, &some), MAPI_E_TOO_COMPLEX},
               {badComment, MAPI_E_TOO_COMPLEX},
               {counted(RES_OR, 2, nullptr), MAPI_E_INVALID_PARAMETER},
               {null(RES_NOT), MAPI_E_INVALID_PARAMETER},
               {null(RES_CONTENT), MAPI_E_INVALID_PARAMETER},
               {null(RES_PROPERTY), MAPI_E_INVALID_PARAMETER},
               {null(RES_SUBRESTRICTION), MAPI_E_INVALID_PARAMETER},
               {null(RES_COMMENT + 1), MAPI_E_INVALID_PARAMETER},
               {make.Property(RELOP_RE, Name(L"x")), MAPI_E_TOO_COMPLEX},
               {make.Property(7, Name(L"x")), MAPI_E_INVALID_PARAMETER},
               {make.Property(RELOP_EQ, kNumber, Name(L"x")), MAPI_E_INVALID_PARAMETER},
               {make.Property(RELOP_EQ, unsound), MAPI_E_INVALID_PARAMETER},
               {make.Property(RELOP_EQ, Value(PROP_TAG(0x7FF, 1))), MAPI_E_INVALID_TYPE},
               {make.Property(RELOP_NE, Unicode(PR_ANR_W, L"x")), MAPI_E_TOO_COMPLEX},
               {make.Content(3, Name(L"x")), MAPI_E_INVALID_PARAMETER},
               {make.Content(FL_PREFIX, Long(kNumber, 1)), MAPI_E_TOO_COMPLEX},
               {make.Compare(RELOP_EQ, kNumber, kBytes), MAPI_E_INVALID_PARAMETER},
               {make.Bits(2, kNumber, 1), MAPI_E_INVALID_PARAMETER},
               {make.Bits(BMR_EQZ, kBytes, 1), MAPI_E_TOO_COMPLEX},
               {make.Size(RELOP_RE, kBytes, 1), MAPI_E_TOO_COMPLEX}};
  for (size_t i = 0; i < std::size(cases); ++i) {
    Restriction copy;
    EXPECT_EQ(Restriction::Copy(&cases[i].restriction, &copy), cases[i].result) << i;
    EXPECT_EQ(copy.IsEmpty(), FAILED(cases[i].result)) << i;
  }
}

TEST(KitRestrictionTest, ACopyStandsAlone) {
  Maker make;
  const SRestriction all = make.And(
      {make.Content(FL_PREFIX, Name(L"Jür")), make.Comment(make.Not(make.Exist(kAbsent)), Name(L"why")),
       make.Or({make.Compare(RELOP_GT, kNumber, kOther), make.Size(RELOP_EQ, kBytes, 9)}),
       make.Property(RELOP_EQ, Unicode(PR_ANR_W, L"berg"))});
  Restriction copy;
  ASSERT_EQ(Restriction::Copy(&all, &copy), S_OK);
  make.Spoil();
  const Restriction moved = std::move(copy);
  EXPECT_TRUE(moved.Holds(Row().View()));
  EXPECT_EQ(moved.Tags(), (std::vector<ULONG>{PR_DISPLAY_NAME_W, kAbsent, kNumber, kOther, kBytes,
                                              PR_EMAIL_ADDRESS_W, PR_SMTP_ADDRESS_W, PR_ACCOUNT_W}));
  Restriction again;
  ASSERT_EQ(Restriction::Copy(moved.Get(), &again), S_OK);
  EXPECT_TRUE(again.Holds(Row().View()));
  EXPECT_EQ(Restriction::Copy(nullptr, &again), S_OK);
  EXPECT_TRUE(again.IsEmpty());
}

}  // namespace
}  // namespace orv::test
