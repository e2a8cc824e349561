// Contacts as the rows of a table.
#include <algorithm>
#include <array>
#include <iterator>
#include <map>

#include "formats/card_text.h"
#include "formats/contact_csv.h"
#include "formats/losing_writer.h"
#include "formats/reader_base.h"

namespace formats {
namespace {

constexpr std::string_view kUtf8Mark =
    "\xEF\xBB\xBF";  // spreadsheets take the text for the system's code page without

struct TextColumn {
  std::string_view name;
  std::string Contact::*text;
};
constexpr TextColumn kTexts[] = {
    {"Name", &Contact::name},         {"First Name", &Contact::given},      {"Middle Name", &Contact::middle},
    {"Last Name", &Contact::surname}, {"Name Prefix", &Contact::prefix},    {"Suffix", &Contact::suffix},
    {"Company", &Contact::company},   {"Department", &Contact::department}, {"Job Title", &Contact::title}};

constexpr std::string_view kEmails[] = {"E-mail Address", "E-mail 2 Address", "E-mail 3 Address"};

struct PlaceName {
  std::string_view name;
  Place place;
};
constexpr PlaceName kPlaces[] = {
    {"Business ", Place::kWork}, {"Home ", Place::kHome}, {"Other ", Place::kOther}, {"", Place::kNone}};

struct PartColumn {
  std::string_view name;
  std::string ContactAddress::*part;
};
constexpr PartColumn kParts[] = {
    {"Street", &ContactAddress::street},          {"Street 2", &ContactAddress::extended},
    {"City", &ContactAddress::locality},          {"State", &ContactAddress::region},
    {"Postal Code", &ContactAddress::postalCode}, {"Country", &ContactAddress::country},
    {"PO Box", &ContactAddress::postOfficeBox}};

// Lines of the card that a reader makes of a column.
struct LineColumn {
  std::string_view name, line;
};
constexpr LineColumn kLines[] = {{"Nickname", "NICKNAME:"}, {"Web Page", "URL:"}};

// What such a column holds of the line; empty where a reader would make another line of it.
std::string CellOfLine(std::string_view line, const LineColumn& column) {
  if (line.substr(0, column.line.size()) != column.line) return {};
  std::string cell = UnescapeVCardText(line.substr(column.line.size()), VCardVersion::k30OrLater);
  std::string again(column.line);
  AppendEscaped(&again, CleanText(cell, TextLayout::kOneLine));
  return again == line ? cell : std::string();
}

class RowWriter {
 public:
  explicit RowWriter(std::string& out) : out_(out) {}

  void Add(std::string_view cell) {
    if (!std::exchange(isFirst_, false)) out_ += ',';
    const bool isPlain = cell.find_first_of(",;\t|\"\r\n") == std::string_view::npos &&
                         (cell.empty() || (cell.front() != ' ' && cell.back() != ' '));
    if (isPlain) {
      out_ += cell;
      return;
    }
    out_ += '"';
    for (const char c : cell) {
      if (c == '"') out_ += '"';
      out_ += c;
    }
    out_ += '"';
  }

  void End() {
    out_ += "\r\n";
    isFirst_ = true;
  }

 private:
  std::string& out_;
  bool isFirst_ = true;
};

void WriteHeader(RowWriter& row) {
  for (const TextColumn& column : kTexts) row.Add(column.name);
  for (const CsvNumberColumn& column : kCsvNumberColumns) row.Add(column.name);
  for (const std::string_view name : {"Other Numbers", "Number Order"}) row.Add(name);
  for (const std::string_view name : kEmails) row.Add(name);
  row.Add("Other E-mail Addresses");
  for (const PlaceName& place : kPlaces) {
    for (const PartColumn& part : kParts) row.Add(std::string(place.name).append(part.name));
  }
  for (const LineColumn& column : kLines) row.Add(column.name);
  for (const std::string_view name : {"Notes", "UID", "Contact Type", "Members"}) row.Add(name);
  row.End();
}

// Which number stands in which column, and in which order a reader meets them.
class NumberCells {
 public:
  explicit NumberCells(const std::vector<ContactNumber>& numbers) : numbers_(numbers) {
    std::vector<bool> isPlaced(numbers.size());
    for (std::size_t c = 0; c < std::size(kCsvNumberColumns); ++c) {
      for (std::size_t i = 0; i < numbers.size() && !cells_[c]; ++i) {
        const bool fits =
            numbers[i].kind == kCsvNumberColumns[c].kind && numbers[i].place == kCsvNumberColumns[c].place;
        if (!fits || !IsPlainNumber(numbers[i])) continue;
        cells_[c] = &numbers[i];
        isPlaced[i] = true;
        met_.push_back(i);
        names_.push_back(c + 1);
      }
    }
    std::size_t lines = 0;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
      if (isPlaced[i]) continue;
      met_.push_back(i);
      names_.push_back(std::size(kCsvNumberColumns) + ++lines);
      if (!more_.empty()) more_ += '\n';
      more_ += LineOfNumber(numbers[i]);
    }
  }

  void Write(RowWriter& row) const {
    for (const ContactNumber* cell : cells_)
      row.Add(cell != nullptr ? std::string_view(cell->text) : std::string_view());
    row.Add(more_);
    row.Add(Order());
  }

 private:
  // One that would be read as something else alone in its cell.
  static bool IsPlainNumber(const ContactNumber& number) {
    const ContactNumber read = NumberOfLine(number.text);
    return read.text == number.text && read.kind == NumberKind::kPhone && read.place == Place::kNone &&
           number.text.find(":::") == std::string::npos && !IsRoundedNumber(number.text);
  }

  // Empty where the columns tell it all.
  std::string Order() const {
    const bool isPlain = std::is_sorted(met_.begin(), met_.end()) &&
                         std::none_of(numbers_.begin(), numbers_.end(),
                                      [](const ContactNumber& each) { return each.isPreferred; });
    if (isPlain) return {};
    std::vector<std::size_t> names(met_.size());
    for (std::size_t i = 0; i < met_.size(); ++i) names[met_[i]] = names_[i];
    std::string order;
    for (std::size_t i = 0; i < names.size(); ++i) {
      if (i > 0) order += ' ';
      order += std::to_string(names[i]);
      if (numbers_[i].isPreferred) order += '*';
    }
    return order;
  }

  const std::vector<ContactNumber>& numbers_;
  std::array<const ContactNumber*, std::size(kCsvNumberColumns)> cells_{};
  std::vector<std::size_t> met_;    // numbers in the order of their cells
  std::vector<std::size_t> names_;  // of those cells
  std::string more_;
};

class CsvWriter final : public LosingWriter {
 public:
  explicit CsvWriter(ByteSink& sink) : sink_(sink) {}

  bool Write(const Contact& contact) override {
    Begin();
    BeginLosses(contact);
    RowWriter row(out_);
    for (const TextColumn& column : kTexts) row.Add(contact.*column.text);
    NumberCells(contact.numbers).Write(row);
    WriteEmails(row, contact.emails);
    WriteAddresses(row, contact.addresses);
    WriteLines(row, contact.others);
    row.Add(contact.note);
    row.Add(contact.uid);
    row.Add(contact.isList ? "list" : "");
    WriteMembers(row, contact.members);
    row.End();
    return works_ = works_ && sink_.Write(out_);
  }

  bool Finish() override {
    Begin();
    if (!out_.empty()) works_ = works_ && sink_.Write(out_);
    return works_;
  }

 private:
  void Begin() {
    out_.clear();
    if (std::exchange(hasBegun_, true)) return;
    out_ = kUtf8Mark;
    RowWriter row(out_);
    WriteHeader(row);
  }

  static void WriteEmails(RowWriter& row, const std::vector<ContactEmail>& emails) {
    for (std::size_t i = 0; i < std::size(kEmails); ++i)
      row.Add(i < emails.size() ? emails[i].text : std::string());
    std::string more;
    for (std::size_t i = std::size(kEmails); i < emails.size(); ++i)
      more.append(more.empty() ? "" : "\n").append(emails[i].text);
    row.Add(more);
  }

  static void WriteAddresses(RowWriter& row, const std::vector<ContactAddress>& addresses) {
    for (const PlaceName& place : kPlaces) {
      const auto found =
          std::find_if(addresses.begin(), addresses.end(),
                       [&place](const ContactAddress& each) { return each.place == place.place; });
      for (const PartColumn& part : kParts)
        row.Add(found != addresses.end() ? (*found).*part.part : std::string());
    }
  }

  void WriteLines(RowWriter& row, const std::vector<std::string>& lines) {
    std::array<std::string, std::size(kLines)> cells;
    for (const std::string& line : lines) {
      bool isHeld = false;
      for (std::size_t c = 0; c < cells.size() && !isHeld; ++c) {
        isHeld = cells[c].empty() && !(cells[c] = CellOfLine(line, kLines[c])).empty();
      }
      if (!isHeld) LoseLine(line);
    }
    for (const std::string& cell : cells) row.Add(cell);
  }

  static void WriteMembers(RowWriter& row, const std::vector<ContactMember>& members) {
    std::string lines;
    for (const ContactMember& member : members) {
      const std::string line = LineOfMember(member);
      if (!line.empty()) lines.append(lines.empty() ? "" : "\n").append(line);
    }
    row.Add(lines);
  }

  ByteSink& sink_;
  std::string out_;
  bool hasBegun_ = false, works_ = true;
};

}  // namespace

std::unique_ptr<ContactWriter> CreateCsvWriter(ByteSink& sink) { return std::make_unique<CsvWriter>(sink); }

}  // namespace formats
