// The fields of entries that listings show: those of every listing, and further properties by name.
#pragma once

#include <string>
#include <vector>

#include "tools/orvctl/library.h"
#include "tools/orvctl/listing.h"

namespace orvctl {

struct EntryField {
  std::string key;
  std::string title;
  ULONG tag = PR_NULL;  // PR_NULL: the name of the container
};

class EntryColumns {
 public:
  // What is asked for beyond the usual fields: "company", a property's name or its tag. Throws for an unknown one.
  explicit EntryColumns(const std::vector<std::string>& fields);

  std::vector<Column> columns() const;
  // For the table; every tag once.
  LPSPropTagArray tags() { return reinterpret_cast<LPSPropTagArray>(tags_.data()); }
  std::vector<Cell> Cells(const ValueView& row, const std::string& container) const;

  // The property of a field; throws for one that rows cannot be ordered by.
  static ULONG TagOf(const std::string& field);

 private:
  std::vector<EntryField> fields_;
  std::vector<ULONG> tags_;  // a count and that many tags
};

}  // namespace orvctl
