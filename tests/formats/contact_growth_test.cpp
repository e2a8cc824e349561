// Files far larger than the memory that reading them may take.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>

#include "formats/contact_io.h"
#include "tests/formats/counting_new.h"

namespace formats {
namespace {

constexpr std::size_t kMostMemory = std::size_t{64} << 20;

// `piece` over and over between two texts, made while it is read.
class RepeatingSource final : public ByteSource {
 public:
  RepeatingSource(std::string_view start, std::string_view piece, std::size_t count, std::string_view end)
      : part_(start), piece_(piece), end_(end), left_(count) {}

  std::optional<std::size_t> Read(char* bytes, std::size_t size) override {
    std::size_t done = 0;
    while (done < size && Refill()) {
      const std::size_t count = std::min(part_.size(), size - done);
      std::copy_n(part_.data(), count, bytes + done);
      part_.remove_prefix(count);
      done += count;
    }
    return done;
  }

 private:
  bool Refill() {
    if (!part_.empty()) return true;
    if (left_ == 0) part_ = std::exchange(end_, {});
    if (left_ > 0) part_ = piece_;
    left_ -= left_ > 0;
    return !part_.empty();
  }

  std::string_view part_, piece_, end_;
  std::size_t left_;
};

TEST(ContactGrowth, MemoryStaysSmallWhateverTheFileHolds) {
  const std::string line(1 << 20, 'a');
  constexpr std::size_t kLine = 300, kLongerThanRecords = 20, kRecords = 200'000;
  const struct {
    const char* name;
    RepeatingSource source;
    std::size_t records, rejected;
  } cases[] = {
      {"card in one line",
       {"BEGIN:VCARD\nFN:a\nNOTE:", line, kLine, "\nEND:VCARD\nBEGIN:VCARD\nFN:b\nEND:VCARD\n"},
       1,
       1},
      {"row in one line", {"name,fax\na,", line, kLongerThanRecords, "\nb,1\n"}, 1, 1},
      // Its first line, and the line of the quotation mark that was to end it.
      {"quoted cell", {"name,fax\na,\"", line, kLongerThanRecords, "\n\"\nb,1\n"}, 1, 2},
      {"entry in one line", {"dn: cn=a\ncn: ", line, kLongerThanRecords, "\n\ndn: cn=b\ncn: b\n"}, 1, 1},
      {"cards", {"", "BEGIN:VCARD\nFN:a\nTEL;FAX:1\nEND:VCARD\n", kRecords, ""}, kRecords, 0},
      {"rows", {"name,fax\n", "a,1\n", kRecords, ""}, kRecords, 0},
  };
  for (auto c : cases) {
    test::ForgetHighest();
    OpenResult opened;
    const auto reader = ContactReader::Open(c.source, {}, &opened);
    ASSERT_NE(reader, nullptr) << c.name;
    std::size_t records = 0, rejected = 0;
    Contact contact;
    for (ReadResult result; (result = reader->Next(&contact)) != ReadResult::kEnd;) {
      ASSERT_NE(result, ReadResult::kFailed);
      ++(result == ReadResult::kRecord ? records : rejected);
    }
    EXPECT_EQ(records, c.records) << c.name;
    EXPECT_EQ(rejected, c.rejected) << c.name;
    EXPECT_LT(test::HighestHeld(), kMostMemory) << c.name;
  }
}

// Generous enough for a sanitizer build on a busy machine, and hopeless for anything but linear work.
constexpr std::chrono::seconds kBound{30};

TEST(ContactGrowth, TimeGrowsWithTheRecordOnly) {
  constexpr std::size_t kMany = 700'000;
  const auto many = [](std::string_view piece) {
    std::string out;
    while (out.size() < kMany) out += piece;
    return out;
  };
  const std::string begin = "BEGIN:VCARD\nFN:x\n", end = "\nEND:VCARD\n";
  const std::string cases[] = {
      begin + many("a.TEL:1\na.X-ABLABEL:x\n") + end,
      begin + many("TEL;PREF=2:1\n") + end,
      begin + "TEL:tel:1" + many(";a") + end,
      begin + "TEL;TYPE=" + many("x,") + ":1" + end,
      begin + many("NOTE;X=1:a\n") + end,
      begin + "NOTE" + many(";X=\"") + ":a" + end,
      begin + many("BEGIN:VCARD\n") + end,
      begin + "NOTE;QUOTED-PRINTABLE:=" + many("\n=") + end,
      begin + "NOTE;QUOTED-PRINTABLE;=" + many("\n =") + end,
      begin + "VERSION:2.1\nNOTE;QUOTED-PRINTABLE:" + many("\n  ") + "=" + end,
      begin + "NOTE;X=\"" + many("\n \"=") + ":x" + end,
      begin + "N:" + many(";") + end,
      begin + "NOTE:" + many("\\") + end,
      begin + many("BEGIN:VCARD\nFN:x\nAGENT:\n") + end,
      "name,fax,members\nx,\"" + many("1\n") + "\",\n",
      "name,fax,members\nx," + many("1:::") + ",\n",
      "name,fax\n" + many("\"\"\"") + "\n",
      "dn: cn=x\ncn: x\n" + many("ou: a\n"),
      "dn: cn=x\ncn: x\nmember: " + many("cn=a+"),
      "dn: cn=x\ncn: x\npostalAddress: " + many("$"),
  };
  for (const std::string& file : cases) {
    MemorySource source(file);
    OpenResult opened;
    const auto reader = ContactReader::Open(source, {}, &opened);
    ASSERT_NE(reader, nullptr) << file.substr(0, 60);
    std::string card;
    const auto start = std::chrono::steady_clock::now();
    for (Contact contact; reader->Next(&contact) != ReadResult::kEnd;) WriteCard(contact, &card);
    EXPECT_LT(std::chrono::steady_clock::now() - start, kBound) << file.substr(0, 60);
  }
}

}  // namespace
}  // namespace formats
