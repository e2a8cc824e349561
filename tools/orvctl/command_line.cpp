// The command line: one function a group of commands.
#include "tools/orvctl/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>

#include "orv/orvversion.h"
#include "tools/orvctl/check/rules.h"
#include "tools/orvctl/errors.h"
#include "tools/orvctl/listing.h"
#include "tools/orvctl/values.h"

namespace orvctl {
namespace {

constexpr char kFooter[] =
    "PROFILE is the name of a profile; '-' is the default profile.\n"
    "Exit codes: 0 done, 1 failed, 2 wrong usage, 3 library missing or unusable, 4 no such profile, "
    "service,\n"
    "container or entry, 5 cancelled by the user, 6 a name fits several, 7 conflict, 8 damaged file, 9 no "
    "space,\n"
    "10 some sources failed, 11 problems found, 12 the output cannot be written.";

// Adds commands to the parser; each one chosen writes itself into the options.
class Grammar {
 public:
  Grammar(CLI::App& app, Options& options) : app_(app), options_(options) {}

  void Define() {
    app_.require_subcommand(1);
    // Global options may follow a command; nothing begins with a slash but paths.
    app_.fallthrough();
    app_.allow_windows_style_options(false);
    app_.footer(kFooter);
    app_.set_version_flag("--version", "orvctl " ORV_VERSION_TEXT, "print the version");
    app_.add_flag("--json", options_.json, "print JSON for machines");
    app_.add_option("--library", options_.library, "file name of the library, beside this program")
        ->type_name("FILE")
        ->check(IsFileName);
    DefineProfile(Group("profile", "create, list and change profiles"));
    DefineService(Group("service", "the address book providers of a profile"));
    DefineBook(Group("book", "browse the address book of a profile"));
    DefineProvider(Group("provider", "for authors of providers"));
    DefinePick();
    CLI::App& doctor = Add(app_, Command::kDoctor, "doctor",
                           "look for what is wrong with the installation, the catalogue and the profiles");
    Name(doctor, options_.profile, "PROFILE", "only this profile, or -");
    doctor.add_flag("--fix", options_.fix, "move services that cannot be read out of their profiles");
    Add(app_, Command::kHelp, "help", "show this text, or the help of the address book")
        .add_flag("--window", options_.window, "the help of the address book, in a window");
  }

 private:
  // Libraries are loaded from one folder only, so a path is an error and not a request.
  static std::string IsFileName(const std::string& name) {
    const bool plain = !name.empty() && name.find_first_of("\\/:") == std::string::npos;
    return plain ? std::string() : "'" + name + "' is not a file name without folder";
  }

  // A script's empty variable must not mean "the only one" or "all of them".
  static std::string IsNotEmpty(const std::string& text) {
    return text.empty() ? "a name must not be empty" : std::string();
  }

  // A profile of that name could not be told from the default one afterwards.
  static std::string IsNewName(const std::string& name) {
    return name == "-" ? "'-' stands for the default profile and cannot be a name" : std::string();
  }

  static std::string IsAssignment(const std::string& text) {
    return OwnedValue::Parse(text) ? std::string()
                                   : "'" + text + "' is not TAG=VALUE with a value of the tag's type";
  }

  CLI::App& Group(const std::string& name, const std::string& help) {
    CLI::App* group = app_.add_subcommand(name, help);
    group->require_subcommand(1);
    return *group;
  }

  CLI::App& Add(CLI::App& group, Command command, const std::string& name, const std::string& help) {
    CLI::App* sub = group.add_subcommand(name, help);
    sub->callback([&options = options_, command] { options.command = command; });
    return *sub;
  }

  CLI::Option* Name(CLI::App& command, std::string& target, const std::string& name,
                    const std::string& help) {
    return command.add_option(name, target, help)->type_name("")->check(IsNotEmpty);
  }

  CLI::App& WithProfile(CLI::App& command) {
    Name(command, options_.profile, "PROFILE", "name of the profile, or -")->required();
    return command;
  }

  void WithNewName(CLI::App& command, const std::string& help) {
    Name(command, options_.newName, "NEW", help)->required()->check(IsNewName);
  }

  void DefineProfile(CLI::App& group) {
    Add(group, Command::kProfileList, "list", "list all profiles");
    CLI::App& create = Add(group, Command::kProfileCreate, "create", "create a profile");
    Name(create, options_.profile, "PROFILE", "name of the profile")->required()->check(IsNewName);
    create.add_flag("--default-services", options_.defaultServices, "with the catalogue's default services");
    create.add_flag("--dialog", options_.dialog,
                    "let the user edit the services; cancelling creates nothing");
    WithProfile(
        Add(group, Command::kProfileDelete, "delete", "delete a profile and all that is stored in it"));
    WithNewName(WithProfile(Add(group, Command::kProfileCopy, "copy", "copy a profile's services")),
                "name of the new profile");
    WithNewName(WithProfile(Add(group, Command::kProfileRename, "rename", "rename a profile")),
                "new name of the profile");
    DefineDefault(Add(group, Command::kProfileDefault, "default", "show, set or clear the default profile"));
    WithProfile(
        Add(group, Command::kProfileConfigure, "configure", "let the user edit the services in a dialog"));
  }

  void DefineDefault(CLI::App& command) {
    CLI::Option* name = Name(command, options_.profile, "PROFILE", "the new default; none: show it");
    command.add_flag("--none", options_.noDefault, "no default from now on")->excludes(name);
  }

  void DefineService(CLI::App& group) {
    WithProfile(Add(group, Command::kServiceList, "list", "list the services of a profile"));
    Add(group, Command::kServiceAvailable, "available", "list the services of the catalogue");
    DefineAdd(WithProfile(Add(group, Command::kServiceAdd, "add", "add a service of the catalogue")));
    CLI::App& remove = WithProfile(Add(group, Command::kServiceRemove, "remove", "remove a service"));
    Name(remove, options_.service, "SERVICE", "name, display name, UID or key")->required();
    DefineSet(WithProfile(Add(group, Command::kServiceSet, "set", "change the settings of a service")));
  }

  void DefineAdd(CLI::App& command) {
    Name(command, options_.service, "SERVICE", "its name in the catalogue")->required();
    Name(command, options_.displayName, "--display", "display name, in place of the catalogue's")
        ->type_name("TEXT");
    command
        .add_option("--config", options_.config, "configuration handed to the service, such as a file's path")
        ->type_name("TEXT");
  }

  void DefineSet(CLI::App& command) {
    Name(command, options_.service, "SERVICE",
         "name, display name or UID; may be left out where there is only one");
    command
        .add_option("--config", options_.config,
                    "path of the address book's file (PR_ORV_BOOK_FILE_W), checked by the service")
        ->type_name("TEXT");
    command
        .add_option("--property", options_.properties, "a setting by its property tag, as 0x6600001F=text")
        ->type_name("TAG=VALUE")
        ->check(IsAssignment)
        ->expected(1)
        ->take_all();
    command.add_flag("--dialog", options_.dialog, "let the user edit the settings in the service's window");
  }

  void AddContainer(CLI::App& command) {
    Name(command, options_.container, "--container",
         "only this container, or this distribution list: name or entry identifier")
        ->type_name("NAME");
  }

  void AddEntry(CLI::App& command, const std::string& what) {
    CLI::Option* entry = Name(command, options_.entry, "ENTRY", what + ": name or entry identifier");
    command.add_flag("--first", options_.first, "the first one that there is")->excludes(entry);
    AddContainer(command);
  }

  void DefineBook(CLI::App& group) {
    WithProfile(Add(group, Command::kBookTree, "tree", "the containers, each below its parent"));
    AddContainer(WithProfile(Add(group, Command::kBookList, "list", "the entries of the containers")));
    AddEntry(WithProfile(Add(group, Command::kBookShow, "show", "every property of one entry")), "the entry");
    AddEntry(
        WithProfile(Add(group, Command::kBookExpand, "expand", "the recipients behind a distribution list")),
        "the distribution list");
  }

  static std::string IsCheck(const std::string& name) {
    return check::FindRule(name) != nullptr
               ? std::string()
               : "there is no check '" + name + "'; there are: " + check::RuleNames();
  }

  void DefineProvider(CLI::App& group) {
    CLI::App& command =
        Add(group, Command::kProviderCheck, "check", "try whether a provider keeps the rules");
    Name(command, options_.provider, "DLL", "its library: a path, or a name beside this program")->required();
    Name(command, options_.entryFunction, "--entry", "its service entry function")->type_name("NAME");
    command
        .add_option("--config", options_.config, "configuration handed to the service, such as a file's path")
        ->type_name("TEXT");
    command.add_flag("--writable", options_.writable, "entries may be created, changed and deleted in it");
    command.add_flag("--problems", options_.problems, "show only what failed and what is advised");
    command.add_option("--only", options_.only, "only this check")->type_name("CHECK")->check(IsCheck);
    command.add_option("--threads-seconds", options_.threadSeconds, "how long eight threads use it at once")
        ->check(CLI::Range(1, 3600));
    command
        .add_option("--step-seconds", options_.stepSeconds, "how long a single step may take before it hangs")
        ->check(CLI::Range(1, 3600));
  }

  void DefinePick() {
    CLI::App& pick =
        WithProfile(Add(app_, Command::kPick, "pick", "let the user choose recipients in a dialog"));
    pick.add_flag("--to", options_.to, "with a box for recipients (the default)");
    pick.add_flag("--cc", options_.cc, "with a box for copies");
    pick.add_flag("--bcc", options_.bcc, "with a box for hidden copies");
  }

  CLI::App& app_;
  Options& options_;
};

// What the grammar cannot say: which options need one another.
std::string FindContradiction(const Options& options) {
  const bool needsEntry = options.command == Command::kBookShow || options.command == Command::kBookExpand;
  if (needsEntry && options.entry.empty() && !options.first) return "name an entry or give --first";
  const bool sets = options.config || !options.properties.empty() || options.dialog;
  if (options.command == Command::kServiceSet && !sets) return "give --config, --property or --dialog";
  return {};
}

ParseResult Help(std::string text) {
  ParseResult result;
  result.output = std::move(text);
  return result;
}

ParseResult Misused(const std::string& why, bool json) {
  ParseResult result;
  result.exitCode = kUsage;
  result.errors = json ? ToJson(Message{why + "; run with --help for more information", {}, kUsage})
                       : "orvctl: " + why + "\nRun with --help for more information.\n";
  return result;
}

// The parser ends by an exception for a request of help too.
ParseResult Explain(const CLI::App& app, const CLI::ParseError& error, bool json) {
  std::ostringstream output, errors;
  if (app.exit(error, output, errors) == 0) return Help(output.str());
  // The parser misses a command before it notices an unknown one.
  const std::vector<std::string> unknown = app.remaining(true);
  return Misused(unknown.empty() ? error.what() : "'" + unknown.front() + "' is not understood here", json);
}

}  // namespace

ParseResult ParseCommandLine(std::vector<std::string> arguments) {
  CLI::App app("Administers and browses the address book of the fax driver.", "orvctl");
  ParseResult result;
  result.options.emplace();
  Grammar(app, *result.options).Define();
  // Behind two hyphens it would be a name.
  const auto names = std::find(arguments.begin(), arguments.end(), "--");
  const bool json = std::find(arguments.begin(), names, "--json") != names;
  std::reverse(arguments.begin(), arguments.end());  // as the parser takes them
  try {
    app.parse(arguments);
  } catch (const CLI::ParseError& error) {
    return Explain(app, error, json);
  }
  const std::string contradiction = FindContradiction(*result.options);
  if (!contradiction.empty()) return Misused(contradiction, json);
  if (result.options->command != Command::kHelp || result.options->window) return result;
  return Help(app.get_formatter()->make_help(&app, app.get_name(), CLI::AppFormatMode::Normal));
}

}  // namespace orvctl
