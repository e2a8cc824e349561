#include "tools/orvctl/row_printer.h"

#include <algorithm>
#include <numeric>

#include "tools/orvctl/console.h"
#include "tools/orvctl/errors.h"
#include "tools/orvctl/known_fields.h"
#include "tools/orvctl/table_text.h"

namespace orvctl {

// How rows look, one after the other.
class RowForm {
 public:
  virtual ~RowForm() = default;
  virtual std::string Row(const std::vector<Cell>& row) = 0;
  virtual std::string End(const std::string& ifEmpty) = 0;
};

namespace {

class JsonRows final : public RowForm {
 public:
  explicit JsonRows(std::vector<Column> columns) : columns_(std::move(columns)) {}

  std::string Row(const std::vector<Cell>& row) override {
    Json object = Json::object();
    for (size_t i = 0; i < row.size(); ++i) object[columns_[i].key] = row[i].json;
    std::string text = std::exchange(isFirst_, false) ? "[\n" : ",\n";
    return text + JsonItem(object);
  }
  std::string End(const std::string&) override { return isFirst_ ? "[]\n" : "\n]\n"; }

 private:
  const std::vector<Column> columns_;
  bool isFirst_ = true;
};

std::string CsvField(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char each : text) quoted.append(each == '"' ? 2 : 1, each);
  return quoted + "\"";
}

std::string CsvLine(const std::vector<std::string>& texts) {
  std::string line;
  for (const std::string& each : texts)
    line += (line.empty() && &each == &texts.front() ? "" : ",") + CsvField(each);
  return line + "\r\n";
}

class CsvRows final : public RowForm {
 public:
  explicit CsvRows(std::vector<Column> columns) : columns_(std::move(columns)) {}

  // Values as machines get them; what is no text or number is what people see.
  std::string Row(const std::vector<Cell>& row) override {
    std::vector<std::string> texts;
    for (const Cell& cell : row)
      texts.push_back(cell.json.is_string() ? cell.json.get<std::string>() : Plain(cell));
    return Head() + CsvLine(texts);
  }
  std::string End(const std::string&) override { return Head(); }

 private:
  static std::string Plain(const Cell& cell) { return cell.json.is_null() ? "" : cell.json.dump(); }

  std::string Head() {
    if (!std::exchange(isFirst_, false)) return {};
    std::vector<std::string> keys;
    for (const Column& column : columns_) keys.push_back(column.key);
    return CsvLine(keys);
  }

  const std::vector<Column> columns_;
  bool isFirst_ = true;
};

constexpr size_t kMeasured = 1000;

// The first rows tell how wide the columns are.
class TableRows final : public RowForm {
 public:
  TableRows(std::vector<Column> columns, size_t measured)
      : columns_(std::move(columns)), measured_(measured) {}

  std::string Row(const std::vector<Cell>& row) override {
    if (table_) return table_->Line(row);
    first_.push_back(row);
    return first_.size() < measured_ ? std::string() : Begin();
  }
  std::string End(const std::string& ifEmpty) override {
    if (table_) return {};
    if (!first_.empty()) return Begin();
    return ifEmpty.empty() ? std::string() : Printable(ifEmpty) + "\n";
  }

 private:
  std::string Begin() {
    table_ = std::make_unique<GrowingTable>(Listing{columns_, std::move(first_)}, OutputWidth());
    return table_->Text();
  }

  const std::vector<Column> columns_;
  const size_t measured_;
  std::vector<std::vector<Cell>> first_;
  std::unique_ptr<GrowingTable> table_;
};

std::unique_ptr<RowForm> FormOf(const Options& options, std::vector<Column> columns,
                                size_t measured = kMeasured) {
  if (options.json) return std::make_unique<JsonRows>(std::move(columns));
  if (options.csv) return std::make_unique<CsvRows>(std::move(columns));
  return std::make_unique<TableRows>(std::move(columns), measured);
}

// A column that is asked for by name is for people too.
std::vector<Column> Chosen(const std::vector<Column>& columns, const std::vector<size_t>& shown,
                           bool isAsked) {
  std::vector<Column> chosen;
  for (const size_t at : shown) {
    chosen.push_back(columns[at]);
    if (isAsked && chosen.back().title.empty()) chosen.back().title = chosen.back().key;
  }
  return chosen;
}

std::vector<Cell> ChosenCells(const std::vector<Cell>& row, const std::vector<size_t>& shown) {
  std::vector<Cell> cells;
  for (const size_t at : shown) cells.push_back(row[at]);
  return cells;
}

constexpr size_t kWrittenAtOnce = size_t{1} << 15;

std::vector<std::string> KeysOf(const std::vector<Column>& columns) {
  std::vector<std::string> keys;
  for (const Column& each : columns) keys.push_back(each.key);
  return keys;
}

}  // namespace

std::vector<size_t> ChosenColumns(const std::vector<Column>& columns,
                                  const std::vector<std::string>& fields) {
  std::vector<size_t> chosen(columns.size());
  std::iota(chosen.begin(), chosen.end(), size_t{0});
  if (fields.empty()) return chosen;
  chosen.clear();
  for (const std::string& field : fields) {
    const auto found =
        std::find_if(columns.begin(), columns.end(), [&](const Column& each) { return each.key == field; });
    if (found == columns.end()) throw CommandError(kUsage, DescribeUnknownField(field, KeysOf(columns)));
    chosen.push_back(static_cast<size_t>(found - columns.begin()));
  }
  return chosen;
}

RowPrinter::RowPrinter(const Options& options, std::vector<Column> columns, Pace pace)
    : isWhole_(options.fields.empty()),
      shown_(ChosenColumns(columns, options.fields)),
      form_(FormOf(options, Chosen(columns, shown_, !options.fields.empty()),
                   pace == Pace::kAtOnce ? 1 : kMeasured)),
      pace_(pace) {}

RowPrinter::~RowPrinter() = default;

void RowPrinter::Print(const std::vector<Cell>& row) {
  ++count_;
  out_ += form_->Row(isWhole_ ? row : ChosenCells(row, shown_));
  Flush(pace_ == Pace::kAtOnce ? 0 : kWrittenAtOnce);
}

void RowPrinter::Finish(const std::string& ifEmpty) {
  out_ += form_->End(ifEmpty);
  Flush(0);
}

void RowPrinter::Flush(size_t most) {
  if (out_.size() <= most) return;
  if (!WriteOutput(out_)) throw CommandError(kNoOutput, "cannot write the output");
  out_.clear();
}

namespace {

constexpr char kResult[] = "result";

// What a change tells machines, as a row.
Listing AsListing(const Report& report) {
  Listing listing{{{kResult}}, {{report.sentence}}};
  if (!report.data.is_object()) return listing;
  for (const auto& [key, value] : report.data.items()) {
    listing.columns.push_back({key});
    const std::string text = value.is_string() ? value.get<std::string>()
                             : value.is_null() ? ""
                                               : value.dump();
    listing.rows.front().emplace_back(text, value);
  }
  return listing;
}

bool HasObject(const Options& options, const Report& report) {
  return report.data.is_object() && (options.json || !report.isListing);
}

// The members that are asked for, in that order.
std::string PickedJson(const Options& options, Report report) {
  Json all{{kResult, report.sentence}};
  if (report.data.is_object()) all.update(report.data);
  Json picked = Json::object();
  for (const std::string& field : options.fields) picked[field] = all.at(field);
  report.data = std::move(picked);
  report.isFile = true;
  return ToJson(report);
}

std::string Rows(const Options& options, const Listing& listing, const std::string& ifEmpty) {
  const std::vector<size_t> shown = ChosenColumns(listing.columns, options.fields);
  const auto form = FormOf(options, Chosen(listing.columns, shown, !options.fields.empty()));
  std::string text;
  for (const auto& row : listing.rows) text += form->Row(ChosenCells(row, shown));
  return text + form->End(ifEmpty);
}

}  // namespace

void SettleFields(const Options& options, Report& report) {
  if (options.fields.empty() || report.isSilent || report.isFile) return;
  if (report.isListing && HasObject(options, report)) {
    std::vector<std::string> known;
    for (const auto& [key, value] : report.data.items()) known.push_back(key);
    const std::string why = FindUnknownField(options.fields, known);
    if (!why.empty()) throw CommandError(kUsage, why);
  }
  for (const std::string& field : options.fields) {
    if (!report.isListing && field != kResult && !report.data.contains(field)) report.data[field] = nullptr;
  }
}

std::string Formatted(const Options& options, const Report& report, size_t terminalWidth) {
  const bool isPlain = report.isSilent || report.isFile || !report.isListing;
  const bool picks = !options.fields.empty() && !report.isSilent && !report.isFile;
  if (picks && options.json && HasObject(options, report)) return PickedJson(options, report);
  const bool isRow =
      isPlain && !report.isSilent && !report.isFile && (options.csv || (picks && !options.json));
  if (isRow) return Rows(options, AsListing(report), "");
  const bool isObject = options.json && !report.data.is_null();
  if (isPlain && options.quiet && !options.json && !report.isFile) return {};
  if (isPlain || isObject || (options.fields.empty() && !options.csv))
    return options.json ? ToJson(report) : ToText(report, terminalWidth);
  return Rows(options, report.listing, options.quiet ? "" : report.sentence);
}

}  // namespace orvctl
