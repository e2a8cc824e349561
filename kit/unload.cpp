#include "orv/kit/unload.hpp"

#ifdef __MINGW32__

#include <array>
#include <atomic>

// The run-time's own function, which empties its pool for exceptions.
namespace __gnu_cxx {
void __freeres();
}

namespace orv::sdk {
namespace {

using TlsAllocFunction = DWORD(WINAPI*)();

// The run-time takes one slot or two, at its first use, and forgets them when it is unloaded: a process has 1,088.
constexpr std::size_t kMostSlots = 8;
std::array<std::atomic<DWORD>, kMostSlots> g_slots;
std::atomic<std::size_t> g_slotCount{0};

DWORD WINAPI NotedTlsAlloc() {
  const HMODULE system = GetModuleHandleW(L"kernel32.dll");
  const auto allocate =
      reinterpret_cast<TlsAllocFunction>(reinterpret_cast<void*>(GetProcAddress(system, "TlsAlloc")));
  const DWORD slot = allocate();
  if (slot == TLS_OUT_OF_INDEXES) return slot;
  const std::size_t index = g_slotCount.fetch_add(1);
  if (index < kMostSlots) g_slots[index] = slot;
  return slot;
}

void FreeSlots() noexcept {
  for (std::size_t i = 0; i < g_slotCount && i < kMostSlots; ++i) TlsFree(g_slots[i]);
  g_slotCount = 0;
}

// As the system calls them when a thread ends: what the run-time keeps for the unloading thread goes.
void EndThread(HMODULE self) noexcept {
  auto* base = reinterpret_cast<BYTE*>(self);
  const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
  const auto* headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
  const IMAGE_DATA_DIRECTORY& entry = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_TLS];
  if (entry.Size == 0) return;
  const auto* directory = reinterpret_cast<const IMAGE_TLS_DIRECTORY*>(base + entry.VirtualAddress);
  auto* callback = reinterpret_cast<PIMAGE_TLS_CALLBACK*>(directory->AddressOfCallBacks);
  for (; callback != nullptr && *callback != nullptr; ++callback)
    (*callback)(self, DLL_THREAD_DETACH, nullptr);
}

}  // namespace

void GiveBackRunTime(HMODULE self) noexcept {
  __gnu_cxx::__freeres();
  EndThread(self);
  FreeSlots();
}

}  // namespace orv::sdk

// What the run-time's calls of TlsAlloc go through, in place of the pointer from the import library.
extern "C" {
extern orv::sdk::TlsAllocFunction __imp_TlsAlloc;
orv::sdk::TlsAllocFunction __imp_TlsAlloc = &orv::sdk::NotedTlsAlloc;
}

#else

// Other run-times give back by themselves what they took.
void orv::sdk::GiveBackRunTime(HMODULE) noexcept {}

#endif
