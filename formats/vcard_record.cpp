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
  VCardFields field = kVCardEverything;  // read for these; for any when nothing is said
};

constexpr PropertyName kPropertyNames[] = {
    {"ADR", VCardProperty::kAddress, kVCardAddresses},
    {"AGENT", VCardProperty::kAgent},
    {"EMAIL", VCardProperty::kEmail, kVCardEmails},
    {"FN", VCardProperty::kFormattedName, kVCardDisplayName},
    {"KIND", VCardProperty::kKind},
    {"MEMBER", VCardProperty::kMember, kVCardMembers},
    {"N", VCardProperty::kName, kVCardNameParts},
    {"NICKNAME", VCardProperty::kNickname, kVCardNameParts},
    {"NOTE", VCardProperty::kNote, kVCardNote},
    {"ORG", VCardProperty::kOrganisation, kVCardOrganisation},
    {"TEL", VCardProperty::kPhone, kVCardPhones},
    {"TITLE", VCardProperty::kTitle, kVCardTitle},
    {"UID", VCardProperty::kUid, kVCardUid},
    {"VERSION", VCardProperty::kVersion},
    {"X-ABLABEL", VCardProperty::kLabel, kVCardPhones},
    {"X-ADDRESSBOOKSERVER-KIND", VCardProperty::kKind},
    {"X-ADDRESSBOOKSERVER-MEMBER", VCardProperty::kMember, kVCardMembers},
};
constexpr PropertyName kOther = {"", VCardProperty::kOther};

const PropertyName& FindPropertyName(std::string_view name) {
  for (const PropertyName& known : kPropertyNames) {
    if (EqualsFolded(known.name, name)) return known;
  }
  return kOther;
}

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

std::string Tidy(std::string_view text, VCardLayout layout) {
  return layout == VCardLayout::kOneLine ? OneLine(text) : CleanText(text);
}

using Components = std::vector<std::u16string>;

Components SplitPlain(std::string_view value) {
  Components parts;
  for (size_t begin = 0, end; begin <= value.size(); begin = end + 1) {
    end = std::min(value.find(';', begin), value.size());
    parts.push_back(ToUtf16(TrimBlanks(value.substr(begin, end - begin))));
  }
  return parts;
}

// The parts of a structured value, empty ones behind the last so that there are `atLeast`.
Components ReadComponents(const VCardLine& line, VCardVersion version, VCardLayout layout, size_t atLeast) {
  const VCardParams params = ParseVCardParams(line.params);
  Components parts;
  if (IsPlainVCardValue(line.value, params)) {
    parts = SplitPlain(line.value);
  } else {
    for (const std::string& part : SplitVCardComponents(DecodeVCardValue(line.value, params), version)) {
      parts.push_back(ToUtf16(Tidy(part, layout)));
    }
  }
  parts.resize(std::max(parts.size(), atLeast));
  return parts;
}

// The texts that are not empty, `separator` between them.
template <class Texts>
std::u16string Join(const Texts& texts, std::u16string_view separator) {
  std::u16string out;
  for (const auto& text : texts) {
    if (text.empty()) continue;
    if (!out.empty()) out += separator;
    out += text;
  }
  return out;
}

bool AllEmpty(const Components& parts) {
  return std::all_of(parts.begin(), parts.end(), [](const std::u16string& part) { return part.empty(); });
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
  int preference = VCardParams::kNotPreferred;
  T item;
};

// The items of ranked entries, preferred ones first, else in file order.
template <class T, class Entry>
std::vector<T> TakeByPreference(std::vector<Entry>& entries) {
  const auto isBefore = [](const Entry& a, const Entry& b) { return a.preference < b.preference; };
  if (!std::is_sorted(entries.begin(), entries.end(), isBefore)) {
    std::stable_sort(entries.begin(), entries.end(), isBefore);
  }
  std::vector<T> items;
  items.reserve(entries.size());
  for (Entry& entry : entries) items.push_back(std::move(entry.item));
  return items;
}

// Gathers one record's properties; what depends on several of them is settled at the end.
class RecordBuilder {
 public:
  RecordBuilder(VCardVersion version, VCardFields fields) : version_(version), fields_(fields) {}

  void Add(const VCardLine& line);
  VCard Finish();

 private:
  struct LabelledPhone : Ranked<VCardPhone> {
    std::string group;
  };

  void AddName(const VCardLine& line);
  void AddOrganisation(const VCardLine& line);
  void AddEmail(const VCardLine& line);
  void AddPhone(const VCardLine& line);
  void AddLabel(const VCardLine& line);
  void AddAddress(const VCardLine& line);
  void AddMember(const VCardLine& line);
  void KeepFirst(std::u16string& target, const VCardLine& line, VCardLayout layout = VCardLayout::kOneLine);
  void ApplyLabels();
  std::u16string ComposeName() const;
  std::u16string ChooseDisplayName() const;

  const VCardVersion version_;
  const VCardFields fields_;
  VCard card_;
  std::u16string prefix_, middleName_, suffix_, nickname_;
  std::vector<Ranked<std::u16string>> emails_;
  std::vector<LabelledPhone> phones_;
  std::unordered_map<std::string, std::string> labels_;  // by property group
};

void RecordBuilder::Add(const VCardLine& line) {
  const PropertyName& found = FindPropertyName(line.name);
  if ((found.field & fields_) == 0) return;
  switch (found.property) {
    case VCardProperty::kAddress:
      return AddAddress(line);
    case VCardProperty::kEmail:
      return AddEmail(line);
    case VCardProperty::kFormattedName:
      return KeepFirst(card_.displayName, line);
    case VCardProperty::kKind:
      card_.isGroup |= EqualsFolded(VCardText(line, version_).view(), "group");
      return;
    case VCardProperty::kLabel:
      return AddLabel(line);
    case VCardProperty::kMember:
      return AddMember(line);
    case VCardProperty::kName:
      return AddName(line);
    case VCardProperty::kNickname:
      return KeepFirst(nickname_, line);
    case VCardProperty::kNote:
      return KeepFirst(card_.note, line, VCardLayout::kAsWritten);
    case VCardProperty::kOrganisation:
      return AddOrganisation(line);
    case VCardProperty::kPhone:
      return AddPhone(line);
    case VCardProperty::kTitle:
      return KeepFirst(card_.title, line);
    case VCardProperty::kUid:
      if (card_.uid.empty()) card_.uid = ToUtf16(StripUuidScheme(VCardText(line, version_).view()));
      return;
    case VCardProperty::kAgent:
    case VCardProperty::kOther:
    case VCardProperty::kVersion:
      return;
  }
}

void RecordBuilder::KeepFirst(std::u16string& target, const VCardLine& line, VCardLayout layout) {
  if (target.empty()) target = ToUtf16(VCardText(line, version_, layout).view());
}

void RecordBuilder::AddName(const VCardLine& line) {
  if (!ComposeName().empty()) return;
  enum { kFamily, kGiven, kMiddle, kPrefix, kSuffix, kCount };
  Components parts = ReadComponents(line, version_, VCardLayout::kOneLine, kCount);
  card_.familyName = std::move(parts[kFamily]);
  card_.givenName = std::move(parts[kGiven]);
  middleName_ = std::move(parts[kMiddle]);
  prefix_ = std::move(parts[kPrefix]);
  suffix_ = std::move(parts[kSuffix]);
}

void RecordBuilder::AddOrganisation(const VCardLine& line) {
  if (!card_.organisation.empty() || !card_.department.empty()) return;
  Components parts = ReadComponents(line, version_, VCardLayout::kOneLine, 1);
  card_.organisation = std::move(parts.front());
  parts.erase(parts.begin());
  card_.department = Join(parts, u", ");
}

void RecordBuilder::AddEmail(const VCardLine& line) {
  const VCardParams params = ParseVCardParams(line.params);
  const VCardText text(line, params, version_, VCardLayout::kOneLine);
  const std::string_view email = StripMailScheme(text.view());
  if (!email.empty()) emails_.push_back({params.preference, ToUtf16(email)});
}

void RecordBuilder::AddLabel(const VCardLine& line) {
  if (!line.group.empty()) labels_.emplace(FoldAscii(line.group), VCardText(line, version_).view());
}

void RecordBuilder::AddPhone(const VCardLine& line) {
  const VCardParams params = ParseVCardParams(line.params);
  const VCardText text(line, params, version_, VCardLayout::kOneLine);
  std::string_view number = text.view();
  VCardPhone phone;
  const bool faxScheme = RemovePrefix(number, "fax:");
  if (faxScheme || RemovePrefix(number, "tel:")) phone.extension = ToUtf16(SplitExtension(number));
  if (number.empty()) return;
  phone.number = ToUtf16(number);
  phone.place = PlaceOf(params);
  phone.fax = params.fax || faxScheme;
  phone.mobile = params.mobile;
  phone.pager = params.pager;
  phones_.push_back({{params.preference, std::move(phone)}, FoldAscii(line.group)});
}

void RecordBuilder::AddAddress(const VCardLine& line) {
  enum { kBox, kExtended, kStreet, kLocality, kRegion, kPostalCode, kCountry, kCount };
  Components parts = ReadComponents(line, version_, VCardLayout::kAsWritten, kCount);
  if (AllEmpty(parts)) return;
  VCardAddress& address = card_.addresses.emplace_back();
  std::u16string* const targets[] = {&address.postOfficeBox, &address.extended, &address.street,
                                     &address.locality,      &address.region,   &address.postalCode,
                                     &address.country};
  for (size_t i = 0; i < kCount; ++i) *targets[i] = std::move(parts[i]);
  address.place = PlaceOf(ParseVCardParams(line.params));
}

void RecordBuilder::AddMember(const VCardLine& line) {
  const VCardText text(line, version_);
  std::string_view value = text.view();
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
  for (LabelledPhone& entry : phones_) {
    const auto label = entry.group.empty() ? labels_.end() : labels_.find(entry.group);
    if (label == labels_.end()) continue;
    VCardPhone& phone = entry.item;
    phone.fax |= ContainsFolded(label->second, "fax");
    if (phone.place != VCardPlace::kUnknown) continue;
    if (ContainsFolded(label->second, "home")) phone.place = VCardPlace::kHome;
    if (ContainsFolded(label->second, "work")) phone.place = VCardPlace::kWork;
  }
}

std::u16string RecordBuilder::ComposeName() const {
  const std::u16string_view spoken[] = {prefix_, card_.givenName, middleName_, card_.familyName, suffix_};
  return Join(spoken, u" ");
}

// Of a record without a formatted name.
std::u16string RecordBuilder::ChooseDisplayName() const {
  if (std::u16string name = ComposeName(); !name.empty()) return name;
  for (const std::u16string* name : {&nickname_, &card_.organisation, &card_.department}) {
    if (!name->empty()) return *name;
  }
  if (!card_.emails.empty()) return card_.emails.front();
  return card_.phones.empty() ? std::u16string() : card_.phones.front().number;
}

VCard RecordBuilder::Finish() {
  ApplyLabels();
  card_.emails = TakeByPreference<std::u16string>(emails_);
  card_.phones = TakeByPreference<VCardPhone>(phones_);
  // What else a name may come from was read only if everything was.
  const bool isWhole = fields_ == kVCardEverything;
  if (isWhole && card_.displayName.empty()) card_.displayName = ChooseDisplayName();
  return std::move(card_);
}

}  // namespace

VCardProperty FindVCardProperty(std::string_view name) { return FindPropertyName(name).property; }

VCard ParseVCardRecord(std::string_view text, VCardVersion version, VCardFields fields) {
  RecordBuilder builder(version, fields);
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
  VCard card = builder.Finish();
  const bool nameless = (fields & kVCardDisplayName) != 0 && card.displayName.empty();
  if (nameless && fields != kVCardEverything) {
    card.displayName = ParseVCardRecord(text, version, kVCardEverything).displayName;
  }
  return card;
}

VCardText::VCardText(const VCardLine& line, const VCardParams& params, VCardVersion version,
                     VCardLayout layout)
    : view_(TrimBlanks(line.value)) {
  if (IsPlainVCardValue(line.value, params)) return;
  decoded_ = Tidy(UnescapeVCardText(DecodeVCardValue(line.value, params), version), layout);
  view_ = decoded_;
}

VCardVersion ReadVCardVersion(const VCardLine& line) {
  return TrimBlanks(line.value) == "2.1" ? VCardVersion::k21 : VCardVersion::k30OrLater;
}

std::string_view StripMailScheme(std::string_view email) {
  RemovePrefix(email, "mailto:");
  return email;
}

std::string_view StripUuidScheme(std::string_view uid) {
  RemovePrefix(uid, "urn:uuid:");
  return uid;
}

}  // namespace formats
