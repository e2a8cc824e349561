#include "formats/csv_contact.h"

#include <algorithm>

#include "formats/card_params.h"
#include "formats/card_text.h"
#include "formats/number_words.h"
#include "formats/person_name.h"
#include "formats/text_codec.h"

namespace formats {
namespace {

template <class Use>
void ForEachPart(std::string_view text, std::string_view separator, Use use) {
  for (std::size_t begin = 0, end; begin <= text.size(); begin = end + separator.size()) {
    end = std::min(text.find(separator, begin), text.size());
    use(text.substr(begin, end - begin));
  }
}

// Calls `use` with each value of a cell that holds several, on lines of their own or between three colons.
template <class Use>
void ForEachValue(std::string_view cell, Use use) {
  const std::string clean = CleanText(cell, TextLayout::kManyLines);
  ForEachPart(clean, "\n", [&use](std::string_view line) {
    ForEachPart(line, ":::", [&use](std::string_view part) {
      if (const std::string value = CleanText(part, TextLayout::kOneLine); !value.empty()) use(value);
    });
  });
}

bool IsAddressPart(CsvField field) {
  return field >= CsvField::kPostOfficeBox && field <= CsvField::kCountry;
}

}  // namespace

void CsvContact::AddType(const CsvColumn& column, const std::string& cell) {
  const bool isType = column.field == CsvField::kNumberType || column.field == CsvField::kEmailType ||
                      column.field == CsvField::kAddressType;
  if (isType) types_[{column.field, column.ordinal}] = cell;
}

std::string CsvContact::TypeOf(CsvField field, unsigned ordinal) const {
  const auto found = types_.find({field, ordinal});
  return ordinal == 0 || found == types_.end() ? std::string() : found->second;
}

std::string* CsvContact::TextOf(CsvField field) {
  switch (field) {
    case CsvField::kName:
      return &contact_.name;
    case CsvField::kGiven:
      return &contact_.given;
    case CsvField::kMiddle:
      return &contact_.middle;
    case CsvField::kSurname:
      return &contact_.surname;
    case CsvField::kSuffix:
      return &contact_.suffix;
    case CsvField::kCompany:
      return &contact_.company;
    case CsvField::kDepartment:
      return &contact_.department;
    case CsvField::kTitle:
      return &contact_.title;
    case CsvField::kUid:
      return &contact_.uid;
    default:
      return nullptr;
  }
}

void CsvContact::Add(const CsvColumn& column, const std::string& cell) {
  switch (column.field) {
    case CsvField::kNumber:
    case CsvField::kMoreNumbers:
      return AddNumbers(column, cell);
    case CsvField::kEmail:
    case CsvField::kMoreEmails:
      return AddEmails(column, cell);
    case CsvField::kNumberOrder:
      order_ = TrimBlanks(cell);
      return;
    case CsvField::kType:
      contact_.isList |= EqualsFolded(TrimBlanks(cell), "list");
      return;
    case CsvField::kMembers:
      return ForEachValue(
          cell, [this](const std::string& line) { contact_.members.push_back(MemberOfLine(line)); });
    case CsvField::kNickname:
      return AddOther("NICKNAME", cell);
    case CsvField::kWebPage:
      return AddOther("URL", cell);
    case CsvField::kPrefix:
      return AddPrefix(cell);
    case CsvField::kAnyTitle:
      return IsFormOfAddress(cell) ? AddPrefix(cell) : AddText(CsvField::kTitle, cell);
    case CsvField::kNote:
      if (!contact_.note.empty()) contact_.note += '\n';
      contact_.note += CleanText(cell, TextLayout::kManyLines);
      return;
    default:
      return IsAddressPart(column.field) ? SetAddressPart(column, cell) : AddText(column.field, cell);
  }
}

void CsvContact::AddText(CsvField field, const std::string& cell) {
  std::string* const target = TextOf(field);
  if (target != nullptr && target->empty()) *target = CleanText(cell, TextLayout::kOneLine);
}

// "Herr" and "Dr." may lie in columns of their own.
void CsvContact::AddPrefix(std::string_view cell) {
  const std::string text = CleanText(cell, TextLayout::kOneLine);
  std::string& prefix = contact_.prefix;
  if (text.empty() || (" " + prefix + " ").find(" " + text + " ") != std::string::npos) return;
  prefix.append(prefix.empty() ? "" : " ").append(text);
}

void CsvContact::AddUnknown(std::string_view column, std::string_view cell) {
  const std::string text = CleanText(cell, TextLayout::kManyLines);
  if (text.empty()) return;
  std::string& line = contact_.others.emplace_back(kCsvColumnLine);
  AppendParam(&line, kNameParam, column);
  line += ':';
  AppendEscaped(&line, text);
}

void CsvContact::AddOther(std::string_view name, std::string_view cell) {
  const std::string text = CleanText(cell, TextLayout::kOneLine);
  if (text.empty()) return;
  std::string& line = contact_.others.emplace_back(name);
  line += ':';
  AppendEscaped(&line, text);
}

void CsvContact::AddNumbers(const CsvColumn& column, std::string_view cell) {
  const NumberWords said = ReadNumberWords(TypeOf(CsvField::kNumberType, column.ordinal));
  const bool isPreferred = TypeOf(CsvField::kNumberType, column.ordinal).substr(0, 1) == "*";
  ForEachValue(cell, [&](const std::string& text) {
    ContactNumber number = NumberOfLine(text);
    if (number.text.empty()) return;
    if (column.field == CsvField::kNumber && number.kind == NumberKind::kPhone) number.kind = column.kind;
    if (column.field == CsvField::kNumber && number.place == Place::kNone) number.place = column.place;
    if (said.HasKind()) number.kind = said.kind();
    if (said.HasPlace()) number.place = said.place();
    number.isPreferred = isPreferred || said.isPreferred;
    NoteCell(column, number);
    contact_.numbers.push_back(std::move(number));
  });
}

void CsvContact::AddEmails(const CsvColumn& column, std::string_view cell) {
  const NumberWords said = ReadNumberWords(TypeOf(CsvField::kEmailType, column.ordinal));
  ForEachValue(cell, [&](const std::string& value) {
    const std::string text(StripPrefix(value, "mailto:"));
    if (!text.empty())
      contact_.emails.push_back({text, said.HasPlace() ? said.place() : column.place, false, {}});
  });
}

std::string* CsvContact::PartOf(CsvField field, ContactAddress& address) {
  switch (field) {
    case CsvField::kPostOfficeBox:
      return &address.postOfficeBox;
    case CsvField::kExtended:
      return &address.extended;
    case CsvField::kStreet:
      return &address.street;
    case CsvField::kLocality:
      return &address.locality;
    case CsvField::kRegion:
      return &address.region;
    case CsvField::kPostalCode:
      return &address.postalCode;
    case CsvField::kCountry:
      return &address.country;
    default:
      return nullptr;
  }
}

ContactAddress& CsvContact::AddressAt(Place place, unsigned ordinal) {
  const std::pair key(place, ordinal);
  const auto found = std::find(addressKeys_.begin(), addressKeys_.end(), key);
  if (found != addressKeys_.end())
    return contact_.addresses[static_cast<std::size_t>(found - addressKeys_.begin())];
  addressKeys_.push_back(key);
  contact_.addresses.emplace_back().place = place;
  return contact_.addresses.back();
}

// The lines of a street may lie in columns of their own.
void CsvContact::SetAddressPart(const CsvColumn& column, const std::string& cell) {
  const std::string text = CleanText(cell, TextLayout::kManyLines);
  if (text.empty()) return;
  const NumberWords said = ReadNumberWords(TypeOf(CsvField::kAddressType, column.ordinal));
  ContactAddress& address = AddressAt(said.HasPlace() ? said.place() : column.place, column.ordinal);
  std::string& part = *PartOf(column.field, address);
  if (!part.empty()) part += '\n';
  part += text;
}

void CsvContact::NoteCell(const CsvColumn& column, const ContactNumber& number) {
  const bool isLine = column.field == CsvField::kMoreNumbers;
  const auto begin = std::begin(kCsvNumberColumns), end = std::end(kCsvNumberColumns);
  const auto found = std::find_if(begin, end, [&number](const CsvNumberColumn& each) {
    return each.kind == number.kind && each.place == number.place;
  });
  const auto place = static_cast<std::size_t>(found - begin) + 1;
  cells_.push_back(isLine ? std::size(kCsvNumberColumns) + ++lines_ : place);
}

bool CsvContact::TakeNumber(std::size_t cell, bool isPreferred, std::vector<ContactNumber>* ordered) {
  const auto found = std::find(cells_.begin(), cells_.end(), cell);
  if (found == cells_.end()) return false;
  *found = 0;
  ordered->push_back(contact_.numbers[static_cast<std::size_t>(found - cells_.begin())]);
  ordered->back().isPreferred = isPreferred;
  return true;
}

// A cell that was emptied is passed over, a number that is not named comes behind. Where a line is gone nobody knows
// which of the others the order means.
void CsvContact::OrderNumbers() {
  constexpr std::size_t kMost = 1'000'000;
  std::vector<ContactNumber> ordered;
  for (std::size_t at = 0; at < order_.size() && !contact_.keepsOrder;) {
    std::size_t cell = 0;
    for (; at < order_.size() && order_[at] >= '0' && order_[at] <= '9' && cell < kMost; ++at)
      cell = cell * 10 + static_cast<std::size_t>(order_[at] - '0');
    const bool isPreferred = at < order_.size() && order_[at] == '*';
    const bool isTaken = cell != 0 && TakeNumber(cell, isPreferred, &ordered);
    contact_.keepsOrder = !isTaken && (cell == 0 || cell > std::size(kCsvNumberColumns));
    while (at < order_.size() && (order_[at] == '*' || order_[at] == ' ')) ++at;
  }
  if (contact_.keepsOrder) return;
  for (std::size_t i = 0; i < cells_.size(); ++i) {
    if (cells_[i] != 0) ordered.push_back(contact_.numbers[i]);
  }
  contact_.numbers = std::move(ordered);
}

bool CsvContact::Finish() {
  contact_.note = CleanText(contact_.note, TextLayout::kManyLines);
  contact_.uid = std::string(StripPrefix(contact_.uid, "urn:uuid:"));
  contact_.isList |= !contact_.members.empty();
  if (!order_.empty()) OrderNumbers();
  if (!contact_.name.empty()) return true;
  contact_.name = FullNameOf(contact_);
  return NameContact(&contact_);
}

}  // namespace formats
