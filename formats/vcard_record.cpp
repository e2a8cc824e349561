// One vCard record: what each property means.
#include "formats/vcard_record.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "formats/text_codec.h"

namespace formats {
namespace {

struct PropertyName {
  std::string_view name;
  VCardProperty property;
};

constexpr PropertyName kPropertyNames[] = {
    {"ADR", VCardProperty::kAddress},
    {"AGENT", VCardProperty::kAgent},
    {"EMAIL", VCardProperty::kEmail},
    {"FN", VCardProperty::kFormattedName},
    {"KIND", VCardProperty::kKind},
    {"MEMBER", VCardProperty::kMember},
    {"N", VCardProperty::kName},
    {"NICKNAME", VCardProperty::kNickname},
    {"NOTE", VCardProperty::kNote},
    {"ORG", VCardProperty::kOrganisation},
    {"TEL", VCardProperty::kPhone},
    {"TITLE", VCardProperty::kTitle},
    {"UID", VCardProperty::kUid},
    {"VERSION", VCardProperty::kVersion},
    {"X-ABLABEL", VCardProperty::kLabel},
    {"X-ADDRESSBOOKSERVER-KIND", VCardProperty::kKind},
    {"X-ADDRESSBOOKSERVER-MEMBER", VCardProperty::kMember},
};

bool RemovePrefix(std::string_view& text, std::string_view prefix) {
  if (!EqualsFolded(text.substr(0, prefix.size()), prefix)) return false;
  text.remove_prefix(prefix.size());
  return true;
}

// Control characters end strings and break table rows; only tabs and line breaks pass, the latter as LF.
std::string CleanText(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (const char c : text) {
    if (static_cast<unsigned char>(c) >= 0x20 || c == '\n' || c == '\t') out += c;
  }
  return std::string(TrimBlanks(out));
}

// For what is shown on one line: every run of blanks and line breaks is one space.
std::string OneLine(std::string_view text) {
  std::string out;
  for (const char c : CleanText(text)) {
    const bool blank = c == ' ' || c == '\t' || c == '\n';
    if (!blank) out += c;
    if (blank && out.back() != ' ') out += ' ';
  }
  return out;
}

std::vector<std::string> ReadComponents(const VCardLine& line, const VCardParams& params,
                                        VCardVersion version, size_t atLeast) {
  std::vector<std::string> parts = SplitVCardComponents(DecodeVCardValue(line.value, params), version);
  for (std::string& part : parts) part = CleanText(part);
  parts.resize(std::max(parts.size(), atLeast));
  return parts;
}

// The parts that are not empty, `separator` between them.
template <class Iterator>
std::string Join(Iterator begin, Iterator end, std::string_view separator) {
  std::string out;
  for (; begin != end; ++begin) {
    if (begin->empty()) continue;
    if (!out.empty()) out += separator;
    out += *begin;
  }
  return out;
}

VCardPlace PlaceOf(const VCardParams& params) {
  if (params.work) return VCardPlace::kWork;
  return params.home ? VCardPlace::kHome : VCardPlace::kUnknown;
}

// The extension of "+1-555-0100;ext=102"; what else follows a semicolon is no part of the number.
std::string_view SplitExtension(std::string_view& number) {
  const size_t end = std::min(number.find(';'), number.size());
  const std::string_view options = number.substr(end);
  number = number.substr(0, end);
  for (size_t at = 0; at < options.size();) {
    const size_t next = std::min(options.find(';', at + 1), options.size());
    std::string_view option = options.substr(at + 1, next - at - 1);
    if (RemovePrefix(option, "ext=")) return option;
    at = next;
  }
  return {};
}

template <class T>
struct Ranked {
  int preference;
  T item;
};

template <class T>
std::vector<T> TakeByPreference(std::vector<Ranked<T>>&& ranked) {
  std::stable_sort(ranked.begin(), ranked.end(),
                   [](const Ranked<T>& a, const Ranked<T>& b) { return a.preference < b.preference; });
  std::vector<T> items;
  items.reserve(ranked.size());
  for (Ranked<T>& entry : ranked) items.push_back(std::move(entry.item));
  return items;
}

// Gathers one record's properties; what depends on several of them is settled at the end.
class RecordBuilder {
 public:
  explicit RecordBuilder(VCardVersion version) : version_(version) {}

  void Add(const VCardLine& line);
  VCard Finish();

 private:
  struct GroupedPhone {
    VCardPhone phone;
    std::string group;
  };

  void AddName(const VCardLine& line);
  void AddOrganisation(const VCardLine& line);
  void AddPhone(const VCardLine& line);
  void AddAddress(const VCardLine& line);
  void AddMember(const VCardLine& line);
  void KeepFirst(std::u16string& target, const VCardLine& line);
  void ApplyLabels();
  std::u16string ChooseDisplayName() const;

  const VCardVersion version_;
  VCard card_;
  std::u16string composedName_, nickname_;
  std::vector<Ranked<std::u16string>> emails_;
  std::vector<Ranked<GroupedPhone>> phones_;
  std::unordered_map<std::string, std::string> labels_;  // by property group
};

void RecordBuilder::Add(const VCardLine& line) {
  switch (FindVCardProperty(line.name)) {
    case VCardProperty::kAddress:
      return AddAddress(line);
    case VCardProperty::kFormattedName:
      return KeepFirst(card_.displayName, line);
    case VCardProperty::kMember:
      return AddMember(line);
    case VCardProperty::kName:
      return AddName(line);
    case VCardProperty::kNickname:
      return KeepFirst(nickname_, line);
    case VCardProperty::kOrganisation:
      return AddOrganisation(line);
    case VCardProperty::kPhone:
      return AddPhone(line);
    case VCardProperty::kTitle:
      return KeepFirst(card_.title, line);
    case VCardProperty::kEmail: {
      std::string email = ReadVCardEmail(line, version_);
      if (!email.empty()) emails_.push_back({ParseVCardParams(line.params).preference, ToUtf16(email)});
      return;
    }
    case VCardProperty::kKind:
      card_.isGroup |= EqualsFolded(ReadVCardText(line, version_), "group");
      return;
    case VCardProperty::kLabel:
      if (!line.group.empty()) labels_.emplace(FoldAscii(line.group), ReadVCardText(line, version_));
      return;
    case VCardProperty::kNote:
      if (card_.note.empty()) card_.note = ToUtf16(ReadVCardText(line, version_));
      return;
    case VCardProperty::kUid:
      if (card_.uid.empty()) card_.uid = ToUtf16(ReadVCardUid(line, version_));
      return;
    case VCardProperty::kAgent:
    case VCardProperty::kOther:
    case VCardProperty::kVersion:
      return;
  }
}

void RecordBuilder::KeepFirst(std::u16string& target, const VCardLine& line) {
  if (target.empty()) target = ToUtf16(OneLine(ReadVCardText(line, version_)));
}

void RecordBuilder::AddName(const VCardLine& line) {
  if (!composedName_.empty()) return;
  enum { kFamily, kGiven, kMiddle, kPrefix, kSuffix, kCount };
  auto parts = ReadComponents(line, ParseVCardParams(line.params), version_, kCount);
  card_.familyName = ToUtf16(OneLine(parts[kFamily]));
  card_.givenName = ToUtf16(OneLine(parts[kGiven]));
  const std::string spoken[] = {parts[kPrefix], parts[kGiven], parts[kMiddle], parts[kFamily],
                                parts[kSuffix]};
  composedName_ = ToUtf16(OneLine(Join(std::begin(spoken), std::end(spoken), " ")));
}

void RecordBuilder::AddOrganisation(const VCardLine& line) {
  if (!card_.organisation.empty() || !card_.department.empty()) return;
  const auto parts = ReadComponents(line, ParseVCardParams(line.params), version_, 1);
  card_.organisation = ToUtf16(OneLine(parts[0]));
  card_.department = ToUtf16(OneLine(Join(parts.begin() + 1, parts.end(), ", ")));
}

void RecordBuilder::AddPhone(const VCardLine& line) {
  const VCardParams params = ParseVCardParams(line.params);
  const std::string text = OneLine(UnescapeVCardText(DecodeVCardValue(line.value, params), version_));
  std::string_view number = text;
  GroupedPhone entry;
  const bool faxScheme = RemovePrefix(number, "fax:");
  if (faxScheme || RemovePrefix(number, "tel:")) entry.phone.extension = ToUtf16(SplitExtension(number));
  if (number.empty()) return;
  entry.phone.number = ToUtf16(number);
  entry.phone.place = PlaceOf(params);
  entry.phone.fax = params.fax || faxScheme;
  entry.phone.mobile = params.mobile;
  entry.phone.pager = params.pager;
  entry.group = FoldAscii(line.group);
  phones_.push_back({params.preference, std::move(entry)});
}

void RecordBuilder::AddAddress(const VCardLine& line) {
  enum { kBox, kExtended, kStreet, kLocality, kRegion, kPostalCode, kCountry, kCount };
  const VCardParams params = ParseVCardParams(line.params);
  const auto parts = ReadComponents(line, params, version_, kCount);
  if (Join(parts.begin(), parts.end(), "").empty()) return;
  VCardAddress address;
  address.postOfficeBox = ToUtf16(parts[kBox]);
  address.extended = ToUtf16(parts[kExtended]);
  address.street = ToUtf16(parts[kStreet]);
  address.locality = ToUtf16(parts[kLocality]);
  address.region = ToUtf16(parts[kRegion]);
  address.postalCode = ToUtf16(parts[kPostalCode]);
  address.country = ToUtf16(parts[kCountry]);
  address.place = PlaceOf(params);
  card_.addresses.push_back(std::move(address));
}

void RecordBuilder::AddMember(const VCardLine& line) {
  const std::string text = ReadVCardText(line, version_);
  std::string_view value = text;
  VCardMember member;
  if (RemovePrefix(value, "mailto:")) {
    member.kind = VCardMember::Kind::kEmail;
    value = value.substr(0, value.find('?'));
  }
  value = StripUuidScheme(value);
  if (value.empty()) return;
  member.value = ToUtf16(value);
  card_.members.push_back(std::move(member));
}

// A label such as "item1.X-ABLabel:Fax" is all that some writers say about a number.
void RecordBuilder::ApplyLabels() {
  for (Ranked<GroupedPhone>& ranked : phones_) {
    const auto label = labels_.find(ranked.item.group);
    if (ranked.item.group.empty() || label == labels_.end()) continue;
    VCardPhone& phone = ranked.item.phone;
    phone.fax |= ContainsFolded(label->second, "fax");
    if (phone.place != VCardPlace::kUnknown) continue;
    if (ContainsFolded(label->second, "home")) phone.place = VCardPlace::kHome;
    if (ContainsFolded(label->second, "work")) phone.place = VCardPlace::kWork;
  }
}

std::u16string RecordBuilder::ChooseDisplayName() const {
  for (const std::u16string* name :
       {&card_.displayName, &composedName_, &nickname_, &card_.organisation, &card_.department}) {
    if (!name->empty()) return *name;
  }
  if (!card_.emails.empty()) return card_.emails.front();
  return card_.phones.empty() ? std::u16string() : card_.phones.front().number;
}

VCard RecordBuilder::Finish() {
  ApplyLabels();
  card_.emails = TakeByPreference(std::move(emails_));
  for (GroupedPhone& entry : TakeByPreference(std::move(phones_)))
    card_.phones.push_back(std::move(entry.phone));
  card_.displayName = ChooseDisplayName();
  return std::move(card_);
}

}  // namespace

VCardProperty FindVCardProperty(std::string_view name) {
  for (const PropertyName& known : kPropertyNames) {
    if (EqualsFolded(known.name, name)) return known.property;
  }
  return VCardProperty::kOther;
}

VCard ParseVCardRecord(std::string_view text, VCardVersion version) {
  RecordBuilder builder(version);
  VCardLineReader reader(text, version);
  size_t depth = 0;  // of records within the record, such as an agent's; they are not this contact
  while (reader.Next()) {
    if (IsVCardBegin(reader.line())) {
      ++depth;
    } else if (IsVCardEnd(reader.line())) {
      depth -= depth > 0;
    } else if (depth == 0) {
      if (const auto line = SplitVCardLine(reader.line())) builder.Add(*line);
    }
  }
  return builder.Finish();
}

std::string ReadVCardText(const VCardLine& line, VCardVersion version) {
  return CleanText(UnescapeVCardText(DecodeVCardValue(line.value, ParseVCardParams(line.params)), version));
}

std::string ReadVCardUid(const VCardLine& line, VCardVersion version) {
  return std::string(StripUuidScheme(ReadVCardText(line, version)));
}

std::string ReadVCardEmail(const VCardLine& line, VCardVersion version) {
  const std::string text = OneLine(ReadVCardText(line, version));
  std::string_view email = text;
  RemovePrefix(email, "mailto:");
  return std::string(email);
}

VCardVersion ReadVCardVersion(const VCardLine& line) {
  return TrimBlanks(line.value) == "2.1" ? VCardVersion::k21 : VCardVersion::k30OrLater;
}

std::string_view StripUuidScheme(std::string_view uid) {
  RemovePrefix(uid, "urn:uuid:");
  return uid;
}

}  // namespace formats
