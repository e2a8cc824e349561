// What the file keeps of a contact besides its card, all of it made of the contact.
#pragma once

#include <string>
#include <vector>

#include "formats/contact.h"
#include "providers/book/arrangement.h"

namespace book {

struct Derived {
  std::string name, lastFirst, company, department, title, email;
  std::vector<std::string> sorts;  // one for each arrangement
  std::string card;
  // Of what has neither a number nor a UID of its own, so that it is known again by what it says; else 0.
  int64_t digest = 0;
  struct Number {
    uint32_t key = 0;
    formats::NumberKind kind = formats::NumberKind::kPhone;
    formats::Place place = formats::Place::kNone;
    bool isPreferred = false;
    std::string text, digits, reversed;
  };
  std::vector<Number> numbers;
  std::vector<int32_t> ordinals;  // one for each row: of its fax number, or kNoNumber
};

// Members are left to their own table. A contact without a UID gets its digest.
Derived Derive(const formats::Contact& contact, std::span<const Arrangement> arrangements);
// The card of the contact under this UID.
void GiveUid(const formats::Contact& contact, const std::string& uid, Derived* derived);
// Of an entry that is there, with its UID; `flags` tell whether that was made here.
Derived DeriveEntry(const formats::Contact& contact, uint32_t flags,
                    std::span<const Arrangement> arrangements);

// "Doe, Jane": empty where a part of it is not known, and where that is the name as it is written.
std::string LastFirstOf(const formats::Contact& contact);

// What the index of words is given: plain letters, and with the name those of its parts that it does not say.
struct Sought {
  std::string name, company, department;
};
Sought SoughtOf(std::string_view name, std::string_view lastFirst, std::string_view company,
                std::string_view department);

// The keys of a contact's numbers, in their order: no two alike.
std::vector<uint32_t> KeysOfNumbers(const formats::Contact& contact);
void SetKeys(formats::Contact* contact);

formats::Contact ContactOfCard(std::string_view card);  // fails where it cannot be read

}  // namespace book
