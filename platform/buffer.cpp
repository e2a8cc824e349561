// The chained allocator behind every buffer that crosses an interface. One block of the task allocator each:
// header, payload, guard byte. Chained blocks hang off their root in the order of newest first.
#include "platform/buffer.h"

#include <cstddef>
#include <cstring>
#include <limits>

#include "platform/process.h"

namespace {

constexpr ULONG kSignature = '{';
constexpr char kGuard = '}';

struct Header {
  ULONG signature;
  ULONG size;
  Header* previous;  // null in a root
  Header* next;
};
static_assert(sizeof(Header) == 24);
constexpr ULONG kOverhead = sizeof(Header) + sizeof(kGuard);

void* PayloadOf(Header* header) { return header + 1; }

// Null, blocks of other allocators and chained blocks have no header of a root.
Header* RootHeader(void* buffer) {
  if (buffer == nullptr) return nullptr;
  Header* header = static_cast<Header*>(buffer) - 1;
  return header->signature == kSignature && header->previous == nullptr ? header : nullptr;
}

enum class Payload { kZero, kAsItComes };

// Clears from `next` on: that is where the allocator's alignment falls, which clearing is quicker for.
void Clear(Header* header) {
  static_assert(offsetof(Header, next) == 16);
  std::memset(static_cast<void*>(&header->next), 0, sizeof header->next + header->size);
}

// A block outside every chain; null when there is no memory. A size that wraps with its overhead cannot be had.
Header* NewBlock(ULONG size, Payload payload) {
  if (size + kOverhead < size) return nullptr;
  auto* header = static_cast<Header*>(orv::process::TaskAllocate(size + kOverhead));
  if (header == nullptr) return nullptr;
  *header = {kSignature, size, nullptr, nullptr};
  if (payload == Payload::kZero) Clear(header);
  static_cast<char*>(PayloadOf(header))[size] = kGuard;
  return header;
}

void LinkBehind(Header* root, Header* block) {
  block->previous = root;
  block->next = root->next;
  if (root->next != nullptr) root->next->previous = block;
  root->next = block;
}

SCODE NewRoot(ULONG size, Payload payload, void** out) {
  Header* block = NewBlock(size, payload);
  *out = block == nullptr ? nullptr : PayloadOf(block);
  return block == nullptr ? MAPI_E_NOT_ENOUGH_MEMORY : S_OK;
}

SCODE NewChained(ULONG size, void* root, Payload payload, void** out) {
  *out = nullptr;
  Header* parent = RootHeader(root);
  if (parent == nullptr) return MAPI_E_INVALID_PARAMETER;
  Header* block = NewBlock(size, payload);
  if (block == nullptr) return MAPI_E_NOT_ENOUGH_MEMORY;
  LinkBehind(parent, block);
  *out = PayloadOf(block);
  return S_OK;
}

}  // namespace

namespace orv {

HRESULT AllocateToFill(std::size_t size, void* root, void** out) noexcept {
  *out = nullptr;
  if (size > std::numeric_limits<ULONG>::max()) return MAPI_E_NOT_ENOUGH_MEMORY;
  const auto bytes = static_cast<ULONG>(size);
  return root == nullptr ? NewRoot(bytes, Payload::kAsItComes, out)
                         : NewChained(bytes, root, Payload::kAsItComes, out);
}

}  // namespace orv

SCODE STDAPICALLTYPE OrvAllocateBuffer(ULONG size, LPVOID* out) { return NewRoot(size, Payload::kZero, out); }

SCODE STDAPICALLTYPE OrvAllocateMore(ULONG size, LPVOID root, LPVOID* out) {
  return NewChained(size, root, Payload::kZero, out);
}

// Null is an error here, not a no-operation, so that a client that frees twice is told.
ULONG STDAPICALLTYPE OrvFreeBuffer(LPVOID buffer) {
  Header* block = RootHeader(buffer);
  if (block == nullptr) return static_cast<ULONG>(MAPI_E_INVALID_PARAMETER);
  while (block != nullptr) {
    Header* next = block->next;
    orv::process::TaskFree(block);
    block = next;
  }
  return S_OK;
}

void STDAPICALLTYPE OrvFreeProws(LPSRowSet rows) {
  if (rows == nullptr) return;
  for (ULONG i = 0; i < rows->cRows; ++i) OrvFreeBuffer(rows->aRow[i].lpProps);
  OrvFreeBuffer(rows);
}

void STDAPICALLTYPE OrvFreePadrlist(LPADRLIST list) {
  if (list == nullptr) return;
  for (ULONG i = 0; i < list->cEntries; ++i) {
    if (list->aEntries[i].rgPropVals != nullptr) OrvFreeBuffer(list->aEntries[i].rgPropVals);
  }
  OrvFreeBuffer(list);
}
