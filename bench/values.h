// Property values for benchmarks, and the copy of them that one writes by hand.
#pragma once

#include <cstring>
#include <cwchar>
#include <utility>
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

// The task allocator itself, for floors that do without our code.
inline IMalloc& TaskAllocator() {
  static IMalloc* const allocator = [] {
    IMalloc* found = nullptr;
    Require(SUCCEEDED(CoGetMalloc(1, &found)), "CoGetMalloc");
    return found;
  }();
  return *allocator;
}

constexpr std::size_t kBlockOverhead = 25;  // of each of our buffers: header and guard

// Blocks of the sizes that our buffers have, freed with their root.
struct HandMadeBlock {
  HandMadeBlock* next;
  void* unused[2];
  void* Payload() { return this + 1; }
};
static_assert(sizeof(HandMadeBlock) == 24);

inline void* AllocateByHand(std::size_t size, HandMadeBlock* root) {
  auto* block = static_cast<HandMadeBlock*>(TaskAllocator().Alloc(size + kBlockOverhead));
  block->next = root != nullptr ? std::exchange(root->next, block) : nullptr;
  return block->Payload();
}

inline void FreeByHand(void* payload) {
  for (auto* block = static_cast<HandMadeBlock*>(payload) - 1; block != nullptr;) {
    TaskAllocator().Free(std::exchange(block, block->next));
  }
}

// Knows the types it meets beforehand and asks nobody: numbers, wide strings and binaries.
inline SPropValue* CopyByHand(const SPropValue* values, ULONG count) {
  auto* copy = static_cast<SPropValue*>(AllocateByHand(count * sizeof(SPropValue), nullptr));
  auto* root = reinterpret_cast<HandMadeBlock*>(copy) - 1;
  std::memcpy(copy, values, count * sizeof(SPropValue));
  for (ULONG i = 0; i < count; ++i) {
    const ULONG type = PROP_TYPE(values[i].ulPropTag);
    if (type == PT_UNICODE) {
      const std::size_t size = (std::wcslen(values[i].Value.lpszW) + 1) * sizeof(WCHAR);
      copy[i].Value.lpszW =
          static_cast<WCHAR*>(std::memcpy(AllocateByHand(size, root), values[i].Value.lpszW, size));
    } else if (type == PT_BINARY) {
      const SBinary& bytes = values[i].Value.bin;
      copy[i].Value.bin.lpb =
          static_cast<BYTE*>(std::memcpy(AllocateByHand(bytes.cb, root), bytes.lpb, bytes.cb));
    }
  }
  return copy;
}

}  // namespace orv::bench
