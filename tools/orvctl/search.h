// Entries by what they are called.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tools/orvctl/book.h"

namespace orvctl {

enum class Fit {
  kWhole,  // the name as it is shown, or without what the book shows behind it
  kPart,   // the name holds the text, whatever the case of its letters
  kFound,  // as the book searches: any word, the digits of a number
};

constexpr size_t kMostShown = 20;  // of entries that one name fits

struct Match {
  Bytes entryId;
  std::string name;   // as it is shown
  std::string plain;  // without a kind of number or a company behind it; empty where the book does not tell
  std::string addressType, address, container;
  ULONG type = 0;
};

// Hands out the rows that fit until `use` answers false; false when it did. The table narrows itself where it can, else
// every row is looked at.
bool ForEachMatch(const Library& library, const Container& container, IMAPITable* contents, Fit fit,
                  const std::string& text, const std::function<bool(Match&&)>& use);

// The book's own search, with the columns that are wanted; where the table cannot search, names and addresses that hold
// the text are found.
bool ForEachFound(const Library& library, const Container& container, IMAPITable* contents,
                  const std::string& text, LPSPropTagArray columns,
                  const std::function<bool(const ValueView&)>& use);

// In one container; at most `limit`.
std::vector<Match> FindMatches(const Library& library, const Book& book, const Container& container, Fit fit,
                               const std::string& text, size_t limit);

// "there are 2 ..." with a line each, for a name that several bear.
[[noreturn]] void ThrowAmbiguous(const std::string& name, const std::vector<Match>& matches);

}  // namespace orvctl
