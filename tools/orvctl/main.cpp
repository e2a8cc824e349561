// orvctl: one command a run; the exit code tells how it went.
#include <windows.h>

#include <exception>
#include <new>

#include "diag/names.h"
#include "tools/orvctl/commands.h"
#include "tools/orvctl/console.h"
#include "tools/orvctl/errors.h"

namespace {

using namespace orvctl;

int Fail(bool json, const std::string& message, const std::string& resultName, int exitCode) {
  WriteErrors(json ? ErrorToJson(message, resultName, exitCode) : ErrorToText(message, resultName));
  return exitCode;
}

int Run(const Options& options) {
  try {
    const Report report = RunCommand(options);
    return WriteOutput(options.json ? ToJson(report) : ToText(report)) ? kSuccess : kFailed;
  } catch (const CommandError& error) {
    std::string name;
    if (error.result()) name = diag::ResultName(static_cast<uint32_t>(*error.result()));
    return Fail(options.json, error.what(), name, error.exitCode());
  } catch (const std::bad_alloc&) {
    return Fail(options.json, "memory is exhausted", {}, kFailed);
  } catch (const std::exception& error) {
    return Fail(options.json, error.what(), {}, kFailed);
  } catch (...) {
    // The library lets exceptions of providers pass at logon.
    return Fail(options.json, "a provider raised an exception", {}, kFailed);
  }
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
  std::vector<std::string> utf8;
  for (int i = 1; i < count; ++i) utf8.push_back(ToUtf8(arguments[i]));
  const ParseResult parsed = ParseCommandLine(std::move(utf8));
  if (parsed.options) return Run(*parsed.options);
  WriteOutput(parsed.output);
  WriteErrors(parsed.errors);
  return parsed.exitCode;
}
