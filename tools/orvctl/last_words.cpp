// Everything that can be said is written down beforehand; the handler only looks up what fits and fills in the crash.
#include "tools/orvctl/last_words.h"

#include <windows.h>

#include <csignal>
#include <cstdio>
#include <string_view>

#include "tools/orvctl/console.h"
#include "tools/orvctl/crash.h"
#include "tools/orvctl/errors.h"
#include "tools/orvctl/listing.h"

namespace orvctl {

struct LastWords::Prepared {
  WideString library;
  std::string message;
};

namespace {

using Address = ULONG_PTR;

bool g_json = false;
std::string g_otherwise;  // of a crash in code that nobody has words for
std::vector<LastWords::Prepared>* g_words = nullptr;
const char* g_step = nullptr;

std::string Rendered(const std::string& text) {
  const Message message{text, {}, kFailed};
  return g_json ? ToJson(message) : ToText(message);
}

struct Code {
  Address begin = 0, size = 0;

  bool Holds(Address address) const { return address - begin < size; }
};

Code CodeOf(const WideString& library) {
  const auto begin = reinterpret_cast<Address>(GetModuleHandleW(library.c_str()));
  if (begin == 0) return {};
  const auto* file = reinterpret_cast<const IMAGE_DOS_HEADER*>(begin);
  const auto* image = reinterpret_cast<const IMAGE_NT_HEADERS*>(begin + static_cast<Address>(file->e_lfanew));
  return {begin, image->OptionalHeader.SizeOfImage};
}

// How far up the stack the nearest address within the code stands; 0: it crashed there itself.
size_t Distance(const Code& code, Address at, Address stack) {
  constexpr size_t kNever = SIZE_MAX;
  if (code.Holds(at)) return 0;
  const auto* const tib = reinterpret_cast<const NT_TIB*>(NtCurrentTeb());
  const auto* const end = static_cast<const Address*>(tib->StackBase);
  const auto* const begin = reinterpret_cast<const Address*>(stack);
  if (begin < tib->StackLimit || begin > end) return kNever;
  for (const Address* each = begin; each < end; ++each) {
    if (code.Holds(*each)) return static_cast<size_t>(each - begin) + 1;
  }
  return kNever;
}

const std::string& FindWords(Address at, Address stack) {
  const std::string* words = &g_otherwise;
  size_t nearest = SIZE_MAX;
  for (size_t i = 0; g_words != nullptr && i < g_words->size(); ++i) {
    const LastWords::Prepared& each = (*g_words)[i];
    const size_t distance = Distance(CodeOf(each.library), at, stack);
    if (distance >= nearest) continue;
    nearest = distance;
    words = &each.message;
  }
  return *words;
}

void WriteEscaped(std::string_view text) {
  for (const char& each : text) {
    if (g_json && (each == '"' || each == '\\')) WriteErrors("\\");
    WriteErrors({&each, 1});
  }
}

[[noreturn]] void End(const char* crash, Address at, Address stack) {
  const std::string_view words = FindWords(at, stack), mark = kCrashMark;
  const size_t place = words.find(mark);
  WriteErrors(words.substr(0, place));
  WriteErrors(crash);
  if (g_step != nullptr) {
    WriteErrors(", at: ");
    WriteEscaped(g_step);
  }
  WriteErrors(words.substr(place + mark.size()));
  TerminateProcess(GetCurrentProcess(), kFailed);
  std::abort();
}

LONG WINAPI LeaveCrash(EXCEPTION_POINTERS* exception) {
  const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
  char name[64], place[128] = "", crash[256];
  NameCrash(record.ExceptionCode, name, sizeof(name));
  FindCrashPlace(record.ExceptionAddress, place, sizeof(place));
  std::snprintf(crash, sizeof(crash), "%s (%s)", name, place);
  End(crash, reinterpret_cast<Address>(record.ExceptionAddress), exception->ContextRecord->Rsp);
}

// Of code that shares our run-time library.
void TellAbort(int) {
  CONTEXT here;
  RtlCaptureContext(&here);
  End("it called abort()", here.Rip, here.Rsp);
}

}  // namespace

void PrepareLastWords(bool json) {
  g_json = json;
  g_otherwise = Rendered(std::string("this program crashed: ") + kCrashMark +
                         "; 'orvctl doctor' tries each service alone and tells which one is at fault");
  ULONG room = 1 << 15;  // where the stack is what ran out
  SetThreadStackGuarantee(&room);
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
  SetUnhandledExceptionFilter(LeaveCrash);
  std::signal(SIGABRT, TellAbort);
}

LastWords::LastWords(const std::vector<CrashText>& texts) : before_(g_words) {
  for (const CrashText& each : texts) prepared_.push_back({each.library, Rendered(each.text)});
  g_words = &prepared_;
}

LastWords::~LastWords() { g_words = before_; }

CrashStep::CrashStep(const std::string& step) : step_(Printable(step)), before_(g_step) {
  g_step = step_.c_str();
}

CrashStep::~CrashStep() { g_step = before_; }

}  // namespace orvctl
