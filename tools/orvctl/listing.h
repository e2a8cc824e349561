// What a command found, as aligned columns for people and as JSON for machines.
#pragma once

#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvctl {

using Json = nlohmann::ordered_json;

struct Column {
  std::string key;         // of the JSON object
  std::string title = {};  // of the column; empty: the column is for machines only
};

// One value in both its forms.
struct Cell {
  Cell(std::string value) : text(value), json(std::move(value)) {}
  Cell(const char* value) : Cell(std::string(value)) {}
  Cell(std::string shown, Json value) : text(std::move(shown)), json(std::move(value)) {}
  static Cell Number(unsigned long value) { return Cell(std::to_string(value), value); }
  static Cell YesNo(bool value) { return Cell(value ? "yes" : "", value); }

  std::string text;
  Json json;
};

struct Listing {
  std::vector<Column> columns;
  std::vector<std::vector<Cell>> rows;
  bool wraps = false;  // the last column shown goes on in further lines rather than beyond 120 columns
};

// What goes to standard error: what was being done or is wrong, and what the library or system said to it.
struct Message {
  std::string text;
  std::string resultName = {};
  int exitCode = 0;  // what it makes of the command
  std::vector<std::string> causes = {};
  std::string next = {};  // what can be done about it

  // A command that did its work, all or some of it, only warns.
  bool IsWarning() const { return exitCode == 0 || exitCode == 10; }
};

// A command that changes something reports one sentence, one that reads reports a listing; the sentence of an
// empty listing says that there is nothing. A report may be incomplete: its messages say what is missing.
struct Report {
  static Report Done(std::string sentence, Json data = nullptr) {
    Report report{std::move(sentence), {}, false, {}};
    report.data = std::move(data);
    return report;
  }
  static Report Of(Listing listing, std::string ifEmpty) {
    return {std::move(ifEmpty), std::move(listing), true, {}};
  }

  void Warn(std::string text, std::string resultName = {}) {
    messages.push_back({std::move(text), std::move(resultName)});
  }

  std::string sentence;
  Listing listing;
  bool isListing = false;
  std::vector<Message> messages;
  // For machines: an object in place of a listing, or what stands beside a sentence.
  Json data = nullptr;
  bool isFile = false;    // the object is what was asked for, in either form
  bool isSilent = false;  // the output itself was what was asked for; no sentence
  // What is to be done only once the report is out; what came of it.
  std::function<std::vector<Message>()> afterwards = {};
};

// The width of the terminal that it goes to, 0 for a pipe or a file.
std::string ToText(const Report& report, size_t terminalWidth = 0);
std::string ToJson(const Report& report);
// An object as it stands in the array of a listing, without the line break behind it.
std::string JsonItem(const Json& object);
std::string ToText(const Message& message);
// The text with the code behind it.
std::string WithCode(const Message& message);
std::string ToJson(const Message& message);

// "1 record", "2 records"; of another plural "2 entries".
std::string Counted(unsigned long long count, const std::string& one, const std::string& many = {});
// Whether all of it are characters that take a column and control nothing.
bool IsPlainAscii(std::string_view utf8);
// Columns that a terminal needs for the text: two for wide characters, none for combining ones.
size_t DisplayWidth(std::string_view utf8);
// Control characters written out, so that foreign text can neither break rows nor reach the terminal.
std::string Printable(std::string_view utf8);

}  // namespace orvctl
