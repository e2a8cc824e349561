// The service catalogue, read as its file stands: what may be added to a profile.
#pragma once

#include <string>
#include <vector>

namespace orvctl {

struct OfferedService {
  std::string name, displayName, provider, library, flags;
  bool isDefault = false;
};

// A section that the catalogue's services need, and how long it is.
struct CatalogueSection {
  std::string name;
  size_t characters = 0;
};
std::vector<CatalogueSection> ReadCatalogueSections(const std::string& libraryName);

// Of the model that the library's file name stands for, from this program's own folder.
std::vector<OfferedService> ReadCatalogue(const std::string& libraryName);

}  // namespace orvctl
