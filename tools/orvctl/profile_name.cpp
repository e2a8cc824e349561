#include "tools/orvctl/profile_name.h"

#include <algorithm>

#include "tools/orvctl/listing.h"
#include "tools/orvctl/values.h"

namespace orvctl {
namespace {

// Longer ones could be made, but never be the default.
constexpr size_t kMostOfDefault = 31;

bool IsBlank(WCHAR c) {
  constexpr WCHAR kNoBreakSpace = 0x00A0, kFirstSpace = 0x2000, kLastSpace = 0x200A, kWideSpace = 0x3000;
  return c == ' ' || c == kNoBreakSpace || (c >= kFirstSpace && c <= kLastSpace) || c == kWideSpace;
}

}  // namespace

std::string WhyBadProfileName(const std::string& name) {
  const WideString wide = ToWide(name);
  if (name == "-") return "'-' stands for the default profile and cannot be a name";
  if (Printable(name) != name)
    return "the name '" + Printable(name) +
           "' has characters that control the output, turn its direction or cannot be seen; leave them out";
  if (!wide.empty() && std::all_of(wide.begin(), wide.end(), IsBlank))
    return "a name of blanks alone cannot be seen; give one with a letter or a digit";
  if (wide.size() <= kMostOfDefault || wide.size() > ORV_MAX_PROFILE_NAME) return {};
  return "the name '" + name + "' has " + std::to_string(wide.size()) + " characters; with more than " +
         std::to_string(kMostOfDefault) + " it could never be the default profile";
}

}  // namespace orvctl
