// The readability of many small blocks, one probe a page: a page that was found readable is not asked about again.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/pointer_check.h"

namespace orv {

// Remembers the pages of the latest probe, which neighbours share. Good for as long as nobody frees what was asked
// about, so not across a call of foreign code.
class ReadablePages {
 public:
  // No bytes are readable wherever they lie.
  bool Hold(const void* start, std::size_t size) {
    const auto first = reinterpret_cast<std::uintptr_t>(start);
    if (size == 0 || (first - begin_ < known_ && size <= known_ - (first - begin_))) return true;
    if (!IsReadable(start, size)) return false;
    begin_ = first & ~(kPage - 1);
    known_ = ((first + size - 1) | (kPage - 1)) - begin_ + 1;
    return true;
  }

 private:
  static constexpr std::uintptr_t kPage = 4096;

  std::uintptr_t begin_ = 0;
  std::uintptr_t known_ = 0;  // bytes from there
};

}  // namespace orv
