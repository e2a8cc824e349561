// orvctl: one command a run; the exit code tells how it went.
#include <windows.h>

#include <algorithm>
#include <exception>
#include <new>

#include "diag/names.h"
#include "orv/orvversion.h"
#include "tools/orvctl/commands.h"
#include "tools/orvctl/console.h"
#include "tools/orvctl/errors.h"
#include "tools/orvctl/host.h"
#include "tools/orvctl/last_words.h"
#include "tools/orvctl/row_printer.h"
#include "tools/orvctl/trace.h"

namespace {

using namespace orvctl;

bool Holds(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

bool NamesFile(const Options& options, const Message& message) {
  return Holds(message.text, ":\\") || (!options.file.empty() && Holds(message.text, options.file));
}

// A book that is gone, or a file that is none.
std::string WayToBook(const Options& options, const Message& message) {
  if (options.command == Command::kBookCheck || options.command == Command::kBookRepair)
    return "name the file of a book; 'orvctl book tree PROFILE' tells those of a profile";
  if (!Holds(message.text, "cannot be read (its file is ") && !Holds(message.text, "cannot read '"))
    return {};
  return "put the book back to its place, or name another one with 'orvctl service set PROFILE --config "
         "FILE'";
}

// A book's own code says nothing of its file; what to do, for people where the text does not tell it.
std::string WayOn(const Options& options, const Message& message) {
  const auto isCode = [&](const char* name) { return message.resultName.rfind(name, 0) == 0; };
  const bool isTold = Holds(message.text, "book repair") || Holds(message.text, "service set PROFILE");
  if (isTold && !options.json) return {};
  if (isCode("MAPI_E_INVALID_OBJECT") || isCode("MAPI_E_NOT_FOUND")) return WayToBook(options, message);
  if (!isCode("MAPI_E_CORRUPT_STORE")) return {};
  const std::string saves = "'orvctl book repair FILE NEW' saves what can be read of it";
  return NamesFile(options, message) ? saves : "'orvctl doctor PROFILE' names the damaged file, " + saves;
}

void Tell(const Options& options, Message message) {
  TraceText((message.IsWarning() ? "warning: " : "error: ") + message.text + " " + message.resultName);
  message.next = WayOn(options, message);
  WriteErrors(options.json ? ToJson(message) : ToText(message));
}

void TellUnlessQuiet(const Options& options, const Message& message) {
  if (!options.quiet || !message.IsWarning()) Tell(options, message);
}

int Fail(const Options& options, const Message& message) {
  Tell(options, message);
  return message.exitCode;
}

Message Describe(const CommandError& error) {
  Message message{error.what(), {}, error.exitCode(), error.causes()};
  if (error.result()) message.resultName = diag::ResultName(static_cast<uint32_t>(*error.result()));
  return message;
}

bool WriteReport(const Options& options, const Report& report) {
  return WriteOutput(Formatted(options, report, OutputWidth()));
}

// What a command has changed stays changed.
Message NotWritten(const Report& report) {
  const std::string done = report.isListing ? "" : ", but this was done: " + report.sentence;
  return {"cannot write the output" + done, {}, kNoOutput};
}

int Print(const Options& options, std::vector<Message>& problems) {
  Report report = RunCommand(options, problems);
  SettleFields(options, report);
  if (!WriteReport(options, report)) {
    report.messages.insert(report.messages.begin(), NotWritten(report));
  } else if (report.afterwards) {
    for (Message& message : report.afterwards()) report.messages.push_back(std::move(message));
  }
  int exitCode = kSuccess;
  for (const Message& message : report.messages) {
    TellUnlessQuiet(options, message);
    exitCode = std::max(exitCode, message.exitCode);
  }
  return exitCode;
}

int Try(const Options& options, std::vector<Message>& problems) {
  try {
    return Print(options, problems);
  } catch (const CommandError& error) {
    return Fail(options, Describe(error));
  } catch (const std::bad_alloc&) {
    return Fail(options, {"memory is exhausted", {}, kFailed});
  } catch (const std::exception& error) {
    return Fail(options, {error.what(), {}, kFailed});
  } catch (...) {
    return Fail(options, {"a provider raised an exception", {}, kFailed});
  }
}

// A listing of the book lacks what a session's problem tells of; other commands did what they were to do.
bool ListsBook(const Options& options) {
  return options.command == Command::kBookTree || options.command == Command::kBookList ||
         options.command == Command::kBookFind;
}

int Run(const Options& options) {
  PrepareLastWords(options.json);
  if (!options.trace.empty() && !StartTrace(options.trace))
    TellUnlessQuiet(options, {"the trace cannot be opened; nothing is traced"});
  TraceText("orvctl " ORV_VERSION_TEXT " begins, library '" + options.library + "', profile '" +
            options.profile + "'");
  std::vector<Message> problems;
  int exitCode = Try(options, problems);
  for (Message& problem : problems) {
    if (!ListsBook(options)) problem.exitCode = kSuccess;
    if (exitCode == kSuccess) exitCode = problem.exitCode;
    TellUnlessQuiet(options, problem);
  }
  TraceText("ends with exit code " + std::to_string(exitCode));
  return exitCode;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
  constexpr int kHostedCount = 3;
  if (count == kHostedCount && std::wstring_view(arguments[1]) == kHostedCommand)
    return ServeHosted(arguments[2]);
  std::vector<std::string> utf8;
  for (int i = 1; i < count; ++i) utf8.push_back(ToUtf8(arguments[i]));
  const ParseResult parsed = ParseCommandLine(std::move(utf8));
  if (parsed.options) return Run(*parsed.options);
  const bool isWritten = WriteOutput(parsed.output);
  WriteErrors(parsed.errors);
  return isWritten ? parsed.exitCode : kNoOutput;
}
