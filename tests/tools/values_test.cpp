// Property values of every type, in text and JSON and back.
#include "tools/orvctl/values.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>

namespace orvctl {
namespace {

using orv::sdk::ValueView;
using Content = decltype(SPropValue::Value);

template <class Member>
SPropValue Make(ULONG tag, Member Content::*member, std::type_identity_t<Member> content) {
  SPropValue value = {};
  value.ulPropTag = tag;
  value.Value.*member = content;
  return value;
}

SPropValue Make(ULONG tag) { return Make(tag, &Content::l, 0); }

TEST(Values, SingleValuesShowTheirTypeAndMeaning) {
  BYTE bytes[] = {0x00, 0xFA};
  GUID guid = {0x00020303, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
  constexpr const char* kGuid = "{00020303-0000-0000-C000-000000000046}";
  constexpr const char* kNotFound = "MAPI_E_NOT_FOUND (0x8004010F)";
  constexpr const char* kWide = "\xE4\xBD\x90\xF0\x9F\x93\xA0";
  WideString wide = ToWide(kWide);
  struct Case {
    SPropValue value;
    const char* text;
    Json json;
  };
  const Case cases[] = {
      {Make(PR_OBJECT_TYPE, &Content::l, MAPI_DISTLIST), "8 (list)", 8},
      {Make(PR_CONTAINER_FLAGS, &Content::l, 259), "259 (recipients subcontainers 0x100)", 259},
      {Make(PR_RECIPIENT_TYPE, &Content::l, MAPI_CC), "2 (cc)", 2},
      {Make(PR_DEPTH, &Content::l, -1), "-1", -1},
      {Make(PROP_TAG(PT_BOOLEAN, 0x6700), &Content::b, 1), "true", true},
      {Make(PR_ENTRYID, &Content::bin, {sizeof(bytes), bytes}), "00FA", "00FA"},
      {Make(PR_DISPLAY_NAME_W, &Content::lpszW, wide.data()), kWide, kWide},
      {Make(PROP_TAG(PT_ERROR, 0x3001), &Content::err, MAPI_E_NOT_FOUND), kNotFound, kNotFound},
      {Make(PROP_TAG(PT_CLSID, 0x6700), &Content::lpguid, &guid), kGuid, kGuid},
      {Make(PROP_TAG(PT_DOUBLE, 0x6700), &Content::dbl, 0.5), "0.5", 0.5},
      {Make(PROP_TAG(PT_CURRENCY, 0x6700), &Content::cur, {.int64 = 123456}), "12.3456", 12.3456},
      {Make(PROP_TAG(PT_OBJECT, 0x360E)), "(object)", nullptr},
      {Make(PROP_TAG(0x0999, 0x6700)), "0x0999", nullptr},
  };
  for (const Case& c : cases) {
    const Cell cell = ValueCell(c.value);
    EXPECT_EQ(cell.text, c.text);
    EXPECT_EQ(cell.json, c.json) << c.text;
  }
}

TEST(Values, TimesAreReadAcrossTheCalendar) {
  const std::pair<ULONGLONG, const char*> cases[] = {{0, "1601-01-01T00:00:00Z"},
                                                     {11'644'473'599, "1969-12-31T23:59:59Z"},
                                                     {12'596'256'000, "2000-02-29T00:00:00Z"},
                                                     {15'752'015'999, "2100-02-28T23:59:59Z"}};
  for (const auto& [seconds, text] : cases) {
    const ULONGLONG ticks = seconds * 10'000'000;
    const FILETIME time = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
    EXPECT_EQ(ValueCell(Make(PR_CREATION_TIME, &Content::ft, time)).text, text);
  }
}

TEST(Values, ArraysAreJoinedForPeopleAndListedForMachines) {
  WideString first = ToWide("a"), second = ToWide("b");
  WCHAR* strings[] = {first.data(), nullptr, second.data()};
  SPropValue value = Make(PR_SERVICE_SUPPORT_FILES_W, &Content::MVszW, {3, strings});
  EXPECT_EQ(ValueCell(value).text, "a; ; b");
  EXPECT_EQ(ValueCell(value).json, (Json{"a", "", "b"}));
  BYTE bytes[] = {1, 2};
  SBinary binaries[] = {{2, bytes}, {5, nullptr}};
  value = Make(PR_AB_SEARCH_PATH, &Content::MVbin, {2, binaries});
  EXPECT_EQ(ValueCell(value).text, "0102; ");
}

// Providers are not ours: whatever pointer they leave out must not be followed.
TEST(Values, NullPointersAreEmptyAndTextsComeInEitherForm) {
  char text8[] = "narrow";
  for (const ULONG type : {PT_UNICODE, PT_STRING8, PT_BINARY, PT_CLSID}) {
    SPropValue value = Make(PROP_TAG(type, 0x6700));
    if (type == PT_BINARY) value.Value.bin.cb = 9;
    EXPECT_EQ(ValueCell(value).text, "");
    for (ULONG count : {0u, 3u}) {
      value = Make(PROP_TAG(MV_FLAG | type, 0x6700), &Content::MVbin, {count, nullptr});
      EXPECT_EQ(ValueCell(value).json, Json::array());
    }
  }
  const SPropValue noBytes = Make(PR_ENTRYID, &Content::bin, {20, nullptr});
  EXPECT_TRUE(BytesOf(ValueView(&noBytes, 1), PR_ENTRYID).empty());
  const SPropValue narrow = Make(PR_DISPLAY_NAME_A, &Content::lpszA, text8);
  EXPECT_EQ(TextOf(ValueView(&narrow, 1), PR_DISPLAY_NAME_W), text8);
}

TEST(OwnedValue, TextIsReadByTheTypeOfTheTag) {
  // What is shown again; null: refused.
  const std::pair<const char*, const char*> cases[] = {
      {"0x6600001F=C:\\a=b.vcf", "C:\\a=b.vcf"},
      {"805371935=\xC3\xA4", "\xC3\xA4"},
      {"0x6700001E=x", "x"},
      {"0x67000003=-5", "-5"},
      {"0x67000003=0xFFFFFFFF", "-1"},
      {"0x67000003=4294967296", nullptr},
      {"0x6700000B=maybe", nullptr},
      {"0x67000014=9223372036854775807", "9223372036854775807"},
      {"0x67000102=00ff", "00FF"},
      {"0x67000102=0", nullptr},
      {"0x67000102=", ""},
      {"0x67000040=2024", nullptr},
      {"0x16700001F=x", nullptr},
      {"0x6700001F", nullptr}};
  for (const auto& [assignment, shown] : cases) {
    std::optional<OwnedValue> value = OwnedValue::Parse(assignment);
    ASSERT_EQ(value.has_value(), shown != nullptr) << assignment;
    if (!value) continue;
    EXPECT_EQ(ValueCell(value->Get()).text, shown) << assignment;
  }
}

}  // namespace
}  // namespace orvctl
