// Property values for benchmarks, and the copy of them that one writes by hand.
#pragma once

#include <cstring>
#include <vector>

#include "bench/harness.h"
#include "orv/orvapi.h"
#include "orv/orvflags.h"
#include "orv/orvtags.h"
#include "platform/win.h"

namespace orv::bench {

inline SPropValue Number(ULONG tag, LONG number) {
  SPropValue value = {};
  value.ulPropTag = tag;
  value.Value.l = number;
  return value;
}

inline SPropValue Text(ULONG tag, const WString& text) {
  SPropValue value = {};
  value.ulPropTag = tag;
  value.Value.lpszW = const_cast<WCHAR*>(text.c_str());
  return value;
}

// Knows the types it meets beforehand and asks nobody: numbers, wide strings and binaries.
inline SPropValue* CopyByHand(const SPropValue* values, ULONG count) {
  void* root = nullptr;
  OrvAllocateBuffer(count * static_cast<ULONG>(sizeof(SPropValue)), &root);
  auto* copy = static_cast<SPropValue*>(root);
  std::memcpy(copy, values, count * sizeof(SPropValue));
  for (ULONG i = 0; i < count; ++i) {
    const ULONG type = PROP_TYPE(values[i].ulPropTag);
    void* data = nullptr;
    if (type == PT_UNICODE) {
      const ULONG size = static_cast<ULONG>((std::wcslen(values[i].Value.lpszW) + 1) * sizeof(WCHAR));
      OrvAllocateMore(size, root, &data);
      std::memcpy(data, values[i].Value.lpszW, size);
      copy[i].Value.lpszW = static_cast<WCHAR*>(data);
    } else if (type == PT_BINARY) {
      OrvAllocateMore(values[i].Value.bin.cb, root, &data);
      std::memcpy(data, values[i].Value.bin.lpb, values[i].Value.bin.cb);
      copy[i].Value.bin.lpb = static_cast<BYTE*>(data);
    }
  }
  return copy;
}

}  // namespace orv::bench
