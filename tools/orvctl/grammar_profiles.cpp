// Commands on profiles, their services and the user's own details.
#include "tools/orvctl/grammar.h"
#include "tools/orvctl/profile_name.h"
#include "tools/orvctl/values.h"

namespace orvctl {
namespace {

std::string IsAssignment(const std::string& text) {
  return OwnedValue::Parse(text) ? std::string()
                                 : "'" + text + "' is not TAG=VALUE with a value of the tag's type";
}

}  // namespace

void Grammar::WithNewName(CLI::App& command, const std::string& help) {
  Name(command, options_.newName, "NEW", help)->required()->check(WhyBadProfileName);
}

void Grammar::DefineProfile(CLI::App& group) {
  Add(group, Command::kProfileList, "list", "list all profiles");
  WithProfile(Add(group, Command::kProfileShow, "show", "a profile's services and address book settings"));
  DefineCreate(Add(group, Command::kProfileCreate, "create", "create a profile"));
  WithProfile(Add(group, Command::kProfileDelete, "delete", "delete a profile and all that is stored in it"))
      .add_flag("--if-exists", options_.ifExists, "where there is none all is well");
  WithNewName(WithProfile(Add(group, Command::kProfileCopy, "copy", "copy a profile's services")),
              "name of the new profile");
  WithNewName(WithProfile(Add(group, Command::kProfileRename, "rename", "rename a profile")),
              "new name of the profile");
  DefineDefault(Add(group, Command::kProfileDefault, "default", "show, set or clear the default profile"));
  WithProfile(
      Add(group, Command::kProfileConfigure, "configure", "let the user edit the services in a dialog"));
  DefineFiles(group);
}

void Grammar::DefineCreate(CLI::App& command) {
  Name(command, options_.profile, "PROFILE", "name of the profile")->required()->check(WhyBadProfileName);
  command.add_flag("--default-services", options_.defaultServices, "with the catalogue's default services");
  command.add_flag("--if-missing", options_.ifMissing, "where it is there already it stays as it is");
  command.add_flag("--dialog", options_.dialog, "let the user edit the services; cancelling creates nothing");
}

void Grammar::DefineDefault(CLI::App& command) {
  CLI::Option* name = Name(command, options_.profile, "PROFILE", "the new default; none: show it");
  command.add_flag("--none", options_.noDefault, "no default from now on")->excludes(name);
}

void Grammar::DefineFiles(CLI::App& group) {
  WithProfile(Add(group, Command::kProfileExport, "export", "write a profile as JSON, for 'profile apply'"));
  CLI::App& apply = Add(group, Command::kProfileApply, "apply", "make a profile what a file of export says");
  Name(apply, options_.file, "FILE", "the file; - is standard input")->required();
}

void Grammar::DefineService(CLI::App& group) {
  WithProfile(Add(group, Command::kServiceList, "list", "list the services of a profile"));
  CLI::App& show =
      WithProfile(Add(group, Command::kServiceShow, "show", "a service of a profile and its settings"));
  Name(show, options_.service, "SERVICE",
       "name, display name or UID; may be left out where there is only one");
  Add(group, Command::kServiceAvailable, "available", "list the services of the catalogue");
  DefineAdd(WithProfile(Add(group, Command::kServiceAdd, "add", "add a service of the catalogue")));
  CLI::App& remove = WithProfile(Add(group, Command::kServiceRemove, "remove", "remove a service"));
  Name(remove, options_.service, "SERVICE", "name, display name, UID or key")->required();
  DefineSet(WithProfile(Add(group, Command::kServiceSet, "set", "change the settings of a service")));
}

void Grammar::DefineAdd(CLI::App& command) {
  Name(command, options_.service, "SERVICE", "its name in the catalogue")->required();
  Name(command, options_.displayName, "--display", "display name, in place of the catalogue's")
      ->type_name("TEXT");
  command
      .add_option("--config", options_.config, "configuration handed to the service, such as a file's path")
      ->type_name("TEXT");
  command.add_flag("--if-missing", options_.ifMissing,
                   "where the profile has a service of that name it stays as it is");
}

void Grammar::AddProperties(CLI::App& command) {
  command.add_option("--property", options_.properties, "a property by its tag, as 0x6600001F=text")
      ->type_name("TAG=VALUE")
      ->check(IsAssignment)
      ->expected(1)
      ->take_all();
}

void Grammar::DefineSet(CLI::App& command) {
  Name(command, options_.service, "SERVICE",
       "name, display name or UID; may be left out where there is only one");
  command
      .add_option("--config", options_.config,
                  "path of the address book's file (PR_ORV_BOOK_FILE_W), checked by the service")
      ->type_name("TEXT");
  AddProperties(command);
  command.add_flag("--dialog", options_.dialog, "let the user edit the settings in the service's window");
}

void Grammar::DefineUserInfo(CLI::App& group) {
  WithProfile(Add(group, Command::kUserInfoGet, "get", "show them"));
  CLI::App& set =
      WithProfile(Add(group, Command::kUserInfoSet, "set", "change them; an empty text takes away"));
  AddPerson(set);
  AddProperties(set);
}

}  // namespace orvctl
