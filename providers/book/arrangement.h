// The orders that a file keeps its rows in, side by side: names in one form, sorted as one language sorts them. Whoever
// opens a book finds the order that he wants, and leaves those of others as they are.
#pragma once

#include <vector>

#include "providers/book/database.h"
#include "providers/book/text.h"

namespace book {

class Arrangement {
 public:
  // The lowest bit of the number is the form of names.
  Arrangement(uint8_t number, std::string locale) : number_(number), keys_(std::move(locale)) {}

  uint8_t number() const { return number_; }
  NameForm form() const { return FormOf(number_); }
  static NameForm FormOf(uint8_t number) { return static_cast<NameForm>(number & 1); }

  // Sort keys of its rows lie from begin() to before end().
  std::string begin() const { return std::string(1, static_cast<char>(number_)); }
  std::string end() const { return std::string(1, static_cast<char>(number_ + 1)); }
  // By which a row stands that is listed so.
  std::string Key(std::string_view listed) const { return begin() + keys_.Key(listed); }
  std::string KeyOf(std::string_view name, std::string_view lastFirst) const {
    return Key(form() == NameForm::kLastFirst && !lastFirst.empty() ? lastFirst : name);
  }
  std::string Prefix(std::string_view start) const { return begin() + keys_.Prefix(start); }

  // Of texts that are no names.
  const SortKeys& keys() const { return keys_; }

 private:
  uint8_t number_;
  SortKeys keys_;
};

// All that the file has, those of names as written first.
std::vector<Arrangement> ReadArrangements(Database& database);
// The user's; where the file has no such, the one most like it.
Arrangement ArrangementFor(Database& database, NameForm form);

// The user's, which the file does not have yet, without any rows; within a transaction.
Arrangement AddArrangement(Database& database, NameForm form);
// Makes the user's where the file has none such and not too many others, in one transaction.
void Arrange(Database& database, NameForm form);
// Those that nobody has asked for in a month go, but none of `used`; within a transaction.
void DropUnused(Database& database, std::span<const NameForm> used);

}  // namespace book
