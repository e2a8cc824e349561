// How far a long command has come: a bar on a terminal once it lasts over half a second, nothing in a pipe.
#pragma once

#include <windows.h>

#include <string>

namespace orvctl {

class ProgressBar {
 public:
  // `total` in the unit that Show counts in; 0 where nobody knows it.
  ProgressBar(std::string what, ULONGLONG total);
  // Takes the bar away.
  ~ProgressBar();
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  void Show(ULONGLONG done, ULONGLONG records);

 private:
  const std::string what_;
  const ULONGLONG total_;
  const ULONGLONG start_;
  ULONGLONG shownAt_;
  bool isTerminal_;
  bool isShown_ = false;
};

// Whether the user has asked to end the command; from its making on that ends nothing else. What is under way is
// brought to an end that leaves everything whole.
class Interruption {
 public:
  Interruption();
  ~Interruption();
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;

  static bool IsWanted();
};

}  // namespace orvctl
