// What a source of contacts can say, so that an entry keeps what a record had no place for.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "formats/contact.h"
#include "formats/contact_csv.h"

namespace formats {

// How many numbers or addresses a source has room for, by kind and place.
struct Room {
  static constexpr unsigned kAny = ~0u;
  static constexpr std::size_t kPlaces = 4;

  // A source that tells no places means any of them.
  bool tellsPlaces = false;
  std::array<unsigned, kPlaces> columns{};
};

struct SourceScope {
  bool isWhole = true;  // a record says everything that is known of its contact; nothing below counts then
  // What does not stand in a record is not said: it names all numbers of one kind, all e-mail addresses, all members or
  // none of them, and a postal address as a whole.
  bool isOpen = false;
  bool saysName = false, saysMembers = false, saysOrder = false;
  std::vector<std::string Contact::*> texts;
  std::vector<std::string ContactAddress::*> addressParts;
  static constexpr std::size_t kNumberKinds = 5;
  std::array<Room, kNumberKinds> numbers;
  unsigned allNumbers = 0;  // columns that hold numbers of any kind and place
  unsigned emails = 0;
  Room addresses;
  unsigned allAddresses = 0;
};

SourceScope ScopeOfLdif();
SourceScope ScopeOfCsv(const std::vector<CsvColumn>& columns);

// `record` with what `stored`, the same contact, has besides where the source could not say it.
Contact WithUnsaid(const Contact& stored, Contact record, const SourceScope& scope);

}  // namespace formats
