// The name tables, held against the public headers.
#include "diag/names.h"

#include <gtest/gtest.h>

#include "orv/orvcodes.h"
#include "orv/orvtags.h"

namespace diag {
namespace {

struct Published {
  const char* name;
  uint32_t number;
};

#define ORV_CODE(name) {#name, static_cast<uint32_t>(name)},
#define ORV_TAG(name)
constexpr Published kCodes[] = {
#include "published_names.inc"
};
#undef ORV_CODE
#undef ORV_TAG
#define ORV_CODE(name)
#define ORV_TAG(name) {#name, static_cast<uint32_t>(name)},
constexpr Published kTags[] = {
#include "published_names.inc"
};

TEST(ResultNames, EveryPublishedCodeBearsItsName) {
  ASSERT_GT(std::size(kCodes), 60u);
  for (const Published& code : kCodes) EXPECT_EQ(FindResultName(code.number), code.name);
}

TEST(PropNames, EveryPublishedTagBearsItsName) {
  ASSERT_GT(std::size(kTags), 150u);
  for (const Published& tag : kTags) {
    const std::string text = PropTagName(tag.number);
    EXPECT_EQ(text.substr(0, text.find(' ')), tag.name) << text;
  }
}

TEST(ResultNames, TextsCarryNameAndNumber) {
  EXPECT_EQ(ResultName(0x8004010F), "MAPI_E_NOT_FOUND (0x8004010F)");
  EXPECT_EQ(ResultName(0), "S_OK (0x00000000)");
  // Wrapped system errors bear the system's name, but for the three that MAPI renames.
  EXPECT_EQ(ResultName(0x8007007E), "ERROR_MOD_NOT_FOUND (0x8007007E)");
  EXPECT_EQ(ResultName(0x800706BA), "RPC_S_SERVER_UNAVAILABLE (0x800706BA)");
  EXPECT_EQ(ResultName(0x80070005), "MAPI_E_NO_ACCESS (0x80070005)");
  EXPECT_EQ(ResultName(0x80030002), "STG_E_FILENOTFOUND (0x80030002)");
  EXPECT_EQ(ResultName(0x8007FFFF), "0x8007FFFF");
  EXPECT_EQ(ResultName(2), "0x00000002");
  EXPECT_EQ(SystemErrorName(1018), "ERROR_KEY_DELETED (1018)");
  EXPECT_EQ(SystemErrorName(4294967295u), "4294967295");
}

TEST(PropNames, TypesShowInTheName) {
  struct Case {
    uint32_t tag;
    const char* text;
  };
  const Case cases[] = {{0x3001001F, "PR_DISPLAY_NAME_W (0x3001001F)"},
                        {0x3A29001E, "PR_STREET_ADDRESS_A (0x3A29001E)"},
                        {0x3D10101F, "PR_SERVICE_DELETE_FILES_W (0x3D10101F)"},
                        {0x3001000A, "PR_DISPLAY_NAME [PT_ERROR] (0x3001000A)"},
                        {0x0FFF0102, "PR_ENTRYID (0x0FFF0102)"},
                        {0x6700001F, "0x6700001F"},
                        {0, "PR_NULL (0x00000000)"}};
  for (const Case& c : cases) EXPECT_EQ(PropTagName(c.tag), c.text);
  EXPECT_EQ(PropTypeName(0x101F), "PT_MV_UNICODE (0x101F)");
  EXPECT_EQ(PropTypeName(0x1003), "PT_MV_LONG (0x1003)");
  EXPECT_EQ(PropTypeName(0x0999), "0x0999");
  EXPECT_EQ(PropTypeName(0x1001F), "0x1001F");
}

}  // namespace
}  // namespace diag
