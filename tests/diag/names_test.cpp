// The name tables, held against the public headers.
#include "diag/names.h"

#include <gtest/gtest.h>

#include "orv/orvcodes.h"
#include "orv/orvtags.h"

namespace diag {
namespace {

#define ORV_CODE(name) {#name, std::string(FindResultName(static_cast<uint32_t>(name)))},
#define ORV_TAG(name) {#name, PropTagName(name).substr(0, PropTagName(name).find(' '))},
const std::pair<std::string, std::string> kPublished[] = {
#include "published_names.inc"
};

TEST(Names, EveryPublishedCodeAndTagBearsItsName) {
  ASSERT_GT(std::size(kPublished), 210u);
  for (const auto& [published, name] : kPublished) EXPECT_EQ(name, published);
}

TEST(Names, TextsCarryNameAndNumber) {
  const std::pair<std::string, const char*> cases[] = {
      {ResultName(0x8004010F), "MAPI_E_NOT_FOUND (0x8004010F)"},
      // Wrapped system errors bear the system's name, but for the three that MAPI renames.
      {ResultName(0x8007007E), "ERROR_MOD_NOT_FOUND (0x8007007E)"},
      {ResultName(0x800706BA), "RPC_S_SERVER_UNAVAILABLE (0x800706BA)"},
      {ResultName(0x80070005), "MAPI_E_NO_ACCESS (0x80070005)"},
      {ResultName(0x80030002), "STG_E_FILENOTFOUND (0x80030002)"},
      {ResultName(0x8007FFFF), "0x8007FFFF"},
      {SystemErrorName(1018), "ERROR_KEY_DELETED (1018)"},
      {SystemErrorName(4294967295u), "4294967295"},
      {PropTagName(0x3001001F), "PR_DISPLAY_NAME_W (0x3001001F)"},
      {PropTagName(0x3A29001E), "PR_STREET_ADDRESS_A (0x3A29001E)"},
      {PropTagName(0x3001000A), "PR_DISPLAY_NAME [PT_ERROR] (0x3001000A)"},
      {PropTagName(0x6700001F), "0x6700001F"},
      {PropTypeName(0x101F), "PT_MV_UNICODE (0x101F)"},
      {PropTypeName(0x0999), "0x0999"},
      {PropTypeName(0x1001F), "0x1001F"}};
  for (const auto& [text, expected] : cases) EXPECT_EQ(text, expected);
}

}  // namespace
}  // namespace diag
