// Input made to hurt: every case is far larger than a quadratic reader could finish within the bound.
#include <gtest/gtest.h>

#include <chrono>
#include <random>

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
      {"phone options", Framed("TEL:tel:1" + std::string(5 * kMany, ';'))},
  };
  for (const auto& [name, bytes] : cases) {
    const auto start = std::chrono::steady_clock::now();
    const VCardFile file = VCardFile::FromBytes(bytes);
    if (file.size() > 0) {
      EXPECT_EQ(file.Parse(0).displayName, u"x") << name;
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, kBound) << name;
  }
}

TEST(VCardHostile, MembersOfABigGroupAreFoundByIdentifier) {
  constexpr size_t kMembers = 50'000;
  std::string bytes = "BEGIN:VCARD\nKIND:group\nFN:all\n";
  for (size_t i = 0; i < kMembers; ++i) bytes += "MEMBER:urn:uuid:" + std::to_string(i) + "\n";
  bytes += "END:VCARD\n";
  for (size_t i = kMembers; i-- > 0;) bytes += Framed("UID:" + std::to_string(i));
  const VCardFile file = VCardFile::FromBytes(std::move(bytes));
  const VCard group = file.Parse(0);
  ASSERT_EQ(group.members.size(), kMembers);
  for (size_t i = 0; i < kMembers; ++i) ASSERT_EQ(file.FindMember(group.members[i]), kMembers - i);
}

// Fixed seeds, so that a failure can be run again.
TEST(VCardHostile, DamagedTextNeverBreaksTheReader) {
  const std::string good =
      "BEGIN:VCARD\r\nVERSION:2.1\r\nN;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:=C3=91;=\r\n=C3\r\n"
      "TEL;WORK;FAX:tel:1;ext=2\r\nADR;HOME:;;a\\;b\r\n c;;\r\nEMAIL;PREF:a@b\r\nNOTE;BASE64:\r\n "
      "YWJj\r\n\r\n"
      "AGENT:\r\nBEGIN:VCARD\r\nFN:x\r\nEND:VCARD\r\nitem1.X-ABLABEL:\"fax\r\nUID:urn:uuid:1\r\nEND:VCARD\r\n"
      "BEGIN:VCARD\r\nKIND:group\r\nFN:g\r\nMEMBER:mailto:a@b\r\nEND:VCARD\r\n";
  constexpr char kBytes[] = "\n\r\t =:;,\\\".%\x80\xC3\xFF\0BEGINEND";
  std::mt19937 random(20240131);
  size_t served = 0;
  for (int round = 0; round < 5000; ++round) {
    std::string bytes = good;
    for (int change = 0; change < 4; ++change) {
      const size_t at = random() % bytes.size();
      if (random() % 3 == 0)
        bytes.erase(at, random() % 20);
      else
        bytes.insert(at, 1, kBytes[random() % (sizeof(kBytes) - 1)]);
    }
    const VCardFile file = VCardFile::FromBytes(bytes);
    for (size_t i = 0; i < file.size(); ++i, ++served) {
      const VCard card = file.Parse(i);
      ASSERT_FALSE(card.displayName.empty()) << bytes;
      ASSERT_EQ(card.isGroup, file.IsGroup(i)) << bytes;
      ASSERT_TRUE(card.uid.empty() || file.FindByUid(card.uid)) << bytes;
    }
  }
  EXPECT_GT(served, 5000u);
}

}  // namespace
}  // namespace formats
