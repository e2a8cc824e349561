// Contact files: reading cards against finding their lines and widening what they say, and what grows with the file.
#include <algorithm>
#include <string>
#include <string_view>

#include "bench/harness.h"
#include "formats/contact_io.h"
#include "providers/sample/sample_keys.h"

namespace orv::bench {
namespace {

// Cards as phones and mail programs write them, every fourth with a folded remark that has escapes.
std::string MakeCards(std::size_t count) {
  std::string text;
  for (std::size_t i = 0; i < count; ++i) {
    const std::string number = std::to_string(i);
    text += "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:urn:uuid:6d1b8a7e-3b7f-4f5a-9c38-" + number +
            "\r\nFN:Anna Berg" + number + "\r\nN:Berg" + number +
            ";Anna;;;\r\nORG:Nordhamn Shipping AB;Freight\r\nTITLE:Dispatcher\r\n"
            "EMAIL;TYPE=INTERNET:anna." +
            number + "@nordhamn.example\r\nTEL;TYPE=FAX,WORK:+46 31 555 " + number +
            "\r\nTEL;TYPE=VOICE,WORK:+46 31 556 " + number + "\r\nTEL;TYPE=CELL:+46 70 " + number +
            "\r\nADR;TYPE=WORK:;;Kajgatan 4;G\xC3\xB6teborg;;411 09;Sweden\r\n";
    if (i % 4 == 0)
      text += "NOTE:Prefers faxes before noon\\, Tokyo time.\\nSecond line\r\n  folded once.\r\n";
    text += "END:VCARD\r\n";
  }
  return text;
}

std::size_t ReadCards(const std::string& text) {
  formats::MemorySource source(text);
  formats::OpenResult opened;
  const auto reader = formats::ContactReader::Open(source, {}, &opened);
  std::size_t numbers = 0;
  for (formats::Contact contact; reader->Next(&contact) == formats::ReadResult::kRecord;)
    numbers += contact.numbers.size();
  return numbers;
}

// As books keep them.
std::vector<std::string> MakeCanonical(const std::string& text) {
  formats::MemorySource source(text);
  formats::OpenResult opened;
  const auto reader = formats::ContactReader::Open(source, {}, &opened);
  std::vector<std::string> cards;
  for (formats::Contact contact; reader->Next(&contact) == formats::ReadResult::kRecord;)
    formats::WriteCard(contact, &cards.emplace_back());
  return cards;
}

// What any reader has to do: copy the file, find every line's end and colon, widen the value into a block of its own.
std::size_t WidenLines(const std::string& original) {
  const std::string text = original;
  std::size_t size = 0;
  for (std::size_t begin = 0, end; begin < text.size(); begin = end + 1) {
    end = std::min(text.find('\n', begin), text.size());
    const std::string_view line = std::string_view(text).substr(begin, end - begin);
    const std::string_view value = line.substr(std::min(line.find(':'), line.size()));
    size += std::u16string(value.begin(), value.end()).size();
  }
  return size;
}

void CompareReading() {
  const std::string text = MakeCards(10'000);
  const std::vector<std::string> cards = MakeCanonical(text);
  const auto floor = [&] { Require(WidenLines(text) != 0, "the lines were not found"); };
  const auto read = [&] { Require(ReadCards(text) == 30'000, "a card was not read"); };
  const auto readKept = [&] {
    formats::Contact contact;
    for (const std::string& card : cards) Require(formats::ReadCard(card, &contact), "a card was not read");
  };
  const auto write = [&] {
    formats::Contact contact;
    std::string card;
    for (const std::string& each : cards) {
      Require(formats::ReadCard(each, &contact), "a card was not read");
      formats::WriteCard(contact, &card);
      Require(card == each, "a card was written otherwise");
    }
  };
  Report("contact file of 10000 cards read", Compare(read, floor), 7.0);
  Report("10000 cards of a book read", Compare(readKept, floor), 6.0);
  Report("the same, and written again", Compare(write, floor), 8.0);
}

void MeasureGrowth() {
  const auto perCard = [](std::size_t count) {
    const std::string text = MakeCards(count);
    return Measure([&] { ReadCards(text); }) / static_cast<double>(count);
  };
  Report("reading a card of 100000 to one of 1000", perCard(100'000), perCard(1'000), "ns", 2.0);
}

// Each look-up asks for another key, as a client does that comes back with old identifiers.
double MeasureStaleLookUp(std::size_t count) {
  const std::string text = MakeCards(count);
  formats::MemorySource source(text);
  sample::ContactCards cards;
  Require(sample::ContactCards::Read(source, &cards) == S_OK && cards.size() == count, "no cards");
  const sample::KeyIndex keys(cards);
  ULONGLONG key = 0;
  return Measure([&] { Require(!keys.FindContact(key += 0x9E3779B97F4A7C15), "a stale key was found"); });
}

const Benchmark kContacts("contacts", [] {
  CompareReading();
  MeasureGrowth();
  // Memory that no cache holds makes the difference; a scan would be a hundred times.
  Report("stale identifier of the sample, 100000 cards to 1000", MeasureStaleLookUp(100'000),
         MeasureStaleLookUp(1'000), "ns", 12.0);
});

}  // namespace
}  // namespace orv::bench
