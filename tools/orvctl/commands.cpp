// Which function serves which command.
#include "tools/orvctl/commands.h"

namespace orvctl {

Report RunCommand(const Options& options) {
  const std::string name = options.library.empty() ? DefaultLibraryName() : options.library;
  if (options.command == Command::kServiceAvailable) return ListAvailableServices(name);
  const Library library(name);
  switch (options.command) {
    case Command::kProfileList:
      return ListProfiles(library);
    case Command::kProfileCreate:
      return CreateProfile(library, options);
    case Command::kProfileDelete:
      return DeleteProfile(library, options);
    case Command::kProfileCopy:
      return CopyProfile(library, options);
    case Command::kProfileRename:
      return RenameProfile(library, options);
    case Command::kProfileDefault:
      return DefaultProfile(library, options);
    case Command::kProfileConfigure:
      return ConfigureProfile(library, options);
    case Command::kServiceList:
      return ListServices(library, options);
    case Command::kServiceAvailable:
      break;
    case Command::kServiceAdd:
      return AddService(library, options);
    case Command::kServiceRemove:
      return RemoveService(library, options);
    case Command::kServiceSet:
      return SetService(library, options);
    case Command::kBookTree:
      return ShowTree(library, options);
    case Command::kBookList:
      return ListEntries(library, options);
    case Command::kBookShow:
      return ShowEntry(library, options);
    case Command::kBookExpand:
      return ExpandList(library, options);
    case Command::kPick:
      return PickRecipients(library, options);
  }
  return ListAvailableServices(name);
}

}  // namespace orvctl
