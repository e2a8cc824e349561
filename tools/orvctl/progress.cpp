#include "tools/orvctl/progress.h"

#include <atomic>

#include "tools/orvctl/console.h"

namespace orvctl {
namespace {

constexpr ULONGLONG kShownAfter = 500, kShownEvery = 200;  // milliseconds

std::atomic<bool> isInterrupted{false};

BOOL WINAPI Interrupt(DWORD event) {
  if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) return FALSE;
  isInterrupted = true;
  return TRUE;
}

bool IsTerminal() {
  DWORD mode = 0;
  return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

std::string Bar(ULONGLONG done, ULONGLONG total) {
  constexpr ULONGLONG kWidth = 30, kHundred = 100;
  if (total == 0) return {};
  const ULONGLONG part = done < total ? done * kHundred / total : kHundred;
  const auto filled = static_cast<size_t>(part * kWidth / kHundred);
  return "[" + std::string(filled, '#') + std::string(kWidth - filled, '.') + "] " + std::to_string(part) +
         " %  ";
}

}  // namespace

ProgressBar::ProgressBar(std::string what, ULONGLONG total)
    : what_(std::move(what)),
      total_(total),
      start_(GetTickCount64()),
      shownAt_(start_),
      isTerminal_(IsTerminal()) {}

// A line of blanks over it; errors that follow begin on a clean line.
ProgressBar::~ProgressBar() {
  constexpr size_t kLine = 78;
  if (isShown_) WriteErrors("\r" + std::string(kLine, ' ') + "\r");
}

void ProgressBar::Show(ULONGLONG done, ULONGLONG records) {
  const ULONGLONG now = GetTickCount64();
  if (!isTerminal_ || now - start_ < kShownAfter || now - shownAt_ < kShownEvery) return;
  shownAt_ = now;
  isShown_ = true;
  WriteErrors("\r" + what_ + "  " + Bar(done, total_) + std::to_string(records) + " entries ");
}

Interruption::Interruption() {
  isInterrupted = false;
  SetConsoleCtrlHandler(Interrupt, TRUE);
}
Interruption::~Interruption() { SetConsoleCtrlHandler(Interrupt, FALSE); }

bool Interruption::IsWanted() { return isInterrupted; }

}  // namespace orvctl
