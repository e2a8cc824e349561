// One record of an address book: what the files of every format are read into and written from, and what a book keeps.
// Texts are valid UTF-8; control characters stand in none but line feeds in notes and addresses.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace formats {

enum class Place : uint8_t { kNone, kWork, kHome, kOther };
enum class NumberKind : uint8_t { kFax, kPhone, kMobile, kPager, kOther };

// A number is kept as it was typed and compared by its digits.
struct ContactNumber {
  std::string text;  // never empty; without the "tel:" or "fax:" of a URI
  NumberKind kind = NumberKind::kPhone;
  Place place = Place::kNone;
  bool isPreferred = false;
  // Tells the number from the others of its contact for as long as it is kept, whatever is done to its text; 0 is the
  // one that NumberKey makes.
  uint32_t key = 0;
  // Parameters of its line that say something else, each as ";NAME=VALUE" in the form of version 4.0.
  std::string rest;

  bool operator==(const ContactNumber&) const = default;
};

struct ContactEmail {
  std::string text;
  Place place = Place::kNone;
  bool isPreferred = false;
  std::string rest;

  bool operator==(const ContactEmail&) const = default;
};

struct ContactAddress {
  std::string postOfficeBox, extended, street, locality, region, postalCode, country;
  Place place = Place::kNone;
  bool isPreferred = false;
  std::string rest;

  bool operator==(const ContactAddress&) const = default;
};

// What a list says of one of its members; a reader fills in what the file tells.
struct ContactMember {
  // Of a contact or list. Where a file does not say which it is, name and uid are the same text, and mean either.
  std::string uid;
  std::string number;   // with a uid: that number of it; alone: a number that is no contact's
  std::string email;    // an address that is no contact's
  std::string name;     // what it is called, for when it is gone
  std::string entryId;  // bytes: an entry of another provider
  std::string rest;     // as in a number

  bool operator==(const ContactMember&) const = default;
};

struct Contact {
  bool isList = false;
  std::string uid;   // without "urn:uuid:"; empty where the record has none
  std::string name;  // never empty in what a reader gives: else the company, an address or a number
  std::string given, middle, surname, prefix, suffix;
  std::string company, department, title, note;
  std::vector<ContactNumber> numbers;  // in the record's order
  std::vector<ContactEmail> emails;
  std::vector<ContactAddress> addresses;
  std::vector<ContactMember> members;  // of a list
  // Lines that have no place above, in the record's order: unfolded, in the form of version 4.0, without a line end.
  std::vector<std::string> others;
  // Of a record alone: it knows no order of its numbers, and an entry keeps its own.
  bool keepsOrder = false;

  bool operator==(const Contact&) const = default;
};

// The digits of a number, with a plus before them where it has one: what numbers are compared by. Full-width and other
// decimal digits count as digits; an extension ("x", "ext.", ";ext=") is left out. Empty for one without a digit.
std::string CanonicalNumber(std::string_view text);

// What a number without a key of its own is told by: made of its canonical form, never 0.
uint32_t NumberKey(std::string_view text);

// Whether something can be sent to it. One without a digit, such as "none" in the column of a table, is kept as it is and
// shown among the contact's numbers, but it is nobody's address.
bool IsFaxNumber(const ContactNumber& number);

// The number that faxes go to unless another is named: the preferred one of kind fax, else the first one at work, else
// the first. Null where there is none.
const ContactNumber* MainFax(const Contact& contact);
// The preferred e-mail address, else the first. Null where there is none.
const ContactEmail* MainEmail(const Contact& contact);

}  // namespace formats
