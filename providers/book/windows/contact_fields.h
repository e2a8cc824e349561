// The fields of an entry, one by one: what two versions of it differ in, and what is stored of what was typed.
#pragma once

#include <span>
#include <string>

#include "formats/contact.h"
#include "orv/kit/window.hpp"

namespace book {

namespace kit = orv::kit;

enum class Field : int {
  kName,
  kPrefix,
  kGiven,
  kMiddle,
  kSurname,
  kSuffix,
  kCompany,
  kDepartment,
  kTitle,
  kNumbers,
  kEmails,
  kAddresses,
  kMembers,
  kNote,
  kOthers,
  kCount
};

UINT TitleOf(Field field);  // in the string table
// Of several things a line each.
std::wstring TextOf(const kit::Language& language, const formats::Contact& contact, Field field);
bool IsSame(const formats::Contact& one, const formats::Contact& other, Field field);
void Copy(const formats::Contact& from, Field field, formats::Contact* to);

// One of the faxes is preferred, and no other: `wanted`, or the one that faxes go to anyway.
void PreferOne(formats::Contact* contact, const formats::ContactNumber* wanted);

// Without blanks round texts and without addresses in which nothing stands.
formats::Contact Tidied(formats::Contact contact);

}  // namespace book
