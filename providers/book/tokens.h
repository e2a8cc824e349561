// Words as the index of words takes texts apart.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "providers/book/database.h"

namespace book {

class Tokenizer {
 public:
  explicit Tokenizer(Database& database);
  ~Tokenizer();
  Tokenizer(const Tokenizer&) = delete;
  Tokenizer& operator=(const Tokenizer&) = delete;

  std::vector<std::string> Words(std::string_view text);

 private:
  struct State;
  Database& database_;
  const std::unique_ptr<State> state_;
};

// What is asked of the index for entries in which each of these begins a word.
std::string MatchOf(const std::vector<std::string>& words);
// Of a text; empty where there is no word.
std::string MatchOfWords(Database& database, std::string_view text);

}  // namespace book
