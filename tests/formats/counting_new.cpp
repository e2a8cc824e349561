// Counts the bytes that are allocated; a source of its own, since it replaces operator new for the whole program.
#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>

#include "tests/formats/counting_new.h"

namespace {

constexpr std::size_t kHeader = alignof(std::max_align_t);
std::atomic<std::size_t> g_held{0}, g_highest{0};

}  // namespace

namespace formats::test {

void ForgetHighest() { g_highest = g_held.load(); }
std::size_t HighestHeld() { return g_highest; }

}  // namespace formats::test

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  void* const block = std::malloc(size + kHeader);
  if (block == nullptr) return nullptr;
  *static_cast<std::size_t*>(block) = size;
  const std::size_t held = g_held += size;
  g_highest = std::max(g_highest.load(), held);
  return static_cast<char*>(block) + kHeader;
}

void* operator new(std::size_t size) {
  if (void* const pointer = operator new(size, std::nothrow)) return pointer;
  throw std::bad_alloc();
}

void operator delete(void* pointer) noexcept {
  if (pointer == nullptr) return;
  void* const block = static_cast<char*>(pointer) - kHeader;
  g_held -= *static_cast<std::size_t*>(block);
  std::free(block);
}

void operator delete(void* pointer, std::size_t) noexcept { operator delete(pointer); }
void operator delete(void* pointer, const std::nothrow_t&) noexcept { operator delete(pointer); }
void* operator new[](std::size_t size) { return operator new(size); }
void operator delete[](void* pointer) noexcept { operator delete(pointer); }
void operator delete[](void* pointer, std::size_t) noexcept { operator delete(pointer); }
