// The commands and their options, as the parser is told of them. Each command chosen writes itself into the options.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "tools/orvctl/command_line.h"

namespace orvctl {

// The parser and the options must outlive the parsing.
class Grammar {
 public:
  Grammar(CLI::App& app, Options& options) : app_(app), options_(options) {}

  void Define();

 private:
  CLI::App& Group(CLI::App& parent, const std::string& name, const std::string& help);
  CLI::App& Add(CLI::App& group, Command command, const std::string& name, const std::string& help);
  CLI::Option* Name(CLI::App& command, std::string& target, const std::string& name, const std::string& help);
  CLI::Option* Names(CLI::App& command, std::vector<std::string>& target, const std::string& name,
                     const std::string& help);
  CLI::App& WithProfile(CLI::App& command);
  void WithNewName(CLI::App& command, const std::string& help);

  void DefineGlobals();
  void DefineProfile(CLI::App& group);
  void DefineCreate(CLI::App& command);
  void DefineDefault(CLI::App& command);
  void DefineFiles(CLI::App& group);
  void DefineService(CLI::App& group);
  void DefineAdd(CLI::App& command);
  void DefineSet(CLI::App& command);
  void AddProperties(CLI::App& command);
  void DefineUserInfo(CLI::App& group);

  void AddContainer(CLI::App& command, const std::string& help);
  void AddEntry(CLI::App& command, const std::string& what);
  void AddReport(CLI::App& command);
  void AddLimit(CLI::App& command);
  void AddPerson(CLI::App& command);
  void DefineBook(CLI::App& group);
  void DefineListing(CLI::App& group);
  void DefineContact(CLI::App& group);
  void DefineLists(CLI::App& group);
  void AddReading(CLI::App& command);
  void DefineTransfers();

  void DefineProvider(CLI::App& group);
  void DefinePick();
  void DefineRest();

  CLI::App& app_;
  Options& options_;
};

}  // namespace orvctl
