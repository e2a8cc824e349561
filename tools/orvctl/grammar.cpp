// What all commands share, and those that stand alone.
#include "tools/orvctl/grammar.h"

#include "orv/orvversion.h"
#include "tools/orvctl/check/rules.h"

namespace orvctl {
namespace {

constexpr char kFooter[] =
    "PROFILE is the name of a profile; '-' is the default profile.\n"
    "Exit codes: 0 done, 1 failed, 2 wrong usage, 3 library missing or unusable, 4 no such profile, "
    "service,\n"
    "container or entry, 5 cancelled by the user, 6 a name fits several, 7 conflict, 8 damaged file, 9 no "
    "space,\n"
    "10 some sources failed, 11 problems found, 12 the output cannot be written.";

// Libraries are loaded from one folder only, so a path is an error and not a request.
std::string IsFileName(const std::string& name) {
  const bool plain = !name.empty() && name.find_first_of("\\/:") == std::string::npos;
  return plain ? std::string() : "'" + name + "' is not a file name without folder";
}

// A script's empty variable must not mean "the only one" or "all of them".
std::string IsNotEmpty(const std::string& text) {
  return text.empty() ? "it must not be empty" : std::string();
}

std::string IsCheck(const std::string& name) {
  return check::FindRule(name) != nullptr
             ? std::string()
             : "there is no check '" + name + "'; there are: " + check::RuleNames();
}

std::vector<std::string> SplitNames(const std::string& names) {
  std::vector<std::string> split;
  for (size_t begin = 0, end = 0; end != std::string::npos; begin = end + 1) {
    end = names.find(',', begin);
    std::string name = names.substr(begin, end - begin);
    if (!name.empty()) split.push_back(std::move(name));
  }
  return split;
}

}  // namespace

void Grammar::Define() {
  app_.require_subcommand(1);
  // Global options may follow a command; nothing begins with a slash but paths.
  app_.fallthrough();
  app_.allow_windows_style_options(false);
  app_.footer(kFooter);
  app_.set_version_flag("--version", "orvctl " ORV_VERSION_TEXT, "print the version");
  DefineGlobals();
  DefineProfile(Group(app_, "profile", "create, list and change profiles"));
  DefineService(Group(app_, "service", "the address book providers of a profile"));
  DefineBook(Group(app_, "book", "browse the address book of a profile"));
  DefineContact(Group(app_, "contact", "people and distribution lists of a book"));
  DefineTransfers();
  DefineUserInfo(Group(app_, "userinfo", "the user's own details"));
  DefineProvider(Group(app_, "provider", "for authors of providers"));
  DefinePick();
  DefineRest();
}

void Grammar::DefineGlobals() {
  CLI::Option* json = app_.add_flag("--json", options_.json, "print JSON for machines");
  app_.add_flag("--csv", options_.csv, "print listings as CSV")->excludes(json);
  app_.add_option_function<std::string>(
          "--fields", [&options = options_](const std::string& names) { options.fields = SplitNames(names); },
          "only these fields of a listing, in this order")
      ->type_name("A,B")
      ->check(IsNotEmpty);
  app_.add_flag("--quiet", options_.quiet, "no sentences and no warnings");
  app_.add_option("--trace", options_.trace, "write each step to C:\\ORVLOG.TXT, to COM1 or to the debugger")
      ->type_name("file|com1|debugger")
      ->check(CLI::IsMember({"file", "com1", "debugger"}));
  app_.add_flag("--dry-run", options_.dryRun, "tell what would be changed, and change nothing");
  app_.add_option("--library", options_.library, "file name of the library, beside this program")
      ->type_name("FILE")
      ->check(IsFileName);
}

CLI::App& Grammar::Group(CLI::App& parent, const std::string& name, const std::string& help) {
  CLI::App* group = parent.add_subcommand(name, help);
  group->require_subcommand(1);
  return *group;
}

CLI::App& Grammar::Add(CLI::App& group, Command command, const std::string& name, const std::string& help) {
  CLI::App* sub = group.add_subcommand(name, help);
  sub->callback([&options = options_, command] { options.command = command; });
  return *sub;
}

CLI::Option* Grammar::Name(CLI::App& command, std::string& target, const std::string& name,
                           const std::string& help) {
  return command.add_option(name, target, help)->type_name("")->check(IsNotEmpty);
}

CLI::Option* Grammar::Names(CLI::App& command, std::vector<std::string>& target, const std::string& name,
                            const std::string& help) {
  return command.add_option(name, target, help)->type_name("")->check(IsNotEmpty);
}

CLI::App& Grammar::WithProfile(CLI::App& command) {
  Name(command, options_.profile, "PROFILE", "name of the profile, or -")->required();
  return command;
}

void Grammar::DefineProvider(CLI::App& group) {
  CLI::App& command = Add(group, Command::kProviderCheck, "check", "try whether a provider keeps the rules");
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

void Grammar::DefinePick() {
  CLI::App& pick =
      WithProfile(Add(app_, Command::kPick, "pick", "let the user choose recipients in a dialog"));
  pick.add_flag("--to", options_.to, "with a box for recipients (the default)");
  pick.add_flag("--cc", options_.cc, "with a box for copies");
  pick.add_flag("--bcc", options_.bcc, "with a box for hidden copies");
  pick.add_option("--to-title", options_.toTitle, "title of the box for recipients")->type_name("TEXT");
  pick.add_option("--cc-title", options_.ccTitle, "title of the box for copies")->type_name("TEXT");
  pick.add_option("--bcc-title", options_.bccTitle, "title of the box for hidden copies")->type_name("TEXT");
  pick.add_option("--caption", options_.caption, "caption of the dialog")->type_name("TEXT");
  pick.add_option("--heading", options_.heading, "line above the boxes")->type_name("TEXT");
  pick.add_option("--preselect", options_.entries, "entry that stands in the first box at the beginning")
      ->type_name("ENTRY")
      ->expected(1)
      ->take_all()
      ->check(IsNotEmpty);
  pick.add_flag("--require-address", options_.requireAddress, "recipients without a number are an error");
}

void Grammar::DefineRest() {
  CLI::App& doctor = Add(app_, Command::kDoctor, "doctor",
                         "look for what is wrong with the installation, the catalogue and the profiles");
  Name(doctor, options_.profile, "PROFILE", "only this profile, or -");
  doctor.add_flag("--fix", options_.fix, "move services that cannot be read out of their profiles");
  CLI::App& help =
      Add(app_, Command::kHelp, "help", "show this text, that of a command, or the help of the address book");
  CLI::Option* of =
      Names(help, options_.helpOf, "COMMAND", "the command's own help, such as: help book list");
  help.add_flag("--window", options_.window, "the help of the address book, in a window")->excludes(of);
}

}  // namespace orvctl
