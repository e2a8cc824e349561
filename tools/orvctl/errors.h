// How a command fails: what it was doing, the result code if there is one, and the program's exit code.
#pragma once

#include <windows.h>

#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "tools/orvctl/last_words.h"

namespace orvctl {

// The exit codes are part of the interface: scripts test them.
enum ExitCode : int {
  kSuccess = 0,
  kFailed = 1,       // the library refused or the system failed; the message names the code
  kUsage = 2,        // the command line cannot be understood
  kNoLibrary = 3,    // the library is missing or is not ours
  kNotFound = 4,     // the profile, service, container or entry named does not exist
  kCancelled = 5,    // the user cancelled a dialog
  kAmbiguous = 6,    // a name fits several
  kConflict = 7,     // what is to be made is there already, or somebody else has changed it meanwhile
  kDamaged = 8,      // what is stored in a file cannot be read
  kNoSpace = 9,      // there is no room to store it
  kSomeFailed = 10,  // what could be read is printed, some sources failed; kFailed when all of them did
  kProblems = 11,    // something was found to be wrong
  kNoOutput = 12,    // the output cannot be written
};

class CommandError : public std::runtime_error {
 public:
  CommandError(ExitCode exitCode, const std::string& text) : std::runtime_error(text), exitCode_(exitCode) {}
  CommandError(ExitCode exitCode, const std::string& text, HRESULT result)
      : std::runtime_error(text), exitCode_(exitCode), result_(result) {}
  // Several causes, a line each; they have codes of their own.
  CommandError(ExitCode exitCode, const std::string& text, std::vector<std::string> causes)
      : std::runtime_error(text), exitCode_(exitCode), causes_(std::move(causes)) {}

  // The same failure with more to say.
  CommandError Extended(const std::string& more) const {
    CommandError extended(exitCode_, what() + more, causes_);
    extended.result_ = result_;
    return extended;
  }

  ExitCode exitCode() const { return exitCode_; }
  std::optional<HRESULT> result() const { return result_; }
  const std::vector<std::string>& causes() const { return causes_; }

 private:
  ExitCode exitCode_;
  std::optional<HRESULT> result_;
  std::vector<std::string> causes_;
};

// The exit code that a failed result means by itself.
ExitCode ExitCodeOf(HRESULT result);

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

// A call that ends in a provider's code. What it throws ends here, while its library is loaded: the exception's object
// is destroyed by the library's own code.
template <class Call>
auto Foreign(const std::string& doing, Call call) {
  const CrashStep step(doing);
  try {
    return call();
  } catch (const std::bad_alloc&) {
    throw std::bad_alloc();
  } catch (const CommandError&) {
    throw;
  } catch (...) {
    throw CommandError(kFailed, "cannot " + doing + ": a provider raised an exception");
  }
}

}  // namespace orvctl
