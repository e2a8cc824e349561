// Process-wide values. Attach and detach are serialised by the loader; the caller context may come on any thread.
#include "platform/process.h"

#include <atomic>

#include "platform/faults.h"

namespace orv::process {
namespace {

HMODULE g_instance = nullptr;
HMODULE g_resources = nullptr;
std::atomic<ULONG_PTR> g_callerContext{0};
IMalloc* g_taskAllocator = nullptr;

}  // namespace

HMODULE Instance() noexcept { return g_instance; }
void SetInstance(HMODULE instance) noexcept { g_instance = instance; }

HMODULE ResourceLibrary() noexcept { return g_resources; }
void SetResourceLibrary(HMODULE library) noexcept { g_resources = library; }

ULONG_PTR CallerContext() noexcept { return g_callerContext; }

void KeepCallerContext(ULONG_PTR context) noexcept {
  ULONG_PTR none = 0;
  g_callerContext.compare_exchange_strong(none, context);
}

bool AcquireTaskAllocator() noexcept {
  return g_taskAllocator != nullptr || SUCCEEDED(CoGetMalloc(1, &g_taskAllocator));
}

void ReleaseTaskAllocator() noexcept {
  if (g_taskAllocator == nullptr) return;
  g_taskAllocator->Release();
  g_taskAllocator = nullptr;
}

void* TaskAllocate(std::size_t size) noexcept {
  if (g_taskAllocator == nullptr || faults::ShouldFail(faults::Site::kTaskAllocation)) return nullptr;
  void* block = g_taskAllocator->Alloc(size);
  if (block != nullptr) faults::TaskBlockBorn();
  return block;
}

void TaskFree(void* block) noexcept {
  faults::TaskBlockDied();
  g_taskAllocator->Free(block);
}

}  // namespace orv::process
