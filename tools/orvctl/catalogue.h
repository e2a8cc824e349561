// The service catalogue beside the library, as the library itself reads it.
#pragma once

#include <string>
#include <vector>

#include "tools/orvctl/errors.h"
#include "tools/orvctl/library.h"
#include "tools/orvctl/listing.h"

namespace orvctl {

struct OfferedService {
  std::string name, displayName, provider, library, entryName;
  ULONG flags = 0;
  bool isDefault = false;
};

// A line of the catalogue that offers nothing.
struct CatalogueFault {
  ULONG line = 0;
  std::string section, service;
  ULONG reason = 0;  // ORV_CATALOGUE_*
  HRESULT status = S_OK;
  std::string text;

  // The library refuses the whole list for it; else it keeps back this service alone, or nothing.
  bool RefusesList() const { return status != MAPI_E_TOO_BIG && status != MAPI_E_UNABLE_TO_COMPLETE; }
  bool IsAboutDefaults() const;
  // "line 7 of [Services]: the service 'X' has no section of its own".
  std::string Describe() const;
  // What its author does about it.
  std::string Fix() const;
};

struct Catalogue {
  std::string file;
  std::vector<OfferedService> services;
  std::vector<CatalogueFault> faults;

  const OfferedService* Find(const std::string& service) const;
};

// The file could not be read at all.
class CatalogueError : public CommandError {
 public:
  CatalogueError(ExitCode exitCode, const std::string& file, const std::string& text, HRESULT result)
      : CommandError(exitCode, text, result), file_(file) {}

  const std::string& file() const { return file_; }  // path

 private:
  std::string file_;
};

// Throws a CatalogueError where the file is at fault.
Catalogue ReadCatalogue(const Library& library);

}  // namespace orvctl
