// The standard streams in UTF-8.
#include "tools/orvctl/console.h"

#include <windows.h>

#include <algorithm>

#include "tools/orvctl/values.h"

namespace orvctl {
namespace {

// Consoles refuse very long writes.
constexpr size_t kConsoleChunk = 8192;

bool WriteConsoleText(HANDLE console, std::string_view utf8) {
  const WideString text = ToWide(utf8);
  for (size_t at = 0; at < text.size();) {
    const auto count = static_cast<DWORD>(std::min(kConsoleChunk, text.size() - at));
    DWORD written = 0;
    if (!WriteConsoleW(console, text.data() + at, count, &written, nullptr) || written == 0) return false;
    at += written;
  }
  return true;
}

bool Write(DWORD which, std::string_view utf8) {
  const HANDLE stream = GetStdHandle(which);
  DWORD mode = 0;
  if (GetConsoleMode(stream, &mode)) return WriteConsoleText(stream, utf8);
  while (!utf8.empty()) {
    constexpr size_t kMostAtOnce = size_t{1} << 20;
    const auto count = static_cast<DWORD>(std::min(kMostAtOnce, utf8.size()));
    DWORD written = 0;
    if (!WriteFile(stream, utf8.data(), count, &written, nullptr) || written == 0) return false;
    utf8.remove_prefix(written);
  }
  return true;
}

}  // namespace

bool WriteOutput(std::string_view utf8) { return Write(STD_OUTPUT_HANDLE, utf8); }
bool WriteErrors(std::string_view utf8) { return Write(STD_ERROR_HANDLE, utf8); }

size_t OutputWidth() {
  CONSOLE_SCREEN_BUFFER_INFO console{};
  if (!GetConsoleScreenBufferInfo(GetStdHandle(STD_OUTPUT_HANDLE), &console)) return 0;
  return static_cast<size_t>(std::max(console.srWindow.Right - console.srWindow.Left + 1, 1));
}

}  // namespace orvctl
