// What the columns of a table can say.
#include <algorithm>
#include <set>

#include "formats/source_scope.h"

namespace formats {
namespace {

constexpr std::pair<CsvField, std::string Contact::*> kTextColumns[] = {
    {CsvField::kGiven, &Contact::given},
    {CsvField::kMiddle, &Contact::middle},
    {CsvField::kSurname, &Contact::surname},
    {CsvField::kPrefix, &Contact::prefix},
    {CsvField::kSuffix, &Contact::suffix},
    {CsvField::kCompany, &Contact::company},
    {CsvField::kDepartment, &Contact::department},
    {CsvField::kTitle, &Contact::title},
    {CsvField::kNote, &Contact::note}};
constexpr std::pair<CsvField, std::string ContactAddress::*> kPartColumns[] = {
    {CsvField::kPostOfficeBox, &ContactAddress::postOfficeBox},
    {CsvField::kStreet, &ContactAddress::street},
    {CsvField::kExtended, &ContactAddress::extended},
    {CsvField::kLocality, &ContactAddress::locality},
    {CsvField::kRegion, &ContactAddress::region},
    {CsvField::kPostalCode, &ContactAddress::postalCode},
    {CsvField::kCountry, &ContactAddress::country}};

// Goes through the columns once.
class ScopeBuilder {
 public:
  void Add(const CsvColumn& column) {
    for (const auto& [field, text] : kTextColumns) {
      if (field == column.field) scope_.texts.push_back(text);
    }
    for (const auto& [field, part] : kPartColumns) {
      if (field == column.field) AddPart(column, part);
    }
    scope_.saysName |= column.field == CsvField::kName;
    scope_.saysMembers |= column.field == CsvField::kMembers;
    scope_.saysOrder |= column.field == CsvField::kNumberOrder;
    if (column.field == CsvField::kNumber) AddNumber(column);
    if (column.field == CsvField::kEmail) ++emails_;
    hasMoreNumbers_ |= column.field == CsvField::kMoreNumbers;
    hasMoreEmails_ |= column.field == CsvField::kMoreEmails;
    hasNumberTypes_ |= column.field == CsvField::kNumberType;
  }

  SourceScope Finish() && {
    scope_.isWhole = false;
    scope_.emails = hasMoreEmails_ ? Room::kAny : emails_;
    if (hasNumberTypes_) scope_.allNumbers = numbers_;
    if (hasMoreNumbers_) scope_.allNumbers = Room::kAny;
    scope_.allAddresses = static_cast<unsigned>(ordinals_.size());
    return std::move(scope_);
  }

 private:
  void AddNumber(const CsvColumn& column) {
    ++numbers_;
    Room& room = scope_.numbers[static_cast<std::size_t>(column.kind)];
    room.tellsPlaces |= column.place != Place::kNone;
    ++room.columns[static_cast<std::size_t>(column.place)];
  }

  void AddPart(const CsvColumn& column, std::string ContactAddress::*part) {
    scope_.addressParts.push_back(part);
    if (column.ordinal != 0) ordinals_.insert(column.ordinal);
    scope_.addresses.tellsPlaces |= column.place != Place::kNone;
    scope_.addresses.columns[static_cast<std::size_t>(column.place)] = 1;
  }

  SourceScope scope_;
  std::set<unsigned> ordinals_;
  unsigned numbers_ = 0, emails_ = 0;
  bool hasMoreNumbers_ = false, hasMoreEmails_ = false, hasNumberTypes_ = false;
};

}  // namespace

SourceScope ScopeOfCsv(const std::vector<CsvColumn>& columns) {
  ScopeBuilder builder;
  for (const CsvColumn& column : columns) builder.Add(column);
  return std::move(builder).Finish();
}

}  // namespace formats
