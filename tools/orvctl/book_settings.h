// What the address book keeps for a profile: the container that is shown first, and those that names are looked up in.
#pragma once

#include <optional>
#include <vector>

#include "tools/orvctl/book.h"

namespace orvctl {

// Among those given; none where nothing is set or fits.
std::optional<Container> DefaultContainer(const Library& library, const Book& book,
                                          const std::vector<Container>& containers);
// Throws for a container that only holds others: nobody can be found in it. `doing` completes "cannot ...".
void RequireRecipients(const Container& container, const std::string& doing);
// Where it can be changed new contacts go there from now on.
void SetDefaultContainer(const Book& book, const Container& container);

// In their order, those only that are there.
std::vector<Container> SearchPath(const Library& library, const Book& book,
                                  const std::vector<Container>& containers);
void SetSearchPath(const Library& library, const Book& book, const std::vector<Container>& path);

}  // namespace orvctl
