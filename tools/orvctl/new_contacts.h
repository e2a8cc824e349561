// Which book of a profile new contacts go to.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/orvctl/book.h"

namespace orvctl {

// What the profile kept as the default personal book before this session; nothing where that is not among the containers.
std::optional<Container> StoredBook(const Book& book, const std::vector<Container>& containers);
// That, also while it cannot be changed, else the default container where that is a personal book, else the first
// personal book. Where one of several cannot be read it is that one: nobody knows then which of them comes first.
// Nothing where there is none.
std::optional<Container> BookOfNewContacts(const Book& book, const std::vector<Container>& containers);
void SetStoredBook(const Book& book, const Container& container);

// For a service that is added: which of several books comes first is up to the order in which they are stored. The book
// that new contacts went to before is stored as the default one, unless one is.
class NewContacts {
 public:
  // Before the service is added. A profile that cannot be logged on to gets its service all the same.
  NewContacts(const Library& library, const std::string& profile);
  // Afterwards: tells where they go now.
  void Keep(Report& report) const;

 private:
  void Settle(Report& report) const;

  const Library& library_;
  const std::string profile_;
  std::optional<Container> before_;
};

}  // namespace orvctl
