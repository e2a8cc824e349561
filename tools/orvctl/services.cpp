// Commands on the message services of a profile.
#include <algorithm>
#include <iterator>

#include "diag/names.h"
#include "orv/orvbook.h"
#include "tools/orvctl/administration.h"
#include "tools/orvctl/book_copies.h"
#include "tools/orvctl/catalogue.h"
#include "tools/orvctl/commands.h"
#include "tools/orvctl/dependencies.h"
#include "tools/orvctl/entry_trial.h"
#include "tools/orvctl/errors.h"
#include "tools/orvctl/new_contacts.h"
#include "tools/orvctl/service_choice.h"
#include "tools/orvctl/service_match.h"
#include "tools/orvctl/service_trial.h"
#include "tools/orvctl/suggestion.h"

namespace orvctl {
namespace {

// Lines for which the library refuses to read what the catalogue offers.
std::string FindRefusals(const Catalogue& catalogue) {
  std::string text;
  for (const CatalogueFault& fault : catalogue.faults) {
    if (fault.RefusesList() && !fault.IsAboutDefaults()) text += "; " + fault.Describe();
  }
  return text;
}

[[noreturn]] void ThrowNotOffered(const Catalogue& catalogue, const std::string& name, HRESULT result) {
  for (const CatalogueFault& fault : catalogue.faults) {
    if (fault.service != name || fault.IsAboutDefaults()) continue;
    const bool isFile = fault.reason == ORV_CATALOGUE_MISSING_FILE;
    throw CommandError(kFailed,
                       "cannot add service '" + name + "', " + catalogue.file + ", " + fault.Describe() +
                           (isFile ? ": " + diag::SystemErrorName(ERROR_FILE_NOT_FOUND) : ""),
                       result);
  }
  std::vector<std::string> offered;
  for (const OfferedService& each : catalogue.services) offered.push_back(each.name);
  const std::string closest = ClosestWord(name, offered);
  const std::string hint = closest.empty() ? "" : "; did you mean '" + closest + "'?";
  throw CommandError(kNotFound,
                     "there is no service '" + name + "' in the catalogue" + hint +
                         (closest.empty() ? "; " : " ") + "'orvctl service available' lists it",
                     result);
}

// Which step of a call of the service's entry function failed, after the library and its function were found.
std::string DescribeEntry(const std::string& fileName, const std::string& entry, const char* how) {
  const WideString path = OwnFolder() + ToWide(fileName);
  const HMODULE module = LoadAsProvider(path);
  if (module == nullptr) {
    const DWORD error = GetLastError();
    return ", its library " + fileName + " cannot be loaded: " + DescribeLoadError(error, path);
  }
  FreeLibrary(module);
  return ", its entry function '" + entry + "' of " + fileName + " " + how;
}

// `wasTried`: then an exception has been told.
std::string DescribeCall(const std::string& fileName, const std::string& entry, HRESULT result,
                         bool wasTried) {
  const std::string why = DescribeFailure(ExamineLibrary(fileName, entry));
  const char* const how = result != MAPI_E_CALL_FAILED ? "refused"
                          : wasTried                   ? "failed"
                                                       : "failed or raised an exception";
  return why.empty() ? DescribeEntry(fileName, entry, how) : why;
}

// The code of an entry function is the service's own: its "not found" is not that of a profile or a service.
ExitCode ExitCodeOfEntry(HRESULT result) {
  const ExitCode code = ExitCodeOf(result);
  return code == kNotFound ? kFailed : code;
}

bool IsThere(const std::wstring& path) { return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

struct Refusal {
  HRESULT code;
  const char* text;
};
// What a service that keeps a file means by its code.
constexpr Refusal kRefusals[] = {{MAPI_E_INVALID_OBJECT, "a folder, or a file of another kind"},
                                 {MAPI_E_CORRUPT_DATA, "its content is not what this service reads"},
                                 {MAPI_E_CORRUPT_STORE, "the file is damaged"},
                                 {MAPI_E_VERSION, "made by a newer version"},
                                 {MAPI_E_NO_ACCESS, "it may not be read or written"},
                                 {MAPI_E_BUSY, "another program holds it"},
                                 {MAPI_E_STRING_TOO_LONG, "the path is too long"}};

std::string WhyRefused(const std::wstring& path, HRESULT result) {
  if (result == MAPI_E_NOT_FOUND && !IsThere(path)) {
    const bool hasFolder = IsThere(path.substr(0, path.find_last_of(L"\\/") + 1));
    return hasFolder ? " (there is no such file)" : " (there is no such folder)";
  }
  const auto found = std::find_if(std::begin(kRefusals), std::end(kRefusals),
                                  [result](const Refusal& each) { return each.code == result; });
  return found != std::end(kRefusals) ? std::string(" (") + found->text + ")" : std::string();
}

// The text that a service refused, and as a path why.
std::string DescribeConfig(const WideString& config, HRESULT result) {
  return ", with the configuration '" + ToUtf8(config) + "'" +
         WhyRefused(std::wstring(config.begin(), config.end()), result);
}

// The library answers alike for a service that it does not know, a library file that is missing and a configuration
// that the service refuses; the catalogue tells them apart.
[[noreturn]] void ThrowNotAdded(const Library& library, const Options& options, HRESULT result) {
  const Catalogue catalogue = ReadCatalogue(library);
  const std::string doing = "cannot add service '" + options.service + "'";
  const std::string refusals = FindRefusals(catalogue);
  if (!refusals.empty())
    throw CommandError(kFailed, doing + ", the catalogue " + catalogue.file + " is refused" + refusals,
                       result);
  if (result == MAPI_E_COLLISION) Check(result, "add service '" + options.service + "' a second time");
  const OfferedService* const known = catalogue.Find(options.service);
  if (known == nullptr) ThrowNotOffered(catalogue, options.service, result);
  const WideString given = FullPath(ToWide(options.config.value_or("")));
  const std::string config = options.config ? DescribeConfig(given, result) : std::string();
  const std::string broken = DescribeFailure(ExamineLibrary(known->library, known->entryName));
  if (!broken.empty()) throw CommandError(kFailed, doing + broken);
  const std::string text = doing + config + DescribeCall(known->library, known->entryName, result, true);
  throw CommandError(ExitCodeOfEntry(result), WithWayBack(text, result, ToUtf8(given)), result);
}

// With a flag for the user interface the service's entry function is asked, else the values are written as they are.
void Configure(IABServiceAdmin* admin, const Service& service, ULONG flags, std::vector<SPropValue> values) {
  const MAPIUID uid = UidOf(service);
  ComPtr<IProfSect> section;
  const HRESULT result =
      admin->ConfigureMsgService(&uid, 0, MAPI_UNICODE | flags, static_cast<ULONG>(values.size()),
                                 values.empty() ? nullptr : values.data(), section.Put());
  const std::string doing = "configure service '" + service.name + "'";
  const bool hasPath = !values.empty() && values.front().ulPropTag == PR_ORV_BOOK_FILE_W;
  const std::string config =
      hasPath && FAILED(result) ? DescribeConfig(values.front().Value.lpszW, result) : std::string();
  if (FAILED(result) && flags != 0 && result != MAPI_E_USER_CANCEL)
    throw CommandError(
        ExitCodeOfEntry(result),
        WithWayBack("cannot " + doing + config +
                        DescribeCall(service.library, service.entryName, result, flags == SERVICE_UI_ALLOWED),
                    result, hasPath ? ToUtf8(values.front().Value.lpszW) : ""),
        result);
  Check(result, doing);
}

// A service that is given another UID could not be found again.
void RefuseIdentity(OwnedValue value) {
  if (PROP_ID(value.Get().ulPropTag) != PROP_ID(PR_SERVICE_UID)) return;
  throw CommandError(kUsage, "PR_SERVICE_UID names the service in its profile and cannot be set");
}

std::vector<OwnedValue> ParseProperties(const Options& options) {
  std::vector<OwnedValue> values;
  for (const std::string& property : options.properties) {
    values.push_back(OwnedValue::Parse(property).value());
    RefuseIdentity(values.back());
  }
  return values;
}

// The catalogue's service of that name; nothing where it has none, or where what is wrong with the catalogue is told when
// the service is not added.
std::optional<Service> FindOffered(const Library& library, const std::string& name) {
  if (library.openCatalogue() == nullptr) return std::nullopt;
  try {
    const Catalogue catalogue = ReadCatalogue(library);
    const OfferedService* const found = catalogue.Find(name);
    if (found == nullptr) return std::nullopt;
    return Service{
        found->name, found->displayName, found->provider, found->library, found->entryName, {}, found->flags,
        {}};
  } catch (const CommandError&) {
    return std::nullopt;
  }
}

// The library asks for the entry function alone; the profile could not be logged on to afterwards.
void RefuseWithoutProvider(const Service& service) {
  std::string why;
  const std::optional<Image> image = ReadImageFile(OwnFolder() + ToWide(service.library), &why);
  if (!image || image->isTruncated || image->isShort || image->machine != kMachineX64) return;
  if (image->Exports(ORV_PROVIDER_OPEN_NAME)) return;
  throw CommandError(kFailed, "cannot add service '" + service.name + "'" +
                                  DescribeFailure(ExamineLibrary(service.library, service.entryName)));
}

// In the entry function of one that was not tried, or that breaks only now and then.
LastWords LastWordsOf(const Service& service, const std::string& doing) {
  return LastWords(
      {{ToWide(service.library), "cannot " + doing + ", its entry function '" + service.entryName + "' of " +
                                     service.library + " crashed: " + kCrashMark +
                                     "; look at the profile with 'orvctl service list'"}});
}

void RefuseBroken(const Library& library, const EntryTrial& trial, const std::string& doing) {
  const std::string why = trial.Run(library);
  if (!why.empty())
    throw CommandError(kFailed, "cannot " + doing + why + "; nothing was stored", MAPI_E_CALL_FAILED);
}

HRESULT Create(IABServiceAdmin* admin, const Options& options) {
  const WideString name = ToWide(options.service);
  const WideString displayName = options.displayName.empty() ? name : ToWide(options.displayName);
  const WideString config = ToWide(options.config.value_or(""));
  return admin->CreateMsgService(name.c_str(), displayName.c_str(), options.config ? config.c_str() : nullptr,
                                 0, 0, MAPI_UNICODE);
}

const Service* FindNew(const std::vector<Service>& before, const std::vector<Service>& after) {
  const auto found = std::find_if(after.begin(), after.end(), [&](const Service& each) {
    return std::none_of(before.begin(), before.end(),
                        [&](const Service& old) { return old.uid == each.uid; });
  });
  return found != after.end() ? &*found : nullptr;
}

// The library takes the name only where the catalogue has none.
void NameNew(const Library& library, const std::string& profile, const Service& added,
             const std::string& displayName) {
  if (added.displayName == displayName) return;
  OwnedValue value = OwnedValue::String(PR_DISPLAY_NAME_W, displayName);
  Configure(OpenServices(library, profile).Get(), added, 0, {value.Get()});
}

const Service* FindOf(const std::vector<Service>& all, const std::string& name) {
  const auto found =
      std::find_if(all.begin(), all.end(), [&](const Service& each) { return each.name == name; });
  return found != all.end() ? &*found : nullptr;
}

// One that is there already counts by its file too, where one is given.
const Service* FindThere(const Library& library, const std::string& profile, const Options& options,
                         const std::vector<Service>& all) {
  if (options.ifMissing && !options.config) return FindOf(all, options.service);
  return FindWithFile(library, profile, all, options.service, options.config.value_or(""));
}

// Of the same library as another service of the profile.
bool IsFurther(const std::vector<Service>& before, const std::optional<Service>& offered) {
  return offered && std::any_of(before.begin(), before.end(),
                                [&](const Service& each) { return each.library == offered->library; });
}

bool KeepsBooks(const std::optional<Service>& service) {
  std::string why;
  const auto image = service ? ReadImageFile(OwnFolder() + ToWide(service->library), &why) : std::nullopt;
  return image && image->Exports(ORV_CHECK_BOOK_NAME);
}

// Its entries would have one identifier twice.
[[noreturn]] void ThrowTwice(const std::string& doing, const Service& there, const std::string& why) {
  throw CommandError(kConflict, "cannot " + doing + why + " the book of service '" + there.displayName +
                                    "' (" + ToHex(there.uid) +
                                    "), and a profile holds a book once; nothing was stored");
}

// Tried in a process of its own first.
void CreateTried(const Library& library, const std::string& profile, const Options& options,
                 const std::optional<Service>& offered) {
  const std::string doing = "add service '" + options.service + "'";
  const ComPtr<IABServiceAdmin> admin = OpenServices(library, profile);
  if (offered) RefuseWithoutProvider(*offered);
  if (offered) RefuseBroken(library, {*offered, {}, options.config}, doing);
  const LastWords lastWords = LastWordsOf(offered.value_or(Service{}), doing);
  const HRESULT result = Create(admin.Get(), options);
  if (FAILED(result) && result != MAPI_E_USER_CANCEL) ThrowNotAdded(library, options, result);
  Check(result, doing);
}

// What was added; a book that the profile has is taken out again.
Service TakeNew(const Library& library, const std::string& profile, const std::vector<Service>& before,
                const std::string& doing) {
  const std::vector<Service> after = ReadServices(library, profile);
  const Service* const added = FindNew(before, after);
  if (added == nullptr) throw CommandError(kConflict, "somebody else has removed the new service again");
  const Service* const twin = FindWithBook(library, profile, after, *added);
  if (twin == nullptr) return *added;
  DeleteService(library, profile, *added);
  ThrowTwice(doing, *twin, ": its file is a copy of");
}

// `sentence` ends where the profile's name follows.
Report Told(const std::string& sentence, const std::string& profile, const Service& service, bool isChanged) {
  return Report::Done(sentence + QuotedProfile(profile) + ".",
                      {{"service", service.name}, {"uid", ToHex(service.uid)}, {"changed", isChanged}});
}

// A path that was mistyped would end as an empty book without a word.
std::string TellOfNewFile(const Options& options) {
  const WideString file = FullPath(ToWide(options.config.value_or("")));
  const bool isPath =
      !file.empty() && file.find(L"://") == WideString::npos && file.find(L'%') == WideString::npos;
  if (!isPath || GetFileAttributesW(file.c_str()) != INVALID_FILE_ATTRIBUTES) return {};
  return " There was no file " + ToUtf8(file) + "; a personal book begins there with a new one.";
}

}  // namespace

Report ListServices(const Library& library, const Options& options) {
  Listing listing{{{"service", "Service"},
                   {"displayName", "Name"},
                   {"provider", "Provider"},
                   {"library", "Library"},
                   {"entryPoint"},
                   {"flags", "Flags"},
                   {"uid", "UID"},
                   {"key"},
                   {"status"}},
                  {}};
  const Services services(library, options.profile);
  for (const Service& service : services.all) {
    const bool isRead = SUCCEEDED(service.status);
    const std::string uid = ToHex(service.uid);
    listing.rows.push_back({Cell(isRead ? service.name : "(cannot be read)", service.name),
                            service.displayName, service.provider, service.library, service.entryName,
                            Cell(ResourceFlagNames(service.flags), service.flags),
                            Cell(isRead ? uid : service.key, uid), service.key,
                            diag::ResultName(static_cast<uint32_t>(service.status))});
  }
  Report report = Report::Of(std::move(listing), "The profile has no services.");
  for (const Service& service : services.all) {
    if (FAILED(service.status)) report.Warn(DescribeUnreadable(services.profile, service));
  }
  return report;
}

Report AddService(const Library& library, const Options& options) {
  const std::string profile = ProfileName(library, options.profile);
  const std::string doing = "add service '" + options.service + "'";
  const std::vector<Service> before = ReadServices(library, profile);
  const Service* const there = FindThere(library, profile, options, before);
  if (there != nullptr && options.ifMissing)
    return Told("There is service '" + there->name + "' already in ", profile, *there, false);
  const std::optional<Service> offered = FindOffered(library, options.service);
  if (there != nullptr && KeepsBooks(offered)) ThrowTwice(doing, *there, ": its file is");
  const std::string newFile = TellOfNewFile(options);
  std::optional<NewContacts> newContacts;
  if (IsFurther(before, offered)) newContacts.emplace(library, profile);
  CreateTried(library, profile, options, offered);
  const Service added = TakeNew(library, profile, before, doing);
  if (!options.displayName.empty()) NameNew(library, profile, added, options.displayName);
  Report report = Told("Added service '" + options.service + "' to ", profile, added, true);
  report.sentence += newFile;
  if (newContacts) newContacts->Keep(report);
  return report;
}

Report RemoveService(const Library& library, const Options& options) {
  const Services services(library, options.profile);
  const Service& service = services.Find(options.service);
  const std::string& name = service.name.empty() ? service.key : service.name;
  const std::string what = "service '" + name + "' from ";
  if (options.dryRun) return Told("Would remove " + what, services.profile, service, true);
  DeleteService(library, services.profile, service);
  return Told("Removed " + what, services.profile, service, true);
}

Report SetService(const Library& library, const Options& options) {
  const Services services(library, options.profile);
  const Service& service = services.Find(options.service);
  std::vector<OwnedValue> direct = ParseProperties(options);
  const ComPtr<IABServiceAdmin> admin = OpenServices(library, services.profile);
  const std::string doing = "configure service '" + service.name + "'";
  const LastWords lastWords = LastWordsOf(service, doing);
  if (options.config) {
    // What is stored is read in some other folder, so a path counts from where the user is now.
    const std::string file = ToUtf8(FullPath(ToWide(*options.config)));
    const Service* const twin = FindWithFile(library, services.profile, services.all, service.name, file);
    if (twin != nullptr && twin->uid != service.uid && KeepsBooks(service))
      ThrowTwice(doing, *twin, ": the file is");
    RefuseBroken(library, {service, services.profile, file}, doing);
    OwnedValue path = OwnedValue::String(PR_ORV_BOOK_FILE_W, file);
    Configure(admin.Get(), service, SERVICE_UI_ALLOWED, {path.Get()});
  }
  std::vector<SPropValue> values;
  for (OwnedValue& value : direct) values.push_back(value.Get());
  if (!values.empty()) Configure(admin.Get(), service, 0, std::move(values));
  if (options.dialog) Configure(admin.Get(), service, SERVICE_UI_ALWAYS, {});
  return Told("Configured service '" + service.name + "' of ", services.profile, service, true);
}

}  // namespace orvctl
