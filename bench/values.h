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

// A value with the length of what it points at: a copy by hand measures nothing.
struct HandValue {
  SPropValue value;
  std::size_t size = 0;  // out of line
};

inline HandValue WithLength(const SPropValue& value) {
  const ULONG type = PROP_TYPE(value.ulPropTag);
  if (type == PT_UNICODE) return {value, (std::wcslen(value.Value.lpszW) + 1) * sizeof(WCHAR)};
  return {value, type == PT_BINARY ? value.Value.bin.cb : 0};
}

inline const void* BytesOf(const HandValue& known) {
  const auto& value = known.value.Value;
  if (PROP_TYPE(known.value.ulPropTag) == PT_UNICODE) return value.lpszW;
  return value.bin.lpb;
}

// Knows the types it meets beforehand and asks nobody: numbers, wide strings and binaries.
inline SPropValue* CopyByHand(const HandValue* values, ULONG count) {
  auto* copy = static_cast<SPropValue*>(AllocateByHand(count * sizeof(SPropValue), nullptr));
  auto* root = reinterpret_cast<HandMadeBlock*>(copy) - 1;
  for (ULONG i = 0; i < count; ++i) {
    copy[i] = values[i].value;
    if (values[i].size == 0) continue;
    void* bytes = std::memcpy(AllocateByHand(values[i].size, root), BytesOf(values[i]), values[i].size);
    if (PROP_TYPE(values[i].value.ulPropTag) == PT_UNICODE) {
      copy[i].Value.lpszW = static_cast<WCHAR*>(bytes);
    } else {
      copy[i].Value.bin.lpb = static_cast<BYTE*>(bytes);
    }
  }
  return copy;
}

}  // namespace orv::bench
