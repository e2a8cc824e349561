#include "tools/orvctl/crash.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace orvctl {
namespace {

struct NamedException {
  DWORD code;
  const char* name;
};

// As the two families of compilers raise those that nobody catches.
constexpr DWORD kGccException = 0x20474343, kMsvcException = 0xE06D7363;

constexpr NamedException kExceptions[] = {{EXCEPTION_ACCESS_VIOLATION, "access violation"},
                                          {EXCEPTION_STACK_OVERFLOW, "stack overflow"},
                                          {EXCEPTION_INT_DIVIDE_BY_ZERO, "division by zero"},
                                          {EXCEPTION_ILLEGAL_INSTRUCTION, "illegal instruction"},
                                          {EXCEPTION_BREAKPOINT, "breakpoint"},
                                          {0xC0000374, "damaged heap"},
                                          {kGccException, "C++ exception"},
                                          {kMsvcException, "C++ exception"}};

}  // namespace

void NameCrash(DWORD code, char* text, size_t size) {
  const auto known = std::find_if(std::begin(kExceptions), std::end(kExceptions),
                                  [code](const NamedException& each) { return each.code == code; });
  std::snprintf(text, size, "%s 0x%08lX", known != std::end(kExceptions) ? known->name : "exception",
                static_cast<unsigned long>(code));
}

void FindCrashPlace(const void* address, char* text, size_t size) {
  HMODULE module = nullptr;
  WCHAR path[MAX_PATH] = {};
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                     static_cast<LPCWSTR>(address), &module);
  if (module == nullptr) return;
  GetModuleFileNameW(module, path, MAX_PATH - 1);
  char name[64] = {};
  size_t length = 0;
  for (const WCHAR* each = path; *each != 0; ++each) {
    const bool isPlain = *each >= ' ' && *each < 0x7F && *each != '"';
    if (*each == '\\' || *each == '/') {
      length = 0;
    } else if (length + 1 < sizeof(name)) {
      name[length++] = isPlain ? static_cast<char>(*each) : '?';
    }
  }
  name[length] = 0;
  const auto offset = static_cast<const BYTE*>(address) - reinterpret_cast<const BYTE*>(module);
  std::snprintf(text, size, "%s+0x%llX", name, static_cast<unsigned long long>(offset));
}

}  // namespace orvctl
