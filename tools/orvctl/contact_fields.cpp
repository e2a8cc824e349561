#include "tools/orvctl/contact_fields.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "formats/contact.h"
#include "formats/text_codec.h"

namespace orvctl {
namespace {

struct Kind {
  KindOfNumber kind;
  const char* name;
  ULONG fax;
  ULONG phone;
  ULONG secondPhone;
};

// PR_NULL: there is no such property. One fax property stands for all places but these two.
constexpr Kind kKinds[] = {
    {KindOfNumber::kBusiness, "business", PR_BUSINESS_FAX_NUMBER_W, PR_BUSINESS_TELEPHONE_NUMBER_W,
     PR_BUSINESS2_TELEPHONE_NUMBER_W},
    {KindOfNumber::kHome, "home", PR_HOME_FAX_NUMBER_W, PR_HOME_TELEPHONE_NUMBER_W,
     PR_HOME2_TELEPHONE_NUMBER_W},
    {KindOfNumber::kOther, "other", PR_PRIMARY_FAX_NUMBER_W, PR_OTHER_TELEPHONE_NUMBER_W, PR_NULL},
    {KindOfNumber::kPreferred, "preferred", PR_PRIMARY_FAX_NUMBER_W, PR_PRIMARY_TELEPHONE_NUMBER_W, PR_NULL},
    {KindOfNumber::kMobile, "mobile", PR_NULL, PR_MOBILE_TELEPHONE_NUMBER_W, PR_NULL}};

const Kind* FindKind(std::string_view name) {
  const auto found = std::find_if(std::begin(kKinds), std::end(kKinds),
                                  [&](const Kind& each) { return formats::EqualsFolded(each.name, name); });
  return found != std::end(kKinds) ? found : nullptr;
}

constexpr wchar_t kBlanks[] =
    L" \u00A0\u2000\u2001\u2002\u2003\u2004\u2005\u2006\u2007\u2008\u2009\u200A\u3000";

bool IsControl(wchar_t c) {
  constexpr wchar_t kFirstHigh = 0x7F, kLastHigh = 0x9F, kLineEnd = 0x2028, kParagraphEnd = 0x2029;
  return c < L' ' || (c >= kFirstHigh && c <= kLastHigh) || c == kLineEnd || c == kParagraphEnd;
}

// Those that embed, override or isolate; marks of a direction alone belong into names.
bool TurnsDirection(wchar_t c) {
  constexpr wchar_t kFirst = 0x202A, kLast = 0x202E, kFirstIsolate = 0x2066, kLastIsolate = 0x2069;
  return (c >= kFirst && c <= kLast) || (c >= kFirstIsolate && c <= kLastIsolate);
}

}  // namespace

std::string TidyName(const std::string& name) {
  WideString wide = ToWide(name);
  std::replace_if(wide.begin(), wide.end(), IsControl, L' ');
  const auto areBlanks = [](wchar_t one, wchar_t other) { return one == L' ' && other == L' '; };
  wide.erase(std::unique(wide.begin(), wide.end(), areBlanks), wide.end());
  const auto isBlank = [](wchar_t c) {
    return std::wstring_view(kBlanks).find(c) != std::wstring_view::npos;
  };
  const auto first = std::find_if_not(wide.begin(), wide.end(), isBlank);
  const auto last = std::find_if_not(wide.rbegin(), wide.rend(), isBlank).base();
  return first < last ? ToUtf8(WideString(first, last).c_str()) : std::string();
}

std::string WhyBadName(const std::string& tidy) {
  const WideString wide = ToWide(tidy);
  if (std::any_of(wide.begin(), wide.end(), TurnsDirection))
    return "a name holds no characters that turn the direction of what follows";
  if (wide.size() <= kLongestField) return {};
  return "a name has at most " + std::to_string(kLongestField) + " characters, this one has " +
         std::to_string(wide.size());
}

std::optional<TypedNumber> ParseNumber(const std::string& text) {
  const size_t colon = text.rfind(':');
  if (colon == std::string::npos) return TypedNumber{text, KindOfNumber::kBusiness};
  const Kind* const kind = FindKind(std::string_view(text).substr(colon + 1));
  if (kind == nullptr) return std::nullopt;
  return TypedNumber{text.substr(0, colon), kind->kind};
}

namespace {

// Where numbers go that were not named before.
class Places {
 public:
  explicit Places(std::vector<FieldValue>& values) : values_(values) {}

  void Add(const std::string& text, const char* what, bool isFax) {
    const TypedNumber typed = ParseNumber(text).value_or(TypedNumber{});
    const Kind& kind = *std::find_if(std::begin(kKinds), std::end(kKinds),
                                     [&](const Kind& each) { return each.kind == typed.kind; });
    const ULONG first = isFax ? kind.fax : kind.phone;
    const ULONG second = isFax ? PR_NULL : kind.secondPhone;
    values_.push_back({IsTaken(first) ? (IsTaken(second) ? PR_NULL : second) : first, typed.number,
                       std::string(what) + " '" + text + "'"});
  }

 private:
  bool IsTaken(ULONG tag) const {
    return std::any_of(values_.begin(), values_.end(),
                       [&](const FieldValue& each) { return each.tag == tag; });
  }

  std::vector<FieldValue>& values_;
};

}  // namespace

std::vector<FieldValue> FieldValues(const ContactFields& fields) {
  std::vector<FieldValue> values;
  const auto add = [&](const std::optional<std::string>& text, ULONG tag, const char* what) {
    if (text) values.push_back({tag, *text, std::string(what) + " '" + *text + "'"});
  };
  add(fields.name, PR_DISPLAY_NAME_W, "name");
  add(fields.given, PR_GIVEN_NAME_W, "given name");
  add(fields.surname, PR_SURNAME_W, "surname");
  Places places(values);
  for (const std::string& fax : fields.faxes) places.Add(fax, "fax number", true);
  for (const std::string& phone : fields.phones) places.Add(phone, "telephone number", false);
  add(fields.company, PR_COMPANY_NAME_W, "company");
  add(fields.department, PR_DEPARTMENT_NAME_W, "department");
  add(fields.title, PR_TITLE_W, "title");
  add(fields.email, PR_SMTP_ADDRESS_W, "e-mail address");
  add(fields.note, PR_COMMENT_W, "remark");
  return values;
}

std::string WhyBadNumber(const std::string& text, NumberOf what) {
  const auto typed = ParseNumber(text);
  const bool isFax = what == NumberOf::kFax;
  if (!typed || (isFax && typed->kind == KindOfNumber::kMobile))
    return "'" + text + "' is not NUMBER or NUMBER:KIND with one of the kinds " + KindNames(what);
  if (typed->number.size() > kLongestField)
    return "a number has at most " + std::to_string(kLongestField) + " characters";
  if (typed->number.empty() || !formats::CanonicalNumber(typed->number).empty()) return {};
  return "'" + typed->number + "' has no digit and is no " + (isFax ? "fax" : "telephone") + " number";
}

std::string KindNames(NumberOf what) {
  std::string names;
  for (const Kind& each : kKinds) {
    if (what == NumberOf::kFax && each.kind == KindOfNumber::kMobile) continue;
    names.append(names.empty() ? "" : ", ").append(each.name);
  }
  return names;
}

}  // namespace orvctl
