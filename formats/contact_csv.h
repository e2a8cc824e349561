// Contacts in tables: the columns that are known, and the rows.
//
// What we write has a column for every text, for one number of each usual kind and place, for three e-mail addresses, for
// one address of each place, a nickname and a web page; further numbers and e-mail addresses stand in columns of their
// own, one a line. Besides what ContactWriter says it cannot hold: the place of e-mail addresses, the order of postal
// addresses, and what a member says beyond the first it has of identifier, number, address and name.
//
// What a column holds whose name nobody knows is kept as a line of the card.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "formats/contact.h"

namespace formats {

enum class CsvField : std::uint8_t {
  kIgnored,
  kName,
  kGiven,
  kMiddle,
  kSurname,
  kPrefix,
  kSuffix,
  kCompany,
  kDepartment,
  kTitle,
  kAnyTitle,  // a form of address or a job's title, as its cells say; the former where another column is the latter
  kNote,
  kUid,
  kNickname,
  kWebPage,
  kType,
  kMembers,
  kNumber,
  kNumberType,  // says of the number of its ordinal what it is
  kNumberOrder,
  kMoreNumbers,
  kEmail,
  kEmailType,
  kMoreEmails,
  kPostOfficeBox,
  kStreet,
  kExtended,
  kLocality,
  kRegion,
  kPostalCode,
  kCountry,
  kAddressType,
};

struct CsvColumn {
  CsvField field = CsvField::kIgnored;
  NumberKind kind = NumberKind::kPhone;
  Place place = Place::kNone;
  unsigned ordinal = 0;  // of "Phone 2 - Value"; 0 where the name has none

  bool operator==(const CsvColumn&) const = default;
};

// The columns for numbers that we write. The cell of the order names them from 1, and behind them the lines of the
// further numbers: "2* 11" is the number of the second column, preferred, then the first line.
struct CsvNumberColumn {
  std::string_view name;
  NumberKind kind;
  Place place;
};
inline constexpr CsvNumberColumn kCsvNumberColumns[] = {
    {"Business Fax", NumberKind::kFax, Place::kWork},     {"Home Fax", NumberKind::kFax, Place::kHome},
    {"Other Fax", NumberKind::kFax, Place::kOther},       {"Fax", NumberKind::kFax, Place::kNone},
    {"Business Phone", NumberKind::kPhone, Place::kWork}, {"Home Phone", NumberKind::kPhone, Place::kHome},
    {"Other Phone", NumberKind::kPhone, Place::kOther},   {"Phone", NumberKind::kPhone, Place::kNone},
    {"Mobile Phone", NumberKind::kMobile, Place::kNone},  {"Pager", NumberKind::kPager, Place::kNone}};

// A column that is not known becomes a line of this name in the card, with its own name as a parameter.
inline constexpr std::string_view kCsvColumnLine = "X-CSV-COLUMN";

// What a column of this name holds, in any of our languages; no value for a name that is not known.
std::optional<CsvColumn> FindCsvColumn(std::string_view name);
// What a field of FieldNames() stands for.
std::optional<CsvColumn> FindFieldName(std::string_view name);

// Settles what depends on the other columns.
void SettleCsvColumns(std::vector<CsvColumn>* columns);

// Whether a row with these columns can be a contact.
bool CanNameContact(const std::vector<CsvColumn>& columns);

// A number as a line of text, "work fax: +49 30 1", and back.
std::string LineOfNumber(const ContactNumber& number);
ContactNumber NumberOfLine(std::string_view line);

// "1,7E+11": what a spreadsheet leaves of a long number that it takes for a figure.
bool IsRoundedNumber(std::string_view cell);

// A member as a line of text: an identifier, a number, an address or a name.
std::string LineOfMember(const ContactMember& member);
ContactMember MemberOfLine(std::string_view line);

// One row of a table, gathered line by line, since a quoted cell may hold line ends.
class CsvRow {
 public:
  explicit CsvRow(std::string_view delimiters) : delimiters_(delimiters) {}

  void Clear();
  void Assign(std::vector<std::string> cells) { cells_ = std::move(cells); }
  // True when the row goes on in the next line.
  bool Add(std::string_view line);
  const std::vector<std::string>& cells() const { return cells_; }
  bool isBlank() const;
  // The mark that ends a cell of several lines is followed by text: it belongs to another row, and none ends the cell.
  bool isMisclosed() const { return isMisclosed_; }

 private:
  std::size_t AddQuoted(std::string_view line, std::size_t at);

  std::string delimiters_;
  std::vector<std::string> cells_;
  bool isQuoted_ = false, isMisclosed_ = false;
};

}  // namespace formats
