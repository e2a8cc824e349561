// Texts of a book: conversions, what is compared, and what is sorted by.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "providers/book/types.h"

namespace book {

std::string ToUtf8(std::wstring_view text);
std::wstring ToWide(std::string_view utf8);

// With the letters of the Latin script that are no accented ones written as they are typed without them: "Strauss", "Lodz",
// "Soren".
std::string PlainLetters(std::string_view text);

// Without case and accents and in plain letters, as searches compare.
std::string Folded(std::string_view text);

// The digits alone, as they are looked for from the left and, turned round, from the right.
std::string DigitsOf(std::string_view number);
std::string Reversed(std::string_view digits);

// A UUID that nobody has, and the one that is read as this key.
std::string NewUid();
std::string UidOfKey(const EntryKey& key);

// All zero unless there are as many bytes as a key has.
EntryKey KeyOfBytes(std::span<const uint8_t> bytes);

// Spreads texts over 64 bits.
uint64_t HashOf(std::string_view text, uint64_t seed);

// The order of names in a language. Two systems, and two versions of one, may make different keys of a name.
class SortKeys {
 public:
  // `locale` is a name such as "de-DE".
  explicit SortKeys(std::string locale);
  static SortKeys OfUser();

  // Compared by bytes. Of at most some hundred characters of the name.
  std::string Key(std::string_view name) const;
  // What the keys of all names begin with that begin so: no keys lie between the first and the last such name but those.
  std::string Prefix(std::string_view start) const;

  const std::string& locale() const { return locale_; }
  // Of the tables that the keys are made by.
  std::string version() const;

 private:
  std::string locale_;
  std::wstring wide_;
};

}  // namespace book
