// Which function serves which command.
#include "tools/orvctl/commands.h"

#include <algorithm>
#include <iterator>

#include "tools/orvctl/known_fields.h"

namespace orvctl {
namespace {

struct Server {
  Command command;
  Report (*serve)(const Library& library, const Options& options);
};

constexpr Server kServers[] = {{Command::kProfileList, ListProfiles},
                               {Command::kProfileShow, ShowProfile},
                               {Command::kProfileCreate, CreateProfile},
                               {Command::kProfileDelete, DeleteProfile},
                               {Command::kProfileCopy, CopyProfile},
                               {Command::kProfileRename, RenameProfile},
                               {Command::kProfileDefault, DefaultProfile},
                               {Command::kProfileConfigure, ConfigureProfile},
                               {Command::kProfileExport, ExportProfile},
                               {Command::kProfileApply, ApplyProfile},
                               {Command::kBookFind, FindEntries},
                               {Command::kBookDefault, DefaultBook},
                               {Command::kBookPath, PathOfBooks},
                               {Command::kBookWatch, WatchBook},
                               {Command::kBookCheck, CheckBookFile},
                               {Command::kBookRepair, RepairBookFile},
                               {Command::kContactAdd, AddContact},
                               {Command::kContactEdit, EditContact},
                               {Command::kContactRemove, RemoveContacts},
                               {Command::kContactRestore, RestoreContacts},
                               {Command::kContactCopy, CopyContacts},
                               {Command::kGroupAdd, AddToGroup},
                               {Command::kGroupRemove, RemoveFromGroup},
                               {Command::kGroupMembers, ListGroup},
                               {Command::kImport, ImportFiles},
                               {Command::kExport, ExportBook},
                               {Command::kUserInfoGet, GetUserInfo},
                               {Command::kUserInfoSet, SetUserInfo},
                               {Command::kServiceShow, ShowService},
                               {Command::kServiceList, ListServices},
                               {Command::kServiceAvailable, ListAvailableServices},
                               {Command::kServiceAdd, AddService},
                               {Command::kServiceRemove, RemoveService},
                               {Command::kServiceSet, SetService},
                               {Command::kBookTree, ShowTree},
                               {Command::kBookList, ListEntries},
                               {Command::kBookShow, ShowEntry},
                               {Command::kBookExpand, ExpandList},
                               {Command::kPick, PickRecipients},
                               {Command::kHelp, ShowHelp}};

// Of a change machines are told whether it was made or foretold.
void TellDryRun(const Options& options, Report& report) {
  if (report.isListing || !report.data.is_object()) return;
  const std::vector<std::string> known = KnownFields(options);
  if (std::find(known.begin(), known.end(), "dryRun") != known.end()) report.data["dryRun"] = options.dryRun;
}

}  // namespace

Report RunCommand(const Options& options, std::vector<Message>& problems) {
  if (options.command == Command::kProviderCheck) return CheckProvider(options);
  if (options.command == Command::kFileCheck) return CheckFile(options);
  if (options.command == Command::kFileConvert) return ConvertFile(options);
  if (options.command == Command::kDoctor) return Examine(options, problems);
  const std::string name = options.library.empty() ? DefaultLibraryName() : options.library;
  const Library library(name, &problems);
  const auto server = std::find_if(std::begin(kServers), std::end(kServers),
                                   [&](const Server& each) { return each.command == options.command; });
  Report report = server->serve(library, options);
  TellDryRun(options, report);
  return report;
}

}  // namespace orvctl
