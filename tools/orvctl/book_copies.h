// Copies of a book that its library keeps beside it, and how somebody goes back to one.
#pragma once

#include <string>
#include <vector>

#include "tools/orvctl/listing.h"
#include "tools/orvctl/values.h"

namespace orvctl {

struct BookCopy {
  std::string name;  // without a folder
  std::string date;  // when it was made, by the clock of this computer
};

// The latest first; the file itself need not be there.
std::vector<BookCopy> CopiesOf(const std::string& file);
// Objects with "name" and "date".
Json DescribeCopies(const std::vector<BookCopy>& copies);

// Which they are and the way back, a sentence or two with a blank before them; empty where there is none.
std::string WayBack(const std::string& file);
// The sentence with the way back behind it, where a book with this result cannot be read for what its file holds or for
// its absence.
std::string WithWayBack(std::string sentence, HRESULT status, const std::string& file);

}  // namespace orvctl
