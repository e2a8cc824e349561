// Input made to hurt: every case is far larger than a quadratic reader could finish within the bound.
#include <gtest/gtest.h>

#include <chrono>

#include "formats/vcard.h"

namespace formats {
namespace {

std::string Repeat(const std::string& piece, size_t count) {
  std::string out;
  for (size_t i = 0; i < count; ++i) out += piece;
  return out;
}

std::string Framed(const std::string& lines) { return "BEGIN:VCARD\nFN:x\n" + lines + "\nEND:VCARD\n"; }

// Generous enough for a sanitizer build on a busy machine, and hopeless for anything but linear work.
constexpr std::chrono::seconds kBound{30};

TEST(VCardHostile, TimeGrowsWithTheInputOnly) {
  constexpr size_t kMany = 1'000'000;
  const std::pair<const char*, std::string> cases[] = {
      {"one long line", Framed("NOTE:" + std::string(20 * kMany, 'a'))},
      {"soft breaks without a colon", Framed("NOTE;QUOTED-PRINTABLE;=" + Repeat("\n =", kMany))},
      {"soft breaks", Framed("NOTE;QUOTED-PRINTABLE:=" + Repeat("\n=", kMany))},
      {"blank folds", Framed("VERSION:2.1\nNOTE;QUOTED-PRINTABLE:" + Repeat("\n  ", kMany) + "=")},
      {"open quotes", Framed("NOTE;X=\"" + Repeat("\n \"=", kMany) + ":x")},
      {"separators", Framed("N:" + std::string(5 * kMany, ';'))},
      {"parameters", Framed("NOTE" + std::string(5 * kMany, ';') + ":x")},
      {"escapes", Framed("NOTE:" + std::string(5 * kMany, '\\'))},
      {"labels", Framed(Repeat("a.TEL:1\na.X-ABLABEL:x\n", kMany / 4))},
      {"one identifier", Repeat(Framed("UID:same"), kMany / 10)},
      {"nested agents", Repeat("BEGIN:VCARD\nFN:x\nAGENT:\n", kMany)},
      {"members",
       Framed("KIND:group\n" + Repeat("MEMBER:same\n", kMany / 10)) + Repeat(Framed("UID:same"), kMany / 10)},
      {"phone options", Framed("TEL:tel:1" + std::string(5 * kMany, ';'))},
  };
  for (const auto& [name, bytes] : cases) {
    const auto start = std::chrono::steady_clock::now();
    const VCardFile file = VCardFile::FromBytes(bytes);
    if (file.size() > 0) {
      const VCard card = file.Parse(0);
      EXPECT_EQ(card.displayName, u"x") << name;
      for (const VCardMember& member : card.members) ASSERT_EQ(file.FindMember(member), 1u);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, kBound) << name;
  }
}

}  // namespace
}  // namespace formats
