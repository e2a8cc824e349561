// Blocks of like size lie together in slabs, which go back to the system when they are empty. What is too large for a
// slab is the heap's.
#include "providers/book/engine_memory.h"

#include <sqlite3.h>
#include <windows.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <new>

#include "orv/orvbase.hpp"

namespace book {
namespace {

constexpr std::size_t kSlabSize = std::size_t{64} << 10;  // the least that the system hands out
constexpr std::size_t kMostInSlab = 8192;
// Sizes are rounded up by at most an eighth.
constexpr unsigned kLeastShift = 4, kStepsShift = 3;
constexpr std::size_t kClasses = 57;

struct SizeClass {
  std::size_t index, size;
};

constexpr SizeClass ClassOf(std::size_t size) {
  constexpr unsigned kStepBits = kStepsShift + 1;
  const auto width = static_cast<unsigned>(std::bit_width(size - 1));
  const unsigned shift = std::max(kLeastShift, width > kStepBits ? width - kStepBits : 0);
  const std::size_t steps = (size + (std::size_t{1} << shift) - 1) >> shift;
  return {((shift - kLeastShift) << kStepsShift) + steps, steps << shift};
}
static_assert(ClassOf(kMostInSlab).index + 1 == kClasses && ClassOf(kMostInSlab).size == kMostInSlab);

struct FreeBlock {
  FreeBlock* next;
};

struct Slab {
  Slab *previous, *next;  // among those of its class that have room
  FreeBlock* free;
  std::size_t blockSize, index;
  std::size_t begun;  // bytes of which blocks have been made
  std::size_t live;

  bool isFull() const { return free == nullptr && begun + blockSize > kSlabSize; }
};

// Stands before each block: its slab, or twice its size and one where it is the heap's.
using Header = std::uintptr_t;
static_assert(sizeof(Header) == 8, "the engine wants blocks at multiples of eight");

Header& HeaderOf(void* block) { return static_cast<Header*>(block)[-1]; }
bool IsOfHeap(void* block) { return (HeaderOf(block) & 1) != 0; }
Slab* SlabOf(void* block) { return reinterpret_cast<Slab*>(HeaderOf(block)); }

class Slabs {
 public:
  void* Take(std::size_t size);
  void Give(void* block);
  void GiveBackEmpty();

 private:
  static Slab* Make(const SizeClass& sizeClass);
  void LinkLocked(Slab* slab);
  void UnlinkLocked(Slab* slab);

  orv::sdk::Lock lock_;  // guards
  std::array<Slab*, kClasses> withRoom_{};
};

Slabs slabs;

Slab* Slabs::Make(const SizeClass& sizeClass) {
  void* memory = VirtualAlloc(nullptr, kSlabSize, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
  if (memory == nullptr) return nullptr;
  return new (memory) Slab{nullptr, nullptr, nullptr, sizeClass.size, sizeClass.index, sizeof(Slab), 0};
}

void Slabs::LinkLocked(Slab* slab) {
  Slab*& first = withRoom_[slab->index];
  slab->previous = nullptr;
  slab->next = first;
  if (first != nullptr) first->previous = slab;
  first = slab;
}

void Slabs::UnlinkLocked(Slab* slab) {
  Slab*& before = slab->previous != nullptr ? slab->previous->next : withRoom_[slab->index];
  before = slab->next;
  if (slab->next != nullptr) slab->next->previous = slab->previous;
}

void* Slabs::Take(std::size_t size) {
  const SizeClass sizeClass = ClassOf(size + sizeof(Header));
  const std::lock_guard guard(lock_);
  Slab* slab = withRoom_[sizeClass.index];
  if (slab == nullptr) {
    slab = Make(sizeClass);
    if (slab == nullptr) return nullptr;
    LinkLocked(slab);
  }
  auto* start = reinterpret_cast<std::byte*>(slab->free);
  if (start != nullptr) {
    slab->free = slab->free->next;
  } else {
    start = reinterpret_cast<std::byte*>(slab) + slab->begun;
    slab->begun += slab->blockSize;
  }
  ++slab->live;
  if (slab->isFull()) UnlinkLocked(slab);
  void* block = start + sizeof(Header);
  HeaderOf(block) = reinterpret_cast<Header>(slab);
  return block;
}

void Slabs::Give(void* block) {
  const std::lock_guard guard(lock_);
  Slab* slab = SlabOf(block);
  if (slab->isFull()) LinkLocked(slab);
  slab->free = new (&HeaderOf(block)) FreeBlock{slab->free};
  const bool isAlone = slab->previous == nullptr && slab->next == nullptr;
  if (--slab->live > 0 || isAlone) return;
  UnlinkLocked(slab);
  VirtualFree(slab, 0, MEM_RELEASE);
}

void Slabs::GiveBackEmpty() {
  const std::lock_guard guard(lock_);
  for (Slab*& first : withRoom_) {
    while (first != nullptr && first->live == 0) {
      Slab* slab = first;
      UnlinkLocked(slab);
      VirtualFree(slab, 0, MEM_RELEASE);
    }
  }
}

void* TakeOfHeap(std::size_t size) {
  auto* header = static_cast<Header*>(HeapAlloc(GetProcessHeap(), 0, size + sizeof(Header)));
  if (header == nullptr) return nullptr;
  *header = size * 2 + 1;
  return header + 1;
}

void* Take(int size) {
  const auto wanted = static_cast<std::size_t>(size);
  return wanted + sizeof(Header) <= kMostInSlab ? slabs.Take(wanted) : TakeOfHeap(wanted);
}

void Give(void* block) {
  if (block == nullptr) return;
  if (IsOfHeap(block))
    HeapFree(GetProcessHeap(), 0, &HeaderOf(block));
  else
    slabs.Give(block);
}

int SizeOf(void* block) {
  if (block == nullptr) return 0;
  const std::size_t size = IsOfHeap(block) ? HeaderOf(block) / 2 : SlabOf(block)->blockSize - sizeof(Header);
  return static_cast<int>(size);
}

int RoundUp(int size) {
  const auto wanted = static_cast<std::size_t>(size) + sizeof(Header);
  return wanted <= kMostInSlab ? static_cast<int>(ClassOf(wanted).size - sizeof(Header)) : size;
}

void* TakeOther(void* block, int size) {
  const int former = SizeOf(block);
  if (former == RoundUp(size)) return block;
  void* other = Take(size);
  if (other == nullptr) return nullptr;
  std::memcpy(other, block, static_cast<std::size_t>(std::min(former, size)));
  Give(block);
  return other;
}

int Begin(void*) { return SQLITE_OK; }
void End(void*) { slabs.GiveBackEmpty(); }

}  // namespace

void GiveEngineMemory() noexcept {
  static const sqlite3_mem_methods kMethods = {Take, Give, TakeOther, SizeOf, RoundUp, Begin, End, nullptr};
  // Once, and before the first connection; the engine keeps what it was told.
  // Not a static of the run-time's: what guards its beginning is not given back when the library is unloaded.
  static INIT_ONCE once = INIT_ONCE_STATIC_INIT;
  const auto give = [](INIT_ONCE*, void*, void**) -> BOOL {
    sqlite3_config(SQLITE_CONFIG_MALLOC, &kMethods);
    return TRUE;
  };
  InitOnceExecuteOnce(&once, give, nullptr, nullptr);
}

}  // namespace book
