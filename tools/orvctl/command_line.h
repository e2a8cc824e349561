// What the user asks for.
#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

namespace orvctl {

enum class Command {
  kProfileList,
  kProfileShow,
  kProfileCreate,
  kProfileDelete,
  kProfileCopy,
  kProfileRename,
  kProfileDefault,
  kProfileConfigure,
  kProfileExport,
  kProfileApply,
  kServiceList,
  kServiceShow,
  kServiceAvailable,
  kServiceAdd,
  kServiceRemove,
  kServiceSet,
  kBookTree,
  kBookList,
  kBookShow,
  kBookExpand,
  kBookFind,
  kBookDefault,
  kBookPath,
  kBookWatch,
  kBookCheck,
  kBookRepair,
  kContactAdd,
  kContactEdit,
  kContactRemove,
  kContactRestore,
  kContactCopy,
  kGroupAdd,
  kGroupRemove,
  kGroupMembers,
  kImport,
  kExport,
  kFileCheck,
  kFileConvert,
  kUserInfoGet,
  kUserInfoSet,
  kPick,
  kDoctor,
  kProviderCheck,
  kHelp,
};

// What is to be said of a person; what is not named stays, and an empty text takes away.
struct ContactFields {
  std::optional<std::string> name, given, surname, company, department, title, email, note;
  std::vector<std::string> faxes, phones;  // "NUMBER:KIND"

  bool empty() const {
    const auto texts = {&name, &given, &surname, &company, &department, &title, &email, &note};
    const auto isSaid = [](const auto* text) { return text->has_value(); };
    return std::none_of(texts.begin(), texts.end(), isSaid) && faxes.empty() && phones.empty();
  }
};

struct Options {
  Command command = Command::kProfileList;
  bool json = false;
  bool csv = false;
  bool quiet = false;               // no sentences and no warnings
  std::vector<std::string> fields;  // of a listing; none: all
  std::string trace;                // "file", "com1" or "debugger"; empty: none
  bool dryRun = false;              // told, not done
  std::string library;              // file name; empty: the first model's

  std::string profile;  // "-" is the default profile
  std::string newName;  // of a profile
  std::string service;  // name, display name or UID
  std::string displayName;
  std::string container;  // name or entry identifier
  std::string entry;      // the same
  std::string list;       // the same, of a distribution list
  std::vector<std::string> entries;
  std::string target;  // container that is copied to, file that is written
  std::string file;
  std::vector<std::string> files;
  std::vector<std::string> containers;
  std::string format, toFormat;  // of contact files; empty: found, by the file's name
  std::string charset;
  std::string map;         // file of columns
  std::string reportFile;  // of rejected records
  std::string sort;        // field
  std::string from;        // where a listing begins
  std::string text;        // searched for
  std::optional<size_t> limit;
  ContactFields contact;
  std::optional<std::string> config;
  std::vector<std::string> properties;  // "TAG=VALUE"

  std::string provider;       // library to be checked: a path or a name beside this program
  std::string entryFunction;  // of its service
  std::string only;           // check
  bool writable = false;
  bool problems = false;  // only these are shown
  int threadSeconds = 10;
  int stepSeconds = 20;

  bool defaultServices = false;
  bool ifMissing = false;
  bool ifExists = false;
  bool strict = false;
  bool count = false;
  bool missing = false;
  bool fix = false;
  bool dialog = false;
  bool noDefault = false;
  bool first = false;
  bool to = false;
  bool cc = false;
  bool bcc = false;
  std::optional<std::string> toTitle, ccTitle, bccTitle;  // each asks for its box
  std::optional<std::string> caption, heading;            // of the Address dialog
  bool requireAddress = false;
  bool window = false;
  std::vector<std::string> helpOf;  // words of a command
};

// Either options, or what to print and with which code to end.
struct ParseResult {
  std::optional<Options> options;
  int exitCode = 0;
  std::string output;  // help
  std::string errors;
};

// Arguments in UTF-8, without the program's name.
ParseResult ParseCommandLine(std::vector<std::string> arguments);

}  // namespace orvctl
