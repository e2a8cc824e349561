// What each line of a card means for its contact.
#include "formats/card_reader.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "formats/card_groups.h"
#include "formats/card_params.h"
#include "formats/card_text.h"
#include "formats/card_uris.h"
#include "formats/contact_io.h"
#include "formats/other_lines.h"
#include "formats/person_name.h"
#include "formats/text_codec.h"

namespace formats {
namespace {

// Those that are texts stand in the order in which WriteCard writes them.
enum class Property : uint8_t {
  kUid,
  kFormattedName,
  kName,
  kOrganisation,
  kTitle,
  kNote,
  kAddress,
  kAgent,
  kDropped,
  kEmail,
  kKind,
  kLabel,
  kMember,
  kNickname,
  kNumber,
  kOther,
};

constexpr std::pair<std::string_view, Property> kProperties[] = {
    {"TEL", Property::kNumber},
    {"FN", Property::kFormattedName},
    {"N", Property::kName},
    {"ORG", Property::kOrganisation},
    {"UID", Property::kUid},
    {"EMAIL", Property::kEmail},
    {"ADR", Property::kAddress},
    {"TITLE", Property::kTitle},
    {"NOTE", Property::kNote},
    {"VERSION", Property::kDropped},
    {"PROFILE", Property::kDropped},
    {"KIND", Property::kKind},
    {"MEMBER", Property::kMember},
    {"NICKNAME", Property::kNickname},
    {"AGENT", Property::kAgent},
    {"X-ABLABEL", Property::kLabel},
    {"X-ADDRESSBOOKSERVER-KIND", Property::kKind},
    {"X-ADDRESSBOOKSERVER-MEMBER", Property::kMember},
};

Property FindProperty(std::string_view name) {
  for (const auto& [known, property] : kProperties) {
    if (known.size() == name.size() && EqualsFolded(known, name)) return property;
  }
  return Property::kOther;
}

// The canonical spelling, under which the parameters of a text are kept.
std::string_view NameOf(Property property) {
  for (const auto& [known, each] : kProperties) {
    if (each == property) return known;
  }
  return {};
}

std::string Joined(const std::vector<std::string>& parts, std::size_t first, std::string_view separator) {
  std::string out;
  for (std::size_t i = first; i < parts.size(); ++i) {
    if (parts[i].empty()) continue;
    if (!out.empty()) out += separator;
    out += parts[i];
  }
  return out;
}

// "X-FAX" or "X-HOME-FAX", which some write where a number and its type belong.
std::optional<NumberWords> FaxWordsOf(const VCardLine& line) {
  constexpr std::string_view kStart = "X-", kDigits = "0123456789";
  if (!EqualsFolded(line.name.substr(0, kStart.size()), kStart) || !ContainsFolded(line.name, "FAX"))
    return std::nullopt;
  std::string words(line.name.substr(kStart.size()));
  std::replace(words.begin(), words.end(), '-', ' ');
  const NumberWords said = ReadNumberWords(words);
  if (!said.isWhole || line.value.find_first_of(kDigits) == std::string_view::npos) return std::nullopt;
  return said;
}

class CardBuilder {
 public:
  CardBuilder(VCardVersion version, std::string_view charset, Contact* contact)
      : version_(version), charset_(charset), contact_(*contact) {
    ClearContact(contact);
  }

  void Add(const VCardLine& line);
  void AddNested(std::string_view lines) { contact_.others.push_back(NormaliseNestedCard("AGENT", lines)); }
  bool Finish();

 private:
  CardParams Params(const VCardLine& line, LineUse use) const { return ReadCardParams(line.params, use); }
  std::string Value(const VCardLine& line, const CardParams& params) const;
  void ReadText(const VCardLine& line, const CardParams& params, TextLayout layout, std::string* out) const;
  std::vector<std::string> ReadParts(const VCardLine& line, const CardParams& params,
                                     TextLayout layout) const;

  void AddText(const VCardLine& line, Property property, std::string* target,
               TextLayout layout = TextLayout::kOneLine);
  void AddUid(const VCardLine& line);
  void AddName(const VCardLine& line);
  void AddOrganisation(const VCardLine& line);
  void AddNumber(const VCardLine& line, const NumberWords& said = {});
  void AddEmail(const VCardLine& line);
  void AddAddress(const VCardLine& line);
  void AddMember(const VCardLine& line);
  void AddKind(const VCardLine& line);
  void AddLabel(const VCardLine& line);
  void AddNickname(const VCardLine& line);
  void AddOther(const VCardLine& line);
  void PlaceKeptParams();

  void KeepParams(Property property, CardParams& params, std::string_view more);
  void KeepRest(Item item, std::size_t count, const VCardLine& line, const CardParams& params,
                std::string* rest);

  const VCardVersion version_;
  const std::string_view charset_;
  Contact& contact_;
  std::string nickname_;
  CardGroups groups_;
  std::vector<std::pair<Property, std::string>> kept_;  // parameters of texts
};

void CardBuilder::Add(const VCardLine& line) {
  switch (const Property property = FindProperty(line.name)) {
    case Property::kAddress:
      return AddAddress(line);
    case Property::kDropped:
      return;
    case Property::kEmail:
      return AddEmail(line);
    case Property::kFormattedName:
      return AddText(line, property, &contact_.name);
    case Property::kKind:
      return AddKind(line);
    case Property::kLabel:
      return AddLabel(line);
    case Property::kMember:
      return AddMember(line);
    case Property::kName:
      return AddName(line);
    case Property::kNickname:
      return AddNickname(line);
    case Property::kNote:
      return AddText(line, property, &contact_.note, TextLayout::kManyLines);
    case Property::kNumber:
      return AddNumber(line);
    case Property::kOrganisation:
      return AddOrganisation(line);
    case Property::kTitle:
      return AddText(line, property, &contact_.title);
    case Property::kUid:
      return AddUid(line);
    case Property::kOther:
      if (const auto said = FaxWordsOf(line)) return AddNumber(line, *said);
      return AddOther(line);
    case Property::kAgent:
      return AddOther(line);
  }
}

std::string CardBuilder::Value(const VCardLine& line, const CardParams& params) const {
  VCardCoding decoding;
  decoding.encoding = params.encoding;
  decoding.charset = params.charset.empty() ? charset_ : std::string_view(params.charset);
  return DecodeVCardValue(line.value, decoding);
}

// Nearly every value reads as it is written.
void CardBuilder::ReadText(const VCardLine& line, const CardParams& params, TextLayout layout,
                           std::string* out) const {
  const bool isEncoded =
      params.encoding != VCardEncoding::kNone || !params.charset.empty() || !charset_.empty();
  const std::string_view value = TrimBlanks(line.value);
  if (!isEncoded && value.find('\\') == std::string_view::npos && IsUtf8(value) && IsCleanText(value)) {
    out->assign(value);
  } else {
    *out = CleanText(UnescapeVCardText(Value(line, params), version_), layout);
  }
}

std::vector<std::string> CardBuilder::ReadParts(const VCardLine& line, const CardParams& params,
                                                TextLayout layout) const {
  std::vector<std::string> parts = SplitVCardComponents(Value(line, params), version_);
  for (std::string& part : parts) {
    if (!IsCleanText(part)) part = CleanText(part, layout);
  }
  return parts;
}

// A text has room for one line of its property; the others are kept as they are.
void CardBuilder::AddText(const VCardLine& line, Property property, std::string* target, TextLayout layout) {
  if (!target->empty()) return AddOther(line);
  CardParams params = Params(line, LineUse::kText);
  ReadText(line, params, layout, target);
  if (!target->empty()) KeepParams(property, params, {});
}

void CardBuilder::AddUid(const VCardLine& line) {
  if (!contact_.uid.empty()) return AddOther(line);
  CardParams params = Params(line, LineUse::kText);
  std::string text;
  ReadText(line, params, TextLayout::kOneLine, &text);
  contact_.uid = StripPrefix(text, "urn:uuid:");
  if (!contact_.uid.empty()) KeepParams(Property::kUid, params, {});
}

// What the line of a text says besides stands in `others`, as its line without a value, and is written with it again.
void CardBuilder::KeepParams(Property property, CardParams& params, std::string_view more) {
  if (!more.empty()) AppendParam(&params.rest, kMoreParam, more);
  if (params.rest.empty()) return;
  std::string line(NameOf(property));
  kept_.emplace_back(property, std::move(line.append(params.rest).append(":")));
}

void CardBuilder::AddName(const VCardLine& line) {
  std::string* const targets[] = {&contact_.surname, &contact_.given, &contact_.middle, &contact_.prefix,
                                  &contact_.suffix};
  const auto isFilled = [](const std::string* target) { return !target->empty(); };
  if (std::any_of(std::begin(targets), std::end(targets), isFilled)) return AddOther(line);
  CardParams params = Params(line, LineUse::kText);
  std::vector<std::string> parts = ReadParts(line, params, TextLayout::kOneLine);
  parts.resize(std::max(parts.size(), std::size(targets)));
  for (std::size_t i = 0; i < std::size(targets); ++i) targets[i]->swap(parts[i]);
  if (std::none_of(std::begin(targets), std::end(targets), isFilled)) return;
  KeepParams(Property::kName, params, Joined(parts, std::size(targets), ";"));
}

void CardBuilder::AddOrganisation(const VCardLine& line) {
  if (!contact_.company.empty() || !contact_.department.empty()) return AddOther(line);
  CardParams params = Params(line, LineUse::kText);
  std::vector<std::string> parts = ReadParts(line, params, TextLayout::kOneLine);
  contact_.department = Joined(parts, 1, ", ");
  contact_.company = std::move(parts.front());
  if (!contact_.company.empty() || !contact_.department.empty())
    KeepParams(Property::kOrganisation, params, {});
}

// What else the line of an item says; there are `count` of its sort with it.
void CardBuilder::KeepRest(Item item, std::size_t count, const VCardLine& line, const CardParams& params,
                           std::string* rest) {
  if (params.preference != kNotPreferred) groups_.NotePreference(item, count - 1, params.preference);
  if (!line.group.empty()) {
    groups_.NoteGroup();
    AppendParam(rest, kGroupParam, line.group);
  }
  *rest += params.rest;
}

void CardBuilder::AddNumber(const VCardLine& line, const NumberWords& said) {
  CardParams params = Params(line, LineUse::kNumber);
  params.words.Add(said);
  std::string value;
  ReadText(line, params, TextLayout::kOneLine, &value);
  std::string text(StripNumberSchemes(value, &params.words.isFax));
  if (text.size() != value.size() && text.find(';') != std::string::npos) {
    const std::string options = TakeUriOptions(&text);
    if (!options.empty()) AppendParam(&params.rest, kMoreParam, options);
  }
  if (text.empty()) return;
  ContactNumber& number = contact_.numbers.emplace_back();
  number.text = std::move(text);
  number.kind = params.words.kind();
  number.place = params.words.place();
  number.key = params.key;
  KeepRest(Item::kNumber, contact_.numbers.size(), line, params, &number.rest);
}

void CardBuilder::AddEmail(const VCardLine& line) {
  const CardParams params = Params(line, LineUse::kPlaced);
  std::string text;
  ReadText(line, params, TextLayout::kOneLine, &text);
  const std::string_view address = StripPrefix(text, "mailto:");
  if (address.empty()) return;
  ContactEmail& email = contact_.emails.emplace_back();
  email.text = address;
  email.place = params.words.place();
  KeepRest(Item::kEmail, contact_.emails.size(), line, params, &email.rest);
}

void CardBuilder::AddAddress(const VCardLine& line) {
  CardParams params = Params(line, LineUse::kPlaced);
  std::vector<std::string> parts = ReadParts(line, params, TextLayout::kManyLines);
  ContactAddress address;
  std::string* const targets[] = {&address.postOfficeBox, &address.extended, &address.street,
                                  &address.locality,      &address.region,   &address.postalCode,
                                  &address.country};
  parts.resize(std::max(parts.size(), std::size(targets)));
  for (std::size_t i = 0; i < std::size(targets); ++i) targets[i]->swap(parts[i]);
  const auto isEmpty = [](const std::string* target) { return target->empty(); };
  if (std::all_of(std::begin(targets), std::end(targets), isEmpty)) return;
  if (const std::string more = Joined(parts, std::size(targets), ";"); !more.empty())
    AppendParam(&params.rest, kMoreParam, more);
  address.place = params.words.place();
  contact_.addresses.push_back(std::move(address));
  KeepRest(Item::kAddress, contact_.addresses.size(), line, params, &contact_.addresses.back().rest);
}

void CardBuilder::AddMember(const VCardLine& line) {
  CardParams params = Params(line, LineUse::kMember);
  std::string text;
  ReadText(line, params, TextLayout::kOneLine, &text);
  ContactMember member;
  member.number = std::move(params.memberNumber);
  member.email = std::move(params.memberEmail);
  member.name = std::move(params.memberName);
  member.entryId = std::move(params.memberEntryId);
  member.rest = std::move(params.rest);
  const auto startsWith = [&text](std::string_view scheme) {
    return EqualsFolded(std::string_view(text).substr(0, scheme.size()), scheme);
  };
  if (startsWith("tel:") || startsWith("fax:")) {
    member.number = TrimBlanks(std::string_view(text).substr(4));
  } else if (startsWith("mailto:")) {
    member.email = TrimBlanks(std::string_view(text).substr(7));
  } else {
    member.uid = StripPrefix(text, "urn:uuid:");
    const bool isBare = !member.uid.empty() && !HasScheme(text) && !IsUuid(text);
    if (isBare && member.name.empty()) member.name = member.uid;
  }
  member.email.erase(std::min(member.email.find('?'), member.email.size()));
  ContactMember empty;
  empty.rest = member.rest;
  if (!(member == empty)) contact_.members.push_back(std::move(member));
}

void CardBuilder::AddKind(const VCardLine& line) {
  std::string kind;
  ReadText(line, Params(line, LineUse::kText), TextLayout::kOneLine, &kind);
  if (EqualsFolded(kind, "group")) {
    contact_.isList = true;
  } else if (!EqualsFolded(kind, "individual")) {
    AddOther(line);
  }
}

void CardBuilder::AddNickname(const VCardLine& line) {
  if (nickname_.empty()) ReadText(line, Params(line, LineUse::kText), TextLayout::kOneLine, &nickname_);
  AddOther(line);
}

void CardBuilder::AddOther(const VCardLine& line) {
  std::string normal = NormaliseOtherLine(line, version_, charset_);
  if (normal.empty()) return;
  if (!line.group.empty()) groups_.NoteGroup();
  contact_.others.push_back(std::move(normal));
}

void CardBuilder::AddLabel(const VCardLine& line) {
  const std::size_t before = contact_.others.size();
  AddOther(line);
  if (line.group.empty() || contact_.others.size() == before) return;
  std::string text;
  ReadText(line, Params(line, LineUse::kText), TextLayout::kOneLine, &text);
  groups_.NoteLabel(line.group, std::move(text), before);
}

// They stand first, in the order in which their lines are written.
void CardBuilder::PlaceKeptParams() {
  if (kept_.empty()) return;
  std::stable_sort(kept_.begin(), kept_.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<std::string> lines;
  for (auto& [property, line] : kept_) lines.push_back(std::move(line));
  contact_.others.insert(contact_.others.begin(), std::make_move_iterator(lines.begin()),
                         std::make_move_iterator(lines.end()));
}

bool CardBuilder::Finish() {
  groups_.Settle(&contact_);
  PlaceKeptParams();
  contact_.isList |= !contact_.members.empty();
  if (!contact_.name.empty()) return true;
  contact_.name = FullNameOf(contact_);
  if (contact_.name.empty()) contact_.name = nickname_;
  return NameContact(&contact_);
}

}  // namespace

bool ReadCardLines(std::string_view lines, VCardVersion version, std::string_view charset, Contact* contact) {
  CardBuilder builder(version, charset, contact);
  VCardLineReader reader(lines, version);
  std::size_t depth = 0, nestedBegin = 0;  // of records within the record, such as an agent's
  while (reader.Next()) {
    if (IsVCardBegin(reader.line())) {
      if (depth++ == 0) nestedBegin = reader.lineBegin();
    } else if (IsVCardEnd(reader.line())) {
      if (depth == 1) builder.AddNested(lines.substr(nestedBegin, reader.lineEnd() - nestedBegin));
      depth -= depth > 0;
    } else if (depth == 0) {
      if (const auto line = SplitVCardLine(reader.line())) builder.Add(*line);
    }
  }
  return builder.Finish();
}

}  // namespace formats
