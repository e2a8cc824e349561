// The process-wide values: our module, the resource library, the task allocator, the caller's context.
// Set at attach and at the first entry call; read everywhere.
#pragma once

#include <cstddef>

#include "platform/win.h"

namespace orv::process {

// Our own module handle; its file name says which model we serve.
HMODULE Instance() noexcept;
void SetInstance(HMODULE instance) noexcept;

// The language's resource library, or null when it is missing.
HMODULE ResourceLibrary() noexcept;
void SetResourceLibrary(HMODULE library) noexcept;

// Opaque to us; the first value that is not zero stays for the life of the process.
ULONG_PTR CallerContext() noexcept;
void KeepCallerContext(ULONG_PTR context) noexcept;

// Obtains the COM task allocator; false when there is none. Every MAPI buffer comes from it.
bool AcquireTaskAllocator() noexcept;
void ReleaseTaskAllocator() noexcept;
void* TaskAllocate(std::size_t size) noexcept;
void TaskFree(void* block) noexcept;

}  // namespace orv::process
