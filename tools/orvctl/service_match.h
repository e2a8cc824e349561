// Which services of a profile are meant: by those of a file, or by the book that a service is given.
#pragma once

#include <vector>

#include "tools/orvctl/settings.h"

namespace orvctl {

// For each service of the file that of the profile, or null; each is meant once. Of several of one kind those go together
// that have most in common, since the order in which services are stored says nothing. The result points into `stored`.
std::vector<const Service*> MatchServices(const Library& library, const std::string& profile,
                                          const Json& wanted, const std::vector<Service>& stored);

// The service of that name with that file, however it is written; empty is the place that the service uses by itself.
const Service* FindWithFile(const Library& library, const std::string& profile,
                            const std::vector<Service>& stored, const std::string& name,
                            const std::string& file);
// Another one with the book of this service: two paths may lead to one file, and a copy of a book is the same to others.
const Service* FindWithBook(const Library& library, const std::string& profile,
                            const std::vector<Service>& stored, const Service& service);

}  // namespace orvctl
