#include "tools/orvctl/catalogue.h"

#include <algorithm>
#include <iterator>

#include "diag/names.h"
#include "tools/orvctl/commands.h"
#include "tools/orvctl/dependencies.h"
#include "tools/orvctl/errors.h"

namespace orvctl {
namespace {

struct Explanation {
  ULONG reason;
  const char* what;  // "%" stands for the text of the line
  const char* fix;
};

constexpr Explanation kExplanations[] = {
    {ORV_CATALOGUE_BAD_LINE, "'%' is not NAME=TEXT", "write the name, '=' and a text, or take the line out"},
    {ORV_CATALOGUE_DUPLICATE, "the name stands in this list already", "take one of the two lines out"},
    {ORV_CATALOGUE_NO_SECTION, "there is no section of that name, or nothing in it",
     "write the service's section, or take the line out"},
    {ORV_CATALOGUE_TOO_BIG, "its section has more than 1048576 characters", "shorten the section"},
    {ORV_CATALOGUE_BAD_FORMAT, "'%' has a percent sign that is neither %c nor %%",
     "write %% for a percent sign"},
    {ORV_CATALOGUE_TOO_LONG,
     "'%' is too long: a library's name has at most 15 characters, a list of files 259", "shorten it"},
    {ORV_CATALOGUE_MISSING_FILE, "its file '%' is not beside the catalogue",
     "install the file, or take it out of PR_SERVICE_SUPPORT_FILES"},
    {ORV_CATALOGUE_NOT_OFFERED, "[Services] does not list it", "add it to [Services], or take the line out"}};

const Explanation* Explain(ULONG reason) {
  const auto found = std::find_if(std::begin(kExplanations), std::end(kExplanations),
                                  [&](const Explanation& each) { return each.reason == reason; });
  return found != std::end(kExplanations) ? found : nullptr;
}

// The first "%" that stands alone.
std::string Fill(std::string what, const std::string& text) {
  const size_t place = what.find("'%'");
  if (place != std::string::npos) what.replace(place + 1, 1, text);
  return what;
}

OfferedService ToService(const ValueView& row) {
  return {TextOf(row, PR_SERVICE_NAME_W),     TextOf(row, PR_DISPLAY_NAME_W),
          TextOf(row, PR_PROVIDER_DISPLAY_W), TextOf(row, PR_SERVICE_DLL_NAME_W),
          TextOf(row, PR_SERVICE_ENTRY_NAME), row.Number(PR_RESOURCE_FLAGS),
          row.Flag(PR_ORV_CATALOGUE_DEFAULT)};
}

CatalogueFault ToFault(const ValueView& row) {
  return {row.Number(PR_ORV_CATALOGUE_LINE),
          TextOf(row, PR_ORV_CATALOGUE_SECTION_W),
          TextOf(row, PR_SERVICE_NAME_W),
          row.Number(PR_ORV_CATALOGUE_REASON),
          static_cast<HRESULT>(row.Number(PR_ORV_CATALOGUE_STATUS)),
          TextOf(row, PR_ORV_CATALOGUE_TEXT_W)};
}

// The library says of all of them that it found no services.
std::string WhyUnreadable(const std::string& file) {
  const WideString path = ToWide(file);
  const DWORD attributes = GetFileAttributesW(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return DescribeLoadError(GetLastError());
  if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return "it is a folder";
  const HANDLE handle = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return DescribeLoadError(GetLastError());
  LARGE_INTEGER size{};
  const bool isEmpty = GetFileSizeEx(handle, &size) && size.QuadPart == 0;
  CloseHandle(handle);
  return isEmpty ? "it is empty" : "it has no section [Services], or nothing in it";
}

[[noreturn]] void ThrowUnreadable(const Library& library, const std::string& file, HRESULT result) {
  if (file.empty())
    throw CommandError(kNoLibrary, library.fileName() + " is not the file name of any model's library",
                       result);
  throw CatalogueError(kFailed, file, "cannot read the catalogue " + file + ": " + WhyUnreadable(file),
                       result);
}

}  // namespace

bool CatalogueFault::IsAboutDefaults() const { return section == "Default Services"; }

std::string CatalogueFault::Describe() const {
  const Explanation* const known = Explain(reason);
  const std::string where =
      line == 0 ? "[" + section + "]" : "line " + std::to_string(line) + ", [" + section + "]";
  const std::string whose = service.empty() ? "" : "service '" + service + "': ";
  return where + ": " + whose +
         (known != nullptr ? Fill(known->what, text) : "left out for reason " + std::to_string(reason));
}

std::string CatalogueFault::Fix() const {
  const Explanation* const known = Explain(reason);
  return known != nullptr ? known->fix : "";
}

const OfferedService* Catalogue::Find(const std::string& service) const {
  const auto found = std::find_if(services.begin(), services.end(),
                                  [&](const OfferedService& each) { return each.name == service; });
  return found != services.end() ? &*found : nullptr;
}

Catalogue ReadCatalogue(const Library& library) {
  if (library.openCatalogue() == nullptr)
    throw CommandError(kNoLibrary, library.fileName() + " cannot tell what its catalogue offers");
  auto file = library.allocator().Own<WCHAR>();
  auto offered = library.allocator().Own<SRowSet>();
  auto leftOut = library.allocator().Own<SRowSet>();
  const HRESULT result =
      library.openCatalogue()(nullptr, MAPI_UNICODE, file.Put(), offered.Put(), leftOut.Put());
  Catalogue catalogue;
  if (file) catalogue.file = ToUtf8(file.Get());
  if (FAILED(result)) ThrowUnreadable(library, catalogue.file, result);
  for (ULONG i = 0; i < offered->cRows; ++i)
    catalogue.services.push_back(ToService(ValueView(offered->aRow[i])));
  for (ULONG i = 0; i < leftOut->cRows; ++i) catalogue.faults.push_back(ToFault(ValueView(leftOut->aRow[i])));
  return catalogue;
}

Report ListAvailableServices(const Library& library, const Options&) {
  Listing listing{{{"service", "Service"},
                   {"name", "Name"},
                   {"displayName"},
                   {"provider", "Provider"},
                   {"library", "Library"},
                   {"flags", "Flags"},
                   {"default", "Default"}},
                  {}};
  const Catalogue catalogue = ReadCatalogue(library);
  for (const OfferedService& service : catalogue.services) {
    listing.rows.push_back({service.name, service.displayName, service.displayName, service.provider,
                            service.library, ResourceFlagNames(service.flags),
                            Cell::YesNo(service.isDefault)});
  }
  Report report = Report::Of(std::move(listing), "The catalogue lists no services.");
  for (const CatalogueFault& fault : catalogue.faults)
    report.Warn(catalogue.file + ", " + fault.Describe(),
                diag::ResultName(static_cast<uint32_t>(fault.status)));
  return report;
}

}  // namespace orvctl
