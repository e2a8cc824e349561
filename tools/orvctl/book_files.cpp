// Files of books that no profile need name, looked at and mended by the libraries that know them.
#include <functional>
#include <memory>
#include <set>
#include <sstream>
#include <type_traits>

#include "diag/names.h"
#include "tools/orvctl/book_copies.h"
#include "tools/orvctl/catalogue.h"
#include "tools/orvctl/commands.h"
#include "tools/orvctl/contact_files.h"
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

// What is wrong with a book, entry by entry, as far as its library tells.
class Gathered final : public orv::sdk::Object<IOrvContactReport> {
 public:
  HRESULT STDMETHODCALLTYPE Record(ULONG, ULONGLONG, LPCWSTR name, LPCWSTR reason) override {
    return orv::sdk::Guarded([&]() -> HRESULT {
      const std::string whose = name != nullptr && *name != 0 ? "'" + ToUtf8(name) + "': " : "";
      if (reason != nullptr && *reason != 0) found_.push_back(whose + ToUtf8(reason));
      return S_OK;
    });
  }
  HRESULT STDMETHODCALLTYPE Progress(ULONGLONG, ULONGLONG) override { return S_OK; }

  std::vector<std::string> Take() { return std::move(found_); }

 private:
  std::vector<std::string> found_;
};

struct Checked {
  const Module* keeper = nullptr;
  OrvBookHealth health = {};
  std::vector<std::string> findings = {};
};

// A file is nobody's where every library says that it is another's.
Checked Look(const std::vector<Module>& keepers, const std::string& file) {
  Checked checked;
  for (const Module& keeper : keepers) {
    checked = {&keeper, {}, {}};
    checked.health.cbSize = sizeof(checked.health);
    const std::string doing = "look through '" + file + "'";
    const auto check = Find<ORVCHECKBOOK>(keeper, ORV_CHECK_BOOK_NAME);
    const auto report = ComPtr<Gathered>::Adopt(new Gathered());
    const WideString path = FullPath(ToWide(file));
    Check(Foreign(doing, [&] { return check(path.c_str(), &checked.health, report.Get()); }), doing);
    checked.findings = report->Take();
    if (checked.health.hrStatus != MAPI_E_INVALID_OBJECT) break;
  }
  return checked;
}

// What did not fit was cut off somewhere; half a word could be read as another one.
std::string TextOfBuffer(const WCHAR (&text)[512]) {
  const std::basic_string_view<WCHAR> all(text, std::size(text));
  const std::basic_string_view<WCHAR> told = all.substr(0, all.find(L'\0'));
  if (told.size() + 1 < all.size()) return ToUtf8(told);
  return ToUtf8(told.substr(0, told.find_last_of(L" \n"))) + " ...";
}

std::string YesNo(bool is) { return is ? "yes" : "no"; }

std::string CodeName(HRESULT code) { return diag::ResultName(static_cast<uint32_t>(code)); }

void RequireThere(const OrvBookHealth& health, const std::string& file) {
  if (health.hrStatus == MAPI_E_NOT_FOUND)
    throw CommandError(kNotFound, WithWayBack("there is no file '" + file + "'", MAPI_E_NOT_FOUND, file),
                       MAPI_E_NOT_FOUND);
}

// Empty where it never was changed.
std::string ChangeOf(const OrvBookHealth& health) {
  if (health.ftChanged.dwHighDateTime == 0) return {};
  SPropValue changed = {};
  changed.ulPropTag = PR_LAST_MODIFICATION_TIME;
  changed.Value.ft = health.ftChanged;
  return ValueCell(changed).text;
}

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    if (!line.empty()) lines.push_back(std::move(line));
  }
  return lines;
}

struct Salvage {
  ULONGLONG saved = 0, lost = 0;

  // What is known of it.
  ULONGLONG Lost() const { return lost & ~ORV_LOST_MORE; }
  bool IsMoreLost() const { return (lost & ORV_LOST_MORE) != 0; }
  std::string LostText() const {
    const std::string known = std::to_string(Lost());
    if (!IsMoreLost()) return known;
    return Lost() == 0 ? "an unknown number" : "at least " + known;
  }
};

// A file of another kind or a newer one says so itself; the rest is about the new one.
std::string WhyNotMended(const OrvBookHealth& health, HRESULT result) {
  if (result == MAPI_E_NOT_ENOUGH_DISK) return ": the disk is full; name a file on another drive";
  if (result == MAPI_E_NO_ACCESS) return ": nothing may be written there; name a file in another folder";
  const std::string text = TextOfBuffer(health.szText);
  return text.empty() ? "" : ": " + text;
}

// An empty book would look like the mended one.
[[noreturn]] void ThrowNothingSaved(const Options& options, const OrvBookHealth& health) {
  if (health.hrStatus == S_OK && health.cDamaged == 0)
    throw CommandError(kFailed,
                       "'" + options.file + "' is whole and holds no entries; there is nothing to save");
  throw CommandError(kDamaged,
                     "nothing of '" + options.file + "' can be read, and '" + options.target +
                         "' was not kept." + WayBack(options.file),
                     MAPI_E_CORRUPT_DATA);
}

Report ToldOf(const Salvage& salvage, const Options& options, const Rejections& rejections) {
  Report told = Report::Done("Saved " + Counted(salvage.saved, "entry", "entries") + " into '" +
                                 options.target + "', " + salvage.LostText() + " were lost.",
                             {{"saved", salvage.saved},
                              {"lost", salvage.Lost()},
                              {"moreLost", salvage.IsMoreLost()},
                              {"file", options.target}});
  told.messages = rejections.Messages();
  if (salvage.lost != 0 && told.messages.empty())
    told.messages.push_back({salvage.LostText() + " entries could not be read"});
  for (Message& message : told.messages) message.exitCode = kSomeFailed;
  return told;
}

// What is told of a file.
struct ToldOfFile {
  const std::string& file;
  const OrvBookHealth& health;
  const std::vector<std::string>& findings;
  const std::vector<BookCopy> copies;
};

Listing HealthListing(const ToldOfFile& told) {
  const OrvBookHealth& health = told.health;
  Listing listing{{{"what", "What"}, {"value", "Value"}},
                  {{"file", told.file},
                   {"status", health.hrStatus == S_OK ? "whole" : CodeName(health.hrStatus)},
                   {"contacts and lists", std::to_string(health.cEntries)},
                   {"lists", std::to_string(health.cLists)},
                   {"can be restored", std::to_string(health.cDeleted)},
                   {"damaged", std::to_string(health.cDamaged)},
                   {"bytes", std::to_string(health.cbFile)},
                   {"last change", ChangeOf(health)},
                   {"read-only", YesNo(health.fReadOnly != 0)},
                   {"format", std::to_string(health.ulFormat)}}};
  for (const std::string& each : told.findings) listing.rows.push_back({"found", each});
  for (const BookCopy& each : told.copies)
    listing.rows.push_back({"copy", each.name + " (" + each.date + ")"});
  listing.wraps = true;
  return listing;
}

Json HealthData(const ToldOfFile& told) {
  const OrvBookHealth& health = told.health;
  return {{"file", told.file},
          {"status", CodeName(health.hrStatus)},
          {"entries", health.cEntries},
          {"lists", health.cLists},
          {"deleted", health.cDeleted},
          {"damaged", health.cDamaged},
          {"bytes", health.cbFile},
          {"changed", ChangeOf(health)},
          {"readOnly", health.fReadOnly != 0},
          {"format", health.ulFormat},
          {"text", TextOfBuffer(health.szText)},
          {"findings", told.findings},
          {"copies", DescribeCopies(told.copies)}};
}

}  // namespace

Report CheckBookFile(const Library& library, const Options& options) {
  const std::vector<Module> keepers = LoadKeepers(library);
  const Checked checked = Look(keepers, options.file);
  const OrvBookHealth& health = checked.health;
  RequireThere(health, options.file);
  const std::vector<std::string> sentences = Lines(TextOfBuffer(health.szText));
  const ToldOfFile told{options.file, health, checked.findings.empty() ? sentences : checked.findings,
                        CopiesOf(options.file)};
  Report report = Report::Of(HealthListing(told), "");
  report.data = HealthData(told);
  const bool isDamaged = FAILED(health.hrStatus) || health.cDamaged != 0;
  const ExitCode code = FAILED(health.hrStatus) ? ExitCodeOf(health.hrStatus) : kDamaged;
  const std::string said =
      "'" + options.file + "': " + (sentences.empty() ? "the book is not whole" : sentences.front());
  const HRESULT lost = health.cDamaged != 0 ? MAPI_E_CORRUPT_STORE : health.hrStatus;
  if (isDamaged)
    report.messages.push_back({WithWayBack(said, lost, options.file), CodeName(health.hrStatus), code});
  return report;
}

Report RepairBookFile(const Library& library, const Options& options) {
  const std::vector<Module> keepers = LoadKeepers(library);
  const Checked checked = Look(keepers, options.file);
  RequireThere(checked.health, options.file);
  RequirePlace(options.target);
  const auto repair = Find<ORVREPAIRBOOK>(*checked.keeper, ORV_REPAIR_BOOK_NAME);
  if (repair == nullptr) throw CommandError(kNoLibrary, "the library of that book cannot mend files");
  const Interruption interruption;
  Rejections rejections(options.reportFile);
  ProgressBar bar("mending", 0);
  const auto report = ComPtr<TransferReport>::Adopt(new TransferReport(options.file, rejections, bar));
  Salvage salvage;
  const std::string doing = "write what can be read of '" + options.file + "' into '" + options.target + "'";
  const HRESULT result = Foreign(doing, [&] {
    return repair(FullPath(ToWide(options.file)).c_str(), FullPath(ToWide(options.target)).c_str(),
                  report.Get(), &salvage.saved, &salvage.lost);
  });
  if (result == MAPI_E_COLLISION)
    throw CommandError(kConflict, "'" + options.target + "' is there already; name a new file", result);
  const bool isEmpty = SUCCEEDED(result) && salvage.saved == 0;
  if (isEmpty) DeleteFileW(FullPath(ToWide(options.target)).c_str());
  if (isEmpty || result == MAPI_E_CORRUPT_DATA || result == MAPI_E_CORRUPT_STORE)
    ThrowNothingSaved(options, checked.health);
  if (FAILED(result))
    throw CommandError(ExitCodeOf(result),
                       WithWayBack("cannot " + doing + WhyNotMended(checked.health, result),
                                   checked.health.hrStatus, options.file),
                       result);
  rejections.Commit();
  return ToldOf(salvage, options, rejections);
}

}  // namespace orvctl
