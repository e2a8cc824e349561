// What the command line says of a person, as property values.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/orvctl/command_line.h"
#include "tools/orvctl/values.h"

namespace orvctl {

constexpr size_t kLongestField = 500;  // characters of a name or a number, as in the book's windows

// A name as it is stored: without blanks round it, and with one blank for those that follow one
// another and for characters that control.
std::string TidyName(const std::string& name);
// Why nobody can be called so, a sentence; empty where he can.
std::string WhyBadName(const std::string& tidy);

enum class KindOfNumber { kBusiness, kHome, kOther, kPreferred, kMobile };

struct TypedNumber {
  std::string number;  // empty: it is taken away
  KindOfNumber kind = KindOfNumber::kBusiness;
};

// "NUMBER:KIND"; without a kind it is the business one. No value for an unknown kind.
std::optional<TypedNumber> ParseNumber(const std::string& text);
enum class NumberOf { kFax, kPhone };
// Why the text cannot be such a number, a sentence; empty where it can.
std::string WhyBadNumber(const std::string& text, NumberOf what);
// For messages: "business, home, other, preferred", and of telephones "mobile".
std::string KindNames(NumberOf what);

// A property to be set, or to be taken away where the text is empty.
struct FieldValue {
  ULONG tag = PR_NULL;  // there is no property for it
  std::string text;
  std::string what;  // "fax number '1'", for messages
};
// A second number of one kind goes to that kind's second property, where there is one.
std::vector<FieldValue> FieldValues(const ContactFields& fields);

}  // namespace orvctl
