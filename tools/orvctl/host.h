// Work with a provider's code in a process of its own: a crash or a hang there ends that process only, and the one that
// asked learns at which step. The process is this program again, under a command that no help shows; what it finds
// comes back as lines of JSON over a pipe of its own, so that a provider may print what it likes.
#pragma once

#include <windows.h>

#include <chrono>
#include <functional>
#include <string>

#include "tools/orvctl/listing.h"

namespace orvctl {

struct TimeLimit {
  std::chrono::milliseconds step;   // between two signs of life: lines and steps
  std::chrono::milliseconds total;  // of the whole task
};

struct HostedOutcome {
  enum class End { kDone, kEnded, kCrashed, kTimedOut, kNotStarted };
  End end = End::kNotStarted;
  DWORD code = 0;        // exit code, exception code, or the system's error where it could not be started
  std::string detail;    // of a crash: "provider.dll+0x1234"; what an exception of the task said
  std::string lastStep;  // what it was about to do, empty before the first step

  bool IsDone() const { return end == End::kDone; }
  // "crashed: access violation 0xC0000005 (provider.dll+0x1234) at: reading the first row"
  std::string Describe() const;
};

// Runs a task of that name (host_tasks.cpp) in a process of its own and hands every line that it sends to `onLine`.
// When this returns, nothing of it runs any more. What `onLine` throws ends the process and passes on.
HostedOutcome RunHosted(const std::string& task, const Json& arguments, TimeLimit limit,
                        const std::function<void(const Json&)>& onLine);

// The other end of the pipe, in the process that the task runs in. Any thread may use it.
class HostLink {
 public:
  explicit HostLink(HANDLE pipe) : pipe_(pipe) {}

  // Tells what comes next: named when the process does not survive it. It counts as a sign of life.
  void Step(const std::string& step);
  void Send(const Json& line);

 private:
  const HANDLE pipe_;
};

// What a task does with its arguments. What it throws ends it: kEnded, with the text in `detail`.
using HostedTask = void (*)(const Json& arguments, HostLink& link);

// Null for an unknown name; each task is registered in host_tasks.cpp.
HostedTask FindHostedTask(const std::string& name);

// The hidden command: `program kHostedCommand PIPE`, PIPE being the number of an inherited handle.
inline constexpr wchar_t kHostedCommand[] = L"--hosted";
int ServeHosted(const wchar_t* pipe);

}  // namespace orvctl
