// The tests that every method makes on its pointer arguments: readable or writable for so many bytes.
#pragma once

#include <cstddef>
#include <cstdint>

#include "orv/orvtypes.h"
#include "platform/win.h"

namespace orv {

inline bool IsReadable(const void* pointer, std::size_t size) {
  return pointer != nullptr && !IsBadReadPtr(pointer, size);
}

inline bool IsWritable(void* pointer, std::size_t size) {
  return pointer != nullptr && !IsBadWritePtr(pointer, size);
}

// A string, to its end: as far as it reads, nothing tells how long it was meant to be.
inline bool IsReadableText(const WCHAR* text) { return !IsBadStringPtrW(text, ~UINT_PTR{0}); }

// Access is granted by the page, so of two places on one page one probe tells both.
inline bool LieOnOnePage(const void* first, std::size_t firstSize, const void* second,
                         std::size_t secondSize) {
  constexpr std::uintptr_t kPageSize = 4096;
  const auto pageOf = [](const void* place, std::size_t offset) {
    return (reinterpret_cast<std::uintptr_t>(place) + offset) / kPageSize;
  };
  const std::uintptr_t page = pageOf(first, 0);
  return page == pageOf(first, firstSize - 1) && page == pageOf(second, 0) &&
         page == pageOf(second, secondSize - 1);
}

// Tags: the count that says how many first. Most arrays end on the page where they begin.
inline bool IsReadableTagArray(const SPropTagArray* tags) {
  if (!IsReadable(tags, sizeof tags->cValues)) return false;
  const std::size_t size = CbSPropTagArray(tags);
  return LieOnOnePage(tags, sizeof tags->cValues, tags, size) || IsReadable(tags, size);
}

// An out parameter: writable for the size of what it receives (8 bytes for a pointer, 4 for a count).
template <class T>
bool IsWritableOut(T* out) {
  return IsWritable(out, sizeof(T));
}

// Two out parameters, which mostly are neighbours on a caller's stack.
template <class A, class B>
bool AreWritableOuts(A* a, B* b) {
  return IsWritableOut(a) && (LieOnOnePage(a, sizeof(A), b, sizeof(B)) || IsWritableOut(b));
}

}  // namespace orv
