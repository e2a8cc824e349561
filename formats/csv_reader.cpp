// The rows of a table, one after the other.
#include <algorithm>

#include "formats/card_text.h"
#include "formats/contact_csv.h"
#include "formats/csv_contact.h"
#include "formats/reader_base.h"
#include "formats/text_codec.h"

namespace formats {
namespace {

constexpr std::string_view kDelimiters = ",;\t|";

// The lines of a table. Those that a row has taken can be had again, all but its first.
class RowLines {
 public:
  explicit RowLines(LineInput& lines) : lines_(lines) {}

  void BeginRow() {
    if (at_ == kept_.size()) {
      kept_.clear();
      at_ = 0;
    }
    isFirst_ = true;
  }

  LineInput::Step Next() {
    const bool isFirst = std::exchange(isFirst_, false);
    isOverlong_ = false;
    const LineInput::Step step = at_ < kept_.size() ? Again() : Fresh(!isFirst);
    if (step == LineInput::Step::kLine) ++number_;
    if (isFirst) rowAt_ = at_;
    if (isFirst) rowNumber_ = number_;
    return step;
  }

  // Goes back to the second line of the row.
  void Return() {
    at_ = rowAt_;
    number_ = rowNumber_;
  }

  std::string_view line() const { return line_; }
  bool isOverlong() const { return isOverlong_; }
  std::uint64_t number() const { return number_; }

 private:
  LineInput::Step Again() {
    const std::size_t end = kept_.find('\n', at_);
    line_ = std::string_view(kept_).substr(at_, end - at_);
    at_ = end + 1;
    isOverlong_ = isCut_ && at_ == kept_.size();
    return LineInput::Step::kLine;
  }

  LineInput::Step Fresh(bool isKept) {
    const LineInput::Step step = lines_.Next();
    if (step != LineInput::Step::kLine) return step;
    line_ = lines_.line();
    isOverlong_ = isCut_ = lines_.isOverlong();
    if (!isKept) return step;
    kept_.append(line_).append("\n");
    at_ = kept_.size();
    return step;
  }

  LineInput& lines_;
  std::string kept_;  // lines, each with a line feed
  std::size_t at_ = 0, rowAt_ = 0;
  std::uint64_t number_ = 0, rowNumber_ = 0;
  bool isFirst_ = true, isOverlong_ = false;
  bool isCut_ = false;  // the last line that is kept
  std::string_view line_;
};

class CsvReader final : public LineReaderBase {
 public:
  explicit CsvReader(std::unique_ptr<TextInput> input, const std::string& charset)
      : LineReaderBase(std::move(input)), rowLines_(lines_), row_(kDelimiters) {
    lines_.DecodeLines(input_->isUtf16() ? std::string() : charset);
  }

  OpenResult ReadHeader(const ReadOptions& options);
  FileFormat format() const override { return FileFormat::kCsv; }
  ReadResult Next(Contact* contact) override;
  std::vector<std::string> unknownColumns() const override;
  SourceScope scope() const override { return ScopeOfCsv(columns_); }

 private:
  // What is told of a column that nobody knows.
  struct Unknown {
    bool isUnknown = false;
    std::string name = {};
    bool hasHeld = false;
  };

  static constexpr std::size_t kMostColumns = 10000;

  enum class Row { kRow, kTooLarge, kUnclosed, kEnd, kFailed };

  Row ReadRow();
  Row GiveUp(Row reason);
  Row ReadHeaderRow();
  void ChooseColumns(const std::vector<std::string>& cells);
  bool MapColumns(const ReadOptions& options, const std::vector<std::string>& cells);
  void SetColumn(std::size_t index, const CsvColumn& column);
  void NameUnknown(const std::vector<std::string>& cells);
  void KeepUnknown(CsvContact& builder, std::size_t index, const std::string& cell);
  ReadResult Build(Contact* contact);
  ReadResult RejectRounded(const Contact& contact, std::size_t index);

  RowLines rowLines_;
  CsvRow row_;
  std::vector<CsvColumn> columns_;
  std::vector<Unknown> unknown_;  // for each column, and for those behind them that rows have
  std::string header_;            // the first row's lines
  bool isHeld_ = false;           // the row that has been read is a contact's
  bool hasHeader_ = false;
  ReadResult last_ = ReadResult::kRecord;
};

// A row without any character but blanks and delimiters is none. One that does not end costs its first line only: a
// single quotation mark must not take the rest of the file along.
CsvReader::Row CsvReader::ReadRow() {
  std::size_t size = 0;
  for (bool goesOn = false;;) {
    if (!goesOn) {
      rowLines_.BeginRow();
      row_.Clear();
      size = 0;
    }
    const LineInput::Step step = rowLines_.Next();
    if (step == LineInput::Step::kFailed) return Row::kFailed;
    if (step == LineInput::Step::kEnd) return goesOn ? GiveUp(Row::kUnclosed) : Row::kEnd;
    if (!goesOn) first_ = rowLines_.number();
    size += rowLines_.line().size() + 1;
    if (rowLines_.isOverlong() || size > kMaxRecordSize) return GiveUp(Row::kTooLarge);
    goesOn = row_.Add(rowLines_.line());
    if (row_.isMisclosed()) return GiveUp(Row::kUnclosed);
    if (!goesOn && !row_.isBlank()) return Row::kRow;
  }
}

CsvReader::Row CsvReader::GiveUp(Row reason) {
  rowLines_.Return();
  return reason;
}

std::size_t CountKnown(const std::vector<std::string>& cells) {
  return static_cast<std::size_t>(std::count_if(
      cells.begin(), cells.end(), [](const std::string& cell) { return FindCsvColumn(cell).has_value(); }));
}

std::vector<std::string> CellsOf(std::string_view lines, std::string_view delimiter) {
  CsvRow row(delimiter);
  row.Clear();
  for (bool goesOn = true; goesOn && !lines.empty();) {
    const std::size_t end = std::min(lines.find('\n'), lines.size());
    goesOn = row.Add(lines.substr(0, end));
    lines.remove_prefix(std::min(end + 1, lines.size()));
  }
  return row.cells();
}

// The first row as it lies in the file, whatever its delimiter is.
CsvReader::Row CsvReader::ReadHeaderRow() {
  CsvRow any(kDelimiters);
  header_.clear();
  for (bool goesOn = false;;) {
    if (!goesOn) rowLines_.BeginRow();
    const LineInput::Step step = rowLines_.Next();
    if (step == LineInput::Step::kFailed) return Row::kFailed;
    if (step == LineInput::Step::kEnd) return goesOn ? GiveUp(Row::kUnclosed) : Row::kEnd;
    if (!goesOn && TrimBlanks(rowLines_.line()).empty()) continue;
    if (!goesOn) first_ = rowLines_.number();
    if (rowLines_.isOverlong() || header_.size() + rowLines_.line().size() > kMaxRecordSize)
      return goesOn ? GiveUp(Row::kUnclosed) : Row::kTooLarge;
    header_.append(rowLines_.line()).append("\n");
    goesOn = any.Add(rowLines_.line());
    if (!goesOn) return Row::kRow;
  }
}

// The delimiter that makes the most known columns, else the most columns.
std::string_view ChooseDelimiter(std::string_view header) {
  std::string_view best = kDelimiters.substr(0, 1);
  std::pair<std::size_t, std::size_t> most;
  for (std::size_t i = 0; i < kDelimiters.size(); ++i) {
    const std::vector<std::string> cells = CellsOf(header, kDelimiters.substr(i, 1));
    const std::pair found(CountKnown(cells), cells.size());
    if (found > most) best = kDelimiters.substr(i, 1);
    most = std::max(most, found);
  }
  return best;
}

std::size_t CountKnownIn(std::string_view header) {
  return CountKnown(CellsOf(header, ChooseDelimiter(header)));
}

std::string FirstLineWithoutMarks(std::string_view header) {
  std::string line(header.substr(0, header.find('\n')));
  std::erase(line, '"');
  return line;
}

// A quotation mark in the header that only one of a later row ends belongs to nobody.
bool HasStrayMark(std::string_view header) {
  const bool isOneLine = header.find('\n') + 1 >= header.size();
  return !isOneLine && CountKnownIn(FirstLineWithoutMarks(header)) > CountKnownIn(header);
}

// Spreadsheets write the delimiter into a line of its own: "sep=;".
std::optional<std::string_view> DelimiterLine(std::string_view line) {
  constexpr std::string_view kStart = "sep=";
  line = line.substr(0, line.find('\n'));
  if (!EqualsFolded(line.substr(0, kStart.size()), kStart) || line.size() != kStart.size() + 1)
    return std::nullopt;
  return line.substr(kStart.size());
}

// A row with numbers or addresses in it is no header.
bool LooksLikeData(const std::vector<std::string>& cells) {
  return std::any_of(cells.begin(), cells.end(), [](const std::string& cell) {
    constexpr std::ptrdiff_t kFewest = 5;
    const auto digits = std::count_if(cell.begin(), cell.end(), [](char c) { return c >= '0' && c <= '9'; });
    return digits >= kFewest || cell.find('@') != std::string::npos;
  });
}

OpenResult CsvReader::ReadHeader(const ReadOptions& options) {
  Row row = ReadHeaderRow();
  std::string delimiter;
  if (const auto told = DelimiterLine(header_); row == Row::kRow && told) {
    delimiter = *told;
    row = ReadHeaderRow();
  }
  if (row == Row::kFailed) return OpenResult::kFailed;
  if (row == Row::kTooLarge) return OpenResult::kUnknownFormat;
  if (row == Row::kRow && HasStrayMark(header_)) row = GiveUp(Row::kUnclosed);
  if (row == Row::kUnclosed) header_ = FirstLineWithoutMarks(header_);
  if (delimiter.empty()) delimiter = ChooseDelimiter(header_);
  row_ = CsvRow(delimiter);
  const std::vector<std::string> cells = CellsOf(header_, delimiter);
  header_.clear();
  header_.shrink_to_fit();
  ChooseColumns(cells);
  if (!MapColumns(options, cells)) return OpenResult::kBadColumns;
  NameUnknown(cells);
  SettleCsvColumns(&columns_);
  if (CanNameContact(columns_)) {
    hasRecognised_ = true;
    isHeld_ = !hasHeader_;
    if (isHeld_) row_.Assign(cells);
    return OpenResult::kOk;
  }
  return options.format || cells.size() > 1 ? OpenResult::kUnknownColumns : OpenResult::kUnknownFormat;
}

void CsvReader::ChooseColumns(const std::vector<std::string>& cells) {
  hasHeader_ = CountKnown(cells) > 0 && !LooksLikeData(cells);
  columns_.assign(cells.size(), {});
  for (std::size_t i = 0; i < cells.size(); ++i) {
    const auto column = hasHeader_ ? FindCsvColumn(cells[i]) : std::nullopt;
    columns_[i] = column.value_or(CsvColumn{});
    unknown_.push_back({!column});
  }
}

// By the header, else by number.
void CsvReader::NameUnknown(const std::vector<std::string>& cells) {
  for (std::size_t i = 0; i < unknown_.size(); ++i) {
    std::string& name = unknown_[i].name;
    if (hasHeader_ && i < cells.size()) name = CleanText(cells[i], TextLayout::kOneLine);
    if (name.empty()) name = std::to_string(i + 1);
  }
}

void CsvReader::SetColumn(std::size_t index, const CsvColumn& column) {
  if (index >= kMostColumns) return;
  for (std::size_t i = columns_.size(); i <= index; ++i) {
    columns_.emplace_back();
    unknown_.push_back({true});
  }
  columns_[index] = column;
  unknown_[index] = {};
}

// A column goes by its number, else by its name, which makes the first row a header.
bool CsvReader::MapColumns(const ReadOptions& options, const std::vector<std::string>& cells) {
  for (const auto& [name, fieldName] : options.columns) {
    const std::optional<CsvColumn> field = FindFieldName(fieldName);
    if (!field) return false;
    for (std::size_t i = 0; i < cells.size(); ++i) {
      if (!EqualsFolded(TrimBlanks(cells[i]), TrimBlanks(name))) continue;
      SetColumn(i, *field);
      hasHeader_ = true;
    }
    const bool isNumber = !name.empty() && name.size() < 6 &&
                          std::all_of(name.begin(), name.end(), [](char c) { return c >= '0' && c <= '9'; });
    if (isNumber && name != "0") SetColumn(static_cast<std::size_t>(std::stoul(name)) - 1, *field);
  }
  return true;
}

ReadResult CsvReader::Next(Contact* contact) {
  if (last_ != ReadResult::kRecord) return last_;
  switch (std::exchange(isHeld_, false) ? Row::kRow : ReadRow()) {
    case Row::kRow:
      return Build(contact);
    case Row::kTooLarge:
      return Reject(first_, RejectReason::kTooLarge, "the record is larger than 4 MB");
    case Row::kUnclosed:
      return Reject(first_, RejectReason::kNoEnd, "a quotation mark begins a cell that no other one ends");
    case Row::kEnd:
      return last_ = ReadResult::kEnd;
    case Row::kFailed:
      break;
  }
  return last_ = ReadResult::kFailed;
}

void CsvReader::KeepUnknown(CsvContact& builder, std::size_t index, const std::string& cell) {
  if (TrimBlanks(cell).empty() || index >= kMostColumns) return;
  for (std::size_t i = unknown_.size(); i <= index; ++i) unknown_.push_back({true, std::to_string(i + 1)});
  unknown_[index].hasHeld = true;
  builder.AddUnknown(unknown_[index].name, cell);
}

std::vector<std::string> CsvReader::unknownColumns() const {
  std::vector<std::string> names;
  for (const Unknown& each : unknown_) {
    if (each.hasHeld) names.push_back(each.name);
  }
  return names;
}

// The whole record is rejected: what is stored must not be replaced by such a number, nor by none.
ReadResult CsvReader::RejectRounded(const Contact& contact, std::size_t index) {
  return Reject(first_, RejectReason::kMalformed,
                "a spreadsheet has rounded the number in '" + unknown_[index].name + "' to " +
                    std::string(TrimBlanks(row_.cells()[index])) + "; let it take the column for text",
                contact.name);
}

ReadResult CsvReader::Build(Contact* contact) {
  CsvContact builder(contact);
  const std::vector<std::string>& cells = row_.cells();
  const std::size_t count = std::min(cells.size(), columns_.size());
  std::optional<std::size_t> rounded;
  for (std::size_t i = 0; i < count; ++i) {
    if (columns_[i].ordinal != 0 && !cells[i].empty()) builder.AddType(columns_[i], cells[i]);
  }
  for (std::size_t i = 0; i < cells.size(); ++i) {
    if (cells[i].empty()) continue;
    const bool isKnown = i < count && !unknown_[i].isUnknown;
    if (isKnown && columns_[i].field == CsvField::kNumber && IsRoundedNumber(cells[i])) rounded = i;
    isKnown ? builder.Add(columns_[i], cells[i]) : KeepUnknown(builder, i, cells[i]);
  }
  const bool isNamed = builder.Finish();
  if (rounded) return RejectRounded(*contact, *rounded);
  if (isNamed) return ReadResult::kRecord;
  return Reject(first_, RejectReason::kNameless, "the record has no name, company, address or number");
}

}  // namespace

std::unique_ptr<ContactReader> OpenCsvReader(std::unique_ptr<TextInput> input, const ReadOptions& options,
                                             OpenResult* result) {
  auto reader = std::make_unique<CsvReader>(std::move(input), options.charset);
  *result = reader->ReadHeader(options);
  if (*result != OpenResult::kOk) return nullptr;
  return reader;
}

}  // namespace formats
