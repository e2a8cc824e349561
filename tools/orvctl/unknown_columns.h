// Columns of a table that nobody knows: what is told of them, and how they are found while somebody else reads the table.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "formats/contact_io.h"
#include "tools/orvctl/listing.h"

namespace orvctl {

// What becomes of what such columns hold: they are lines of the contact's card, which only some formats can hold.
enum class Columns { kKept, kLeftOut };

// "2 columns of 'x.csv' were not understood: ...", with the way on.
Message TellOfColumns(const std::string& file, const std::vector<std::string>& names, Columns columns);

// Hands a source on and keeps what it begins with.
class Overheard {
 public:
  std::unique_ptr<formats::ByteSource> Pass(std::unique_ptr<formats::ByteSource> source);
  // Those that have held something in the rows overheard.
  std::vector<std::string> UnknownColumns(const formats::ReadOptions& options) const;

 private:
  const std::shared_ptr<std::string> beginning_ = std::make_shared<std::string>();
};

}  // namespace orvctl
