// What this program says when foreign code crashes in it, instead of ending without a word.
#pragma once

#include <string>
#include <vector>

#include "tools/orvctl/values.h"

namespace orvctl {

// Stands in a text for what is known of the crash: a character that is none.
inline constexpr char kCrashMark[] = "\xEF\xB7\x90";

// What is told of a crash in that library.
struct CrashText {
  WideString library;  // file name
  std::string text;    // with kCrashMark in it
};

// From now on: an error message, and the exit code of a failure.
void PrepareLastWords(bool json);

// While it lives a crash in one of these libraries, or in what they called, is told in the words for it. Of several such
// objects the last one counts.
class LastWords {
 public:
  explicit LastWords(const std::vector<CrashText>& texts);
  ~LastWords();
  LastWords(const LastWords&) = delete;
  LastWords& operator=(const LastWords&) = delete;

  struct Prepared;  // a text as it is written

 private:
  std::vector<Prepared>* const before_;
  std::vector<Prepared> prepared_;
};

// What the program is about to do, for the same message.
class CrashStep {
 public:
  explicit CrashStep(const std::string& step);
  ~CrashStep();
  CrashStep(const CrashStep&) = delete;
  CrashStep& operator=(const CrashStep&) = delete;

 private:
  const std::string step_;
  const char* const before_;
};

}  // namespace orvctl
