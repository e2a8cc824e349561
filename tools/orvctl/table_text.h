// A listing as aligned columns.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tools/orvctl/listing.h"

namespace orvctl {

// On a terminal of so many columns a cell that is too long for its own ends in an ellipsis; without one (0) cells stay
// whole. Either way no cell makes the others of its column wider than 60.
std::string TableText(const Listing& listing, size_t terminalWidth);

class Table;

// A table whose first rows tell how wide its columns are; more come later.
class GrowingTable {
 public:
  GrowingTable(const Listing& first, size_t terminalWidth);
  ~GrowingTable();

  std::string Text();
  std::string Line(const std::vector<Cell>& row);

 private:
  std::unique_ptr<Table> table_;
};

}  // namespace orvctl
