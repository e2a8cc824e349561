// What the words beside a number say of it: the types and labels of cards and the columns of tables, in the languages
// that our texts come in.
#pragma once

#include <string>
#include <string_view>

#include "formats/contact.h"

namespace formats {

struct NumberWords {
  bool isFax = false;
  bool isMobile = false;
  bool isPager = false;
  bool isPhone = false;
  bool isOtherKind = false;  // a telex, a modem
  bool isWork = false;
  bool isHome = false;
  bool isOtherPlace = false;
  bool isPreferred = false;
  bool isWhole = true;  // nothing else is said but that, and numerals

  bool HasKind() const { return isFax || isMobile || isPager || isPhone || isOtherKind; }
  bool HasPlace() const { return isWork || isHome || isOtherPlace; }
  // Where several are said the one that is named first here: fax, pager, mobile, other.
  NumberKind kind() const;
  Place place() const;  // work before home before other
  void Add(const NumberWords& more);
};

// `left` receives what is no word of ours, folded, with one blank between words.
NumberWords ReadNumberWords(std::string_view text, std::string* left = nullptr);

// Lower case without accents, full-width forms as ASCII: what names of columns and labels are compared in.
std::string FoldWords(std::string_view text);

}  // namespace formats
