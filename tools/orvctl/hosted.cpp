// The process that a task runs in: reads what is asked, runs it, and tells its own end.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <mutex>

#include "orv/orvbase.hpp"
#include "tools/orvctl/crash.h"
#include "tools/orvctl/host.h"

namespace orvctl {
namespace {

HANDLE g_pipe = INVALID_HANDLE_VALUE;  // for the handler of crashes, which is handed nothing

void WriteAll(HANDLE pipe, const char* bytes, size_t size) {
  DWORD written = 0;
  const BOOL done = WriteFile(pipe, bytes, static_cast<DWORD>(size), &written, nullptr);
  // Nobody listens any more, so nobody waits for a result.
  if (!done) TerminateProcess(GetCurrentProcess(), 1);
}

// Takes no memory: the heap may be what is broken.
LONG WINAPI TellCrash(EXCEPTION_POINTERS* exception) {
  const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
  char place[128] = "", line[256];
  FindCrashPlace(record.ExceptionAddress, place, sizeof(place));
  const int size = std::snprintf(line, sizeof(line), "{\"exception\":%lu,\"place\":\"%s\"}\n",
                                 static_cast<unsigned long>(record.ExceptionCode), place);
  WriteAll(g_pipe, line, static_cast<size_t>(size));
  TerminateProcess(GetCurrentProcess(), record.ExceptionCode);
  return EXCEPTION_EXECUTE_HANDLER;
}

// Up to the end of a line.
std::string ReadLine(HANDLE pipe) {
  std::string text;
  char byte = 0;
  DWORD count = 0;
  while (ReadFile(pipe, &byte, 1, &count, nullptr) && count == 1 && byte != '\n') text += byte;
  return text;
}

// No window of the system's may wait for somebody to close it.
void Prepare(HANDLE pipe) {
  g_pipe = pipe;
  SetHandleInformation(pipe, HANDLE_FLAG_INHERIT, 0);
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
  SetUnhandledExceptionFilter(TellCrash);
}

void Run(HostLink& link, const Json& request) {
  const HostedTask task = FindHostedTask(request.value("task", ""));
  if (task == nullptr) throw std::runtime_error("there is no such task");
  task(request.value("arguments", Json::object()), link);
  link.Send({{"done", true}});
}

}  // namespace

void HostLink::Send(const Json& line) {
  static orv::sdk::Lock lock;
  const std::string text = line.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
  const std::lock_guard guard(lock);
  WriteAll(pipe_, text.data(), text.size());
}

void HostLink::Step(const std::string& step) { Send({{"step", step}}); }

int ServeHosted(const wchar_t* pipe) {
  const auto handle = reinterpret_cast<HANDLE>(static_cast<ULONG_PTR>(std::wcstoull(pipe, nullptr, 10)));
  Prepare(handle);
  HostLink link(handle);
  UINT code = 0;
  try {
    Run(link, Json::parse(ReadLine(handle)));
  } catch (const std::exception& error) {
    link.Send({{"error", error.what()}});
    code = 1;
  } catch (...) {
    link.Send({{"error", "an exception of unknown kind"}});
    code = 1;
  }
  // What a library does at the process's end is not what was asked.
  TerminateProcess(GetCurrentProcess(), code);
  return static_cast<int>(code);
}

}  // namespace orvctl
