// Files of books that no profile need name, looked at and mended by the libraries that know them.
#include <functional>
#include <memory>
#include <set>
#include <type_traits>

#include "diag/names.h"
#include "tools/orvctl/catalogue.h"
#include "tools/orvctl/commands.h"
#include "tools/orvctl/dependencies.h"
#include "tools/orvctl/transfer_report.h"

namespace orvctl {
namespace {

struct Unload {
  void operator()(HMODULE module) const { FreeLibrary(module); }
};
using Module = std::unique_ptr<std::remove_pointer_t<HMODULE>, Unload>;

template <class Function>
Function* Find(const Module& module, const char* name) {
  return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module.get(), name)));
}

// The catalogue's libraries that keep books in files.
std::vector<Module> LoadKeepers(const Library& library) {
  std::vector<Module> keepers;
  std::set<std::string> seen;
  for (const OfferedService& service : ReadCatalogue(library).services) {
    if (!seen.insert(service.library).second) continue;
    Module module(LoadAsProvider(OwnFolder() + ToWide(service.library)));
    if (module && Find<ORVCHECKBOOK>(module, ORV_CHECK_BOOK_NAME)) keepers.push_back(std::move(module));
  }
  if (keepers.empty())
    throw CommandError(kNoLibrary,
                       "no library of the catalogue keeps books in files; 'orvctl doctor' looks at them");
  return keepers;
}

struct Checked {
  const Module* keeper = nullptr;
  OrvBookHealth health = {};
};

// A file is nobody's where every library says that it is another's.
Checked Look(const std::vector<Module>& keepers, const std::string& file) {
  Checked checked;
  for (const Module& keeper : keepers) {
    checked = {&keeper, {}};
    checked.health.cbSize = sizeof(checked.health);
    const std::string doing = "look through '" + file + "'";
    const auto check = Find<ORVCHECKBOOK>(keeper, ORV_CHECK_BOOK_NAME);
    Check(Foreign(doing, [&] { return check(FullPath(ToWide(file)).c_str(), &checked.health); }), doing);
    if (checked.health.hrStatus != MAPI_E_INVALID_OBJECT) break;
  }
  return checked;
}

ExitCode ExitCodeOfBook(HRESULT status) {
  if (status == MAPI_E_CORRUPT_STORE || status == MAPI_E_INVALID_OBJECT) return kDamaged;
  return ExitCodeOf(status);
}

std::string TextOf(const WCHAR (&text)[512]) { return ToUtf8(std::basic_string_view<WCHAR>(text).data()); }

std::string YesNo(bool is) { return is ? "yes" : "no"; }

}  // namespace

Report CheckBookFile(const Library& library, const Options& options) {
  const std::vector<Module> keepers = LoadKeepers(library);
  const OrvBookHealth health = Look(keepers, options.file).health;
  const std::string status = diag::ResultName(static_cast<uint32_t>(health.hrStatus));
  const std::string text = TextOf(health.szText);
  const bool isChanged = health.ftChanged.dwHighDateTime != 0;
  SPropValue changed = {};
  changed.ulPropTag = PR_LAST_MODIFICATION_TIME;
  changed.Value.ft = health.ftChanged;
  const std::string when = isChanged ? ValueCell(changed).text : "";
  Report report = Report::Of({{{"what", "What"}, {"value", "Value"}}, {}}, "");
  report.listing.rows = {{"file", options.file},
                         {"status", health.hrStatus == S_OK ? "whole" : status},
                         {"contacts and lists", std::to_string(health.cEntries)},
                         {"lists", std::to_string(health.cLists)},
                         {"can be restored", std::to_string(health.cDeleted)},
                         {"damaged", std::to_string(health.cDamaged)},
                         {"bytes", std::to_string(health.cbFile)},
                         {"last change", when},
                         {"read-only", YesNo(health.fReadOnly != 0)},
                         {"format", std::to_string(health.ulFormat)}};
  report.data = {{"file", options.file},
                 {"status", status},
                 {"entries", health.cEntries},
                 {"lists", health.cLists},
                 {"deleted", health.cDeleted},
                 {"damaged", health.cDamaged},
                 {"bytes", health.cbFile},
                 {"changed", when},
                 {"readOnly", health.fReadOnly != 0},
                 {"format", health.ulFormat},
                 {"text", text}};
  const bool isDamaged = FAILED(health.hrStatus) || health.cDamaged != 0;
  const ExitCode code = FAILED(health.hrStatus) ? ExitCodeOfBook(health.hrStatus) : kDamaged;
  const std::string said = text.empty() ? "the book '" + options.file + "' is not whole" : text;
  if (isDamaged) report.messages.push_back({said, status, code});
  return report;
}

Report RepairBookFile(const Library& library, const Options& options) {
  const std::vector<Module> keepers = LoadKeepers(library);
  const Checked checked = Look(keepers, options.file);
  if (checked.health.hrStatus == MAPI_E_NOT_FOUND)
    throw CommandError(kNotFound, "there is no file '" + options.file + "'", MAPI_E_NOT_FOUND);
  const auto repair = Find<ORVREPAIRBOOK>(*checked.keeper, ORV_REPAIR_BOOK_NAME);
  if (repair == nullptr) throw CommandError(kNoLibrary, "the library of that book cannot mend files");
  const Interruption interruption;
  Rejections rejections("");
  ProgressBar bar("mending", 0);
  const auto report = ComPtr<TransferReport>::Adopt(new TransferReport(options.file, rejections, bar));
  ULONGLONG saved = 0, lost = 0;
  const std::string doing = "write what can be read of '" + options.file + "' into '" + options.target + "'";
  const HRESULT result = Foreign(doing, [&] {
    return repair(FullPath(ToWide(options.file)).c_str(), FullPath(ToWide(options.target)).c_str(),
                  report.Get(), &saved, &lost);
  });
  if (result == MAPI_E_COLLISION)
    throw CommandError(kConflict, "'" + options.target + "' is there already; name a new file", result);
  Check(result, doing);
  Report told = Report::Done("Saved " + std::to_string(saved) + " entries into '" + options.target + "', " +
                                 std::to_string(lost) + " were lost.",
                             {{"saved", saved}, {"lost", lost}, {"file", options.target}});
  told.messages = rejections.Messages();
  return told;
}

}  // namespace orvctl
