#include "tests/support/process_probe.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "platform/win.h"
// After the system's own header.
#include <tlhelp32.h>

namespace orv::test {
namespace {

int CountThreadSlots() {
  std::vector<DWORD> slots;
  for (DWORD slot = TlsAlloc(); slot != TLS_OUT_OF_INDEXES; slot = TlsAlloc()) slots.push_back(slot);
  for (const DWORD slot : slots) TlsFree(slot);
  return static_cast<int>(slots.size());
}

int CountKernelHandles() {
  int count = 0;
  DWORD flags = 0;
  for (std::uintptr_t value = 4; value < 0x8000; value += 4)
    count += GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) != FALSE;
  return count;
}

int CountLibraries() {
  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPMODULE, GetCurrentProcessId());
  MODULEENTRY32W entry{};
  entry.dwSize = sizeof entry;
  int count = 0;
  for (BOOL more = Module32FirstW(snapshot, &entry); more; more = Module32NextW(snapshot, &entry)) ++count;
  CloseHandle(snapshot);
  return count;
}

std::size_t CountHeapBytes() {
  HANDLE heaps[64];
  const DWORD heapCount = GetProcessHeaps(64, heaps);
  std::size_t bytes = 0;
  for (DWORD i = 0; i < heapCount && i < 64; ++i) {
    HeapLock(heaps[i]);
    PROCESS_HEAP_ENTRY entry{};
    while (HeapWalk(heaps[i], &entry))
      if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) bytes += entry.cbData;
    HeapUnlock(heaps[i]);
  }
  return bytes;
}

// Not what the system keeps for the next window: device contexts, regions, bitmaps.
bool IsDrawingObject(DWORD type) {
  return type == OBJ_PEN || type == OBJ_BRUSH || type == OBJ_FONT || type == OBJ_PAL;
}

bool IsOwnWindow(HWND window) {
  DWORD process = 0;
  return GetWindowThreadProcessId(window, &process) != 0 && process == GetCurrentProcessId();
}

// In the order of the counts.
constexpr const char* kNames[] = {" thread-local slots", " handles", " libraries", " bytes"};

}  // namespace

ProcessCounts CountProcess() {
  return {-CountThreadSlots(), CountKernelHandles(), CountLibraries(),
          static_cast<long long>(CountHeapBytes())};
}

WindowObjects CountWindowObjects() {
  constexpr std::uintptr_t kHandles = 0x4000;
  WindowObjects count;
  for (std::uintptr_t handle = 1; handle < kHandles; ++handle)
    count.drawing += IsDrawingObject(GetObjectType(reinterpret_cast<HGDIOBJ>(handle)));
  for (std::uintptr_t handle = 2; handle < kHandles; handle += 2)
    count.user += IsOwnWindow(reinterpret_cast<HWND>(handle)) || IsMenu(reinterpret_cast<HMENU>(handle));
  return count;
}

std::string LeftEveryTime(const std::function<void()>& work) {
  constexpr int kRuns = 5;
  work();  // what the system makes once
  ProcessCounts least{}, before = CountProcess();
  for (int run = 0; run < kRuns; ++run) {
    work();
    const ProcessCounts after = CountProcess();
    for (std::size_t i = 0; i < least.size(); ++i) {
      const long long grown = after[i] - before[i];
      least[i] = run == 0 ? grown : std::min(least[i], grown);
    }
    before = after;
  }
  std::string left;
  for (std::size_t i = 0; i < least.size(); ++i) {
    if (least[i] > 0) left += (left.empty() ? "" : ", ") + std::to_string(least[i]) + kNames[i];
  }
  return left;
}

}  // namespace orv::test
