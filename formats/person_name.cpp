#include "formats/person_name.h"

#include <algorithm>
#include <iterator>

#include "formats/number_words.h"
#include "formats/text_codec.h"

namespace formats {
namespace {

// Words as FoldWords gives them. English, German, French, Japanese, Arabic.
constexpr std::string_view kCourtesy[] = {"mr",    "mrs",  "ms",       "miss",   "mx",           "herr",
                                          "herrn", "frau", "fraulein", "m",      "mm",           "mme",
                                          "mmes",  "mlle", "monsieur", "madame", "mademoiselle", "様",
                                          "さん",  "殿",   "السيد",    "السيدة", "الآنسة"};
// Those that stay with the name.
constexpr std::string_view kTitles[] = {"dr",  "prof", "rev", "dipl", "ing",     "mag",     "med",
                                        "jur", "phil", "rer", "nat",  "الدكتور", "الدكتورة"};

template <std::size_t kCount>
bool IsAmong(const std::string_view (&words)[kCount], std::string_view word) {
  return std::find(std::begin(words), std::end(words), word) != std::end(words);
}

std::string_view WithoutStop(std::string_view word) {
  if (!word.empty() && word.back() == '.') word.remove_suffix(1);
  return word;
}

// Calls `use` with every word, as it stands there, until it answers false.
template <class Use>
bool ForEachWord(std::string_view text, std::string_view between, Use use) {
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t begin = text.find_first_not_of(between, at);
    if (begin == std::string_view::npos) return true;
    at = std::min(text.find_first_of(between, begin), text.size());
    if (!use(text.substr(begin, at - begin))) return false;
  }
  return true;
}

bool IsCourtesy(std::string_view word) { return IsAmong(kCourtesy, FoldWords(WithoutStop(word))); }

std::string WithoutCourtesy(std::string_view prefix) {
  std::string left;
  ForEachWord(prefix, " ", [&left](std::string_view word) {
    if (!IsCourtesy(word)) left.append(left.empty() ? "" : " ").append(word);
    return true;
  });
  return left;
}

}  // namespace

bool IsFormOfAddress(std::string_view text) {
  return !TrimBlanks(text).empty() && ForEachWord(text, " .-", [](std::string_view word) {
    const std::string folded = FoldWords(word);
    return IsAmong(kCourtesy, folded) || IsAmong(kTitles, folded);
  });
}

std::string FullNameOf(const Contact& contact) {
  std::string name = WithoutCourtesy(contact.prefix);
  for (const std::string* part : {&contact.given, &contact.middle, &contact.surname, &contact.suffix}) {
    if (!part->empty() && !name.empty()) name += ' ';
    name += *part;
  }
  return name;
}

}  // namespace formats
