// The parameters of a line of a card: what they say in terms of a contact, and what is left, in the form of version 4.0.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "formats/number_words.h"
#include "formats/vcard_lines.h"

namespace formats {

// Parameters of ours, for what version 4.0 has no words.
inline constexpr std::string_view kKeyParam = "X-ORV-KEY";          // of a number
inline constexpr std::string_view kNameParam = "X-ORV-NAME";        // of a member
inline constexpr std::string_view kNumberParam = "X-ORV-NUMBER";    // of a member
inline constexpr std::string_view kEmailParam = "X-ORV-EMAIL";      // of a member
inline constexpr std::string_view kEntryIdParam = "X-ORV-ENTRYID";  // of a member
inline constexpr std::string_view kMoreParam = "X-ORV-MORE";  // parts of a value beyond those that we know
// The group of the line, where other lines of the card belong to it; the first in a `rest`.
inline constexpr std::string_view kGroupParam = "GROUP";
// A number that is of none of the other kinds.
inline constexpr std::string_view kOtherKindType = "x-number";

enum class LineUse {
  kNumber,
  kPlaced,  // an address of either sort
  kMember,
  kText,   // one of the contact's texts
  kOther,  // kept as it came
};

inline constexpr int kNotPreferred = 101;  // 1 is the first choice, 100 the last

struct CardParams {
  VCardEncoding encoding = VCardEncoding::kNone;
  std::string charset;
  NumberWords words;
  int preference = kNotPreferred;
  uint32_t key = 0;
  std::string memberName, memberNumber, memberEmail, memberEntryId;
  std::string types;  // of kOther, as they came, with commas between
  std::string rest;
};

CardParams ReadCardParams(std::string_view params, LineUse use);

// Appends ";NAME=VALUE", the value in quotation marks where it needs them; line feeds, quotation marks and carets are
// written as ^n, ^' and ^^.
void AppendParam(std::string* out, std::string_view name, std::string_view value);

}  // namespace formats
