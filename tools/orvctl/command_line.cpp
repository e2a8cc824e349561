// The command line: parsing, help, and what is said of a wrong one.
#include "tools/orvctl/command_line.h"

#include <algorithm>
#include <sstream>

#include "tools/orvctl/contact_fields.h"
#include "tools/orvctl/errors.h"
#include "tools/orvctl/file_formats.h"
#include "tools/orvctl/grammar.h"
#include "tools/orvctl/known_fields.h"
#include "tools/orvctl/listing.h"
#include "tools/orvctl/suggestion.h"

namespace orvctl {
namespace {

// Why nobody can tell beforehand what such a command would do; nothing of those that can be foretold.
std::string WhyNotForetold(const Options& options) {
  switch (options.command) {
    case Command::kServiceAdd:
    case Command::kServiceSet:
      return "the service itself decides; 'orvctl service show' tells what is set";
    case Command::kProviderCheck:
      return "it tries the provider out";
    case Command::kBookRepair:
      return "what can be read shows only while it is written; 'orvctl book check' looks and changes nothing";
    case Command::kProfileConfigure:
    case Command::kPick:
      return "the user decides in a window";
    case Command::kProfileCreate:
      return options.dialog ? "the user decides in a window" : "";
    case Command::kDoctor:
      return options.fix ? "without --fix it tells what it would move" : "";
    default:
      return {};
  }
}

constexpr char kPersonOptions[] =
    "--name, --given, --surname, --fax, --phone, --company, --department, --title, --email, --note";

// What the grammar cannot say: which options need one another.
std::string FindContradiction(const Options& options) {
  const bool needsEntry = options.command == Command::kBookShow || options.command == Command::kBookExpand;
  if (needsEntry && options.entry.empty() && !options.first) return "name an entry or give --first";
  const bool sets = options.config || !options.properties.empty() || options.dialog;
  if (options.command == Command::kServiceSet && !sets) return "give --config, --property or --dialog";
  if (options.command == Command::kProfileExport && !options.fields.empty())
    return "a profile is exported as a whole; 'orvctl profile show' takes --fields";
  const std::vector<std::string> known = KnownFields(options);
  const std::string unknown = known.empty() ? "" : FindUnknownField(options.fields, known);
  if (!unknown.empty()) return unknown;
  const std::string why = options.dryRun ? WhyNotForetold(options) : "";
  if (!why.empty()) return "this command cannot tell beforehand what it would do: " + why;
  if (options.command == Command::kExport && FormatOf(options.format, options.file) == nullptr)
    return WhyNoFormat(options.file, "--format");
  if (options.command == Command::kFileConvert && FormatOf(options.toFormat, options.target) == nullptr)
    return WhyNoFormat(options.target, "--to");
  const bool isNameless = !options.contact.name || options.contact.name->empty();
  if (options.command == Command::kContactAdd && isNameless)
    return "give the name with --name, or --given and --surname";
  if (options.command == Command::kContactEdit && options.contact.empty())
    return "give what is to be changed: " + std::string(kPersonOptions);
  if (options.command == Command::kUserInfoSet && options.contact.empty() && options.properties.empty())
    return "give what is to be set: " + std::string(kPersonOptions) + " or --property";
  return {};
}

// Names of people as they are stored.
void TidyNames(Options& options) {
  if (options.command != Command::kContactAdd && options.command != Command::kContactEdit) return;
  ContactFields& contact = options.contact;
  for (std::optional<std::string>* each : {&contact.name, &contact.given, &contact.surname}) {
    if (*each) *each = TidyName(**each);
  }
}

std::string FindBadName(const ContactFields& contact) {
  for (const auto* each : {&contact.name, &contact.given, &contact.surname}) {
    if (std::string why = WhyBadName(each->value_or("")); !why.empty()) return why;
  }
  return {};
}

// Somebody new who is told by the parts of his name alone.
void CompleteName(Options& options) {
  ContactFields& contact = options.contact;
  const std::string given = contact.given.value_or(""), surname = contact.surname.value_or("");
  const bool isToldByParts = !contact.name && !(given + surname).empty();
  if (options.command != Command::kContactAdd || !isToldByParts) return;
  contact.name = given + (given.empty() || surname.empty() ? "" : " ") + surname;
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
                       : "orvctl: " + Printable(why) + "\nRun with --help for more information.\n";
  return result;
}

// Every way to spell what may stand here: the commands below the last one that was understood, or the options of it
// and of those that it is below.
std::vector<std::string> KnownWords(const CLI::App& app, bool areOptions) {
  std::vector<std::string> words;
  const CLI::App* at = &app;
  for (;;) {
    if (!areOptions) words.clear();
    const auto options = at->get_options();
    for (const CLI::Option* option : options) {
      if (areOptions && !option->get_lnames().empty()) words.push_back("--" + option->get_lnames().front());
    }
    for (const CLI::App* sub : at->get_subcommands([](const CLI::App*) { return true; })) {
      if (!areOptions) words.push_back(sub->get_name());
    }
    const auto chosen = at->get_subcommands();
    if (chosen.empty()) return words;
    at = chosen.back();
  }
}

std::string DescribeUnknown(const CLI::App& app, const std::string& word) {
  const std::string spelled = word.substr(0, word.find('='));
  const std::string meant = ClosestWord(spelled, KnownWords(app, word.substr(0, 2) == "--"));
  return "'" + word + "' is not understood here" + (meant.empty() ? "" : "; did you mean '" + meant + "'?");
}

// The parser ends by an exception for a request of help too.
ParseResult Explain(const CLI::App& app, const CLI::ParseError& error, bool json) {
  std::ostringstream output, errors;
  if (app.exit(error, output, errors) == 0) return Help(output.str());
  // The parser misses a command before it notices an unknown one.
  const std::vector<std::string> unknown = app.remaining(true);
  return Misused(unknown.empty() ? error.what() : DescribeUnknown(app, unknown.front()), json);
}

ParseResult HelpOf(const CLI::App& app, const Options& options) {
  const CLI::App* at = &app;
  std::string name = app.get_name();
  for (const std::string& word : options.helpOf) {
    const auto all = at->get_subcommands([](const CLI::App*) { return true; });
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const CLI::App* each) { return each->get_name() == word; });
    std::vector<std::string> names;
    for (const CLI::App* each : all) names.push_back(each->get_name());
    const std::string meant = ClosestWord(word, names);
    if (found == all.end())
      return Misused("there is no command '" + name + " " + word + "'" +
                         (meant.empty() ? "" : "; did you mean '" + meant + "'?"),
                     options.json);
    at = *found;
    name += " " + word;
  }
  return Help(at->get_formatter()->make_help(at, name, CLI::AppFormatMode::Normal));
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
  TidyNames(*result.options);
  CompleteName(*result.options);
  std::string contradiction = FindContradiction(*result.options);
  if (contradiction.empty()) contradiction = FindBadName(result.options->contact);
  if (!contradiction.empty()) return Misused(contradiction, json);
  if (result.options->command != Command::kHelp || result.options->window) return result;
  return HelpOf(app, *result.options);
}

}  // namespace orvctl
