// The text of a catalogue, read whole, in sections. Where the text is plain these are what the platform's private
// profile functions give, byte for byte; of anything that they might take in a way of their own nothing is said here,
// so that whoever asks turns to them.
#pragma once

#include <cstddef>
#include <unordered_map>
#include <vector>

#include "platform/win.h"

namespace orv::catalogue {

class CatalogueText {
 public:
  // A section that is longer, its terminators counted, is not believed: nobody writes such a one.
  static constexpr std::size_t kMostCharacters = std::size_t{1} << 20;

  explicit CatalogueText(WString text);
  // The sections point into the text.
  CatalogueText(const CatalogueText&) = delete;
  CatalogueText& operator=(const CatalogueText&) = delete;

  // The lines of a section, each terminated, an empty one at the end. The first section of a name counts, letters
  // compared without case. Null for one that is not there, is empty, too long or not plain.
  const WCHAR* Section(WStringView name) const;

 private:
  // Names are compared in ASCII; others are not plain.
  struct FoldedHash {
    std::size_t operator()(WStringView name) const noexcept;
  };
  struct FoldedEqual {
    bool operator()(WStringView a, WStringView b) const noexcept;
  };

  // A section while its lines are read. Without `end` it is not plain.
  struct Current {
    WStringView name;
    WCHAR* lines = nullptr;
    WCHAR* end = nullptr;
  };

  bool Split();
  bool TakeLine(WStringView line, Current& current);
  void Finish(const Current& current);

  WString text_;
  std::unordered_map<WStringView, const WCHAR*, FoldedHash, FoldedEqual> sections_;
};

// Where the lines of a section stand in the text: the numbers, from 1, of all but its empty lines and comments. The
// first section of the name counts, as above; for text that is not plain the platform may see other lines.
std::vector<ULONG> LineNumbersOf(WStringView text, WStringView section);

}  // namespace orv::catalogue
