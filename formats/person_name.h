// How people are addressed, and what they are called in full.
#pragma once

#include <string>
#include <string_view>

#include "formats/contact.h"

namespace formats {

// "Frau", "Mme", "Dr.", in any of our languages: nothing but words that stand before a name or, in Japanese, behind it.
bool IsFormOfAddress(std::string_view text);

// The parts of the contact's name in their order. What is only courtesy, such as "Herr", is no part of it: lists sort by
// it.
std::string FullNameOf(const Contact& contact);

}  // namespace formats
