// How a command fails: what it was doing, the result code if there is one, and the program's exit code.
#pragma once

#include <windows.h>

#include <optional>
#include <stdexcept>
#include <string>

namespace orvctl {

// The exit codes are part of the interface: scripts test them.
enum ExitCode : int {
  kSuccess = 0,
  kFailed = 1,     // the library refused or the system failed; the message names the code
  kUsage = 2,      // the command line cannot be understood
  kNoLibrary = 3,  // the library is missing or is not ours
  kNotFound = 4,   // the profile, service, container or entry named does not exist
  kCancelled = 5,  // the user cancelled a dialog
  kProblems = 11,  // something was found to be wrong
};

class CommandError : public std::runtime_error {
 public:
  CommandError(ExitCode exitCode, const std::string& text) : std::runtime_error(text), exitCode_(exitCode) {}
  CommandError(ExitCode exitCode, const std::string& text, HRESULT result)
      : std::runtime_error(text), exitCode_(exitCode), result_(result) {}

  ExitCode exitCode() const { return exitCode_; }
  std::optional<HRESULT> result() const { return result_; }

 private:
  ExitCode exitCode_;
  std::optional<HRESULT> result_;
};

// Throws for a failed result; `doing` completes "cannot ...".
void Check(HRESULT result, const std::string& doing);

// The same for a call that hands something out to `owner`: whatever a failing one wrote is not believed, and a
// succeeding one has to have written something.
template <class Owner>
void Receive(Owner& owner, HRESULT result, const std::string& doing) {
  if (FAILED(result)) static_cast<void>(owner.Detach());
  Check(result, doing);
  if (!owner)
    throw CommandError(kFailed, "cannot " + doing + ": success was answered, but nothing handed out");
}

}  // namespace orvctl
