// Rows that are printed while they come, in whatever form was asked for, so that nobody waits for the last one and no
// number of them fills the memory.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tools/orvctl/command_line.h"
#include "tools/orvctl/listing.h"

namespace orvctl {

class RowForm;

class RowPrinter {
 public:
  // Of the columns those that the options name, in their order; throws for a field that there is not.
  enum class Pace { kInBlocks, kAtOnce };
  RowPrinter(const Options& options, std::vector<Column> columns, Pace pace = Pace::kInBlocks);
  ~RowPrinter();
  RowPrinter(const RowPrinter&) = delete;
  RowPrinter& operator=(const RowPrinter&) = delete;

  // A cell for each of the constructor's columns. Throws where nobody takes the output any more.
  void Print(const std::vector<Cell>& row);
  // `ifEmpty` is what people read where there was no row.
  void Finish(const std::string& ifEmpty);
  size_t count() const { return count_; }

 private:
  void Flush(size_t most);

  bool isWhole_;  // all columns in their order
  std::vector<size_t> shown_;
  std::unique_ptr<RowForm> form_;
  std::string out_;
  Pace pace_;
  size_t count_ = 0;
};

// The places of the fields asked for among the columns; all of them where none is asked for.
std::vector<size_t> ChosenColumns(const std::vector<Column>& columns, const std::vector<std::string>& fields);

// Refuses a field that a listing with an object behind it does not have; one that only this run of a change does not tell
// is null.
void SettleFields(const Options& options, Report& report);

// The whole report in the form that the options ask for.
std::string Formatted(const Options& options, const Report& report, size_t terminalWidth);

}  // namespace orvctl
