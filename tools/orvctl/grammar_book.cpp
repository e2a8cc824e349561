// Commands on the address book and what is in it.
#include "tools/orvctl/contact_fields.h"
#include "tools/orvctl/file_formats.h"
#include "tools/orvctl/grammar.h"

namespace orvctl {
namespace {

constexpr int kMostRows = 1'000'000'000;

std::string IsFormat(const std::string& name) {
  return FindFormat(name) != nullptr ? std::string()
                                     : "there is no format '" + name + "'; there are: " + FormatNames();
}

}  // namespace

void Grammar::AddContainer(CLI::App& command, const std::string& help) {
  Name(command, options_.container, "--container", help + ": name or entry identifier")->type_name("NAME");
}

void Grammar::AddEntry(CLI::App& command, const std::string& what) {
  CLI::Option* entry = Name(command, options_.entry, "ENTRY", what + ": name or entry identifier");
  command.add_flag("--first", options_.first, "the first one that there is")->excludes(entry);
  AddContainer(command, "only this container, or this distribution list");
}

void Grammar::AddReport(CLI::App& command) {
  Name(command, options_.reportFile, "--report", "file that every record is written to which is left out")
      ->type_name("FILE");
}

void Grammar::AddLimit(CLI::App& command) {
  command.add_option("--limit", options_.limit, "at most so many")
      ->type_name("N")
      ->check(CLI::Range(1, kMostRows));
}

void Grammar::DefineBook(CLI::App& group) {
  WithProfile(Add(group, Command::kBookTree, "tree", "the containers, each below its parent"));
  DefineListing(group);
  AddEntry(WithProfile(Add(group, Command::kBookShow, "show", "every property of one entry")), "the entry");
  CLI::App& expand =
      WithProfile(Add(group, Command::kBookExpand, "expand", "the recipients behind a distribution list"));
  AddEntry(expand, "the distribution list");
  expand.add_flag("--count", options_.count, "only how many they are");
  expand.add_flag("--missing", options_.missing, "only those without an address");
  CLI::App& first = WithProfile(
      Add(group, Command::kBookDefault, "default", "show or set the container that is shown first"));
  Names(first, options_.containers, "CONTAINER", "name or entry identifier; none: show it")->expected(0, 1);
  CLI::App& path =
      WithProfile(Add(group, Command::kBookPath, "path", "show or set where names are looked up"));
  Names(path, options_.containers, "CONTAINER",
        "names or entry identifiers, in their order; none: show them");
  CLI::App& watch = WithProfile(Add(group, Command::kBookWatch, "watch", "tell what changes, until Ctrl-C"));
  AddContainer(watch, "only this container");
  AddLimit(watch);
  CLI::App& check = Add(group, Command::kBookCheck, "check", "look through the file of a book");
  Name(check, options_.file, "FILE", "the file")->required();
  CLI::App& repair =
      Add(group, Command::kBookRepair, "repair", "write what can be read of a damaged book into a new file");
  Name(repair, options_.file, "FILE", "the damaged file; it stays as it is")->required();
  Name(repair, options_.target, "NEW", "the new file, which must not be there")->required();
  AddReport(repair);
}

void Grammar::DefineListing(CLI::App& group) {
  CLI::App& list = WithProfile(Add(group, Command::kBookList, "list", "the entries of the containers"));
  AddContainer(list, "only this container, or this distribution list");
  Name(list, options_.sort, "--sort", "by this field, such as company; company:desc from its end")
      ->type_name("FIELD");
  AddLimit(list);
  Name(list, options_.from, "--from", "from here on in that order")->type_name("TEXT");
  CLI::App& find = WithProfile(
      Add(group, Command::kBookFind, "find", "entries by words of their names or digits of a number"));
  Name(find, options_.text, "TEXT", "what is looked for")->required();
  AddContainer(find, "only in this container");
  AddLimit(find);
}

void Grammar::AddPerson(CLI::App& command) {
  ContactFields& contact = options_.contact;
  command.add_option("--name", contact.name, "name")->type_name("TEXT");
  command.add_option("--given", contact.given, "given name")->type_name("TEXT");
  command.add_option("--surname", contact.surname, "surname")->type_name("TEXT");
  for (const auto& [option, target, number, what] :
       {std::tuple("--fax", &contact.faxes, NumberOf::kFax, "fax number"),
        std::tuple("--phone", &contact.phones, NumberOf::kPhone, "telephone number")}) {
    command.add_option(option, *target, std::string(what) + "; KIND is one of " + KindNames(number))
        ->type_name("NUMBER[:KIND]")
        ->check([of = number](const std::string& text) { return WhyBadNumber(text, of); })
        ->expected(1)
        ->take_all();
  }
  command.add_option("--company", contact.company, "company")->type_name("TEXT");
  command.add_option("--department", contact.department, "department")->type_name("TEXT");
  command.add_option("--title", contact.title, "job title")->type_name("TEXT");
  command.add_option("--email", contact.email, "e-mail address")->type_name("TEXT");
  command.add_option("--note", contact.note, "remark")->type_name("TEXT");
}

void Grammar::DefineContact(CLI::App& group) {
  constexpr char kBook[] = "the book, by default that of new contacts";
  CLI::App& add = WithProfile(Add(group, Command::kContactAdd, "add", "add a person"));
  AddPerson(add);
  AddContainer(add, kBook);
  CLI::App& edit =
      WithProfile(Add(group, Command::kContactEdit, "edit", "change a person; an empty text takes away"));
  Name(edit, options_.entry, "ENTRY", "whole name or entry identifier")->required();
  AddPerson(edit);
  AddContainer(edit, kBook);
  for (const auto& [command, name, help] :
       {std::tuple(Command::kContactRemove, "remove", "remove entries"),
        std::tuple(Command::kContactRestore, "restore", "bring removed entries back"),
        std::tuple(Command::kContactCopy, "copy", "copy entries into another book")}) {
    CLI::App& sub = WithProfile(Add(group, command, name, help));
    const bool canList = command == Command::kContactRestore;
    Names(sub, options_.entries, "ENTRY",
          std::string("whole names or entry identifiers") +
              (canList ? "; none: list what can be restored" : ""))
        ->required(!canList);
    AddContainer(sub, command == Command::kContactCopy ? "the book that they are in" : kBook);
    if (command == Command::kContactCopy)
      Name(sub, options_.target, "--to", "the book that they are copied to")->type_name("NAME")->required();
  }
  DefineLists(Group(group, "group", "distribution lists"));
}

void Grammar::DefineLists(CLI::App& group) {
  constexpr char kBook[] = "the book, by default that of new contacts";
  CLI::App& add =
      WithProfile(Add(group, Command::kGroupAdd, "add", "make a list, or add members to one that is there"));
  Name(add, options_.list, "NAME", "its name")->required();
  Names(add, options_.entries, "MEMBER", "whole names or entry identifiers");
  AddContainer(add, kBook);
  CLI::App& remove = WithProfile(Add(group, Command::kGroupRemove, "remove", "take members out of a list"));
  Name(remove, options_.list, "LIST", "whole name or entry identifier")->required();
  Names(remove, options_.entries, "MEMBER", "whole names or entry identifiers")->required();
  AddContainer(remove, kBook);
  CLI::App& members = WithProfile(Add(group, Command::kGroupMembers, "members", "the members of a list"));
  Name(members, options_.list, "LIST", "name or entry identifier")->required();
  AddContainer(members, kBook);
}

void Grammar::AddReading(CLI::App& command) {
  Name(command, options_.format, "--format", "what the file is, where that cannot be told: " + FormatNames())
      ->type_name("FORMAT")
      ->check(IsFormat);
  Name(command, options_.charset, "--charset", "character set of texts that name none and are not UTF-8")
      ->type_name("NAME");
  Name(command, options_.map, "--map", "file with lines column=field, for tables with other columns")
      ->type_name("FILE");
  AddReport(command);
  command.add_flag("--strict", options_.strict, "end with 10 where a record is rejected");
}

void Grammar::DefineTransfers() {
  CLI::App& in = WithProfile(Add(app_, Command::kImport, "import", "take contact files into a book"));
  Names(in, options_.files, "FILE", "vCard, CSV or LDIF; - is standard input")->required();
  AddContainer(in, "the book, by default that of new contacts");
  AddReading(in);
  CLI::App& out = WithProfile(Add(app_, Command::kExport, "export", "write a book into a contact file"));
  Name(out, options_.file, "FILE", "the file; - is standard output")->required();
  AddContainer(out, "the book, by default that of new contacts, else the first that can be exported");
  Name(out, options_.format, "--format", "by default told by the file's name: " + FormatNames())
      ->type_name("FORMAT")
      ->check(IsFormat);
  CLI::App& file = Group(app_, "file", "contact files by themselves");
  CLI::App& check = Add(file, Command::kFileCheck, "check", "look through a contact file");
  Name(check, options_.file, "FILE", "the file; - is standard input")->required();
  AddReading(check);
  CLI::App& convert = Add(file, Command::kFileConvert, "convert", "write a contact file in another format");
  Name(convert, options_.file, "IN", "the file; - is standard input")->required();
  Name(convert, options_.target, "OUT", "the new file; - is standard output")->required();
  Name(convert, options_.toFormat, "--to", "by default told by the new file's name: " + FormatNames())
      ->type_name("FORMAT")
      ->check(IsFormat);
  AddReading(convert);
}

}  // namespace orvctl
