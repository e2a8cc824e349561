// What the command line says of a person, as property values.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/orvctl/command_line.h"
#include "tools/orvctl/values.h"

namespace orvctl {

enum class KindOfNumber { kBusiness, kHome, kOther, kPreferred };

struct TypedNumber {
  std::string number;  // empty: it is taken away
  KindOfNumber kind = KindOfNumber::kBusiness;
};

// "NUMBER:KIND"; without a kind it is the business one. No value for an unknown kind.
std::optional<TypedNumber> ParseNumber(const std::string& text);
// For messages: "business, home, other, preferred".
std::string KindNames();

// A property to be set, or to be taken away where the text is empty.
struct FieldValue {
  ULONG tag = PR_NULL;  // there is no property for it
  std::string text;
  std::string what;  // "fax number '1'", for messages
};
// A second number of one kind goes to that kind's second property, where there is one.
std::vector<FieldValue> FieldValues(const ContactFields& fields);

}  // namespace orvctl
