// The entries of an LDIF file, one after the other.
#include <algorithm>
#include <array>

#include "formats/base64.h"
#include "formats/card_params.h"
#include "formats/card_reader.h"
#include "formats/card_text.h"
#include "formats/contact_ldif.h"
#include "formats/reader_base.h"
#include "formats/text_codec.h"

namespace formats {
namespace {

struct LdifLine {
  std::string_view name;     // without options
  std::string_view options;  // each with the semicolon before it
  std::string_view value;
  bool isBase64 = false, isUrl = false;
};

std::optional<LdifLine> SplitLine(std::string_view line) {
  const std::size_t colon = line.find(':');
  if (colon == std::string_view::npos || colon == 0) return std::nullopt;
  LdifLine parts;
  parts.name = TrimBlanks(line.substr(0, colon));
  std::string_view value = line.substr(colon + 1);
  parts.isBase64 = value.substr(0, 1) == ":";
  parts.isUrl = value.substr(0, 1) == "<";
  if (parts.isBase64 || parts.isUrl) value.remove_prefix(1);
  parts.value = TrimBlanks(value);
  const std::size_t options = std::min(parts.name.find(';'), parts.name.size());
  parts.options = parts.name.substr(options);
  parts.name = parts.name.substr(0, options);
  return parts;
}

bool HasOption(std::string_view options, std::string_view wanted) {
  for (std::size_t at = 0; at < options.size();) {
    const std::size_t next = std::min(options.find(';', at + 1), options.size());
    if (EqualsFolded(options.substr(at + 1, next - at - 1), wanted)) return true;
    at = next;
  }
  return false;
}

Place PlaceOf(std::string_view options, Place otherwise) {
  if (HasOption(options, "x-work")) return Place::kWork;
  if (HasOption(options, "x-home")) return Place::kHome;
  if (HasOption(options, "x-other")) return Place::kOther;
  return HasOption(options, "x-none") ? Place::kNone : otherwise;
}

// Lines of a postal address stand between dollar signs.
std::string LinesOf(std::string_view value) {
  std::string lines;
  for (std::size_t begin = 0, end; begin <= value.size(); begin = end + 1) {
    end = std::min(value.find('$', begin), value.size());
    const std::string_view line = TrimBlanks(value.substr(begin, end - begin));
    if (!line.empty()) lines.append(lines.empty() ? "" : "\n").append(line);
  }
  return lines;
}

// Takes an entry's lines together.
class EntryBuilder {
 public:
  explicit EntryBuilder(Contact* contact) : contact_(*contact) { ClearContact(contact); }

  void Add(const LdifLine& line, const std::string& value);
  bool isOfOtherClass() const { return isOfOtherClass_ && !isPerson_ && !contact_.isList; }
  bool Finish();

 private:
  void AddText(LdifField field, std::string text);
  void AddNumber(const LdifAttribute& attribute, std::string_view options, std::string_view text);
  void AddClass(std::string_view name);
  void AddOther(const LdifLine& line, std::string_view value);
  std::string* TextOf(LdifField field);
  ContactAddress& AddressAt(Place place);
  void SetAddressPart(LdifField field, Place place, std::string text);

  Contact& contact_;
  std::string commonName_, entryUuid_;
  bool isPerson_ = false, isOfOtherClass_ = false;
};

std::string* EntryBuilder::TextOf(LdifField field) {
  switch (field) {
    case LdifField::kName:
      return &contact_.name;
    case LdifField::kCommonName:
      return &commonName_;
    case LdifField::kSurname:
      return &contact_.surname;
    case LdifField::kGiven:
      return &contact_.given;
    case LdifField::kMiddle:
      return &contact_.middle;
    case LdifField::kPrefix:
      return &contact_.prefix;
    case LdifField::kSuffix:
      return &contact_.suffix;
    case LdifField::kCompany:
      return &contact_.company;
    case LdifField::kTitle:
      return &contact_.title;
    case LdifField::kUid:
      return &contact_.uid;
    case LdifField::kEntryUuid:
      return &entryUuid_;
    default:
      return nullptr;
  }
}

void EntryBuilder::Add(const LdifLine& line, const std::string& value) {
  const std::optional<LdifAttribute> known = FindLdifAttribute(line.name);
  if (!known) return AddOther(line, value);
  const Place place = PlaceOf(line.options, known->place);
  switch (known->field) {
    case LdifField::kIgnored:
      return;
    case LdifField::kObjectClass:
      return AddClass(value);
    case LdifField::kNumber:
      return AddNumber(*known, line.options, value);
    case LdifField::kPicture:
      if (!value.empty()) contact_.others.push_back("PHOTO:data:image/jpeg;base64," + EncodeBase64(value));
      return;
    case LdifField::kMember:
      contact_.isList = true;
      if (ContactMember member = MemberOfDn(CleanText(value, TextLayout::kOneLine));
          !(member == ContactMember()))
        contact_.members.push_back(std::move(member));
      return;
    case LdifField::kEmail: {
      const std::string text = CleanText(value, TextLayout::kOneLine);
      if (!text.empty()) contact_.emails.push_back({text, PlaceOf(line.options, Place::kNone), false, {}});
      return;
    }
    case LdifField::kPostOfficeBox:
    case LdifField::kStreet:
    case LdifField::kLocality:
    case LdifField::kRegion:
    case LdifField::kPostalCode:
    case LdifField::kCountry:
    case LdifField::kPostalAddress:
      return SetAddressPart(known->field, place, CleanText(value, TextLayout::kManyLines));
    default:
      return AddText(known->field, CleanText(value, TextLayout::kManyLines));
  }
}

// The first value of each text counts; departments and remarks are joined.
void EntryBuilder::AddText(LdifField field, std::string text) {
  if (text.empty()) return;
  if (field == LdifField::kNote) {
    if (!contact_.note.empty()) contact_.note += '\n';
    contact_.note += text;
    return;
  }
  text = CleanText(text, TextLayout::kOneLine);
  if (field == LdifField::kDepartment) {
    if (!contact_.department.empty()) contact_.department += ", ";
    contact_.department += text;
    return;
  }
  std::string* const target = TextOf(field);
  if (target != nullptr && target->empty()) *target = std::move(text);
}

void EntryBuilder::AddNumber(const LdifAttribute& attribute, std::string_view options,
                             std::string_view value) {
  ContactNumber number;
  number.kind = HasOption(options, "x-number") ? NumberKind::kOther : attribute.kind;
  // Parameters of a fax machine follow a dollar sign.
  if (number.kind == NumberKind::kFax) value = value.substr(0, value.find('$'));
  number.text = CleanText(value, TextLayout::kOneLine);
  if (number.text.empty()) return;
  number.place = PlaceOf(options, attribute.place);
  number.isPreferred = HasOption(options, "x-pref");
  if (!attribute.type.empty()) AppendParam(&number.rest, "TYPE", attribute.type);
  contact_.numbers.push_back(std::move(number));
}

void EntryBuilder::AddClass(std::string_view name) {
  const auto is = [name](std::string_view each) { return EqualsFolded(name, each); };
  constexpr std::array<std::string_view, 6> kPersons = {
      "person", "inetOrgPerson", "organizationalPerson", "contact", "residentialPerson", "user"};
  isPerson_ |= std::any_of(kPersons.begin(), kPersons.end(), is);
  constexpr std::array<std::string_view, 6> kOthers = {
      "organizationalUnit", "organization", "dcObject", "domain", "country", "container"};
  isOfOtherClass_ |= std::any_of(kOthers.begin(), kOthers.end(), is);
  contact_.isList |= is("groupOfNames") || is("groupOfUniqueNames") || is("group");
}

void EntryBuilder::AddOther(const LdifLine& line, std::string_view value) {
  const bool isName = std::all_of(line.name.begin(), line.name.end(), [](char c) {
    const char folded = FoldAscii(c);
    return (folded >= 'a' && folded <= 'z') || (c >= '0' && c <= '9') || c == '-';
  });
  const std::string text = CleanText(value, TextLayout::kManyLines);
  if (!isName || line.name.empty() || text.empty() || !line.options.empty()) return;
  std::string& other = contact_.others.emplace_back(kLdifLinePrefix);
  for (const char c : line.name) other += c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  other += ':';
  AppendEscaped(&other, text);
}

ContactAddress& EntryBuilder::AddressAt(Place place) {
  std::vector<ContactAddress>& addresses = contact_.addresses;
  const auto found = std::find_if(addresses.begin(), addresses.end(),
                                  [place](const ContactAddress& each) { return each.place == place; });
  if (found != addresses.end()) return *found;
  addresses.emplace_back().place = place;
  return addresses.back();
}

void EntryBuilder::SetAddressPart(LdifField field, Place place, std::string text) {
  if (text.empty()) return;
  ContactAddress& address = AddressAt(place);
  const std::pair<LdifField, std::string*> parts[] = {
      {LdifField::kPostOfficeBox, &address.postOfficeBox}, {LdifField::kStreet, &address.street},
      {LdifField::kLocality, &address.locality},           {LdifField::kRegion, &address.region},
      {LdifField::kPostalCode, &address.postalCode},       {LdifField::kCountry, &address.country}};
  if (field == LdifField::kPostalAddress && address.street.empty()) address.street = LinesOf(text);
  for (const auto& [each, part] : parts) {
    // A code of two letters and a name may both be there: the name is better to read.
    const bool isBetter = part->empty() || (each == LdifField::kCountry && part->size() == 2);
    if (each == field && isBetter) *part = std::move(text);
  }
}

bool EntryBuilder::Finish() {
  if (contact_.name.empty()) contact_.name = commonName_;
  if (contact_.uid.empty()) contact_.uid = entryUuid_;
  contact_.uid = std::string(StripPrefix(contact_.uid, "urn:uuid:"));
  // A person must have a surname there; one who has none is given the name.
  if (isPerson_ && contact_.surname == contact_.name) contact_.surname.clear();
  return NameContact(&contact_);
}

class LdifReader final : public LineReaderBase {
 public:
  LdifReader(std::unique_ptr<TextInput> input, const ReadOptions& options)
      : LineReaderBase(std::move(input)), charset_(options.charset) {
    if (!charset_.empty() && !input_->isUtf16()) lines_.DecodeLines(charset_);
  }

  FileFormat format() const override { return FileFormat::kLdif; }
  SourceScope scope() const override { return ScopeOfLdif(); }
  ReadResult Next(Contact* contact) override;

 private:
  LineInput::Step ReadEntry();
  void Append(std::string_view line);
  ReadResult Build(Contact* contact);
  std::optional<Rejection> Refusal(const LdifLine& line) const;
  std::string Decode(const LdifLine& line) const;

  const std::string charset_;
  std::string entry_;  // unfolded lines, each with a line feed
  bool isTooLarge_ = false, isComment_ = false;
  ReadResult last_ = ReadResult::kRecord;
};

// Takes lines up to a blank one; those before the entry are passed over.
LineInput::Step LdifReader::ReadEntry() {
  entry_.clear();
  isTooLarge_ = isComment_ = false;
  bool hasBegun = false;
  for (;;) {
    const LineInput::Step step = lines_.Next();
    if (step != LineInput::Step::kLine)
      return hasBegun && step == LineInput::Step::kEnd ? LineInput::Step::kLine : step;
    const std::string_view line = lines_.line();
    if (line.empty() && hasBegun) return step;
    if (line.empty()) continue;
    if (line.front() != ' ') isComment_ = line.front() == '#';
    if (isComment_) continue;
    if (!hasBegun) first_ = lines_.number();
    hasBegun = true;
    Append(line);
  }
}

// A line that begins with a blank goes on where the one before has ended.
void LdifReader::Append(std::string_view line) {
  isTooLarge_ |= lines_.isOverlong() || entry_.size() + line.size() > kMaxRecordSize;
  if (isTooLarge_) return;
  if (line.front() == ' ' && !entry_.empty()) {
    entry_.pop_back();
    line.remove_prefix(1);
  }
  entry_.append(line);
  entry_ += '\n';
}

ReadResult LdifReader::Next(Contact* contact) {
  while (last_ == ReadResult::kRecord) {
    const LineInput::Step step = ReadEntry();
    if (step == LineInput::Step::kFailed) last_ = ReadResult::kFailed;
    if (step == LineInput::Step::kEnd) last_ = ReadResult::kEnd;
    if (step != LineInput::Step::kLine) break;
    const ReadResult result = Build(contact);
    if (result != ReadResult::kEnd) return result;  // otherwise the file's own header
  }
  return last_;
}

std::optional<Rejection> LdifReader::Refusal(const LdifLine& line) const {
  if (line.isUrl) return Rejection{first_, RejectReason::kUnsupported, "a value behind a URL is not fetched"};
  const bool isChange = EqualsFolded(line.name, "changetype") && !EqualsFolded(line.value, "add");
  if (isChange)
    return Rejection{first_, RejectReason::kUnsupported,
                     "only entries and additions are read, no other changes"};
  return std::nullopt;
}

std::string LdifReader::Decode(const LdifLine& line) const {
  if (!line.isBase64) return charset_.empty() ? DecodeCharset(line.value, {}) : std::string(line.value);
  std::string bytes = DecodeBase64(line.value);
  const std::optional<LdifAttribute> known = FindLdifAttribute(line.name);
  return known && known->field == LdifField::kPicture ? bytes : DecodeCharset(bytes, charset_);
}

ReadResult LdifReader::Build(Contact* contact) {
  if (isTooLarge_) return Reject(first_, RejectReason::kTooLarge, "the record is larger than 4 MB");
  EntryBuilder builder(contact);
  bool isHeader = true;
  for (std::string_view left = entry_; !left.empty();) {
    const std::size_t end = left.find('\n');
    const std::optional<LdifLine> line = SplitLine(left.substr(0, end));
    left.remove_prefix(end + 1);
    if (!line) return Reject(first_, RejectReason::kMalformed, "a line of the entry has no attribute");
    hasRecognised_ |= EqualsFolded(line->name, "version") || EqualsFolded(line->name, "dn");
    if (const auto refusal = Refusal(*line)) return Reject(refusal->line, refusal->reason, refusal->text);
    if (EqualsFolded(line->name, "version") && isHeader) continue;
    isHeader = false;
    if (!EqualsFolded(line->name, "changetype")) builder.Add(*line, Decode(*line));
  }
  if (isHeader) return ReadResult::kEnd;
  if (builder.isOfOtherClass())
    return Reject(first_, RejectReason::kNotARecord, "the entry is neither a person nor a group");
  if (builder.Finish()) {
    hasRecognised_ = true;
    return ReadResult::kRecord;
  }
  return Reject(first_, RejectReason::kNameless, "the record has no name, company, address or number");
}

}  // namespace

std::unique_ptr<ContactReader> OpenLdifReader(std::unique_ptr<TextInput> input, const ReadOptions& options) {
  return std::make_unique<LdifReader>(std::move(input), options);
}

}  // namespace formats
