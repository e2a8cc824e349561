// Property values of every type, in text and JSON and back.
#include "tools/orvctl/values.h"

#include <gtest/gtest.h>

#include <cstring>

namespace orvctl {
namespace {

SPropValue Make(ULONG tag) {
  SPropValue value = {};
  value.ulPropTag = tag;
  return value;
}

FILETIME TimeOf(ULONGLONG ticks) {
  FILETIME time;
  time.dwLowDateTime = static_cast<DWORD>(ticks);
  time.dwHighDateTime = static_cast<DWORD>(ticks >> 32);
  return time;
}

TEST(Values, SingleValuesShowTheirTypeAndMeaning) {
  BYTE bytes[] = {0x00, 0xFA};
  GUID guid = {0x00020303, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
  WideString wide = ToWide("\xE4\xBD\x90\xF0\x9F\x93\xA0");
  struct Case {
    SPropValue value;
    const char* text;
    Json json;
  };
  Case cases[] = {
      {Make(PR_OBJECT_TYPE), "8 (list)", 8},
      {Make(PR_CONTAINER_FLAGS), "259 (recipients subcontainers 0x100)", 259},
      {Make(PR_RECIPIENT_TYPE), "2 (cc)", 2},
      {Make(PR_DEPTH), "-1", -1},
      {Make(PROP_TAG(PT_BOOLEAN, 0x6700)), "true", true},
      {Make(PR_ENTRYID), "00FA", "00FA"},
      {Make(PR_DISPLAY_NAME_W), "\xE4\xBD\x90\xF0\x9F\x93\xA0", "\xE4\xBD\x90\xF0\x9F\x93\xA0"},
      {Make(PROP_TAG(PT_ERROR, 0x3001)), "MAPI_E_NOT_FOUND (0x8004010F)", "MAPI_E_NOT_FOUND (0x8004010F)"},
      {Make(PROP_TAG(PT_CLSID, 0x6700)), "{00020303-0000-0000-C000-000000000046}",
       "{00020303-0000-0000-C000-000000000046}"},
      {Make(PROP_TAG(PT_DOUBLE, 0x6700)), "0.5", 0.5},
      {Make(PROP_TAG(PT_CURRENCY, 0x6700)), "12.3456", 12.3456},
      {Make(PROP_TAG(PT_OBJECT, 0x360E)), "(object)", nullptr},
      {Make(PROP_TAG(0x0999, 0x6700)), "0x0999", nullptr},
  };
  cases[0].value.Value.l = MAPI_DISTLIST;
  cases[1].value.Value.l = 259;
  cases[2].value.Value.l = MAPI_CC;
  cases[3].value.Value.l = -1;
  cases[4].value.Value.b = 1;
  cases[5].value.Value.bin = {sizeof(bytes), bytes};
  cases[6].value.Value.lpszW = wide.data();
  cases[7].value.Value.err = MAPI_E_NOT_FOUND;
  cases[8].value.Value.lpguid = &guid;
  cases[9].value.Value.dbl = 0.5;
  cases[10].value.Value.cur.int64 = 123456;
  for (const Case& c : cases) {
    const Cell cell = ValueCell(c.value);
    EXPECT_EQ(cell.text, c.text);
    EXPECT_EQ(cell.json, c.json) << c.text;
  }
}

TEST(Values, TimesAreReadAcrossTheCalendar) {
  struct Case {
    ULONGLONG ticks;
    const char* text;
  };
  constexpr ULONGLONG kSecond = 10'000'000;
  const Case cases[] = {{0, "1601-01-01T00:00:00Z"},
                        {11'644'473'600 * kSecond, "1970-01-01T00:00:00Z"},
                        {11'644'473'599 * kSecond, "1969-12-31T23:59:59Z"},
                        {(11'644'473'600 + 951'782'400) * kSecond, "2000-02-29T00:00:00Z"},
                        {(11'644'473'600 + 1'709'208'000) * kSecond, "2024-02-29T12:00:00Z"},
                        {(11'644'473'600 + 4'107'542'399) * kSecond, "2100-02-28T23:59:59Z"}};
  for (const Case& c : cases) {
    SPropValue value = Make(PR_CREATION_TIME);
    value.Value.ft = TimeOf(c.ticks);
    EXPECT_EQ(ValueCell(value).text, c.text);
  }
}

TEST(Values, ArraysAreJoinedForPeopleAndListedForMachines) {
  WideString first = ToWide("a"), second = ToWide("b");
  WCHAR* strings[] = {first.data(), nullptr, second.data()};
  SPropValue value = Make(PR_SERVICE_SUPPORT_FILES_W);
  value.Value.MVszW = {3, strings};
  EXPECT_EQ(ValueCell(value).text, "a; ; b");
  EXPECT_EQ(ValueCell(value).json, (Json{"a", "", "b"}));
  BYTE bytes[] = {1, 2};
  SBinary binaries[] = {{2, bytes}, {5, nullptr}};
  value = Make(PR_AB_SEARCH_PATH);
  value.Value.MVbin = {2, binaries};
  EXPECT_EQ(ValueCell(value).text, "0102; ");
}

// Providers are not ours: whatever pointer they leave out must not be followed.
TEST(Values, NullPointersAreEmpty) {
  for (const ULONG type : {PT_UNICODE, PT_STRING8, PT_BINARY, PT_CLSID}) {
    SPropValue value = Make(PROP_TAG(type, 0x6700));
    if (type == PT_BINARY) value.Value.bin.cb = 9;
    EXPECT_EQ(ValueCell(value).text, "");
    for (ULONG count : {0u, 3u}) {
      value = Make(PROP_TAG(MV_FLAG | type, 0x6700));
      value.Value.MVbin.cValues = count;
      EXPECT_EQ(ValueCell(value).json, Json::array());
    }
  }
  EXPECT_EQ(FindValue(nullptr, 3, PR_ENTRYID), nullptr);
  SPropValue noBytes = Make(PR_ENTRYID);
  noBytes.Value.bin.cb = 20;
  EXPECT_TRUE(BytesOf(&noBytes, 1, PR_ENTRYID).empty());
}

TEST(Values, AnErrorInPlaceOfAValueIsNoValue) {
  SPropValue value = Make(CHANGE_PROP_TYPE(PR_DISPLAY_NAME_W, PT_ERROR));
  value.Value.err = MAPI_E_NOT_FOUND;
  EXPECT_EQ(StringOf(&value, 1, PR_DISPLAY_NAME_W), "");
  EXPECT_EQ(NumberOf(&value, 1, PR_OBJECT_TYPE, 7), 7u);
}

TEST(OwnedValue, TextIsReadByTheTypeOfTheTag) {
  struct Case {
    const char* assignment;
    const char* shown;  // null: refused
  };
  const Case cases[] = {{"0x6600001F=C:\\a=b.vcf", "C:\\a=b.vcf"},
                        {"0x6700001F=", ""},
                        {"805371935=\xC3\xA4", "\xC3\xA4"},
                        {"0x6700001E=narrow", "narrow"},
                        {"0x67000003=-5", "-5"},
                        {"0x67000003=0xFFFFFFFF", "-1"},
                        {"0x67000003=4294967296", nullptr},
                        {"0x67000003=5x", nullptr},
                        {"0x67000003=", nullptr},
                        {"0x6700000B=true", "true"},
                        {"0x6700000B=0", "false"},
                        {"0x6700000B=maybe", nullptr},
                        {"0x67000014=9223372036854775807", "9223372036854775807"},
                        {"0x67000102=00ff", "00FF"},
                        {"0x67000102=0", nullptr},
                        {"0x67000102=0g", nullptr},
                        {"0x67000102=", ""},
                        {"0x0000001F=no identifier", nullptr},
                        {"0x67000040=2024", nullptr},
                        {"0x16700001F=x", nullptr},
                        {"=x", nullptr},
                        {"0x6700001F", nullptr}};
  for (const Case& c : cases) {
    std::optional<OwnedValue> value = OwnedValue::Parse(c.assignment);
    ASSERT_EQ(value.has_value(), c.shown != nullptr) << c.assignment;
    if (value) {
      EXPECT_EQ(ValueCell(value->Get()).text, c.shown) << c.assignment;
    }
  }
}

}  // namespace
}  // namespace orvctl
