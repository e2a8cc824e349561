// Starts this program again, reads what it says until it has ended, and sees to it that it ends.
#include "tools/orvctl/host.h"

#include <array>
#include <atomic>
#include <memory>
#include <type_traits>

#include "diag/names.h"
#include "tools/orvctl/crash.h"
#include "tools/orvctl/values.h"

namespace orvctl {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr DWORD kPipeBuffer = 1 << 16;
// How long a process that has said its last word may take to go.
constexpr DWORD kLastMoments = 5000;

struct CloseIt {
  void operator()(HANDLE handle) const { CloseHandle(handle); }
};
using Handle = std::unique_ptr<std::remove_pointer_t<HANDLE>, CloseIt>;

// Null for both of the values that calls answer when they fail.
Handle Own(HANDLE handle) { return Handle(handle == INVALID_HANDLE_VALUE ? nullptr : handle); }

struct NotStarted {
  DWORD error;
};

template <class Owner>
Owner Need(Owner owner) {
  if (!owner) throw NotStarted{GetLastError()};
  return owner;
}

// A pipe that nobody else can be at: we connect the other end before anybody learns its name.
class Pipe {
 public:
  Pipe() {
    static std::atomic<unsigned> count{0};
    const std::wstring name = L"\\\\.\\pipe\\orvctl-" + std::to_wstring(GetCurrentProcessId()) + L"-" +
                              std::to_wstring(count.fetch_add(1));
    ours_ = Need(Own(CreateNamedPipeW(
        name.c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED | FILE_FLAG_FIRST_PIPE_INSTANCE,
        PIPE_TYPE_BYTE | PIPE_REJECT_REMOTE_CLIENTS, 1, kPipeBuffer, kPipeBuffer, 0, nullptr)));
    SECURITY_ATTRIBUTES inherited{sizeof(inherited), nullptr, TRUE};
    theirs = Need(Own(
        CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, &inherited, OPEN_EXISTING, 0, nullptr)));
    event_ = Need(Own(CreateEventW(nullptr, TRUE, FALSE, nullptr)));
  }

  enum class Result { kBytes, kClosed, kTooLate };

  Result Read(std::string* bytes, milliseconds patience) {
    std::array<char, 4096> buffer;
    DWORD count = 0;
    const Result result = Transfer(patience, &count, [&](OVERLAPPED* state) {
      return ReadFile(ours_.get(), buffer.data(), static_cast<DWORD>(buffer.size()), nullptr, state);
    });
    bytes->append(buffer.data(), count);
    return result;
  }

  Result Write(const std::string& bytes, milliseconds patience) {
    DWORD count = 0;
    return Transfer(patience, &count, [&](OVERLAPPED* state) {
      return WriteFile(ours_.get(), bytes.data(), static_cast<DWORD>(bytes.size()), nullptr, state);
    });
  }

  Handle theirs;

 private:
  // What is cancelled must be waited for: until then the system may write to the buffer.
  template <class Begin>
  Result Transfer(milliseconds patience, DWORD* count, Begin begin) {
    OVERLAPPED state{};
    state.hEvent = event_.get();
    if (!begin(&state) && GetLastError() != ERROR_IO_PENDING) return Result::kClosed;
    const bool inTime =
        WaitForSingleObject(event_.get(), static_cast<DWORD>(patience.count())) == WAIT_OBJECT_0;
    if (!inTime) CancelIo(ours_.get());
    const BOOL done = GetOverlappedResult(ours_.get(), &state, count, TRUE);
    return done ? Result::kBytes : inTime ? Result::kClosed : Result::kTooLate;
  }

  Handle ours_, event_;
};

// Which handles the process gets: those and no others, whatever else is inheritable here.
class HandleList {
 public:
  explicit HandleList(std::array<HANDLE, 2> handles) : handles_(handles) {
    SIZE_T size = 0;
    InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
    bytes_.resize(size);
    if (!InitializeProcThreadAttributeList(Get(), 1, 0, &size)) throw NotStarted{GetLastError()};
    UpdateProcThreadAttribute(Get(), 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, handles_.data(), sizeof(handles_),
                              nullptr, nullptr);
  }
  ~HandleList() { DeleteProcThreadAttributeList(Get()); }
  HandleList(const HandleList&) = delete;
  HandleList& operator=(const HandleList&) = delete;

  LPPROC_THREAD_ATTRIBUTE_LIST Get() { return reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(bytes_.data()); }

 private:
  std::array<HANDLE, 2> handles_;
  std::vector<BYTE> bytes_;
};

WideString OwnPath() {
  WideString path(32768, L'\0');
  path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
  return path;
}

// A process that ends with this object, and all that it started with it.
class Process {
 public:
  explicit Process(HANDLE pipe) : job_(Need(Own(CreateJobObjectW(nullptr, nullptr)))) {
    LimitJob();
    Start(pipe);
    // Without the job only what the process itself started could be left, so it is no reason to give up.
    AssignProcessToJobObject(job_.get(), process_.get());
    ResumeThread(thread_.get());
  }
  ~Process() { Kill(); }
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  void Kill() {
    TerminateJobObject(job_.get(), 1);
    TerminateProcess(process_.get(), 1);
    WaitForSingleObject(process_.get(), kLastMoments);
  }

  DWORD WaitForExitCode() {
    DWORD code = 0;
    if (WaitForSingleObject(process_.get(), kLastMoments) != WAIT_OBJECT_0) Kill();
    GetExitCodeProcess(process_.get(), &code);
    return code;
  }

 private:
  void LimitJob() {
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags =
        JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE | JOB_OBJECT_LIMIT_DIE_ON_UNHANDLED_EXCEPTION;
    SetInformationJobObject(job_.get(), JobObjectExtendedLimitInformation, &limits, sizeof(limits));
  }

  void Start(HANDLE pipe) {
    SECURITY_ATTRIBUTES inherited{sizeof(inherited), nullptr, TRUE};
    const Handle nowhere =
        Need(Own(CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                             &inherited, OPEN_EXISTING, 0, nullptr)));
    HandleList handles({pipe, nowhere.get()});
    STARTUPINFOEXW startup{};
    startup.StartupInfo.cb = sizeof(startup);
    startup.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
    startup.StartupInfo.hStdInput = startup.StartupInfo.hStdOutput = startup.StartupInfo.hStdError =
        nowhere.get();
    startup.lpAttributeList = handles.Get();
    const WideString path = OwnPath();
    std::wstring command =
        L"\"" + path + L"\" " + kHostedCommand + L" " + std::to_wstring(reinterpret_cast<ULONG_PTR>(pipe));
    PROCESS_INFORMATION started{};
    constexpr DWORD kFlags = CREATE_SUSPENDED | EXTENDED_STARTUPINFO_PRESENT | CREATE_NO_WINDOW;
    // The emulation fails so now and then, while it starts others.
    constexpr int kMostStarts = 5;
    for (int start = 1; !CreateProcessW(path.c_str(), command.data(), nullptr, nullptr, TRUE, kFlags, nullptr,
                                        nullptr, &startup.StartupInfo, &started);
         ++start) {
      const DWORD error = GetLastError();
      if (error != ERROR_INTERNAL_ERROR || start == kMostStarts) throw NotStarted{error};
    }
    process_.reset(started.hProcess);
    thread_.reset(started.hThread);
  }

  Handle job_, process_, thread_;
};

// What the lines of the process come to.
class Conversation {
 public:
  Conversation(TimeLimit limit, const std::function<void(const Json&)>& onLine)
      : limit_(limit), onLine_(onLine), begun_(Clock::now()) {}

  HostedOutcome Hold(const std::string& task, const Json& arguments) {
    Pipe pipe;
    Process process(pipe.theirs.get());
    pipe.theirs.reset();  // from now on the pipe breaks when the process ends
    pipe.Write(Json{{"task", task}, {"arguments", arguments}}.dump() + "\n", limit_.step);
    const Pipe::Result ended = Listen(pipe);
    if (ended == Pipe::Result::kTooLate) return Ended(HostedOutcome::End::kTimedOut);
    const DWORD code = process.WaitForExitCode();
    if (isDone_ || outcome_.end == HostedOutcome::End::kCrashed) return std::move(outcome_);
    outcome_.code = code;
    constexpr DWORD kFirstException = 0xC0000000;
    return Ended(code >= kFirstException ? HostedOutcome::End::kCrashed : HostedOutcome::End::kEnded);
  }

 private:
  HostedOutcome Ended(HostedOutcome::End how) {
    outcome_.end = how;
    return std::move(outcome_);
  }

  // Until the end or until one of the limits is reached.
  Pipe::Result Listen(Pipe& pipe) {
    std::string bytes;
    for (;;) {
      const milliseconds left =
          limit_.total - std::chrono::duration_cast<milliseconds>(Clock::now() - begun_);
      const Pipe::Result result = pipe.Read(&bytes, std::clamp(left, milliseconds(0), limit_.step));
      if (result != Pipe::Result::kBytes) return result;
      for (size_t end = bytes.find('\n'); end != std::string::npos; end = bytes.find('\n')) {
        Understand(Json::parse(bytes.substr(0, end), nullptr, false));
        bytes.erase(0, end + 1);
      }
    }
  }

  void Understand(const Json& line) {
    if (!line.is_object()) return;
    if (line.contains("step")) {
      outcome_.lastStep = line["step"].get<std::string>();
    } else if (line.contains("exception")) {
      outcome_.end = HostedOutcome::End::kCrashed;
      outcome_.code = line["exception"].get<DWORD>();
      outcome_.detail = line.value("place", "");
    } else if (line.contains("error")) {
      outcome_.detail = line["error"].get<std::string>();
    } else if (line.contains("done")) {
      isDone_ = true;
      outcome_.end = HostedOutcome::End::kDone;
    } else {
      onLine_(line);
    }
  }

  const TimeLimit limit_;
  const std::function<void(const Json&)>& onLine_;
  const Clock::time_point begun_;
  HostedOutcome outcome_;
  bool isDone_ = false;
};

std::string CrashName(DWORD code) {
  char name[64];
  NameCrash(code, name, sizeof(name));
  return name;
}

}  // namespace

HostedOutcome RunHosted(const std::string& task, const Json& arguments, TimeLimit limit,
                        const std::function<void(const Json&)>& onLine) {
  try {
    return Conversation(limit, onLine).Hold(task, arguments);
  } catch (const NotStarted& failure) {
    HostedOutcome outcome;
    outcome.code = failure.error;
    return outcome;
  }
}

std::string HostedOutcome::Describe() const {
  constexpr DWORD kAbortCode = 3;
  const std::string at = lastStep.empty() ? "" : " at: " + lastStep;
  const std::string where = detail.empty() ? "" : " (" + detail + ")";
  switch (end) {
    case End::kDone:
      return "done";
    case End::kCrashed:
      return "crashed: " + CrashName(code) + where + at;
    case End::kTimedOut:
      return "hung" + at;
    case End::kEnded:
      return "ended the process with code " + std::to_string(code) +
             (code == kAbortCode ? ", as abort() does" : "") + where + at;
    case End::kNotStarted:
      break;
  }
  return "could not be started: " + diag::SystemErrorName(code);
}

}  // namespace orvctl
