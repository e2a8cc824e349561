// The tests that every method makes on its pointer arguments: readable or writable for so many bytes.
#pragma once

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

// Tags: the count that says how many first.
inline bool IsReadableTagArray(const SPropTagArray* tags) {
  return IsReadable(tags, sizeof tags->cValues) && IsReadable(tags, CbSPropTagArray(tags));
}

// An out parameter: writable for the size of what it receives (8 bytes for a pointer, 4 for a count).
template <class T>
bool IsWritableOut(T* out) {
  return IsWritable(out, sizeof(T));
}

}  // namespace orv
